// Runs the benchmarks and sums them up in ratios: absolute times of a shared machine say little.

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <QCoreApplication>
#include <cmath>
#include <cstdio>
#include <map>
#include <string>

#include "bench/bench_rig.h"

namespace {

/// Says on standard error what has run and keeps the counters: of a single run as they are, of
/// repetitions the median.
class SummingReporter : public benchmark::BenchmarkReporter {
 public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred) {
                std::fprintf(stderr, "%s: %s\n", run.benchmark_name().c_str(),
                             run.error_message.c_str());
                anyFailed = true;
            }
            if (run.repetitions > 1 && run.aggregate_name != "median") {
                continue;
            }
            const std::string& name = run.run_name.function_name;
            std::fprintf(stderr, "  done: %s\n", name.c_str());
            for (const auto& counter : run.counters) {
                figures[name][counter.first] = counter.second.value;
            }
            figures[name]["mean_ns"] =
                run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit) * 1e9;
        }
    }

    bool failed() const { return anyFailed; }

    /// NaN when it was not measured.
    double figure(const char* name, const char* counter) const {
        const auto run = figures.find(name);
        if (run == figures.end() || run->second.count(counter) == 0) {
            return std::nan("");
        }
        return run->second.at(counter);
    }

    void printSummary() {
        const char kThreaded[] = "direct read, bare socket in a thread";
        std::printf("\n%-44s %12s   %s\n", "figure", "measured", "to reach");
        row("bare socket, median", figure("direct read", "floor_us"), "us", "");
        row("bare socket in a thread of its own, median", figure(kThreaded, "p50_us"), "us", "");
        row("direct read, median", figure("direct read", "p50_us"), "us", "");
        row("direct read / bare socket", figure("direct read", "of_floor"), "x", "<= 2");
        row("direct read / bare socket in a thread of its own",
            figure("direct read", "of_floor") / figure(kThreaded, "of_floor"), "x", "");
        row("direct read, recording / bare socket", figure("direct read, recording", "of_floor"),
            "x", "<= 2");
        row("write, median (1000 us of it by design)", figure("write", "p50_us"), "us", "");
        row("cached read, median", figure("cached read", "p50_us") * 1000, "ns", "< 500");
        row("pack a read line", figure("pack a read line", "mean_ns"), "ns", "");
        row("parse an answer line", figure("parse an answer line", "mean_ns"), "ns", "");
        row("heap growth over a million reads", figure("a million reads", "heap_growth_B"), "B",
            "0");
        row("the same, recording", figure("a million reads, recording", "heap_growth_B"), "B", "0");
        row("polling, recording / not",
            100 * figure("polling pass, recording", "of_limit_%") /
                figure("polling pass, 100 tags", "of_limit_%"),
            "%", ">= 98");
        row("polling pass, of its limit", figure("polling pass, 100 tags", "of_limit_%"), "%",
            ">= 95");
        row("the same, of a bare socket that pauses as well",
            figure("polling pass, 100 tags", "of_paused_%"), "%", "");
        row("extra wait in a pass, controller reads",
            figure("request during a pass", "extra_reads"), "", "<= 1");
        row("refresh of DINT[1000], of 1000 single reads",
            figure("refresh of a large array", "of_singles_%"), "%", "");
        row("processor use, idle worker", figure("idle worker", "cpu_%"), "%", "");
        row("processor use, polling 100 tags", figure("worker polling 100 tags", "cpu_%"), "%", "");
        row("CPU a pass, 64 drivers / 8 drivers", figure("64 drivers", "cpu_of_8_%"), "%",
            "<= 110");
        row("passes a driver, 64 / 8", figure("64 drivers", "passes_of_8_%"), "%", ">= 90");
        row("memory a driver, 9th to 64th / 2nd to 8th", figure("64 drivers", "kb_of_8_%"), "%",
            "<= 110");
        row("memory a driver", figure("64 drivers", "kb"), "KB", "");
        row("stop of 64 drivers, one by one", figure("64 drivers", "stop_ms"), "ms", "");
        for (const char* name : {"read, controller 0 ms", "read, controller 0.2 ms",
                                 "read, controller 1 ms", "read, controller 6 ms"}) {
            const std::string text = name;
            row((text + ": processor time").c_str(), figure(name, "cpu_us"), "us", "");
            row((text + ", 20 a second").c_str(), figure(name, "cpu_%_at_20"), "%", "< 5");
        }
        row("simulator, 16 connections, requests/s", figure("simulator", "per_second"), "",
            ">= 20000");
    }

 private:
    static void row(const char* what, double value, const char* unit, const char* reach) {
        if (std::isnan(value)) {
            return;  // not measured in this run
        }
        std::printf("%-44s %9.2f %-2s   %s\n", what, value, unit, reach);
    }

    std::map<std::string, std::map<std::string, double>> figures;
    bool anyFailed = false;
};

}  // namespace

int main(int argc, char** argv) {
    // One heap for all threads: its figures are then those of the worker as well.
    mallopt(M_ARENA_MAX, 1);
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    makeProject();
    SummingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printSummary();
    return reporter.failed() ? 1 : 0;
}
