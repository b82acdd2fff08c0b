// Reads and writes of one tag: the floor, the driver's direct read and write, the cached read, and
// what a million reads leave on the heap.

#include <benchmark/benchmark.h>

#include "bench/bench_rig.h"
#include "bench/raw_client.h"

namespace {

typedef std::chrono::steady_clock Clock;

void report(benchmark::State& state, Latencies& latencies) {
    state.counters["p50_us"] = latencies.percentile(0.5) / 1000;
    state.counters["p99_us"] = latencies.percentile(0.99) / 1000;
}

/// Runs the operation in every iteration and records each one's time.
template <typename Operation>
void measureEach(benchmark::State& state, Operation operation) {
    Latencies latencies;
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        const bool ok = operation();
        latencies.add(Clock::now() - start);
        if (!ok) {
            state.SkipWithError("the operation failed");
            break;
        }
    }
    report(state, latencies);
}

void floorRead(benchmark::State& state) {
    Simulator simulator(dintTags(1));
    RawClient client(simulator.port());
    measureEach(state, [&] { return client.readTag("T0"); });
}
BENCHMARK(floorRead)->Name("floor: bare socket")->UseRealTime();

void directRead(benchmark::State& state) {
    Simulator simulator(dintTags(1));
    LoopbackDevice device(simulator.port());
    const std::unique_ptr<DriverInterface> driver = newDriver();
    const CommunicatorCommand command = dintCommand("T0");
    driver->read(&device, command);
    measureEach(state, [&] { return driver->read(&device, command).size() == 4; });
}
BENCHMARK(directRead)->Name("direct read")->UseRealTime();

void directWrite(benchmark::State& state) {
    Simulator simulator(dintTags(1));
    LoopbackDevice device(simulator.port());
    const std::unique_ptr<DriverInterface> driver = newDriver();
    const CommunicatorCommand command = dintCommand("T0");
    driver->read(&device, command);
    const QByteArray value = QByteArray::fromHex("2a000000");
    measureEach(state, [&] { return driver->write(&device, command, value); });
}
BENCHMARK(directWrite)->Name("write")->UseRealTime();

/// A batch a sample: the clock itself would be a part of so short a time.
void cachedRead(benchmark::State& state) {
    const int kBatch = 100;
    Simulator simulator(dintTags(1));
    LoopbackDevice device(simulator.port());
    const std::unique_ptr<DriverInterface> driver = newDriver();
    const CommunicatorCommand command = dintCommand("T0");
    driver->setSessionCommand(QList<CommunicatorCommand>() << command);
    waitUntilCached(driver.get(), &device, command);
    Latencies latencies;
    while (state.KeepRunningBatch(kBatch)) {
        const Clock::time_point start = Clock::now();
        for (int i = 0; i < kBatch; ++i) {
            benchmark::DoNotOptimize(driver->read(&device, command));
        }
        latencies.add((Clock::now() - start) / kBatch);
    }
    report(state, latencies);
}
BENCHMARK(cachedRead)->Name("cached read")->UseRealTime();

/// 900,000 cached and 100,000 direct reads in one run.
void millionReads(benchmark::State& state) {
    Simulator simulator(dintTags(2));
    LoopbackDevice device(simulator.port());
    const std::unique_ptr<DriverInterface> driver = newDriver();
    const CommunicatorCommand cached = dintCommand("T0");
    const CommunicatorCommand direct = dintCommand("T1");
    driver->setSessionCommand(QList<CommunicatorCommand>() << cached);
    waitUntilCached(driver.get(), &device, cached);
    const auto round = [&](int rounds) {
        for (int i = 0; i < rounds; ++i) {
            for (int k = 0; k < 9; ++k) {
                benchmark::DoNotOptimize(driver->read(&device, cached));
            }
            benchmark::DoNotOptimize(driver->read(&device, direct));
        }
    };
    // What the first reads leave in the allocator's thread caches is no growth.
    round(20000);
    for (auto _ : state) {
        const size_t before = heapInUse();
        round(100000);
        state.counters["heap_growth_B"] = double(heapInUse()) - double(before);
    }
}
BENCHMARK(millionReads)
    ->Name("a million reads")
    ->Iterations(1)
    ->Repetitions(1)
    ->Unit(benchmark::kSecond)
    ->UseRealTime();

}  // namespace
