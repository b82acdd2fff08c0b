#include "apps/micro800/plugin/driver_session.h"

#include <QElapsedTimer>
#include <QObject>

#include "apps/micro800/base/signals.h"

namespace {

double microsecondsOf(const QElapsedTimer& timer) {
    return static_cast<double>(timer.nsecsElapsed()) / 1000.0;
}

}  // namespace

DriverSession::DriverSession(const Connection& connection) : device(connection) {}

bool DriverSession::open(const QString& pluginFile, QString* problem) {
    if (!(another ? plugin.loadAnother(pluginFile, problem) : plugin.load(pluginFile, problem))) {
        return false;
    }
    if (plugin.driver()->initialize(&device)) {
        return true;
    }
    *problem = QStringLiteral("plugin %1: the driver cannot be initialised").arg(pluginFile);
    return false;
}

int DriverSession::blockSize() {
    return plugin.driver()->getBlockAccessSize();
}

bool DriverSession::watch(const QList<CommunicatorCommand>& commands) {
    if (!plugin.driver()->isSupportSessionCommand()) {
        return false;
    }
    const SignalsHeld held;
    plugin.driver()->setSessionCommand(commands);
    return true;
}

QVariantMap DriverSession::counters() const {
    return plugin.driver()->getThisObject()->property("counters").toMap();
}

DriverResult DriverSession::read(const CommunicatorCommand& command) {
    DriverInterface* driver = plugin.driver();
    DriverResult result;
    const SignalsHeld held;
    QElapsedTimer timer;
    timer.start();
    result.bytes = driver->read(&device, command);
    result.microseconds = microsecondsOf(timer);
    if (driver->hasError()) {
        result.bytes.clear();
        result.error = driver->getLastError();
    } else if (result.bytes.isEmpty()) {
        // The driver reports nothing when its worker's answer does not come in time.
        result.error =
            QStringLiteral("read %1> no answer in time (waited %2 ms)")
                .arg(command.address, QString::number(qRound(result.microseconds / 1000)));
    }
    result.ok = result.error.isEmpty() && !result.bytes.isEmpty();
    return result;
}

DriverResult DriverSession::write(const CommunicatorCommand& command, const QByteArray& value) {
    DriverInterface* driver = plugin.driver();
    DriverResult result;
    const SignalsHeld held;
    QElapsedTimer timer;
    timer.start();
    result.ok = driver->write(&device, command, value);
    result.microseconds = microsecondsOf(timer);
    if (result.ok) {
        return result;
    }
    if (driver->hasError()) {
        result.error = driver->getLastError();
    } else {
        result.error =
            QStringLiteral(
                "write %1> no answer in time (waited %2 ms); the controller "
                "may or may not have taken the value")
                .arg(command.address, QString::number(qRound(result.microseconds / 1000)));
    }
    return result;
}
