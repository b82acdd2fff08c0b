#ifndef APPS_MICRO800_PLUGIN_DEVICE_H
#define APPS_MICRO800_PLUGIN_DEVICE_H

#include "apps/micro800/base/connection.h"
#include "common/device_setting.h"
#include "common/driver_setting.h"
#include "runtime/abstract_device_interface.h"

/// The device object that the driver asks for its settings. One endpoint, given at construction.
class HostDevice : public AbstractDeviceInterface {
 public:
    explicit HostDevice(const Connection& connection);

    DeviceSetting* deviceSetting() override;
    DriverSetting* driverSetting() override;
    int retryCount() override;
    int stationNumber() override;

 private:
    DeviceSetting endpoint;
    DriverSetting manners;
};

#endif
