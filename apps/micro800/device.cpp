#include "apps/micro800/device.h"

namespace {

/// The number that this host uses for its Ethernet port; the driver does not look at it.
const device_type kEthernetPort = static_cast<device_type>(0);

}  // namespace

HostDevice::HostDevice(const Connection& connection)
    : deviceSetting_(kEthernetPort, QStringLiteral("ETHERNET1"), 0, 0, 0, 0),
      driverSetting_(connection.timeoutMs, connection.retry, 0, 0) {
    deviceSetting_.linkID = connection.link;
    deviceSetting_.setSocketData({{connection.host, QString::number(connection.port)}});
}

DeviceSetting* HostDevice::deviceSetting() {
    return &deviceSetting_;
}

DriverSetting* HostDevice::driverSetting() {
    return &driverSetting_;
}

int HostDevice::retryCount() {
    return driverSetting_.retry;
}

int HostDevice::stationNumber() {
    return driverSetting_.stationid;
}
