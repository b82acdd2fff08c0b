#include "common/driver_setting.h"

#include <gtest/gtest.h>

#include <QDataStream>

#include "unit/common/debug_lines.h"

namespace {

void expectFields(const DriverSetting& setting, int timeout, int retry, int stationid, int delay,
                  const char* extraText) {
    EXPECT_EQ(timeout, setting.timeout);
    EXPECT_EQ(retry, setting.retry);
    EXPECT_EQ(stationid, setting.stationid);
    EXPECT_EQ(delay, setting.delay);
    EXPECT_EQ(extraText, setting.extraText.toStdString());
}

QDataStream::Status readFrom(const char* hex, DriverSetting* setting) {
    QDataStream stream(QByteArray::fromHex(hex));
    stream.setVersion(QDataStream::Qt_4_7);
    stream >> *setting;
    return stream.status();
}

TEST(DriverSetting, ConstructorsKeepAndDiscard) {
    const DriverSetting four(3000, 3, 1, 2);
    expectFields(four, 3000, 3, 1, 2, "");
    EXPECT_FALSE(four.extraFlag);

    const DriverSetting six(3000, 3, 1, 2, "text", 5);
    expectFields(six, four.timeout, four.retry, four.stationid, four.delay, "");
    EXPECT_FALSE(six.extraFlag);

    const DriverSetting eight(3000, 3, 1, 2, "first", 5, "second", true);
    expectFields(eight, 3000, 3, 1, 2, "second");
    EXPECT_TRUE(eight.extraFlag);
    EXPECT_FALSE(DriverSetting(1, 1, 1, 1, "", 0, "t", false).extraFlag);
}

TEST(DriverSetting, CopyTakesAllButTheFlag) {
    const DriverSetting source(1, 2, 3, 4, "", 0, "text", true);
    DriverSetting target(9, 9, 9, 9);
    target.copy(source);
    expectFields(target, 1, 2, 3, 4, "text");
    EXPECT_FALSE(target.extraFlag);

    DriverSetting flagged(9, 9, 9, 9, "", 0, "", true);
    flagged.copy(DriverSetting(1, 2, 3, 4));
    expectFields(flagged, 1, 2, 3, 4, "");
    EXPECT_TRUE(flagged.extraFlag);
}

TEST(DriverSetting, StreamsFourInts) {
    QByteArray out;
    QDataStream stream(&out, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_4_7);
    stream << DriverSetting(3000, 3, -1, 0x01020304, "", 0, "not streamed", true);
    EXPECT_EQ(
        "00000bb8"
        "00000003"
        "ffffffff"
        "01020304",
        out.toHex().toStdString());
}

TEST(DriverSetting, ReadsFourIntsAndLeavesTheRest) {
    DriverSetting setting(9, 9, 9, 9, "", 0, "own", true);
    EXPECT_EQ(QDataStream::Ok, readFrom("00000bb8"
                                        "00000003"
                                        "ffffffff"
                                        "01020304",
                                        &setting));
    expectFields(setting, 3000, 3, -1, 0x01020304, "own");
    EXPECT_TRUE(setting.extraFlag);
}

TEST(DriverSetting, AShortStreamLeavesZeros) {
    DriverSetting setting(9, 9, 9, 9);
    EXPECT_EQ(QDataStream::ReadPastEnd, readFrom("00000bb8"
                                                 "0000",
                                                 &setting));
    expectFields(setting, 3000, 0, 0, 0, "");
}

TEST(DriverSetting, DumpsOneLine) {
    DebugLines debug;
    DriverSetting(3000, 3, 0, 0).dump();
    ASSERT_EQ(1, debug.taken().size());
    EXPECT_EQ("timeout: 3000 retry: 3 stationid: 0 delay: 0", debug.taken().at(0).toStdString());
}

}  // namespace
