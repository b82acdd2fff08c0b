#ifndef RUNTIME_ABSTRACT_DEVICE_INTERFACE_H
#define RUNTIME_ABSTRACT_DEVICE_INTERFACE_H

struct DeviceSetting;
struct DriverSetting;

/// The runtime's device object, as far as a driver needs it. The runtime implements and owns it;
/// a driver only calls it, on the thread that called the driver.
///
/// The slot order below is part of the binary contract.
class AbstractDeviceInterface {
 public:
    virtual ~AbstractDeviceInterface() {}

    /// Where the device is: addresses, ports, link number. Owned by the runtime, never null.
    virtual DeviceSetting* deviceSetting() = 0;
    /// How to talk to it: time-out and retries. Owned by the runtime, never null.
    virtual DriverSetting* driverSetting() = 0;
    /// How many times a failed read is repeated after the first attempt.
    virtual int retryCount() = 0;
    /// The device's station number; drivers use the low byte.
    virtual int stationNumber() = 0;
};

#endif
