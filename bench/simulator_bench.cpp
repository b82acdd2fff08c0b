// What the simulated controller can take: it must never be what the other figures measure.

#include <benchmark/benchmark.h>
#include <poll.h>

#include <memory>
#include <vector>

#include "bench/bench_rig.h"
#include "bench/raw_client.h"

namespace {

const int kClients = 16;

/// Every client has one read under way all the time; an iteration is one answer.
void simulatorLoad(benchmark::State& state) {
    Simulator simulator(dintTags(1));
    std::vector<std::unique_ptr<RawClient>> clients;
    std::vector<pollfd> sockets;
    for (int i = 0; i < kClients; ++i) {
        clients.push_back(std::make_unique<RawClient>(simulator.port(), quint16(i + 1)));
        sockets.push_back({clients.back()->socket(), POLLIN, 0});
        clients.back()->sendRead("T0");
    }
    while (state.KeepRunningBatch(kClients)) {
        int answered = 0;
        while (answered < kClients) {
            if (poll(sockets.data(), sockets.size(), 1000) < 1) {
                state.SkipWithError("no answer");
                return;
            }
            for (size_t i = 0; i < sockets.size(); ++i) {
                if (sockets[i].revents == 0) {
                    continue;
                }
                ++answered;
                if (!clients[i]->receiveRead() || !clients[i]->sendRead("T0")) {
                    state.SkipWithError("a read failed");
                    return;
                }
            }
        }
    }
    state.counters["per_second"] =
        benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(simulatorLoad)->Name("simulator")->UseRealTime();

}  // namespace
