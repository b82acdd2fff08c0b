#ifndef APPS_MICRO800_PLUGIN_DRIVER_SESSION_H
#define APPS_MICRO800_PLUGIN_DRIVER_SESSION_H

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariantMap>

#include "apps/micro800/plugin/device.h"
#include "apps/micro800/plugin/plugin.h"
#include "runtime/communicator_command.h"

/// What one call of the driver came to.
struct DriverResult {
    bool ok = false;
    QByteArray bytes;  ///< of a read that went well
    QString error;     ///< for the operator, when not ok
    double microseconds = 0;
};

/// A read that took less than this was answered from the driver's cache: the way to its worker
/// thread and back alone takes longer, not to speak of the controller.
const double kCacheLimitMicroseconds = 50;

/// One loaded driver and the device that it talks to. Used on one thread. The destructor waits
/// for the driver's worker thread: at most one request to the controller with its time-outs.
class DriverSession {
 public:
    explicit DriverSession(const Connection& connection);
    /// Before open(): the session gets a driver of its own and not the one of the plugin file,
    /// which another session uses.
    void setAnother(bool on) { another = on; }

    /// Loads the plugin file and initialises the driver. Nothing is sent yet.
    bool open(const QString& pluginFile, QString* problem);

    /// Bytes that one command may ask for.
    int blockSize();
    /// Hands over the commands that the driver is to keep fresh. False when it keeps none.
    bool watch(const QList<CommunicatorCommand>& commands);

    DriverResult read(const CommunicatorCommand& command);
    /// Called once for one write; a failed one is not repeated.
    DriverResult write(const CommunicatorCommand& command, const QByteArray& value);

    /// What the driver has counted so far (docs/architecture.md); empty when it counts nothing.
    QVariantMap counters() const;

 private:
    HostDevice device;
    bool another = false;
    Plugin plugin;
};

#endif
