// The judges of the long runs: what they take for wrong, and what not.

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <cmath>
#include <functional>

#include "integration/write_ledger.h"
#include "soak/process_figures.h"
#include "soak/report.h"
#include "soak/time_oracle.h"

namespace {

const uint32_t kOther = 1u << 31;

uint32_t valueOf(int tag, int ms) {
    return uint32_t(tag) << 23 | uint32_t(ms);
}

/// Controller 0 has counted since 100,000 ms.
class Oracle : public ::testing::Test {
 protected:
    Oracle() { oracle.begin(0, 100000, false); }
    std::string direct(uint32_t value, int64_t from, int64_t until) {
        return oracle.check(7, false, value, from, until).toStdString();
    }
    TimeOracle oracle;
};

TEST_F(Oracle, TakesAValueOfTheCallsTime) {
    EXPECT_EQ("", direct(valueOf(7, 5000), 104990, 105010));
    EXPECT_EQ(105000, oracle.lastMs());
    EXPECT_EQ("", direct(valueOf(7, 6000), 106000, 106500));
}

TEST_F(Oracle, KnowsWrongValues) {
    EXPECT_EQ("the value of tag 8", direct(valueOf(8, 5000), 105000, 105000));
    EXPECT_EQ(0u, direct(valueOf(7, 5000) | kOther, 105000, 105000).find("the value of another"));
    EXPECT_EQ(0u, direct(valueOf(7, 5000), 104000, 104900).find("newer than the answer"));
    EXPECT_EQ(0u, direct(valueOf(7, 5000), 105100, 105200).find("older than the call allows"));
}

TEST_F(Oracle, TimeDoesNotRunBackwards) {
    EXPECT_EQ("", oracle.check(7, true, valueOf(7, 5000), 106000, 106000).toStdString());
    EXPECT_EQ(1000, oracle.oldestMs());
    EXPECT_EQ(0u, oracle.check(7, true, valueOf(7, 4999), 106000, 106000)
                      .toStdString()
                      .find("older than one that was shown"));
    EXPECT_EQ("", oracle.check(6, true, valueOf(6, 4999), 106000, 106000).toStdString());
    EXPECT_NE("", oracle.check(5, true, valueOf(5, 4999), 116000, 116000).toStdString());
}

/// A polled value may be shown after a restart, but never again when one of the new life was.
TEST_F(Oracle, AnEarlierLifeEnds) {
    const int64_t now = nowMs();
    oracle.begin(0, now - 60000, false);
    oracle.begin(0, now, true);
    const uint32_t before = valueOf(7, 59900);
    EXPECT_EQ("", oracle.check(7, true, before, now, now + 100).toStdString());
    EXPECT_NE("", oracle.check(7, false, before, now, now + 100).toStdString());
    EXPECT_EQ("", oracle.check(6, true, valueOf(6, 50), now + 50, now + 100).toStdString());
    EXPECT_NE("", oracle.check(7, true, before, now, now + 100).toStdString());
    oracle.begin(1, now, false);
    EXPECT_NE("", oracle.check(7, true, before, now, now + 100).toStdString());
}

class Ledger : public ::testing::Test {
 protected:
    /// Has the controller carry out a write of this value to tag 3.
    void carryOut(const char* hexValue, const char* status = "00") {
        QFile file(dir.filePath("log"));
        ASSERT_TRUE(file.open(QIODevice::Append));
        file.write(QString("{\"service\":\"WriteTag\",\"tag\":\"W3\",\"data\":\"%1\",\"status\":"
                           "\"%2\"}\n")
                       .arg(hexValue)
                       .arg(status)
                       .toLatin1());
    }
    int problems() {
        at = ledger.takeLog(dir.filePath("log"), at);
        return ledger.settle().size();
    }
    QTemporaryDir dir;
    WriteLedger ledger;
    qint64 at = 0;
};

TEST_F(Ledger, ConfirmedIsOnceAndUnconfirmedAtMostOnce) {
    ledger.note(3, 1, true);
    ledger.note(3, 2, false);
    ledger.note(3, 3, false);
    carryOut("01000000");
    carryOut("03000000");
    carryOut("02000000", "05");
    EXPECT_EQ(0, problems());
    EXPECT_EQ(1, ledger.confirmed());
    EXPECT_EQ(2, ledger.unconfirmed());
    carryOut("02000000");
    EXPECT_EQ(0, problems()) << "late, but once";
}

TEST_F(Ledger, LostAndDoubledWritesShow) {
    ledger.note(3, 1, true);
    EXPECT_EQ(1, problems()) << "lost";
    ledger.note(3, 2, true);
    carryOut("02000000");
    carryOut("02000000");
    EXPECT_EQ(1, problems()) << "doubled";
    carryOut("03000000");
    EXPECT_EQ(1, problems()) << "nobody wrote it";
    ledger.note(3, 4, true);
    carryOut("04000000");
    EXPECT_EQ(0, problems());
    carryOut("04000000");
    EXPECT_EQ(1, problems()) << "doubled late";
}

std::vector<SoakSample> samplesWith(const std::function<double(int)>& residentKb) {
    std::vector<SoakSample> samples(600);
    for (int i = 0; i < int(samples.size()); ++i) {
        ProcessFigures& process = samples[size_t(i)].process;
        process.residentKb = residentKb(i);
        process.heapKb = 500 + i % 40;
        process.descriptors = 9 + i % 2;
        process.threads = 3;
    }
    return samples;
}

/// Resident memory grows in pages.
double pages(double kilobytes) {
    return std::floor(kilobytes / 4) * 4;
}

TEST(Growth, OfMemoryIsToldFromNoise) {
    EXPECT_EQ(QStringList(), growthOf(samplesWith([](int) { return 9000; })).problems);
    const auto step = [](int i) { return i < 300 ? 9000 : 9012; };
    EXPECT_EQ(QStringList(), growthOf(samplesWith(step)).problems) << "one step is no slope";
    const auto slow = [](int i) { return pages(9000 + 30.0 * i / 3600); };
    EXPECT_EQ(QStringList(), growthOf(samplesWith(slow)).problems);
    const auto fast = [](int i) { return pages(9000 + 300.0 * i / 3600); };
    const Growth growth = growthOf(samplesWith(fast));
    EXPECT_EQ(1, growth.problems.size());
    EXPECT_NEAR(300, growth.resident.perSecond * 3600, growth.resident.uncertainty * 3600);
}

TEST(Growth, OfMemoryInUseShowsUnderTheResident) {
    std::vector<SoakSample> samples = samplesWith([](int) { return 9000; });
    for (int i = 0; i < int(samples.size()); ++i) {
        samples[size_t(i)].process.heapKb += 300.0 * i / 3600;
    }
    EXPECT_EQ(1, growthOf(samples).problems.size());
}

TEST(Growth, OfDescriptorsIsWhatStays) {
    std::vector<SoakSample> samples = samplesWith([](int) { return 9000; });
    samples[5].process.descriptors = 20;
    samples[590].process.descriptors = 20;
    EXPECT_EQ(QStringList(), growthOf(samples).problems);
    for (size_t i = 400; i < samples.size(); ++i) {
        samples[i].process.descriptors = 10;
    }
    EXPECT_EQ(QStringList("descriptors grew from 9 to 10"), growthOf(samples).problems);
}

}  // namespace
