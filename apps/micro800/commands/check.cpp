#include <QElapsedTimer>
#include <QJsonObject>
#include <algorithm>
#include <cmath>

#include "apps/micro800/base/signals.h"
#include "apps/micro800/base/timings.h"
#include "apps/micro800/commands/command.h"
#include "apps/micro800/controller/check/tag_check.h"
#include "apps/micro800/options/addresses.h"
#include "apps/micro800/options/connection_options.h"
#include "apps/micro800/options/controller_options.h"
#include "apps/micro800/terminal/progress_bar.h"

namespace {

struct CheckPlan {
    Connection connection;
    QVector<ListedAddress> addresses;
    QVector<ListedAddress> declarations;
    bool sort = false;
    bool json = false;
};

bool planCheck(const CommandLine& line, CheckPlan* plan, QString* problem) {
    int link = 0;
    if (!endpointFrom(line, &plan->connection, problem) ||
        !line.number(QStringLiteral("link"), 0, 0x7FFFFFFF, plan->connection.link, &link,
                     problem) ||
        !listedAddressesFrom(line, &plan->addresses, problem)) {
        return false;
    }
    plan->sort = line.isSet(QStringLiteral("sort"));
    plan->json = line.isSet(QStringLiteral("json"));
    const QString project = line.value(QStringLiteral("project"));
    return project.isEmpty() || declaredArrays(project, link, &plan->declarations, problem);
}

/// The checks of one run: made in the order of the addresses over one connection.
class CheckOfAll {
 public:
    CheckOfAll(const CheckPlan& wanted, const TraceSink& trace, Console& output)
        : plan(wanted), session(wanted.connection, trace), console(output) {}

    bool run(QString* problem);
    void printSorted();
    void printSummary() const;
    bool allOk() const { return done == counts[kVerdicts - 1] && done == plan.addresses.size(); }

 private:
    bool checkNext(const TagChecker& checker, QString* problem);
    void print(int index) const;

    const CheckPlan& plan;
    ControllerSession session;
    Console& console;
    StopSignals stops;
    QElapsedTimer clock;
    QVector<TagCheck> results;
    Timings reads;
    int counts[kVerdicts] = {};
    int requests = 0;
    int done = 0;
};

bool CheckOfAll::checkNext(const TagChecker& checker, QString* problem) {
    const TagCheck result = checker.check(plan.addresses.at(done));
    results.append(result);
    ++counts[static_cast<int>(result.verdict)];
    requests += result.requests;
    if (result.readMs > 0) {
        reads.add(result.readMs);
    }
    if (!plan.sort) {
        print(done);
    }
    ++done;
    if (result.verdict != Verdict::kNoReply || done == plan.addresses.size()) {
        return true;
    }
    // A late reply would be taken for that of the next request.
    session.close();
    return session.open(problem);
}

bool CheckOfAll::run(QString* problem) {
    clock.start();
    if (!session.open(problem)) {
        return false;
    }
    const TagChecker checker(
        [this](const QByteArray& name, int count) {
            return count == 1 ? session.read(name) : session.readWhole(name, count);
        },
        plan.declarations);
    ProgressBar bar(plan.addresses.size(), &console);
    bool ok = true;
    while (ok && done < plan.addresses.size() && !console.hasFailed() && !stops.wait(0)) {
        ok = checkNext(checker, problem);
        bar.setDone(done);
    }
    session.close();
    return ok;
}

void CheckOfAll::print(int index) const {
    const ListedAddress& address = plan.addresses.at(index);
    const TagCheck& result = results.at(index);
    if (plan.json) {
        QJsonObject object{{QStringLiteral("address"), address.text},
                           {QStringLiteral("ok"), result.verdict == Verdict::kOk},
                           {QStringLiteral("verdict"), verdictKey(result.verdict)},
                           {QStringLiteral("read_requests"), result.readRequests},
                           {QStringLiteral("check_requests"), result.requests},
                           {QStringLiteral("ms"), std::round(result.readMs * 1000) / 1000}};
        if (!result.detail.isEmpty()) {
            object[QStringLiteral("detail")] = result.detail;
        }
        if (!result.controllerType.isEmpty()) {
            object[QStringLiteral("controller_type")] = result.controllerType;
        }
        if (!address.place.isEmpty()) {
            object[QStringLiteral("place")] = address.place;
        }
        console.json(object);
        return;
    }
    const QString good =
        QStringLiteral("%1, %2 ms")
            .arg(result.readRequests == 1 ? QStringLiteral("1 request")
                                          : QStringLiteral("%1 requests").arg(result.readRequests),
                 QString::number(result.readMs, 'f', 1));
    console.line(QStringLiteral("%1  %2: %3")
                     .arg(address.text, verdictText(result.verdict),
                          result.verdict == Verdict::kOk ? good : result.detail));
}

void CheckOfAll::printSorted() {
    QVector<int> order;
    for (int i = 0; i < done; ++i) {
        order.append(i);
    }
    std::stable_sort(order.begin(), order.end(), [this](int left, int right) {
        return results.at(left).verdict < results.at(right).verdict;
    });
    for (const int index : order) {
        print(index);
    }
}

void CheckOfAll::printSummary() const {
    QJsonObject object;
    QStringList parts;
    for (int i = kVerdicts - 1; i >= 0; --i) {
        const auto verdict = static_cast<Verdict>(i);
        object[verdictKey(verdict)] = counts[i];
        if (counts[i] > 0 || verdict == Verdict::kOk) {
            parts << QStringLiteral("%1 %2").arg(counts[i]).arg(verdictText(verdict));
        }
    }
    const int left = plan.addresses.size() - done;
    if (left > 0) {
        parts << QStringLiteral("%1 not checked").arg(left);
    }
    const double seconds = static_cast<double>(clock.elapsed()) / 1000;
    if (plan.json) {
        object[QStringLiteral("addresses")] = plan.addresses.size();
        object[QStringLiteral("not_checked")] = left;
        object[QStringLiteral("requests")] = requests;
        object[QStringLiteral("seconds")] = seconds;
        object[QStringLiteral("median_ms")] = reads.median();
        object[QStringLiteral("p99_ms")] = reads.percentile(99);
        console.json(QJsonObject{{QStringLiteral("summary"), object}});
        return;
    }
    console.line(QStringLiteral("%1: %2; %3 in %4 s, a read %5 ms (median), %6 ms (p99)")
                     .arg(plan.addresses.size() == 1
                              ? QStringLiteral("1 address")
                              : QStringLiteral("%1 addresses").arg(plan.addresses.size()),
                          parts.join(QLatin1String(", ")),
                          requests == 1 ? QStringLiteral("1 request")
                                        : QStringLiteral("%1 requests").arg(requests),
                          QString::number(seconds, 'f', 1), QString::number(reads.median(), 'f', 1),
                          QString::number(reads.percentile(99), 'f', 1)));
}

QVector<OptionSpec> checkOptions() {
    return endpointOptionSpecs(
               QStringLiteral("Time-out for the connection and for each reply, in milliseconds.")) +
           QVector<OptionSpec>{
               {QStringLiteral("project"), QStringLiteral("DIR"),
                QStringLiteral("Checks the arrays that the project in DIR declares if no address "
                               "is given; otherwise elements must lie within them as well."),
                QString()},
               {QStringLiteral("link"), QStringLiteral("N"),
                QStringLiteral(
                    "Number of the runtime's link: the array declarations of this number apply."),
                QString::number(Connection().link)},
               {QStringLiteral("sort"), QString(),
                QStringLiteral("Prints the verdicts at the end, the worst first."), QString()},
               {QStringLiteral("json"), QString(),
                QStringLiteral("Prints one JSON object per address: address, ok, verdict, detail, "
                               "controller_type, read_requests, check_requests, ms; at the end one "
                               "with summary."),
                QString()},
               verboseOptionSpec(),
           };
}

}  // namespace

CommandHelp checkHelp() {
    CommandHelp help;
    help.name = QStringLiteral("check");
    help.summary = QStringLiteral("reports the addresses that will not work, and why");
    help.synopsis << QStringLiteral("--host HOST [OPTION...] ADDRESS...")
                  << QStringLiteral("--host HOST [OPTION...] @FILE")
                  << QStringLiteral("--host HOST [OPTION...] --project DIR");
    help.description
        << QStringLiteral(
               "Asks the controller itself, without the plugin, about every address: whether the "
               "global variable exists, whether it has the type of the prefix, and whether an "
               "array has the bounds of its declaration, PREFIX:NAME[LOWER..UPPER]. Prints one "
               "line per address, and a summary. %1")
               .arg(addressFileHelp())
        << QStringLiteral(
               "A correct address takes one request. Of an array it reads the first and the last "
               "element, the elements beside its bounds, which the controller must refuse, and the "
               "whole array as a panel polls it. After 'ok' follow the requests that a panel needs "
               "to read it, and their time. All requests go over one connection, one after the "
               "other; nothing is written.")
        << QStringLiteral(
               "    missing     the controller has no global variable of that name\n"
               "    wrong type  it has another type than the prefix names\n"
               "    too long    the declaration goes beyond the controller's array\n"
               "    no element  no element of these indexes\n"
               "    too large   a declared array cannot be read whole\n"
               "    too short   the controller's array goes on beyond the declaration\n"
               "    refused     refused for another reason\n"
               "    no answer   no answer in time, or none of use")
        << QStringLiteral(
               "The exit status is 1 if a verdict is not ok. On a terminal a bar shows the "
               "progress; Ctrl-C ends it with the summary of the checked addresses.");
    help.options = checkOptions();
    help.examples << QStringLiteral(
                         "micro800 check --host 192.168.1.20 DINT0:COUNTER DINT0:LEVEL\n"
                         "DINT0:COUNTER  ok: 1 request, 6.2 ms\n"
                         "DINT0:LEVEL  wrong type: the controller has REAL; write REAL0:LEVEL\n"
                         "2 addresses: 1 ok, 1 wrong type; 2 requests in 0.1 s, a read 6.2 ms\n"
                         "(median), 6.2 ms (p99)")
                  << QStringLiteral("micro800 check --host 192.168.1.20 --sort @panel.txt")
                  << QStringLiteral("micro800 check --host 192.168.1.20 --project ./panel");
    return help;
}

int runCheck(const CommandLine& line, Console& console) {
    CheckPlan plan;
    QString problem;
    if (!planCheck(line, &plan, &problem)) {
        return wrongUsage(console, QStringLiteral("check"), problem);
    }
    CheckOfAll all(plan, traceFrom(line, &console), console);
    const bool reached = all.run(&problem);
    if (plan.sort) {
        all.printSorted();
    }
    if (!reached) {
        console.error(QStringLiteral("micro800: %1").arg(problem));
    }
    all.printSummary();
    return reached && all.allOk() ? kExitOk : kExitFailed;
}
