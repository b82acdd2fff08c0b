// A project database that is damaged or made up: what the driver takes from it as declarations.
//
// Input: the file. It is written to the place where the driver looks for it, below the folder of
// this program, so that one of these runs at a time. scripts/fuzz lays that place into memory.

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <cstdint>

#include "common/device_setting.h"
#include "common/driver_setting.h"
#include "common/project_paths.h"
#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"
#include "runtime/abstract_device_interface.h"

namespace {

class Device : public AbstractDeviceInterface {
 public:
    Device() : device(device_type(32), "COM2", 9600, 8, 0, 0), driver(1000, 0, 0, 0) {
        device.linkID = 1;
    }
    DeviceSetting* deviceSetting() override { return &device; }
    DriverSetting* driverSetting() override { return &driver; }
    int retryCount() override { return 0; }
    int stationNumber() override { return 0; }

 private:
    DeviceSetting device;
    DriverSetting driver;
};

/// What begins once: Qt finds its SQLite driver with an application only.
struct Program {
    Program() : count(1), application(count, names) {
        QDir(QCoreApplication::applicationDirPath()).mkpath(QLatin1String("compile/database"));
        file.setFileName(GetDatabaseName());
        if (!file.open(QFile::ReadWrite | QFile::Unbuffered)) {
            __builtin_trap();
        }
    }

    void store(const uint8_t* data, size_t size) {
        if (!file.seek(0) || !file.resize(qint64(size)) ||
            file.write(reinterpret_cast<const char*>(data), qint64(size)) != qint64(size)) {
            __builtin_trap();
        }
    }

    int count;
    char name[14] = "fuzz_database";
    char* names[2] = {name, nullptr};
    QCoreApplication application;
    QFile file;  ///< stays open: to open and close it again takes as long as to write it
    Device device;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Program program;
    program.store(data, size);
    DriverABMicro800Eth driver;
    const bool isRead = driver.readDB(&program.device);
    if (isRead == driver.hasError() || (!isRead && driver.getLastError().isEmpty())) {
        __builtin_trap();
    }
    if (isRead && driver.arrayDefined(QLatin1String("A"))) {
        (void)driver.arraySize(QLatin1String("A"));
        (void)driver.arrayElementByteOffset(QLatin1String("A"), QLatin1String("1,2"), 4);
    }
    return 0;
}
