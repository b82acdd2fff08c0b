#include "apps/micro800/reports/live_figures.h"

#include <QElapsedTimer>
#include <QJsonObject>

#include "apps/micro800/base/signals.h"
#include "apps/micro800/options/addresses.h"
#include "apps/micro800/options/connection_options.h"
#include "apps/micro800/terminal/fact_list.h"
#include "runtime/communicator_command.h"

namespace {

const int kDefaultSeconds = 10;
const int kLongestSeconds = 86400;
const int kMsPerSecond = 1000;
const int kReadEveryMs = 500;

/// No controller has it; its refusal is an answer too.
const char kNoTag[] = "DINT0:MICRO800_INFO";

struct FigurePlan {
    ConnectionOptions options;
    QVector<TagAddress> addresses;
    QVector<CommunicatorCommand> commands;
    int seconds = kDefaultSeconds;
};

/// "10" and "10s" are seconds.
bool secondsFrom(const CommandLine& line, int* seconds, QString* problem) {
    if (!line.isSet(QStringLiteral("for"))) {
        return true;
    }
    const QString text = line.value(QStringLiteral("for"));
    bool ok = false;
    *seconds = (text.endsWith(QLatin1Char('s')) ? text.chopped(1) : text).toInt(&ok);
    if (!ok || *seconds < 1 || *seconds > kLongestSeconds) {
        *problem = QStringLiteral("--for %1: not a number of seconds from 1 to %2")
                       .arg(text, QString::number(kLongestSeconds));
        return false;
    }
    return true;
}

bool planFrom(const CommandLine& line, FigurePlan* plan, QString* problem) {
    if (!connectionOptionsFrom(line, &plan->options, problem) ||
        !secondsFrom(line, &plan->seconds, problem)) {
        return false;
    }
    return line.positional().isEmpty() ||
           addressesFrom(line, 1, &plan->addresses, &plan->commands, problem);
}

/// Reads as a panel does, until the time is up or the user stops it.
void work(const FigurePlan& plan, DriverSession* session) {
    QVector<CommunicatorCommand> commands = plan.commands;
    if (commands.isEmpty()) {
        commands << CommunicatorCommand(kUnitDoubleWord, 1, QLatin1String(kNoTag));
    } else {
        session->watch(commands.toList());
    }
    StopSignals stops;
    QElapsedTimer clock;
    clock.start();
    const qint64 end = qint64(plan.seconds) * kMsPerSecond;
    while (!stops.stopped() && clock.elapsed() < end) {
        for (const CommunicatorCommand& command : commands) {
            session->read(command);
        }
        stops.wait(int(qBound<qint64>(0, end - clock.elapsed(), kReadEveryMs)));
    }
}

QString count(const QVariantMap& counters, const char* key) {
    return counters.value(QLatin1String(key)).toString();
}

QString ms(const QVariantMap& counters, const char* key) {
    return QString::number(counters.value(QLatin1String(key)).toDouble(), 'f', 1) +
           QStringLiteral(" ms");
}

QString statusText(const QVariantMap& byStatus) {
    QStringList parts;
    for (auto status = byStatus.constBegin(); status != byStatus.constEnd(); ++status) {
        parts << QStringLiteral("%1: %2").arg(status.key(), status.value().toString());
    }
    return parts.isEmpty() ? QStringLiteral("none") : parts.join(QStringLiteral(", "));
}

QVector<Fact> factsOf(const QVariantMap& counters) {
    const QVariantMap passes = counters.value(QStringLiteral("passes")).toMap();
    const QVariantMap byStatus = counters.value(QStringLiteral("answers_by_status")).toMap();
    const auto fact = [&](const char* label, const char* key, const QString& text) {
        return Fact{label, key, QJsonValue::fromVariant(counters.value(QLatin1String(key))), text};
    };
    return {
        fact("Requests", "requests", count(counters, "requests")),
        fact("Answers", "answers", count(counters, "answers")),
        fact("By status", "answers_by_status", statusText(byStatus)),
        fact("Refused messages", "encapsulation_errors", count(counters, "encapsulation_errors")),
        fact("Time-outs", "timeouts", count(counters, "timeouts")),
        fact("Connects", "connects",
             QStringLiteral("%1, failed %2")
                 .arg(count(counters, "connects"), count(counters, "connect_failures"))),
        fact("Failed connects", "connect_failures", count(counters, "connect_failures")),
        fact("Reconnects", "reconnects", count(counters, "reconnects")),
        fact("Lost", "connections_lost", count(counters, "connections_lost")),
        fact("Error texts", "error_texts", count(counters, "error_texts")),
        fact("Host calls", "host_calls", count(counters, "host_calls")),
        fact("Longest wait", "longest_host_wait_ms", ms(counters, "longest_host_wait_ms")),
        fact("Polling passes", "passes",
             QStringLiteral("%1: last %2, mean %3, 99 of 100 within %4")
                 .arg(count(passes, "count"), ms(passes, "last_ms"), ms(passes, "mean_ms"),
                      ms(passes, "p99_ms"))),
        fact("Recordings", "recording",
             QStringLiteral("%1 written, %2 failed")
                 .arg(count(counters.value(QStringLiteral("recording")).toMap(), "written"),
                      count(counters.value(QStringLiteral("recording")).toMap(), "failed"))),
    };
}

}  // namespace

QVector<OptionSpec> liveFigureOptionSpecs() {
    QVector<OptionSpec> specs = connectionOptionSpecs(true);
    specs << OptionSpec{QStringLiteral("for"), QStringLiteral("SECONDS"),
                        QStringLiteral("With --host: seconds of polling before info shows the "
                                       "counters; 10 and 10s are the same."),
                        QString::number(kDefaultSeconds)};
    return specs;
}

int runLiveFigures(const CommandLine& line, Console& console) {
    FigurePlan plan;
    QString problem;
    if (!planFrom(line, &plan, &problem)) {
        return wrongUsage(console, QStringLiteral("info"), problem);
    }
    DriverSession session(plan.options.connection);
    if (!openSession(plan.options, &session, console)) {
        return kExitFailed;
    }
    work(plan, &session);
    const QVariantMap counters = session.counters();
    if (counters.isEmpty()) {
        console.error(QStringLiteral("micro800: this driver counts nothing"));
        return kExitFailed;
    }
    printFacts(factsOf(counters), line.isSet(QStringLiteral("json")), console);
    return counters.value(QStringLiteral("answers")).toLongLong() > 0 ? kExitOk : kExitFailed;
}
