#include "runtime/driver_interface.h"

#include <gtest/gtest.h>

#include "common/device_setting.h"
#include "common/driver_setting.h"
#include "runtime/abstract_device_interface.h"
#include "unit/runtime/vtable_slot.h"

namespace {

/// The least that a driver must bring; everything else is the interface's own.
class LeastDriver : public DriverInterface {
 public:
    explicit LeastDriver(bool* flag) : destroyed(flag) {}
    ~LeastDriver() override { *destroyed = true; }

    int totalSize() override { return 0; }
    bool write(AbstractDeviceInterface*, const CommunicatorCommand&, const QByteArray&) override {
        return false;
    }
    QByteArray read(AbstractDeviceInterface*, const CommunicatorCommand&) override {
        return QByteArray();
    }
    bool initialize(AbstractDeviceInterface*) override { return false; }
    bool validation(const QString&) override { return false; }
    DeviceSetting* getDefaultSerialDeviceSetting() override { return nullptr; }
    DriverSetting* getDefaultDriverSetting() override { return nullptr; }
    int supportedCommunicationFlags() override { return 0; }
    void setDebugMode(bool) override {}
    int getBlockAccessSize() override { return 0; }
    int getBitBlockAccessSize() override { return 0; }
    bool hasError() override { return false; }
    QString getLastError() override { return QString(); }
    QObject* getThisObject() override { return nullptr; }

 private:
    bool* destroyed;
};

TEST(DriverInterface, DefaultAnswers) {
    bool destroyed = false;
    LeastDriver driver(&destroyed);
    DriverInterface* interface = &driver;
    EXPECT_EQ("Not Assigned", interface->name().toStdString());
    EXPECT_EQ("Not Assigned", interface->vender().toStdString());
    EXPECT_EQ("Not Assigned", interface->getVersionNumber().toStdString());
    EXPECT_EQ("RS232,9600,EVEN,7,1", interface->getStringBasedDefaultDriverSetting().toStdString());
    EXPECT_FALSE(interface->isSupportSessionCommand());
    QList<CommunicatorCommand> list;
    list.append(CommunicatorCommand(3, 1, "DINT0:A"));
    interface->setSessionCommand(list);
    interface->clearSessionCommand();
    EXPECT_EQ(1, list.size());
    EXPECT_TRUE(interface->deviceSettingChanged(nullptr));
    EXPECT_TRUE(interface->isConnected(nullptr));
}

TEST(DriverInterface, IsDestroyedThroughTheInterface) {
    bool destroyed = false;
    DriverInterface* interface = new LeastDriver(&destroyed);
    delete interface;
    EXPECT_TRUE(destroyed);
}

TEST(DriverInterface, HasTheRuntimesIdentifier) {
    EXPECT_STREQ("com.tarvelon.drivers.DriverInterface/1.1",
                 qobject_interface_iid<DriverInterface*>());
}

TEST(DriverInterface, SlotsAreInTheRuntimesOrder) {
    const struct {
        const char* operation;
        std::ptrdiff_t slot;
    } rows[] = {
        // The destructor has slots 0 and 1.
        {"totalSize", vtableSlot(&DriverInterface::totalSize)},
        {"write", vtableSlot(&DriverInterface::write)},
        {"read", vtableSlot(&DriverInterface::read)},
        {"initialize", vtableSlot(&DriverInterface::initialize)},
        {"validation", vtableSlot(&DriverInterface::validation)},
        {"name", vtableSlot(&DriverInterface::name)},
        {"vender", vtableSlot(&DriverInterface::vender)},
        {"getVersionNumber", vtableSlot(&DriverInterface::getVersionNumber)},
        {"getDefaultSerialDeviceSetting",
         vtableSlot(&DriverInterface::getDefaultSerialDeviceSetting)},
        {"getDefaultDriverSetting", vtableSlot(&DriverInterface::getDefaultDriverSetting)},
        {"getStringBasedDefaultDriverSetting",
         vtableSlot(&DriverInterface::getStringBasedDefaultDriverSetting)},
        {"supportedCommunicationFlags", vtableSlot(&DriverInterface::supportedCommunicationFlags)},
        {"setDebugMode", vtableSlot(&DriverInterface::setDebugMode)},
        {"getBlockAccessSize", vtableSlot(&DriverInterface::getBlockAccessSize)},
        {"getBitBlockAccessSize", vtableSlot(&DriverInterface::getBitBlockAccessSize)},
        {"hasError", vtableSlot(&DriverInterface::hasError)},
        {"getLastError", vtableSlot(&DriverInterface::getLastError)},
        {"getThisObject", vtableSlot(&DriverInterface::getThisObject)},
        {"isSupportSessionCommand", vtableSlot(&DriverInterface::isSupportSessionCommand)},
        {"setSessionCommand", vtableSlot(&DriverInterface::setSessionCommand)},
        {"clearSessionCommand", vtableSlot(&DriverInterface::clearSessionCommand)},
        {"deviceSettingChanged", vtableSlot(&DriverInterface::deviceSettingChanged)},
        {"isConnected", vtableSlot(&DriverInterface::isConnected)},
    };
    std::ptrdiff_t expected = 2;
    for (const auto& row : rows) {
        EXPECT_EQ(expected++, row.slot) << row.operation;
    }
}

TEST(CommunicatorCommandSlots, AreInTheRuntimesOrder) {
    EXPECT_EQ(0, vtableSlot(&CommunicatorCommand::getDataSize));
    EXPECT_EQ(1, vtableSlot(&CommunicatorCommand::stringKey));
}

TEST(AbstractDeviceInterfaceSlots, AreInTheRuntimesOrder) {
    EXPECT_EQ(2, vtableSlot(&AbstractDeviceInterface::deviceSetting));
    EXPECT_EQ(3, vtableSlot(&AbstractDeviceInterface::driverSetting));
    EXPECT_EQ(4, vtableSlot(&AbstractDeviceInterface::retryCount));
    EXPECT_EQ(5, vtableSlot(&AbstractDeviceInterface::stationNumber));
}

}  // namespace
