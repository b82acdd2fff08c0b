// Setting records out of a broken stream.

#include <QDataStream>
#include <cstdint>

#include "common/device_setting.h"
#include "common/driver_setting.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), int(size));
    QDataStream deviceStream(bytes);
    DeviceSetting device(device_type(32), "COM2", 9600, 8, 0, 0);
    deviceStream >> device;
    (void)device.socketIP();
    (void)device.port();
    // No entry takes less than six bytes of the stream.
    if (device.socketList.size() > int(size) / 6 + 1) {
        __builtin_trap();
    }
    QDataStream driverStream(bytes);
    DriverSetting driver(0, 0, 0, 0);
    driverStream >> driver;
    return 0;
}
