#ifndef RUNTIME_DRIVER_INTERFACE_H
#define RUNTIME_DRIVER_INTERFACE_H

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QtPlugin>

#include "runtime/communicator_command.h"

class AbstractDeviceInterface;
struct DeviceSetting;
struct DriverSetting;

/// What the runtime asks of a communication driver.
///
/// The runtime loads a driver as a Qt plugin, calls one operation at a time from one thread and
/// deletes the object through this interface. No operation throws. The slot order is part of the
/// binary contract; `vender` is the contract's own spelling.
class DriverInterface {
 public:
    virtual ~DriverInterface() {}

    virtual int totalSize() = 0;
    /// Sets one tag. Returns true when the controller confirmed the value.
    virtual bool write(AbstractDeviceInterface* device, const CommunicatorCommand& command,
                       const QByteArray& value) = 0;
    /// Gets one tag: command.getDataSize() bytes, little-endian; empty on failure.
    virtual QByteArray read(AbstractDeviceInterface* device,
                            const CommunicatorCommand& command) = 0;
    virtual bool initialize(AbstractDeviceInterface* device) = 0;
    virtual bool validation(const QString& text) = 0;
    virtual QString name() { return QLatin1String("Not Assigned"); }
    virtual QString vender() { return QLatin1String("Not Assigned"); }
    virtual QString getVersionNumber() { return QLatin1String("Not Assigned"); }
    /// A new record that the caller owns.
    virtual DeviceSetting* getDefaultSerialDeviceSetting() = 0;
    /// A new record that the caller owns.
    virtual DriverSetting* getDefaultDriverSetting() = 0;
    virtual QString getStringBasedDefaultDriverSetting() {
        return QLatin1String("RS232,9600,EVEN,7,1");
    }
    virtual int supportedCommunicationFlags() = 0;
    virtual void setDebugMode(bool on) = 0;
    /// Largest block in bytes that one command may ask for.
    virtual int getBlockAccessSize() = 0;
    virtual int getBitBlockAccessSize() = 0;
    /// Whether the last read or write failed. To be asked before getLastError().
    virtual bool hasError() = 0;
    /// Text of the last failure, for the operator; kept after later successes.
    virtual QString getLastError() = 0;
    virtual QObject* getThisObject() = 0;
    virtual bool isSupportSessionCommand() { return false; }
    /// The commands that the driver is to keep fresh by itself.
    virtual void setSessionCommand(QList<CommunicatorCommand>) {}
    virtual void clearSessionCommand() {}
    /// The user changed the port's settings; the driver keeps no pointer to the record.
    virtual bool deviceSettingChanged(const DeviceSetting*) { return true; }
    virtual bool isConnected(AbstractDeviceInterface*) { return true; }
};

Q_DECLARE_INTERFACE(DriverInterface, "com.tarvelon.drivers.DriverInterface/1.1")

#endif
