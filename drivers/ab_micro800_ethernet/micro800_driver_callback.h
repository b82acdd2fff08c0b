#ifndef DRIVERS_AB_MICRO800_ETHERNET_MICRO800_DRIVER_CALLBACK_H
#define DRIVERS_AB_MICRO800_ETHERNET_MICRO800_DRIVER_CALLBACK_H

#include <QByteArray>
#include <QString>
#include <QStringList>

#include "eip/cip_plc_driver_callback.h"

/// A write that the driver asks for.
class LgxMicro800WriteCmd {
 public:
    LgxMicro800WriteCmd() : type(_LGX_Data_Type(0)) {}

    QString name;
    _LGX_Data_Type type;
    QByteArray data;  ///< value bytes, little-endian
};

/// The receiver of a Micro800 worker: adds the write command. Threads as CipPlcDriverCallback.
class Micro800DriverCallback : public CipPlcDriverCallback {
 public:
    Micro800DriverCallback();
    virtual ~Micro800DriverCallback();

    virtual void serverPipeOnReceiveDriverWriteCmd(int pipe);
    virtual bool hasDriverWriteCmd();
    virtual void clearDriverWriteCmd();

    /// The pending write; it stays pending. `ok` (may be null) is false when there is none or a
    /// field does not parse; the result is then empty and the references are untouched.
    LgxMicro800WriteCmd driverWriteCmd(int& pipe, unsigned short& tid, bool* ok);

 private:
    QStringList pendingWrite;  // worker thread only
};

#endif
