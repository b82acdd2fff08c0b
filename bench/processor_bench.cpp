// What direct reads cost the processor, from controllers that answer at once and that take their
// time.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include "bench/bench_rig.h"
#include "bench/delay_relay.h"

namespace {

typedef std::chrono::steady_clock Clock;

const double kSeconds = 2;
const unsigned kPauseUs = 50000;  // 20 reads a second

/// Reads for some time, each after a pause; the processor time of this process.
void readFor(benchmark::State& state, unsigned pauseUs, const char* perRead, const char* share) {
    const Simulator simulator(dintTags(1));
    const DelayRelay relay(simulator.port(), state.range(0));
    LoopbackDevice device(relay.port());
    const std::unique_ptr<DriverInterface> driver = newDriver();
    const CommunicatorCommand command = dintCommand("T0");
    driver->read(&device, command);
    const double before = processorSeconds();
    const Clock::time_point start = Clock::now();
    double seconds = 0;
    int reads = 0;
    while (seconds < kSeconds) {
        driver->read(&device, command);
        ++reads;
        if (pauseUs > 0) {
            usleep(pauseUs);
        }
        seconds = std::chrono::duration<double>(Clock::now() - start).count();
    }
    const double used = processorSeconds() - before;
    state.counters[perRead] = used / reads * 1e6;
    state.counters[share] = 100 * used / seconds;
}

void processorTime(benchmark::State& state) {
    for (auto _ : state) {
        readFor(state, 0, "cpu_us", "busy_%");
        readFor(state, kPauseUs, "cpu_us_at_20", "cpu_%_at_20");
    }
}
void named(const char* name, long delayMicros) {
    benchmark::RegisterBenchmark(name, processorTime)
        ->Arg(delayMicros)
        ->Iterations(1)
        ->Repetitions(3)
        ->UseRealTime();
}

const bool registered = [] {
    named("read, controller 0 ms", 0);
    named("read, controller 0.2 ms", 200);
    named("read, controller 1 ms", 1000);
    named("read, controller 6 ms", 6000);
    return true;
}();

}  // namespace
