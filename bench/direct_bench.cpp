// Reads and writes of one tag: the floor, the driver's direct read and write, the cached read, and
// what a million reads leave on the heap.

#include <benchmark/benchmark.h>

#include <sys/socket.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <thread>

#include "bench/bench_rig.h"
#include "bench/raw_client.h"

namespace {

typedef std::chrono::steady_clock Clock;

/// The bare socket in a thread of its own, to which a socket pair leads: two hops, as the driver's
/// worker needs them, and no more work than that.
class ThreadedRawClient {
 public:
    explicit ThreadedRawClient(quint16 port) : client(port, 2), ends{-1, -1} {
        if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) {
            std::perror("socketpair");
            std::exit(1);
        }
        thread = std::thread([this] {
            char request = 0;
            while (recv(ends[1], &request, 1, 0) == 1) {
                const char answer = client.readTag("T0") ? 1 : 0;
                send(ends[1], &answer, 1, MSG_NOSIGNAL);
            }
        });
    }
    ~ThreadedRawClient() {
        shutdown(ends[0], SHUT_RDWR);
        thread.join();
        close(ends[0]);
        close(ends[1]);
    }
    ThreadedRawClient(const ThreadedRawClient&) = delete;
    ThreadedRawClient& operator=(const ThreadedRawClient&) = delete;

    bool readTag() {
        char byte = 0;
        return send(ends[0], &byte, 1, MSG_NOSIGNAL) == 1 && recv(ends[0], &byte, 1, 0) == 1 &&
               byte == 1;
    }

 private:
    RawClient client;
    int ends[2];
    std::thread thread;
};

/// Reads of a bare socket and other operations, a block of each in turn and all against one
/// simulator, so that where the scheduler has put whom moves both alike.
template <typename Operation>
void measureBesideFloor(benchmark::State& state, quint16 port, Operation operation) {
    RawClient client(port);
    const int kBlock = 50;
    Latencies floor;
    Latencies latencies;
    while (state.KeepRunningBatch(kBlock)) {
        bool ok = true;
        for (int i = 0; i < kBlock; ++i) {
            floor.time([&] { ok = client.readTag("T0") && ok; });
        }
        for (int i = 0; i < kBlock; ++i) {
            latencies.time([&] { ok = operation() && ok; });
        }
        if (!ok) {
            state.SkipWithError("the operation failed");
            break;
        }
    }
    state.counters["floor_us"] = floor.percentile(0.5) / 1000;
    state.counters["p50_us"] = latencies.percentile(0.5) / 1000;
    state.counters["of_floor"] = latencies.percentile(0.5) / floor.percentile(0.5);
}

/// The same for operations of a driver.
template <typename Operation>
void measureDriver(benchmark::State& state, Operation operation, bool recording = false) {
    QTemporaryDir dir;
    const RecorderIn recorder(recording ? dir.path() : QString());
    Simulator simulator(dintTags(1));
    LoopbackDevice device(simulator.port());
    const std::unique_ptr<DriverInterface> driver = newDriver();
    const CommunicatorCommand command = dintCommand("T0");
    driver->read(&device, command);
    measureBesideFloor(state, simulator.port(),
                       [&] { return operation(driver.get(), &device, command); });
}

void threadedRead(benchmark::State& state) {
    Simulator simulator(dintTags(1));
    ThreadedRawClient threaded(simulator.port());
    measureBesideFloor(state, simulator.port(), [&threaded] { return threaded.readTag(); });
}
BENCHMARK(threadedRead)->Name("direct read, bare socket in a thread")->UseRealTime();

void directRead(benchmark::State& state) {
    measureDriver(state, [](DriverInterface* driver, AbstractDeviceInterface* device,
                            const CommunicatorCommand& command) {
        return driver->read(device, command).size() == 4;
    });
}
BENCHMARK(directRead)->Name("direct read")->UseRealTime();

void recordedRead(benchmark::State& state) {
    measureDriver(
        state,
        [](DriverInterface* driver, AbstractDeviceInterface* device,
           const CommunicatorCommand& command) {
            return driver->read(device, command).size() == 4;
        },
        true);
}
BENCHMARK(recordedRead)->Name("direct read, recording")->UseRealTime();

void directWrite(benchmark::State& state) {
    const QByteArray value = QByteArray::fromHex("2a000000");
    measureDriver(state, [&value](DriverInterface* driver, AbstractDeviceInterface* device,
                                  const CommunicatorCommand& command) {
        return driver->write(device, command, value);
    });
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
    state.counters["p50_us"] = latencies.percentile(0.5) / 1000;
}
BENCHMARK(cachedRead)->Name("cached read")->UseRealTime();

/// 900,000 cached and 100,000 direct reads a round. The heap counts what a thread keeps for its
/// next allocations as handed out, and that comes and goes once; a leak shows in every round.
void millionReads(benchmark::State& state) {
    QTemporaryDir dir;
    const RecorderIn recorder(state.range(0) != 0 ? dir.path() : QString());
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
        double least = std::numeric_limits<double>::max();
        for (int i = 0; i < 3; ++i) {
            const size_t before = heapInUse();
            round(100000);
            least = std::min(least, std::abs(double(heapInUse()) - double(before)));
        }
        state.counters["heap_growth_B"] = least;
    }
}
BENCHMARK(millionReads)
    ->Name("a million reads")
    ->Arg(0)
    ->Iterations(1)
    ->Repetitions(1)
    ->Unit(benchmark::kSecond)
    ->UseRealTime();

BENCHMARK(millionReads)
    ->Name("a million reads, recording")
    ->Arg(1)
    ->Iterations(1)
    ->Repetitions(1)
    ->Unit(benchmark::kSecond)
    ->UseRealTime();

}  // namespace
