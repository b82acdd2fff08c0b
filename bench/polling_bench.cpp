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

/// Lines of the simulator's log that have this text.
int linesOf(const QString& path, const char* text = "\n") {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().count(text) : 0;
}

/// Round trip of a bare socket to this simulator, in seconds: the median of some hundred, with a
/// pause before each one or without.
double roundTrip(quint16 port, unsigned pauseMicros) {
    RawClient client(port);
    Latencies latencies;
    for (int i = 0; i < 500; ++i) {
        if (pauseMicros > 0) {
            usleep(pauseMicros);
        }
        const Clock::time_point start = Clock::now();
        client.readTag("T0");
        latencies.add(Clock::now() - start);
    }
    return latencies.percentile(0.5) / 1e9;
}

void pollingPass(benchmark::State& state) {
    QTemporaryDir dir;
    const RecorderIn recorder(state.range(0) != 0 ? dir.filePath("record") : QString());
    const QString log = dir.filePath("requests");
    Simulator simulator(dintTags(kTags) << "--log" << log);
    const double trip = roundTrip(simulator.port(), 0);
    const double pausedTrip = roundTrip(simulator.port(), 1000);
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
        state.counters["of_paused_%"] = 100 * rate * (0.001 + pausedTrip);
    }
}
BENCHMARK(pollingPass)
    ->Name("polling pass, 100 tags")
    ->Arg(0)
    ->Iterations(1)
    ->Repetitions(3)
    ->UseRealTime();

BENCHMARK(pollingPass)
    ->Name("polling pass, recording")
    ->Arg(1)
    ->Iterations(1)
    ->Repetitions(3)
    ->UseRealTime();

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
BENCHMARK(requestDuringPass)
    ->Name("request during a pass")
    ->Iterations(1)
    ->Repetitions(3)
    ->UseRealTime();

const int kLargeArray = 1000;

/// Read Tags a second while the session polls these; the simulator keeps to 504 bytes.
double readTagsPerSecond(const QStringList& options, const QList<CommunicatorCommand>& session) {
    const char readTag[] = "\"service\":\"ReadTag\"";
    QTemporaryDir dir;
    const QString log = dir.filePath("requests");
    Simulator simulator(QStringList(options) << "--connection-size"
                                             << "504"
                                             << "--log" << log);
    LoopbackDevice device(simulator.port());
    const std::unique_ptr<DriverInterface> driver = newDriver();
    driver->setSessionCommand(session);
    waitUntilCached(driver.get(), &device, session.first());
    const int before = linesOf(log, readTag);
    const Clock::time_point start = Clock::now();
    usleep(3000000);
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    return (linesOf(log, readTag) - before) / seconds;
}

/// A pass over one declared array, which begins with one Read Tag and goes on in fragments, beside
/// as many reads of single tags (of which no session list contains so many).
void refreshOfLargeArray(benchmark::State& state) {
    const QString range = QString("[0..%1]").arg(kLargeArray - 1);
    for (auto _ : state) {
        const double singles = kLargeArray / readTagsPerSecond(dintTags(kTags), hundredCommands());
        makeProject(QStringList("DINT0:BIG" + range));
        const double array =
            1 / readTagsPerSecond({"--tag", "BIG:DINT" + range}, {dintCommand("BIG[0]")});
        makeProject();
        state.counters["array_ms"] = array * 1000;
        state.counters["singles_ms"] = singles * 1000;
        state.counters["of_singles_%"] = 100 * array / singles;
    }
}
BENCHMARK(refreshOfLargeArray)
    ->Name("refresh of a large array")
    ->Iterations(1)
    ->Repetitions(3)
    ->UseRealTime();

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
BENCHMARK(processorUse)
    ->Name("worker polling 100 tags")
    ->Arg(1)
    ->Iterations(1)
    ->Repetitions(3)
    ->UseRealTime();

}  // namespace
