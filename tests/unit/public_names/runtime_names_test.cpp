// The host's interface headers.

#include <QList>
#include <QObject>

#include "runtime/abstract_device_interface.h"
#include "runtime/communicator_command.h"
#include "runtime/driver_interface.h"
#include "unit/public_names/name_checks.h"

namespace {

typedef AbstractDeviceInterface Device;
typedef CommunicatorCommand Command;

TEST(RuntimeNames, DriverInterface) {
    typedef DriverInterface Driver;
    EXPECT_TRUE(std::has_virtual_destructor<Driver>::value);
    EXPECT_STREQ("com.tarvelon.drivers.DriverInterface/1.1",
                 qobject_interface_iid<DriverInterface*>());
    EXPECT_MEMBER(int(), Driver, totalSize);
    EXPECT_MEMBER(bool(Device*, const Command&, const QByteArray&), Driver, write);
    EXPECT_MEMBER(QByteArray(Device*, const Command&), Driver, read);
    EXPECT_MEMBER(bool(Device*), Driver, initialize);
    EXPECT_MEMBER(bool(const QString&), Driver, validation);
    EXPECT_MEMBER(QString(), Driver, name);
    EXPECT_MEMBER(QString(), Driver, vender);
    EXPECT_MEMBER(QString(), Driver, getVersionNumber);
    EXPECT_MEMBER(DeviceSetting * (), Driver, getDefaultSerialDeviceSetting);
    EXPECT_MEMBER(DriverSetting * (), Driver, getDefaultDriverSetting);
    EXPECT_MEMBER(QString(), Driver, getStringBasedDefaultDriverSetting);
    EXPECT_MEMBER(int(), Driver, supportedCommunicationFlags);
    EXPECT_MEMBER(void(bool), Driver, setDebugMode);
    EXPECT_MEMBER(int(), Driver, getBlockAccessSize);
    EXPECT_MEMBER(int(), Driver, getBitBlockAccessSize);
    EXPECT_MEMBER(bool(), Driver, hasError);
    EXPECT_MEMBER(QString(), Driver, getLastError);
    EXPECT_MEMBER(QObject * (), Driver, getThisObject);
    EXPECT_MEMBER(bool(), Driver, isSupportSessionCommand);
    EXPECT_MEMBER(void(QList<Command>), Driver, setSessionCommand);
    EXPECT_MEMBER(void(), Driver, clearSessionCommand);
    EXPECT_MEMBER(bool(const DeviceSetting*), Driver, deviceSettingChanged);
    EXPECT_MEMBER(bool(Device*), Driver, isConnected);
}

TEST(RuntimeNames, CommunicatorCommand) {
    EXPECT_TRUE(std::is_polymorphic<Command>::value);
    EXPECT_MEMBER(int() const, Command, getDataSize);
    EXPECT_MEMBER(QString() const, Command, stringKey);
    EXPECT_MEMBER(qint32, Command, unitKind);
    EXPECT_MEMBER(quint32, Command, unitCount);
    EXPECT_MEMBER(QString, Command, address);
    EXPECT_EQ(QString("INT0:A_2_1"), Command(2, 1, "INT0:A").stringKey());
}

TEST(RuntimeNames, AbstractDeviceInterface) {
    EXPECT_MEMBER(DeviceSetting * (), Device, deviceSetting);
    EXPECT_MEMBER(DriverSetting * (), Device, driverSetting);
    EXPECT_MEMBER(int(), Device, retryCount);
    EXPECT_MEMBER(int(), Device, stationNumber);
}

}  // namespace
