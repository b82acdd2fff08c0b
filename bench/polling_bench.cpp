// The polling pass: how many controller reads a second against what one connection allows, what a
// driver's request waits while a pass runs, and what the worker costs while it idles or polls.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <QFile>
#include <QTemporaryDir>

#include "bench/bench_rig.h"
#include "bench/raw_client.h"

namespace {

typedef std::chrono::steady_clock Clock;

const int kTags = 100;

QList<CommunicatorCommand> hundredCommands() {
    QList<CommunicatorCommand> list;
    for (int i = 0; i < kTags; ++i) {
        list << dintCommand(QString("T%1").arg(i));
    }
    return list;
}

int linesOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().count('\n') : 0;
}

/// Round trip of a bare socket to this simulator, in seconds: the median of some hundred.
double roundTrip(quint16 port) {
    RawClient client(port);
    Latencies latencies;
    for (int i = 0; i < 500; ++i) {
        const Clock::time_point start = Clock::now();
        client.readTag("T0");
        latencies.add(Clock::now() - start);
    }
    return latencies.percentile(0.5) / 1e9;
}

void pollingPass(benchmark::State& state) {
    QTemporaryDir dir;
    const QString log = dir.filePath("requests");
    Simulator simulator(dintTags(kTags) << "--log" << log);
    const double trip = roundTrip(simulator.port());
    LoopbackDevice device(simulator.port());
    const std::unique_ptr<DriverInterface> driver = newDriver();
    driver->setSessionCommand(hundredCommands());
    waitUntilCached(driver.get(), &device, dintCommand("T0"));
    for (auto _ : state) {
        const int before = linesOf(log);
        const Clock::time_point start = Clock::now();
        usleep(3000000);
        const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
        const double rate = (linesOf(log) - before) / seconds;
        state.counters["reads_per_s"] = rate;
        state.counters["limit_per_s"] = 1 / (0.001 + trip);
        state.counters["of_limit_%"] = 100 * rate * (0.001 + trip);
    }
}
BENCHMARK(pollingPass)->Name("polling pass, 100 tags")->Iterations(1)->Repetitions(3)->UseRealTime();

/// A direct read while a pass over a hundred tags is running, beside one without a pass; the
/// controller takes 2 ms a request, as a real one takes some.
void requestDuringPass(benchmark::State& state) {
    Simulator simulator(dintTags(kTags + 1) << "--delay"
                                            << "2");
    LoopbackDevice device(simulator.port());
    const CommunicatorCommand direct = dintCommand(QString("T%1").arg(kTags));
    const auto median = [&](DriverInterface* driver) {
        Latencies latencies;
        for (int i = 0; i < 300; ++i) {
            const Clock::time_point start = Clock::now();
            driver->read(&device, direct);
            latencies.add(Clock::now() - start);
        }
        return latencies.percentile(0.5) / 1000;
    };
    for (auto _ : state) {
        double alone = 0;
        {
            const std::unique_ptr<DriverInterface> driver = newDriver();
            driver->read(&device, direct);
            alone = median(driver.get());
        }
        const std::unique_ptr<DriverInterface> driver = newDriver();
        driver->setSessionCommand(hundredCommands());
        waitUntilCached(driver.get(), &device, dintCommand("T0"));
        const double during = median(driver.get());
        state.counters["alone_us"] = alone;
        state.counters["during_us"] = during;
        state.counters["extra_reads"] = (during - alone) / alone;
    }
}
BENCHMARK(requestDuringPass)->Name("request during a pass")->Iterations(1)->Repetitions(3)->UseRealTime();

void processorUse(benchmark::State& state) {
    const bool polling = state.range(0) != 0;
    Simulator simulator(dintTags(kTags));
    LoopbackDevice device(simulator.port());
    const std::unique_ptr<DriverInterface> driver = newDriver();
    if (polling) {
        driver->setSessionCommand(hundredCommands());
        waitUntilCached(driver.get(), &device, dintCommand("T0"));
    } else {
        driver->read(&device, dintCommand("T0"));
    }
    for (auto _ : state) {
        const double before = processorSeconds();
        const Clock::time_point start = Clock::now();
        usleep(3000000);
        const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
        state.counters["cpu_%"] = 100 * (processorSeconds() - before) / seconds;
    }
}
BENCHMARK(processorUse)->Name("idle worker")->Arg(0)->Iterations(1)->Repetitions(3)->UseRealTime();
BENCHMARK(processorUse)->Name("worker polling 100 tags")->Arg(1)->Iterations(1)->Repetitions(3)->UseRealTime();

}  // namespace
