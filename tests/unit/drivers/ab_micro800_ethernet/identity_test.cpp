#include <gtest/gtest.h>

#include <QPointer>
#include <memory>

#include "common/device_setting.h"
#include "common/driver_setting.h"
#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"

namespace {

TEST(Identity, AnswersItsConstants) {
    DriverABMicro800Eth driver;
    EXPECT_EQ(1024, driver.totalSize());
    EXPECT_TRUE(driver.initialize(0));
    EXPECT_FALSE(driver.validation("DINT0:A"));
    EXPECT_EQ(QString("Micro800 Ethernet"), driver.name());
    EXPECT_EQ(QString("Allen Bradley"), driver.vender());
    EXPECT_EQ(QString("1.0.0"), driver.getVersionNumber());
    EXPECT_EQ(256, driver.supportedCommunicationFlags());
    EXPECT_EQ(QString("44818"), driver.getStringBasedDefaultDriverSetting());
    EXPECT_EQ(1024, driver.getBlockAccessSize());
    EXPECT_EQ(1024, driver.getBitBlockAccessSize());
    EXPECT_TRUE(driver.isSupportSessionCommand());
    EXPECT_TRUE(driver.isConnected(0));
    EXPECT_FALSE(driver.hasError());
    EXPECT_TRUE(driver.getLastError().isEmpty());
    driver.setDebugMode(true);
    driver.clearSessionCommand();
    EXPECT_FALSE(driver.hasError());
}

TEST(Identity, OffersNewDefaultRecords) {
    DriverABMicro800Eth driver;
    const std::unique_ptr<DeviceSetting> device(driver.getDefaultSerialDeviceSetting());
    EXPECT_EQ(32, int(device->type));
    EXPECT_EQ(QString("COM2"), device->name);
    EXPECT_EQ(9600, device->baudrate);
    EXPECT_EQ(8, device->databits);
    EXPECT_EQ(0, device->stopbits);
    EXPECT_EQ(0, device->parity);
    const std::unique_ptr<DriverSetting> setting(driver.getDefaultDriverSetting());
    EXPECT_EQ(3000, setting->timeout);
    EXPECT_EQ(3, setting->retry);
    EXPECT_EQ(0, setting->stationid);
    EXPECT_EQ(0, setting->delay);
    const std::unique_ptr<DriverSetting> another(driver.getDefaultDriverSetting());
    EXPECT_NE(setting.get(), another.get());
}

TEST(Identity, CastsToItsInterfaceByName) {
    DriverABMicro800Eth driver;
    DriverInterface* asInterface = &driver;
    EXPECT_EQ(&driver, driver.qt_metacast("DriverABMicro800Eth"));
    EXPECT_EQ(asInterface, driver.qt_metacast("DriverInterface"));
    EXPECT_EQ(asInterface, driver.qt_metacast("com.tarvelon.drivers.DriverInterface/1.1"));
    EXPECT_EQ(static_cast<QObject*>(&driver), driver.qt_metacast("QObject"));
    EXPECT_EQ(nullptr, driver.qt_metacast("NoSuchClass"));
    EXPECT_EQ(asInterface, qobject_cast<DriverInterface*>(static_cast<QObject*>(&driver)));
    EXPECT_EQ(static_cast<QObject*>(&driver), driver.getThisObject());
}

TEST(Identity, DeletingThroughTheInterfaceDestroysTheObject) {
    DriverInterface* driver = new DriverABMicro800Eth;
    const QPointer<QObject> alive(driver->getThisObject());
    ASSERT_FALSE(alive.isNull());
    delete driver;
    EXPECT_TRUE(alive.isNull());
}

}  // namespace
