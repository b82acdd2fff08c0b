// Building and taking apart the lines between driver and worker.

#include <benchmark/benchmark.h>

#include "eip/pipe_protocol.h"

namespace {

const int kLineSize = 4096;

void packRead(benchmark::State& state) {
    char line[kLineSize];
    const QString name("LEVELS[12]");
    for (auto _ : state) {
        benchmark::DoNotOptimize(LgxDriverPackReadCmd(line, kLineSize, 0x1A2B, name, 1));
    }
}
BENCHMARK(packRead)->Name("pack a read line");

void parseAnswer(benchmark::State& state) {
    char line[kLineSize] = "";
    LgxDriverPackReadRsp(line, kLineSize, 0x1A2B, QByteArray::fromHex("2a000000"));
    QString error;
    for (auto _ : state) {
        benchmark::DoNotOptimize(LgxDriverReadRspToByteArray(line, 0x1A2B, error));
    }
}
BENCHMARK(parseAnswer)->Name("parse an answer line");

}  // namespace
