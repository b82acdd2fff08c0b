#include "soak/report.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>
#include <functional>

namespace {

const double kMostKbAnHour = 64;
const double kSecondsAnHour = 3600;
/// Less says nothing about hours.
const size_t kFewestSamples = 60;
const size_t kLongestWarmUp = 300;

QString number(double value, int digits = 0) {
    return QString::number(value, 'f', digits);
}

/// The smallest number in the first or the last fifth: what comes and goes is not there, what stays
/// is.
int smallest(const std::vector<SoakSample>& samples, bool atTheEnd, int ProcessFigures::*member) {
    const size_t part = samples.size() / 5;
    const auto from = atTheEnd ? samples.end() - long(part) : samples.begin();
    int least = from->process.*member;
    for (auto one = from; one != from + long(part); ++one) {
        least = std::min(least, one->process.*member);
    }
    return least;
}

/// The samples after the warm-up: the first third belongs to it, though no more than five minutes.
/// Until then the notes of the run itself grow to their usual size.
std::vector<SoakSample> steadyPart(const std::vector<SoakSample>& samples) {
    const size_t warm = std::min(samples.size() / 3, kLongestWarmUp);
    return std::vector<SoakSample>(samples.begin() + long(warm), samples.end());
}

double percentile(const std::vector<double>& sorted, double part) {
    const size_t at = size_t(part * double(sorted.size()));
    return sorted.empty() ? 0 : sorted[std::min(at, sorted.size() - 1)];
}

/// In KB an hour, with what the slope is uncertain by.
QString anHour(const Slope& slope) {
    return QString("%1 +- %2 KB")
        .arg(slope.perSecond * kSecondsAnHour, 0, 'f', 0)
        .arg(slope.uncertainty * kSecondsAnHour, 0, 'f', 0);
}

/// Whether even the least slope that is likely is too much.
bool growsTooMuch(const Slope& slope) {
    return (slope.perSecond - slope.uncertainty) * kSecondsAnHour > kMostKbAnHour;
}

QStringList endsOf(const std::vector<SoakSample>& samples) {
    QStringList texts;
    for (int ProcessFigures::*member : {&ProcessFigures::descriptors, &ProcessFigures::threads}) {
        texts << QString("%1, %2")
                     .arg(smallest(samples, false, member))
                     .arg(smallest(samples, true, member));
    }
    return texts;
}

QString toReach(const Slope& slope) {
    const bool isTold = slope.uncertainty * kSecondsAnHour <= kMostKbAnHour;
    return isTold ? "<= 64 KB" : "<= 64 KB; too short to tell";
}

void reportGrowth(const std::vector<SoakSample>& samples, Report* report) {
    if (samples.size() < kFewestSamples) {
        report->row("growth", "too short to tell");
        return;
    }
    const Growth growth = growthOf(samples);
    for (const QString& problem : growth.problems) {
        report->wrong(problem);
    }
    const QStringList ends = endsOf(samples);
    report->row("resident memory at the end", number(samples.back().process.residentKb) + " KB");
    report->row("it grows an hour (95 % interval)", anHour(growth.resident),
                toReach(growth.resident));
    report->row("memory in use grows an hour", anHour(growth.heap), toReach(growth.heap));
    report->row("descriptors at the start, at the end", ends.at(0), "no more");
    report->row("threads at the start, at the end", ends.at(1), "no more");
    report->value("resident_kb", samples.back().process.residentKb);
    report->value("resident_kb_per_hour", growth.resident.perSecond * kSecondsAnHour);
    report->value("resident_kb_per_hour_uncertainty", growth.resident.uncertainty * kSecondsAnHour);
    report->value("heap_kb_per_hour", growth.heap.perSecond * kSecondsAnHour);
    report->value("heap_kb_per_hour_uncertainty", growth.heap.uncertainty * kSecondsAnHour);
    report->value("descriptors", smallest(samples, true, &ProcessFigures::descriptors));
    report->value("threads", smallest(samples, true, &ProcessFigures::threads));
}

void reportCalls(const CallWatch& calls, int slackMs, Report* report) {
    report->row("longest call", number(double(calls.longestMs())) + " ms");
    report->row("worst call over its bound", number(double(calls.worstOverMs())) + " ms");
    report->row("the same without the machine's lateness",
                number(double(calls.worstOverHereMs())) + " ms", QString("<= %1 ms").arg(slackMs));
    report->value("longest_call_ms", double(calls.longestMs()));
    report->value("worst_over_bound_ms", double(calls.worstOverMs()));
    report->value("worst_over_bound_less_lateness_ms", double(calls.worstOverHereMs()));
    if (calls.worstOverHereMs() > slackMs) {
        report->wrong("too long: " + calls.worstCall());
    }
}

}  // namespace

void Report::row(const QString& what, const QString& figure, const QString& toReach) {
    table +=
        QString("%1 %2   %3").arg(what, -44).arg(figure, 16).arg(toReach).trimmed().toUtf8() + '\n';
}

QByteArray Report::text() const {
    QByteArray all = table;
    for (const QString& failure : failures) {
        all += "WRONG: " + failure.toUtf8() + '\n';
    }
    return all;
}

QByteArray Report::json() const {
    QJsonObject whole = object;
    whole.insert("problems", QJsonArray::fromStringList(failures));
    return QJsonDocument(whole).toJson(QJsonDocument::Compact) + '\n';
}

Growth growthOf(const std::vector<SoakSample>& samples) {
    std::vector<double> resident;
    std::vector<double> heap;
    for (const SoakSample& one : samples) {
        resident.push_back(one.process.residentKb);
        heap.push_back(one.process.heapKb);
    }
    Growth growth;
    growth.resident = slopeOfResident(resident, 1);
    growth.heap = slopeOf(heap, 1);
    if (growsTooMuch(growth.resident)) {
        growth.problems << "resident memory grows by " + anHour(growth.resident) + " an hour";
    }
    if (growsTooMuch(growth.heap)) {
        growth.problems << "memory in use grows by " + anHour(growth.heap) + " an hour";
    }
    const QStringList names = {"descriptors", "threads"};
    int at = 0;
    for (int ProcessFigures::*member : {&ProcessFigures::descriptors, &ProcessFigures::threads}) {
        const int before = smallest(samples, false, member);
        const int after = smallest(samples, true, member);
        if (after > before) {
            growth.problems
                << QString("%1 grew from %2 to %3").arg(names.at(at)).arg(before).arg(after);
        }
        ++at;
    }
    return growth;
}

Report soakReport(const SoakRun& run, const SoakOptions& options) {
    const SoakFigures& figures = run.figures();
    Report report;
    report.row("run", number(options.seconds) + " s");
    report.row("reads", number(figures.reads));
    report.row("reads without a value", number(figures.readsWithoutValue));
    report.row("writes confirmed", QString::number(run.writes().confirmed()));
    report.row("writes not confirmed", QString::number(run.writes().unconfirmed()));
    report.row("faults", QString::number(figures.troubles));
    report.row("addresses, lists, restarts", QString("%1, %2, %3")
                                                 .arg(figures.addressChanges)
                                                 .arg(figures.listChanges)
                                                 .arg(figures.restarts));
    report.row("wrong values, lost and doubled writes", number(figures.wrong), "0");
    report.row("oldest polled value", number(double(run.oldestMs())) + " ms");
    report.value("seconds", options.seconds);
    report.value("reads", figures.reads);
    report.value("reads_without_value", figures.readsWithoutValue);
    report.value("writes_confirmed", run.writes().confirmed());
    report.value("writes_unconfirmed", run.writes().unconfirmed());
    report.value("faults", figures.troubles);
    report.value("restarts", figures.restarts);
    report.value("wrong", figures.wrong);
    report.value("oldest_polled_ms", double(run.oldestMs()));
    reportCalls(run.calls(), options.slackMs, &report);
    reportGrowth(steadyPart(run.samples()), &report);
    for (const QString& text : figures.wrongTexts) {
        report.wrong(text);
    }
    if (!figures.problem.isEmpty()) {
        report.wrong(figures.problem);
    }
    return report;
}

Report recoveryReport(const RecoveryRun& run, double limitMs) {
    Report report;
    report.row("controller away and back, ms", "p50    p99    max",
               "cycles, of them above " + number(limitMs) + " ms");
    for (const RecoveryKind& kind : run.kinds()) {
        const auto late = kind.ms.end() - std::upper_bound(kind.ms.begin(), kind.ms.end(), limitMs);
        const double longest = kind.ms.empty() ? 0 : kind.ms.back();
        report.row(kind.name,
                   QString("%1 %2 %3")
                       .arg(percentile(kind.ms, 0.5), 5, 'f', 0)
                       .arg(percentile(kind.ms, 0.99), 6, 'f', 0)
                       .arg(longest, 6, 'f', 0),
                   QString("%1, %2").arg(kind.ms.size()).arg(late));
        report.value(kind.name, QJsonObject{{"cycles", int(kind.ms.size())},
                                            {"p50_ms", percentile(kind.ms, 0.5)},
                                            {"p99_ms", percentile(kind.ms, 0.99)},
                                            {"longest_ms", longest},
                                            {"above_limit", int(late)}});
        if (late > 0) {
            report.wrong(QString("%1: %2 of %3 later than %4 ms")
                             .arg(kind.name)
                             .arg(late)
                             .arg(kind.ms.size())
                             .arg(number(limitMs)));
        }
    }
    for (const QString& text : run.wrong()) {
        report.wrong(text);
    }
    if (!run.problem().isEmpty()) {
        report.wrong(run.problem());
    }
    return report;
}

QByteArray samplesText(const std::vector<SoakSample>& samples) {
    QByteArray text = "# second resident_kb heap_kb descriptors threads longest_call_ms wrong\n";
    int second = 0;
    for (const SoakSample& one : samples) {
        text += QString("%1\t%2\t%3\t%4\t%5\t%6\t%7\n")
                    .arg(++second)
                    .arg(one.process.residentKb, 0, 'f', 0)
                    .arg(one.process.heapKb, 0, 'f', 1)
                    .arg(one.process.descriptors)
                    .arg(one.process.threads)
                    .arg(one.longestCallMs, 0, 'f', 0)
                    .arg(one.wrong, 0, 'f', 0)
                    .toLatin1();
    }
    return text;
}
