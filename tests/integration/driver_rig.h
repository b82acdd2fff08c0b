#ifndef TESTS_INTEGRATION_DRIVER_RIG_H
#define TESTS_INTEGRATION_DRIVER_RIG_H

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

#include "common/device_setting.h"
#include "common/driver_setting.h"
#include "runtime/abstract_device_interface.h"
#include "runtime/driver_interface.h"
#include "support/loopback.h"
#include "support/simulator_process.h"

/// A simulated controller that has started when it is constructed, and questions to its log.
class Controller : public SimulatorProcess {
 public:
    explicit Controller(const QStringList& options, quint16 port = 0);

    /// Every Read Tag and Write Tag so far.
    QList<QJsonObject> requests() const;
    /// How many of them named the tag as written here, e.g. LEVELS[3].
    int countRequests(const QString& tag) const;
    /// How many Forward Opens succeeded.
    int connectionsOpened() const;
    QSet<QString> tagsRead() const;

    static bool isWrite(const QJsonObject& request);
    /// The request as it came, from the encapsulation header on.
    static QByteArray rawRequest(const QJsonObject& request);
};

/// The runtime's device object: one controller on loopback.
class TestDevice : public AbstractDeviceInterface {
 public:
    explicit TestDevice(quint16 port, int timeoutMs = 3000, int retry = 0);
    DeviceSetting* deviceSetting() override { return &device; }
    DriverSetting* driverSetting() override { return &driver; }
    int retryCount() override { return retries; }
    int stationNumber() override { return 0; }

    DeviceSetting device;
    DriverSetting driver;
    int retries;
};

/// A new driver out of the real plugin file, by its CreateDriver.
std::unique_ptr<DriverInterface> createDriver();

/// The path of the plugin file under test.
QString pluginFile();

CommunicatorCommand dint(const QString& name);
/// A read of a DINT tag; fails the test (and gives -1) when it does not succeed.
int readDint(DriverInterface* driver, AbstractDeviceInterface* device, const QString& name);
QByteArray dintBytes(int value);

/// Calls `done` until it is true; false after `ms`.
bool waitFor(const std::function<bool()>& done, int ms = 10000);

#endif
