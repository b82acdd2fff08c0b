// Many drivers in one process: whether the sixty-fourth costs what the eighth does, and how long
// all take to stop.

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <unistd.h>

#include <QFile>
#include <QVariant>

#include "bench/bench_rig.h"

namespace {

typedef std::chrono::steady_clock Clock;

const int kSimulators = 8;
const int kFew = 8;
const int kMany = 64;
const int kTags = 10;
const int kMicros = 4000000;

/// Without what the heap has freed and keeps: in it the first drivers would cost nothing.
double residentKb() {
    malloc_trim(0);
    QFile file("/proc/self/statm");
    const bool opened = file.open(QIODevice::ReadOnly);
    const double pages = opened ? file.readAll().split(' ').value(1).toDouble() : 0;
    return pages * double(sysconf(_SC_PAGESIZE)) / 1024;
}

/// Drivers that each have a connection of their own to one of eight simulators, and ten tags to
/// poll.
class Fleet {
 public:
    Fleet() {
        for (int i = 0; i < kSimulators; ++i) {
            // A controller that takes its time, so that the load stays far from the machine's end.
            simulators.push_back(std::make_unique<Simulator>(dintTags(kTags) << "--delay"
                                                                             << "20"));
            devices.push_back(std::make_unique<LoopbackDevice>(simulators.back()->port()));
        }
        for (int tag = 0; tag < kTags; ++tag) {
            list << dintCommand(QString("T%1").arg(tag));
        }
    }

    /// Starts drivers until there are so many, all with values in their caches.
    void growTo(int count) {
        while (int(drivers.size()) < count) {
            LoopbackDevice* const device = devices[drivers.size() % kSimulators].get();
            drivers.push_back(anotherDriver());
            drivers.back()->setSessionCommand(list);
            waitUntilCached(drivers.back().get(), device, list.first());
        }
    }

    double passes() const {
        double all = 0;
        for (const auto& driver : drivers) {
            const QVariantMap counters = driver->getThisObject()->property("counters").toMap();
            all += counters.value("passes").toMap().value("count").toDouble();
        }
        return all;
    }

    double stopMs() {
        const Clock::time_point start = Clock::now();
        drivers.clear();
        return std::chrono::duration<double>(Clock::now() - start).count() * 1000;
    }

    int size() const { return int(drivers.size()); }

 private:
    std::vector<std::unique_ptr<Simulator>> simulators;
    std::vector<std::unique_ptr<LoopbackDevice>> devices;
    std::vector<std::unique_ptr<DriverInterface>> drivers;
    QList<CommunicatorCommand> list;
};

struct Work {
    double cpuPerPass = 0;       ///< microseconds
    double passesPerDriver = 0;  ///< a second
};

Work measure(const Fleet& fleet) {
    const double passesBefore = fleet.passes();
    const double cpuBefore = processorSeconds();
    const Clock::time_point start = Clock::now();
    usleep(kMicros);
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    const double cpu = processorSeconds() - cpuBefore;
    const double passes = fleet.passes() - passesBefore;
    Work work;
    work.cpuPerPass = cpu * 1e6 / passes;
    work.passesPerDriver = passes / seconds / fleet.size();
    return work;
}

void manyDrivers(benchmark::State& state) {
    for (auto _ : state) {
        Fleet fleet;
        fleet.growTo(1);  // what the first of them brings with it is nobody else's
        const double kbOne = residentKb();
        fleet.growTo(kFew);
        const double kbFew = residentKb();
        const Work few = measure(fleet);
        fleet.growTo(kMany);
        const double kbMany = residentKb();
        const Work many = measure(fleet);
        const double kbEachOfFew = (kbFew - kbOne) / (kFew - 1);
        const double kbEachOfMany = (kbMany - kbFew) / (kMany - kFew);
        state.counters["cpu_of_8_%"] = 100 * many.cpuPerPass / few.cpuPerPass;
        state.counters["passes_of_8_%"] = 100 * many.passesPerDriver / few.passesPerDriver;
        state.counters["kb_of_8_%"] = 100 * kbEachOfMany / kbEachOfFew;
        state.counters["cpu_us"] = many.cpuPerPass;
        state.counters["kb"] = kbEachOfMany;
        state.counters["stop_ms"] = fleet.stopMs();
    }
}
BENCHMARK(manyDrivers)->Name("64 drivers")->Iterations(1)->Repetitions(1)->UseRealTime();

}  // namespace
