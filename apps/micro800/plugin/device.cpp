#include "apps/micro800/plugin/device.h"

namespace {

/// The number that this host uses for its Ethernet port; the driver does not look at it.
const device_type kEthernetPort = static_cast<device_type>(0);

}  // namespace

HostDevice::HostDevice(const Connection& connection)
    : endpoint(kEthernetPort, QStringLiteral("ETHERNET1"), 0, 0, 0, 0),
      manners(connection.timeoutMs, connection.retry, 0, 0) {
    endpoint.linkID = connection.link;
    endpoint.setSocketData({{connection.host, QString::number(connection.port)}});
}

DeviceSetting* HostDevice::deviceSetting() {
    return &endpoint;
}

DriverSetting* HostDevice::driverSetting() {
    return &manners;
}

int HostDevice::retryCount() {
    return manners.retry;
}

int HostDevice::stationNumber() {
    return manners.stationid;
}
