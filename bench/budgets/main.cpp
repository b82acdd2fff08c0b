// What an access costs, in figures that do not depend on how busy the machine is, and what it may
// cost.
//
//   budgets    prints the table; exit code 1 when a figure is above its limit

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <array>
#include <cmath>
#include <cstdio>

#include "bench/bench_rig.h"
#include "bench/budgets/accesses.h"
#include "bench/budgets/instructions.h"
#include "bench/budgets/system_calls.h"

namespace {

const int kTags = 10;
const int kProbeMs = 60000;

enum Figure { kSystemCalls, kClockReads, kAllocations, kInstructions, kFigures };
const char* const kFigureNames[kFigures] = {"system calls", "clock reads", "allocations",
                                            "instructions"};
typedef std::array<double, kFigures> Figures;

/// Counts of calls are exact. Instructions are some percent more than what was measured: the C
/// library chooses its functions by the processor.
const Figures kLimits[kAccesses] = {
    {380, 16, 1100, 1500000},  // much of it is the loader's, Qt's and SQLite's
    {11, 10, 21, 23200},      {12, 11, 25, 28700}, {0, 0, 0, 1230}, {5, 6.5, 12.5, 12100},
};

[[noreturn]] void giveUp(const QString& problem) {
    std::fprintf(stderr, "budgets: %s\n", qPrintable(problem));
    std::exit(2);
}

QString besideThis(const char* name) {
    return QDir(QCoreApplication::applicationDirPath()).filePath(name);
}

/// The numbers after a name in the output of a probe; ends the program when they are not there.
QList<double> printedNumbers(const QByteArray& output, Access access) {
    for (const QByteArray& line : output.split('\n')) {
        const QList<QByteArray> fields = line.split('\t');
        if (fields.size() == 4 && fields.first() == kAccessNames[access]) {
            return {fields[1].toDouble(), fields[2].toDouble(), fields[3].toDouble()};
        }
    }
    giveUp(QString("the probe says nothing of a %1").arg(kAccessNames[access]));
}

void measureSystemCalls(quint16 port, std::array<Figures, kAccesses>* measured) {
    std::string problem;
    const std::vector<SystemCall> calls =
        traceProgram({besideThis("budget_probe").toStdString(), std::to_string(port)}, &problem);
    if (!problem.empty()) {
        giveUp(QString::fromStdString(problem));
    }
    for (int access = 0; access < kAccesses; ++access) {
        (*measured)[access][kSystemCalls] = callsOf(Access(access), calls);
    }
}

void measureCounts(quint16 port, std::array<Figures, kAccesses>* measured) {
    QProcess probe;
    probe.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    probe.start(besideThis("budget_probe_counting"), {QString::number(port)});
    if (!probe.waitForFinished(kProbeMs) || probe.exitCode() != 0) {
        giveUp("the counting probe failed: " + probe.errorString());
    }
    const QByteArray output = probe.readAllStandardOutput();
    for (int access = 0; access < kAccesses; ++access) {
        const QList<double> numbers = printedNumbers(output, Access(access));
        (*measured)[access][kAllocations] = numbers[1] / numbers[0];
        (*measured)[access][kClockReads] = numbers[2] / numbers[0];
    }
}

void measureInstructions(quint16 port, std::array<Figures, kAccesses>* measured) {
    QByteArray output;
    QString problem;
    const Instructions counts =
        countInstructions(besideThis("budget_probe"), port, &output, &problem);
    if (!problem.isEmpty()) {
        giveUp(problem);
    }
    for (int access = 0; access < kAccesses; ++access) {
        const double times = printedNumbers(output, Access(access)).first();
        (*measured)[access][kInstructions] = counts[access] / times;
    }
}

/// Prints the table; the number of figures that are above their limit.
int printTable(const std::array<Figures, kAccesses>& measured) {
    int above = 0;
    std::printf("%-12s", "");
    for (const char* name : kFigureNames) {
        std::printf("%14s%12s", name, "(limit)");
    }
    std::printf("\n");
    for (int access = 0; access < kAccesses; ++access) {
        std::printf("%-12s", kAccessNames[access]);
        for (int figure = 0; figure < kFigures; ++figure) {
            const double value = measured[access][figure];
            const double limit = kLimits[access][figure];
            const bool over = !(value >= 0 && value <= limit);
            above += over ? 1 : 0;
            std::printf("%13.1f%c%12.1f", value, over ? '!' : ' ', limit);
        }
        std::printf("\n");
    }
    return above;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const Simulator simulator(dintTags(kTags));
    std::array<Figures, kAccesses> measured = {};
    measureSystemCalls(simulator.port(), &measured);
    measureCounts(simulator.port(), &measured);
    measureInstructions(simulator.port(), &measured);
    const int above = printTable(measured);
    if (above > 0) {
        std::fprintf(stderr, "budgets: %d figures above their limit, marked with !\n", above);
    }
    return above > 0 ? 1 : 0;
}
