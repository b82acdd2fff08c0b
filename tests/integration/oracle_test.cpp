// Proof against mix-ups and loss: the simulator answers every read with a value that names its tag
// and grows with every read and write of it. Whatever the driver delivers is held against that.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <QElapsedTimer>
#include <algorithm>
#include <map>
#include <random>

#include "integration/driver_rig.h"
#include "integration/write_ledger.h"
#include "support/app_directory/app_directory.h"

namespace {

const int kTags = 60;
const int kPolled = 50;
const int kCounterBits = 20;
const int kCounterMask = (1 << kCounterBits) - 1;
/// Every write goes this far beyond what was seen, so that values only grow.
const int kWriteStep = 40;

/// The controller is restarted so often and forgets its counters each time. Writes of one life stay
/// within its range, so a value shows which life it is from; below the first range are tags that
/// this life has not been written to yet.
const int kLives = 9;
const int kLifeRange = 100000;
static_assert((kLives + 1) * kLifeRange <= kCounterMask, "a counter holds the ranges of all lives");

/// How often a tag is read that must not give a value.
const int kReadsOfAWithheldTag = 20;

int runSeconds() {
    const char* seconds = getenv("ORACLE_SECONDS");
    return seconds ? atoi(seconds) : 60;
}

QString tagName(int tag) {
    return QString("T%1").arg(tag);
}

/// What one tag has shown and been told so far.
struct TagState {
    int seen = 0;       ///< the highest counter that was delivered
    int confirmed = 0;  ///< the counter of the last write that returned true
    int written = 0;    ///< the counter of the last write that was tried
};

class Oracle : public ::testing::Test {
 protected:
    void SetUp() override {
        writeProjectDatabase(QStringList());
        QStringList options("--oracle");
        for (int tag = 0; tag < kTags; ++tag) {
            options << "--tag" << tagName(tag) + ":DINT";
        }
        simulator.reset(new Controller(options));
        device.reset(new TestDevice(simulator->port(), 600, 1));
        driver = createDriver();
        random.seed(20);
    }

    int pick(int count) { return int(random() % unsigned(count)); }

    void read(int tag) {
        const QByteArray bytes = driver->read(device.get(), dint(tagName(tag)));
        if (bytes.isEmpty()) {
            ++failedReads;
            return;
        }
        ASSERT_EQ(4, bytes.size());
        ++goodReads;
        quint32 value = 0;
        memcpy(&value, bytes.constData(), 4);
        TagState& state = states[tag];
        const int counter = int(value & kCounterMask);
        ASSERT_EQ(unsigned(tag), value >> kCounterBits) << "another tag's value";
        const int valuesLife = counter / kLifeRange;
        ASSERT_TRUE(valuesLife == 0 || valuesLife == life) << counter << " in life " << life;
        ASSERT_GE(counter, state.confirmed) << tag << ": older than the last finished write";
        ASSERT_GE(counter, state.seen) << tag << ": older than what was shown before";
        state.seen = counter;
    }

    void write(int tag) {
        TagState& state = states[tag];
        const int counter = std::max({state.seen, state.written, life * kLifeRange}) + kWriteStep;
        ASSERT_LT(counter, (life + 1) * kLifeRange);
        state.written = counter;
        const bool ok = driver->write(device.get(), dint(tagName(tag)), dintBytes(counter));
        ledger.note(tag, counter, ok);
        if (ok) {
            state.confirmed = counter;
            state.seen = std::max(state.seen, counter);
        }
    }

    /// Another fifty of the sixty tags, beginning anywhere.
    void changeList() {
        QList<CommunicatorCommand> list;
        const int first = pick(kTags);
        for (int i = 0; i < kPolled; ++i) {
            list << dint(tagName((first + i) % kTags));
        }
        driver->setSessionCommand(list);
    }

    /// The controller is gone and comes back with other values.
    void restartController() {
        simulator->kill();
        ASSERT_TRUE(simulator->restart()) << simulator->error();
        ++life;
        for (auto& entry : states) {
            entry.second.seen = 0;
            entry.second.confirmed = 0;
            entry.second.written = 0;
        }
        for (int tag = 0; tag < kTags; ++tag) {
            write(tag);
        }
        // A value comes from this life: the driver has found its way back.
        const int before = goodReads;
        ASSERT_TRUE(waitFor([&] {
            read(0);
            return goodReads > before || HasFatalFailure();
        }));
    }

    /// The controller stops giving one tag's value: once that has shown, no read gives one, and the
    /// other tags go on.
    void withholdOneTag() {
        static const char* const kFaults[] = {"status:05", "unknown-type", "silence"};
        const int tag = pick(kTags);
        const QString fault = kFaults[pick(int(sizeof kFaults / sizeof *kFaults))];
        ASSERT_EQ("ok", simulator->command("fault " + fault + "@on=read@tag=" + tagName(tag)));
        const CommunicatorCommand command = dint(tagName(tag));
        ASSERT_TRUE(waitFor([&] { return driver->read(device.get(), command).isEmpty(); }));
        const int reads = fault == "silence" ? 2 : kReadsOfAWithheldTag;
        for (int i = 0; i < reads; ++i) {
            ASSERT_EQ(QByteArray(), driver->read(device.get(), command)) << fault.toStdString();
            read((tag + 1 + pick(kTags - 1)) % kTags);
        }
        ++withheld;
        ASSERT_EQ("ok", simulator->command("fault none"));
    }

    void makeTrouble() {
        static const char* const kFaults[] = {"fault late:50x3", "fault late:900x1",
                                              "fault repeatx4",  "fault late:1600x1",
                                              "fault repeatx20", "fault wrong-sequencex1"};
        ASSERT_EQ("ok", simulator->command(kFaults[pick(int(sizeof kFaults / sizeof *kFaults))]));
    }

    std::unique_ptr<Controller> simulator;
    std::unique_ptr<TestDevice> device;
    std::unique_ptr<DriverInterface> driver;
    std::mt19937 random;
    std::map<int, TagState> states;
    WriteLedger ledger;
    int life = 1;
    int withheld = 0;
    int goodReads = 0;
    int failedReads = 0;
};

TEST_F(Oracle, NoMixUpsAndNoLostWrites) {
    changeList();
    QElapsedTimer running;
    running.start();
    const qint64 end = qint64(runSeconds()) * 1000;
    qint64 nextTrouble = std::min<qint64>(1000, end / 4);
    qint64 nextList = 300;
    const qint64 lifetime = end / kLives;
    for (int tag = 0; tag < kTags; ++tag) {
        write(tag);
    }
    while (running.elapsed() < end && !HasFatalFailure()) {
        const int what = pick(1000);
        what < 990 ? read(pick(kTags)) : write(pick(kTags));
        if (running.elapsed() > life * lifetime && life < kLives) {
            restartController();
        }
        if (running.elapsed() > nextTrouble) {
            withheld > 0 && pick(2) == 0 ? makeTrouble() : withholdOneTag();
            nextTrouble = running.elapsed() + 1000 + pick(2000);
        }
        if (running.elapsed() > nextList) {
            changeList();
            nextList = running.elapsed() + 200 + pick(1500);
        }
    }
    ASSERT_FALSE(HasFatalFailure());
    EXPECT_GT(goodReads, 1000);

    // Driver and controller are gone before the log is read: no write is under way any more.
    driver.reset();
    simulator->stop();
    ledger.takeLog(simulator->logPath());
    EXPECT_EQ(QStringList(), ledger.settle());
    EXPECT_GT(ledger.confirmed(), 50);
    // The trouble was real: connections broke over it.
    const int connections = simulator->connectionsOpened();
    EXPECT_GE(connections, life);
    EXPECT_GT(life, 1);
    EXPECT_GT(withheld, 0);
    printf(
        "%d reads, %d failed; %d writes confirmed, %d not; %d restarts, %d tags withheld, "
        "%d connections\n",
        goodReads, failedReads, ledger.confirmed(), ledger.unconfirmed(), life - 1, withheld,
        connections);
}

}  // namespace
