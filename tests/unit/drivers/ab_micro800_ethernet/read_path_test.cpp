#include <gtest/gtest.h>

#include "common/device_setting.h"
#include "common/driver_setting.h"
#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"
#include "runtime/abstract_device_interface.h"
#include "support/app_directory/app_directory.h"

namespace {

class Device : public AbstractDeviceInterface {
 public:
    Device() : device(device_type(32), "COM2", 9600, 8, 0, 0), driver(500, 0, 0, 0) {}
    DeviceSetting* deviceSetting() override { return &device; }
    DriverSetting* driverSetting() override { return &driver; }
    int retryCount() override { return 0; }
    int stationNumber() override { return 0; }

    DeviceSetting device;
    DriverSetting driver;
};

/// A text that already says what was accessed is left alone, by either verb.
TEST(CommError, HasItsAddressOnce) {
    removeProjectDatabase();
    DriverABMicro800Eth driver;
    Device device;
    const CommunicatorCommand a(3, 1, "DINT0:A");
    const CommunicatorCommand b(3, 1, "DINT0:B");
    ASSERT_TRUE(driver.read(&device, a).isEmpty());
    ASSERT_EQ(QString("can not open database"), driver.getLastError());
    driver.appendCmdToReadCommError(1, a);
    EXPECT_EQ(QString("read DINT0:A> can not open database"), driver.getLastError());
    driver.appendCmdToReadCommError(1, a);
    driver.appendCmdToReadCommError(2, b);
    driver.appendCmdToWriteCommError(1, b);
    EXPECT_EQ(QString("read DINT0:A> can not open database"), driver.getLastError());
    ASSERT_FALSE(driver.write(&device, b, QByteArray(4, 0)));
    driver.appendCmdToWriteCommError(1, b);
    EXPECT_EQ(QString("write DINT0:B> can not open database"), driver.getLastError());
    EXPECT_TRUE(driver.hasError());
}

}  // namespace
