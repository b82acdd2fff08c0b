// A value that the controller no longer gives is never shown as good.

#include <gtest/gtest.h>

#include <QElapsedTimer>

#include "integration/driver_rig.h"
#include "support/app_directory/app_directory.h"
#include "support/reserved_port.h"

namespace {

class Trust : public ::testing::Test {
 protected:
    void start(const QStringList& options, const QStringList& declarations = QStringList()) {
        writeProjectDatabase(declarations);
        simulator.reset(new Controller(options));
        device.reset(new TestDevice(simulator->port(), 400));
        driver = createDriver();
    }

    void poll(const QStringList& names) {
        QList<CommunicatorCommand> list;
        for (const QString& name : names) {
            list << dint(name);
        }
        driver->setSessionCommand(list);
    }

    /// Reads until the worker serves the tag from its cache: no request follows the read.
    bool servedFromTheCache(const QString& name, int value) {
        return waitFor([&] { return driver->read(device.get(), dint(name)) == dintBytes(value); });
    }

    std::unique_ptr<Controller> simulator;
    std::unique_ptr<TestDevice> device;
    std::unique_ptr<DriverInterface> driver;
};

struct Refusal {
    const char* fault;
    const char* error;
};

void PrintTo(const Refusal& row, std::ostream* out) {
    *out << row.fault;
}

class TrustAfter : public Trust, public ::testing::WithParamInterface<Refusal> {};

/// One of two polled tags is refused after a while: no read gives its old value any more, the
/// operator reads that tag's own text, and the other tag is served as before.
TEST_P(TrustAfter, OneOfTwoPolledTagsIsRefused) {
    start({"--tag", "GONE:DINT=1", "--tag", "STAYS:DINT=2"});
    poll({"GONE", "STAYS"});
    ASSERT_TRUE(servedFromTheCache("GONE", 1));
    ASSERT_TRUE(servedFromTheCache("STAYS", 2));
    ASSERT_EQ("ok", simulator->command(QString("fault %1@tag=GONE").arg(GetParam().fault)));
    EXPECT_TRUE(waitFor([&] { return driver->read(device.get(), dint("GONE")).isEmpty(); }));
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(QByteArray(), driver->read(device.get(), dint("GONE")));
        EXPECT_EQ(QString("read DINT0:GONE> ") + GetParam().error, driver->getLastError());
        EXPECT_EQ(2, readDint(driver.get(), device.get(), "STAYS"));
    }
    ASSERT_EQ("ok", simulator->command("fault none"));
    ASSERT_EQ("ok", simulator->command("set GONE=3"));
    EXPECT_TRUE(servedFromTheCache("GONE", 3));
}

INSTANTIATE_TEST_SUITE_P(All, TrustAfter,
                         ::testing::Values(Refusal{"status:05", "AB error: 0005H"},
                                           Refusal{"status:04", "AB error: 0004H"},
                                           Refusal{"status:FF,2107", "AB error: 01FFH, 2107H"},
                                           Refusal{"unknown-type", "Internal: unknown error"}));

/// The untouched tag keeps being served from the cache: its reads cost the controller nothing.
TEST_F(Trust, TheOtherTagIsStillServedFromTheCache) {
    start({"--tag", "GONE:DINT=1", "--tag", "STAYS:DINT=2", "--delay", "20"});
    poll({"GONE", "STAYS"});
    ASSERT_TRUE(servedFromTheCache("STAYS", 2));
    ASSERT_EQ("ok", simulator->command("fault status:05@tag=GONE"));
    ASSERT_TRUE(waitFor([&] { return driver->read(device.get(), dint("GONE")).isEmpty(); }));
    const int before = simulator->countRequests("STAYS");
    for (int i = 0; i < 2000; ++i) {
        ASSERT_EQ(2, readDint(driver.get(), device.get(), "STAYS"));
    }
    // The polling itself asks for it, far less often than it was read.
    EXPECT_LT(simulator->countRequests("STAYS") - before, 200);
}

/// An array that is polled whole and then refused gives none of its old elements.
TEST_F(Trust, ElementsOfARefusedArrayAreNotServed) {
    start({"--tag", "ARR:DINT[10]=5,6,7"}, {"DINT0:ARR[0..9]"});
    poll({"ARR[1]"});
    ASSERT_TRUE(servedFromTheCache("ARR[1]", 6));
    ASSERT_TRUE(servedFromTheCache("ARR[2]", 7));
    ASSERT_EQ("ok", simulator->command("fault status:05"));
    ASSERT_TRUE(waitFor([&] { return driver->read(device.get(), dint("ARR[1]")).isEmpty(); }));
    EXPECT_EQ(QByteArray(), driver->read(device.get(), dint("ARR[2]")));
    EXPECT_EQ(QString("read DINT0:ARR[2]> AB error: 0005H"), driver->getLastError());
}

/// The value that a write was to replace is not shown when reading it back was refused.
TEST_F(Trust, RefusedRefreshAfterAWriteWithholdsTheOldValue) {
    start({"--tag", "D:DINT=1"});
    poll({"D"});
    ASSERT_TRUE(servedFromTheCache("D", 1));
    ASSERT_EQ("ok", simulator->command("fault status:05@tag=D@on=read"));
    EXPECT_FALSE(driver->write(device.get(), dint("D"), dintBytes(2)));
    EXPECT_EQ(QByteArray(), driver->read(device.get(), dint("D")));
    EXPECT_TRUE(driver->hasError());
}

/// The controller takes connections again and again and answers no read: nothing old comes back
/// with any of them.
TEST_F(Trust, AllReadsSilentWhileOpensAreAnswered) {
    start({"--tag", "D:DINT=1", "--tag", "E:DINT=2"});
    poll({"D", "E"});
    ASSERT_TRUE(servedFromTheCache("D", 1));
    ASSERT_TRUE(servedFromTheCache("E", 2));
    ASSERT_EQ("ok", simulator->command("fault silence@on=read"));
    ASSERT_TRUE(waitFor([&] { return driver->read(device.get(), dint("D")).isEmpty(); }));
    const int opened = simulator->connectionsOpened();
    while (simulator->connectionsOpened() < opened + 3) {
        for (const char* name : {"D", "E"}) {
            ASSERT_EQ(QByteArray(), driver->read(device.get(), dint(name))) << name;
        }
    }
    ASSERT_EQ("ok", simulator->command("fault none"));
    ASSERT_EQ("ok", simulator->command("set E=3"));
    EXPECT_TRUE(servedFromTheCache("E", 3));
}

QStringList hundredTags(int value) {
    QStringList options({"--delay", "6"});
    for (int i = 0; i < 100; ++i) {
        options << "--tag" << QString("T%1:DINT=%2").arg(i).arg(value);
    }
    return options;
}

/// A restart with other values: from the moment it is over no read gives a value from before it,
/// though a pass over the list takes most of a second.
TEST_F(Trust, NothingFromBeforeARestart) {
    const ReservedPort reserved;
    const quint16 port = reserved.port();
    writeProjectDatabase(QStringList());
    simulator.reset(new Controller(hundredTags(1), port));
    device.reset(new TestDevice(port, 400));
    driver = createDriver();
    QStringList names;
    for (int i = 0; i < 100; ++i) {
        names << QString("T%1").arg(i);
    }
    poll(names);
    for (const QString& name : names) {
        ASSERT_TRUE(servedFromTheCache(name, 1));
    }
    for (int restart = 2; restart < 5; ++restart) {
        simulator->kill();
        simulator.reset(new Controller(hundredTags(restart), port));
        int fresh = 0;
        QElapsedTimer since;
        since.start();
        for (int i = 0; fresh < 300 && since.elapsed() < 20000; i = (i + 37) % 100) {
            const QByteArray bytes = driver->read(device.get(), dint(names.at(i)));
            if (!bytes.isEmpty()) {
                ASSERT_EQ(dintBytes(restart), bytes)
                    << names.at(i).toStdString() << " after " << since.elapsed() << " ms";
                ++fresh;
            }
        }
        EXPECT_EQ(300, fresh);
    }
}

/// The first read after a reopening refreshes its tag at once, wherever the pass is.
TEST_F(Trust, FirstReadAfterAReopeningDoesNotWaitForThePass) {
    QStringList options = hundredTags(1);
    options[1] = "20";
    start(options);
    QStringList names;
    for (int i = 0; i < 100; ++i) {
        names << QString("T%1").arg(i);
    }
    poll(names);
    for (const QString& name : names) {
        ASSERT_TRUE(servedFromTheCache(name, 1));
    }
    const int opened = simulator->connectionsOpened();
    ASSERT_EQ("ok", simulator->command("close-peers"));
    ASSERT_TRUE(waitFor([&] { return simulator->connectionsOpened() > opened; }));
    const int before = simulator->requests().size();
    for (int i = 0; i < 100; i += 20) {
        EXPECT_TRUE(servedFromTheCache(names.at(i), 1));
    }
    // A pass would have taken a hundred.
    EXPECT_LT(simulator->requests().size() - before, 50);
}

}  // namespace
