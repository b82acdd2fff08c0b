#ifndef APPS_MICRO800_DEVICE_H
#define APPS_MICRO800_DEVICE_H

#include <QString>

#include "common/device_setting.h"
#include "common/driver_setting.h"
#include "runtime/abstract_device_interface.h"

/// Where the controller is and how to talk to it.
struct Connection {
    QString host;
    unsigned short port = 44818;
    int timeoutMs = 3000;
    int retry = 3;  ///< further attempts after a reported failure of a read
    int link = 1;   ///< link number of the port: array declarations of this number apply
};

/// The device object that the driver asks for its settings. One endpoint, given at construction.
class HostDevice : public AbstractDeviceInterface {
 public:
    explicit HostDevice(const Connection& connection);

    DeviceSetting* deviceSetting() override;
    DriverSetting* driverSetting() override;
    int retryCount() override;
    int stationNumber() override;

 private:
    DeviceSetting deviceSetting_;
    DriverSetting driverSetting_;
};

#endif
