#include "apps/micro800/watch/watch_model.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

class WatchModelTest : public testing::Test {
 protected:
    WatchModelTest() : model(addresses(), commands()) {}

    static TagAddress parsed(const QString& text) {
        TagAddress address;
        QString problem;
        EXPECT_TRUE(parseTagAddress(text, &address, &problem)) << qPrintable(problem);
        return address;
    }
    static QVector<TagAddress> addresses() { return {parsed("DINT0:A"), parsed("INT0:B[2]")}; }
    static QVector<CommunicatorCommand> commands() {
        return {CommunicatorCommand(kUnitDoubleWord, 1, "DINT0:A"),
                CommunicatorCommand(kUnitWord, 1, "INT0:B[2]")};
    }
    static DriverResult good(const char* hex, double microseconds = 1) {
        DriverResult result;
        result.ok = true;
        result.bytes = QByteArray::fromHex(hex);
        result.microseconds = microseconds;
        return result;
    }
    static DriverResult bad(const char* error) {
        DriverResult result;
        result.error = error;
        return result;
    }

    WatchModel model;
};

TEST_F(WatchModelTest, TellsFirstValuesAndChangesOnly) {
    EXPECT_EQ(model.take(0, good("01000000"), 10), WatchEvent::kValue);
    EXPECT_EQ(model.take(0, good("01000000"), 20), WatchEvent::kNothing);
    EXPECT_EQ(model.changes(), 0);
    EXPECT_EQ(model.tag(0).changedAt, 10);
    EXPECT_EQ(model.tag(0).readAt, 20);
    EXPECT_EQ(model.take(0, good("ffffffff"), 30), WatchEvent::kValue);
    EXPECT_EQ(model.changes(), 1);
    EXPECT_EQ(model.tag(0).changedAt, 30);
    EXPECT_EQ(model.tag(0).text(), QString("-1"));
    EXPECT_FALSE(model.tag(1).hasValue());
}

TEST_F(WatchModelTest, TellsAFailureOnceAndTheRecovery) {
    EXPECT_EQ(model.take(0, good("01000000"), 10), WatchEvent::kValue);
    EXPECT_EQ(model.take(0, bad("read DINT0:A> gone"), 20), WatchEvent::kError);
    EXPECT_EQ(model.take(0, bad("read DINT0:A> gone"), 30), WatchEvent::kNothing);
    EXPECT_EQ(model.take(0, bad("read DINT0:A> still gone"), 40), WatchEvent::kError);
    EXPECT_EQ(model.tag(0).readAt, 10);
    EXPECT_FALSE(model.tag(0).isGood());
    EXPECT_EQ(model.lastError(), QString("read DINT0:A> still gone"));
    EXPECT_EQ(model.failedReads(), 3);
    // The same value as before: told again, and no change.
    EXPECT_EQ(model.take(0, good("01000000"), 50), WatchEvent::kValue);
    EXPECT_EQ(model.changes(), 0);
    EXPECT_TRUE(model.tag(0).isGood());
    EXPECT_EQ(model.lastError(), QString("read DINT0:A> still gone"));
}

TEST_F(WatchModelTest, AllGoodNeedsEveryTag) {
    EXPECT_FALSE(model.allGood());
    model.take(0, good("01000000"), 1);
    EXPECT_FALSE(model.allGood());
    model.take(1, good("0100"), 2);
    EXPECT_TRUE(model.allGood());
    model.take(1, bad("no"), 3);
    EXPECT_FALSE(model.allGood());
}

TEST_F(WatchModelTest, ShortReadsCountAsTheCaches) {
    for (int i = 0; i < 30; ++i) {
        model.take(0, good("01000000", 2), i * 100);
    }
    for (int i = 0; i < 3; ++i) {
        model.take(1, good("0100", kCacheLimitMicroseconds), i * 1000);
    }
    EXPECT_TRUE(model.tag(0).fromCache());
    EXPECT_FALSE(model.tag(1).fromCache());
    EXPECT_NEAR(model.cacheReadsPerSecond(3000), 10, 1);
    EXPECT_NEAR(model.controllerReadsPerSecond(3000), 1, 0.4);
    EXPECT_EQ(model.summary(3000), QString("3.0 s: 0 changes, 0 failed reads; reads per second: "
                                           "10.0 from the cache, 1.0 from the controller"));
    // Long after, they are no longer part of the rate.
    EXPECT_EQ(model.cacheReadsPerSecond(9000), 0);
}

TEST_F(WatchModelTest, RatesBeginAtTheFirstRead) {
    RateMeter meter;
    EXPECT_EQ(meter.perSecond(5000), 0);
    meter.add(100000);
    meter.add(100500);
    EXPECT_NEAR(meter.perSecond(101000), 2, 0.01);
}

}  // namespace
