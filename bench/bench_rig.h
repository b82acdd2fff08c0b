#ifndef BENCH_BENCH_RIG_H
#define BENCH_BENCH_RIG_H

#include <QList>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <algorithm>
#include <chrono>
#include <memory>
#include <vector>

#include "common/device_setting.h"
#include "common/driver_setting.h"
#include "runtime/abstract_device_interface.h"
#include "runtime/driver_interface.h"

/// A simulated controller in a process of its own, stopped with the object.
class Simulator {
 public:
    explicit Simulator(const QStringList& options);
    ~Simulator();
    quint16 port() const { return printedPort; }

 private:
    QProcess process;
    quint16 printedPort;
};

/// The device object of a controller on loopback.
class LoopbackDevice : public AbstractDeviceInterface {
 public:
    explicit LoopbackDevice(quint16 port);
    DeviceSetting* deviceSetting() override { return &device; }
    DriverSetting* driverSetting() override { return &driver; }
    int retryCount() override { return 0; }
    int stationNumber() override { return 0; }

 private:
    DeviceSetting device;
    DriverSetting driver;
};

/// A new driver out of the plugin file. Ends the program when there is none.
std::unique_ptr<DriverInterface> newDriver();
/// The same by CreateDriver, which makes one beside those that there are.
std::unique_ptr<DriverInterface> anotherDriver();

/// While it lives, new drivers record into this folder; an empty one: they do not record.
class RecorderIn {
 public:
    explicit RecorderIn(const QString& folder);
    ~RecorderIn();
    RecorderIn(const RecorderIn&) = delete;
    RecorderIn& operator=(const RecorderIn&) = delete;
};

/// A project in the application directory, so that the driver's first read works. It declares these
/// arrays, each as "DINT0:A[0..9]".
void makeProject(const QStringList& arrays = QStringList());

/// The tag options of a simulator with `count` DINT tags T0, T1, ...
QStringList dintTags(int count);

CommunicatorCommand dintCommand(const QString& name);

/// Waits until reads of the command come from the cache; ends the program when they do not.
void waitUntilCached(DriverInterface* driver, AbstractDeviceInterface* device,
                     const CommunicatorCommand& command);

/// Single latencies, for the figures that a mean would hide.
class Latencies {
 public:
    void add(std::chrono::nanoseconds value) { values.push_back(double(value.count())); }
    template <typename Operation>
    void time(Operation operation) {
        const auto start = std::chrono::steady_clock::now();
        operation();
        add(std::chrono::steady_clock::now() - start);
    }
    /// In nanoseconds; `part` from 0 to 1.
    double percentile(double part) {
        if (values.empty()) {
            return 0;
        }
        const size_t at = std::min(values.size() - 1, size_t(part * double(values.size())));
        std::nth_element(values.begin(), values.begin() + long(at), values.end());
        return values[at];
    }

 private:
    std::vector<double> values;
};

/// Processor time of this process so far, in seconds.
double processorSeconds();
/// Bytes that the heap has handed out.
size_t heapInUse();

#endif
