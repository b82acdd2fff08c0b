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
    quint16 port() const { return m_port; }

  private:
    QProcess m_process;
    quint16 m_port;
};

/// The device object of a controller on loopback.
class LoopbackDevice : public AbstractDeviceInterface {
  public:
    explicit LoopbackDevice(quint16 port);
    DeviceSetting* deviceSetting() override { return &m_device; }
    DriverSetting* driverSetting() override { return &m_driver; }
    int retryCount() override { return 0; }
    int stationNumber() override { return 0; }

  private:
    DeviceSetting m_device;
    DriverSetting m_driver;
};

/// A new driver out of the plugin file. Ends the program when there is none.
std::unique_ptr<DriverInterface> newDriver();

/// An empty project in the application directory, so that the driver's first read works.
void makeEmptyProject();

/// The tag options of a simulator with `count` DINT tags T0, T1, ...
QStringList dintTags(int count);

CommunicatorCommand dintCommand(const QString& name);

/// Waits until reads of the command come from the cache; ends the program when they do not.
void waitUntilCached(DriverInterface* driver, AbstractDeviceInterface* device,
                     const CommunicatorCommand& command);

/// Single latencies, for the figures that a mean would hide.
class Latencies {
  public:
    void add(std::chrono::nanoseconds value) { m_values.push_back(double(value.count())); }
    template <typename Operation>
    void time(Operation operation) {
        const auto start = std::chrono::steady_clock::now();
        operation();
        add(std::chrono::steady_clock::now() - start);
    }
    /// In nanoseconds; `part` from 0 to 1.
    double percentile(double part) {
        if (m_values.empty()) {
            return 0;
        }
        const size_t at = std::min(m_values.size() - 1, size_t(part * double(m_values.size())));
        std::nth_element(m_values.begin(), m_values.begin() + long(at), m_values.end());
        return m_values[at];
    }

  private:
    std::vector<double> m_values;
};

/// Processor time of this process so far, in seconds.
double processorSeconds();
/// Bytes that the heap has handed out.
size_t heapInUse();

#endif
