// The driver, its worker, and what the plugin file exports.

#include <dlfcn.h>

#include "common/device_setting.h"
#include "common/driver_setting.h"
#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"
#include "drivers/ab_micro800_ethernet/micro800_driver_callback.h"
#include "drivers/ab_micro800_ethernet/micro800_worker.h"
#include "unit/public_names/name_checks.h"

typedef DriverABMicro800Eth Driver;

// What the driver keeps to itself.
typedef QHash<QString, LgxArrayDef> ArrayDefs;
template struct PrivateMember<MemberOf<void(const QString&), Driver>, &Driver::setCommError>;
template struct PrivateMember<MemberOf<QString, Driver>, &Driver::connectionName>;
template struct PrivateMember<MemberOf<bool, Driver>, &Driver::dbOpen>;
template struct PrivateMember<MemberOf<bool, Driver>, &Driver::arrayDefsLoaded>;
template struct PrivateMember<MemberOf<ArrayDefs, Driver>, &Driver::arrayDefs>;
template struct PrivateMember<MemberOf<std::unique_ptr<Micro800Worker>, Driver>, &Driver::worker>;
template struct PrivateMember<MemberOf<QString, Driver>, &Driver::pendingIP>;
template struct PrivateMember<MemberOf<unsigned short, Driver>, &Driver::pendingPort>;

namespace {

typedef AbstractDeviceInterface Device;
typedef const CommunicatorCommand& Command;
typedef const QString& Text;
typedef const QByteArray& Bytes;
typedef unsigned short Id;

TEST(DriverNames, EntryPointsOfThePluginFile) {
    void* file = dlopen(PLUGIN_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(nullptr, file) << dlerror();
    for (const char* name :
         {"CreateDriver", "qt_plugin_instance", "qt_plugin_query_verification_data"}) {
        EXPECT_NE(nullptr, dlsym(file, name)) << name;
    }
    // A file that Qt has been in stays loaded, as Qt's own loader leaves it.
}

TEST(DriverNames, Interface) {
    Driver driver;
    EXPECT_EQ(static_cast<DriverInterface*>(&driver), driver.qt_metacast("DriverInterface"));
    EXPECT_MEMBER(void*(const char*), Driver, qt_metacast);
    EXPECT_MEMBER(int(), Driver, totalSize);
    EXPECT_MEMBER(bool(Device*), Driver, initialize);
    EXPECT_MEMBER(bool(Text), Driver, validation);
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
    EXPECT_MEMBER(void(QList<CommunicatorCommand>), Driver, setSessionCommand);
    EXPECT_MEMBER(void(), Driver, clearSessionCommand);
    EXPECT_MEMBER(bool(const DeviceSetting*), Driver, deviceSettingChanged);
}

TEST(DriverNames, ReadAndWrite) {
    EXPECT_MEMBER(QByteArray(Device*, Command), Driver, read);
    EXPECT_MEMBER(QByteArray(Command), Driver, readData);
    EXPECT_MEMBER(QByteArray(Text, int), Driver, directRead);
    EXPECT_MEMBER(QByteArray(Text, Text, _LGX_Data_Type, int, int, int), Driver,
                  directReadArrayElements);
    EXPECT_MEMBER(bool(), Driver, recvRspFromWorker);
    EXPECT_MEMBER(void(), Driver, resetRspBuf);
    EXPECT_MEMBER(void(int, Command), Driver, appendCmdToReadCommError);
    EXPECT_MEMBER(bool(Device*, Command, Bytes), Driver, write);
    EXPECT_MEMBER(bool(Text, _LGX_Data_Type, Bytes), Driver, directWrite);
    EXPECT_MEMBER(void(int, Command), Driver, appendCmdToWriteCommError);
    EXPECT_MEMBER(bool(QList<CommunicatorCommand>&), Driver, sendSetSessionCmd);
    EXPECT_MEMBER(bool(Device*), Driver, initWorker);
    EXPECT_MEMBER(bool(Text, Id), Driver, notifyWorkerDeviceSettingChanged);
    EXPECT_MEMBER(Id(int), Driver, nextTID);
    EXPECT_MEMBER(Id(int) const, Driver, tid);
}

TEST(DriverNames, TagAddresses) {
    EXPECT_MEMBER(int(Text) const, Driver, findNamePos);
    EXPECT_MEMBER(QString(Text, int) const, Driver, varNameFrom);
    EXPECT_MEMBER(QString(Text, int) const, Driver, prefixSymbolFrom);
    EXPECT_MEMBER(QString(Text) const, Driver, parseVarName);
    EXPECT_MEMBER(_LGX_Data_Type(Text) const, Driver, prefixSymbolToType);
    EXPECT_MEMBER(int(Text) const, Driver, prefixSymbolToDataSize);
    EXPECT_MEMBER(int(int, _LGX_Data_Type) const, Driver, numberFrom);
    EXPECT_MEMBER(bool(Text), Driver, isArray);
    EXPECT_MEMBER(QString() const, Driver, arrayPrefixSymbol);
    EXPECT_MEMBER(QString() const, Driver, arrayElementName);
    EXPECT_MEMBER(QString() const, Driver, arrayName);
    EXPECT_MEMBER(QString() const, Driver, arrayIndex);
    EXPECT_MEMBER(bool(Text), Driver, isArray1);
    EXPECT_MEMBER(QString() const, Driver, arrayPrefixSymbol1);
    EXPECT_MEMBER(QString() const, Driver, arrayElementName1);
    EXPECT_MEMBER(QString() const, Driver, arrayName1);
}

TEST(DriverNames, ArrayDeclarations) {
    EXPECT_EQ(0, LgxArrayDef().size());
    EXPECT_MEMBER(int() const, LgxArrayDef, size);
    EXPECT_MEMBER(int, LgxArrayDef, dims);
    EXPECT_MEMBER(int, LgxArrayDef::Bounds, lower);
    EXPECT_MEMBER(int, LgxArrayDef::Bounds, upper);
    EXPECT_MEMBER(bool(), Driver, createDBConnection);
    EXPECT_MEMBER(bool(Device*), Driver, readDB);
    EXPECT_MEMBER(bool(int), Driver, initArrayDefMap);
    EXPECT_MEMBER(bool(Text, LgxArrayDef&) const, Driver, arrayDefFromStr);
    EXPECT_MEMBER(bool(Text) const, Driver, arrayDefined);
    EXPECT_MEMBER(int(Text) const, Driver, arraySize);
    EXPECT_MEMBER(int(Text, Text, int) const, Driver, arrayElementByteOffset);
    EXPECT_MEMBER(int(Text, const LgxArrayDef&, int) const, Driver, strToValueOffset);
}

TEST(DriverNames, Receiver) {
    typedef Micro800DriverCallback Receiver;
    EXPECT_TRUE((std::is_base_of<CipPlcDriverCallback, Receiver>::value));
    Micro800DriverCallback receiver;
    EXPECT_FALSE(receiver.hasDriverWriteCmd());
    EXPECT_MEMBER(void(int), Receiver, serverPipeOnReceiveDriverWriteCmd);
    EXPECT_MEMBER(bool(), Receiver, hasDriverWriteCmd);
    EXPECT_MEMBER(void(), Receiver, clearDriverWriteCmd);
    EXPECT_MEMBER(LgxMicro800WriteCmd(int&, Id&, bool*), Receiver, driverWriteCmd);
    EXPECT_MEMBER(QString, LgxMicro800WriteCmd, name);
    EXPECT_MEMBER(_LGX_Data_Type, LgxMicro800WriteCmd, type);
    EXPECT_MEMBER(QByteArray, LgxMicro800WriteCmd, data);
}

/// Passes on what the worker offers to its kind only.
class Worker : public Micro800Worker {
 public:
    using Micro800Worker::processDriverWriteCmd;
    using Micro800Worker::updateCacheAfterWrite;
};

TEST(DriverNames, Worker) {
    EXPECT_TRUE((std::is_base_of<EipWorker, Micro800Worker>::value));
    Micro800Worker worker("127.0.0.1", 44818, 1000);
    EXPECT_FALSE(worker.connectionIsOpened());
    EXPECT_MEMBER(bool(QString*, bool*), Worker, processDriverWriteCmd);
    EXPECT_MEMBER(bool(int, Id, Text, bool*), Worker, updateCacheAfterWrite);
}

}  // namespace
