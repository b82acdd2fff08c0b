#include "apps/micro800/plugin/device.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

TEST(HostDevice, GivesTheDriverWhatTheUserGave) {
    Connection connection;
    connection.host = "192.168.1.20";
    connection.port = 44819;
    connection.timeoutMs = 700;
    connection.retry = 2;
    connection.link = 9;
    HostDevice device(connection);
    EXPECT_EQ(device.deviceSetting()->socketIP(), QString("192.168.1.20"));
    EXPECT_EQ(device.deviceSetting()->port(), 44819);
    EXPECT_EQ(device.deviceSetting()->linkID, 9);
    EXPECT_EQ(device.driverSetting()->timeout, 700);
    EXPECT_EQ(device.driverSetting()->retry, 2);
    EXPECT_EQ(device.retryCount(), 2);
    EXPECT_EQ(device.stationNumber(), 0);
}

}  // namespace
