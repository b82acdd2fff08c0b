#include <QElapsedTimer>
#include <algorithm>

#include "apps/micro800/base/signals.h"
#include "apps/micro800/commands/command.h"
#include "apps/micro800/options/addresses.h"
#include "apps/micro800/options/connection_options.h"
#include "apps/micro800/options/output_options.h"
#include "apps/micro800/polling/poll_plan.h"
#include "apps/micro800/watch/watch_model.h"
#include "apps/micro800/watch/watch_view.h"

namespace {

const int kDefaultIntervalMs = 500;
const int kLongestIntervalMs = 3600000;
const int kRefreshMs = 100;
const int kMostRounds = 1000000000;
const double kLongestDurationS = 1e9;

struct WatchPlan {
    ConnectionOptions options;
    QVector<TagAddress> addresses;
    QVector<CommunicatorCommand> commands;
    int intervalMs = kDefaultIntervalMs;
    qint64 durationMs = -1;  // -1: until it is stopped
    int rounds = 0;          // 0: without a limit
    OutputOptions output;
    bool once = false;
    bool plain = false;
};

bool durationFrom(const CommandLine& line, WatchPlan* plan, QString* problem) {
    if (!line.isSet(QStringLiteral("duration"))) {
        return true;
    }
    bool ok = false;
    const QString text = line.value(QStringLiteral("duration"));
    const double seconds = text.toDouble(&ok);
    // Written so that nan fails as well.
    if (!ok || !(seconds > 0 && seconds <= kLongestDurationS)) {
        *problem = QStringLiteral("--duration %1: not a number of seconds above 0").arg(text);
        return false;
    }
    plan->durationMs = static_cast<qint64>(seconds * 1000);
    return true;
}

bool sessionFrom(const CommandLine& line, WatchPlan* plan, QString* problem) {
    if (!addressesFrom(line, 1, &plan->addresses, &plan->commands, problem)) {
        return false;
    }
    QVector<ListedAddress> declared;
    if (!plan->options.project.isEmpty() &&
        !declaredArrays(plan->options.project, plan->options.connection.link, &declared, problem)) {
        return false;
    }
    QVector<ListedAddress> listed;
    for (const TagAddress& address : plan->addresses) {
        listed.append({address.text, QString(), address, {}});
    }
    const PollPlan list(listed, declared);
    if (!list.fits()) {
        *problem = QStringLiteral(
                       "%1 addresses make a list of %2 bytes, and the driver takes at "
                       "most %3; 'micro800 plan' tells what would help")
                       .arg(QString::number(plan->addresses.size()),
                            QString::number(list.lineBytes()), QString::number(kListLimit));
        return false;
    }
    return true;
}

bool planWatch(const CommandLine& line, WatchPlan* plan, QString* problem) {
    plan->once = line.isSet(QStringLiteral("once"));
    plan->plain = line.isSet(QStringLiteral("plain"));
    return connectionOptionsFrom(line, &plan->options, problem) &&
           line.number(QStringLiteral("interval"), 1, kLongestIntervalMs, kDefaultIntervalMs,
                       &plan->intervalMs, problem) &&
           line.number(QStringLiteral("count"), 1, kMostRounds, 0, &plan->rounds, problem) &&
           outputOptionsFrom(line, &plan->output, problem) && durationFrom(line, plan, problem) &&
           sessionFrom(line, plan, problem);
}

std::unique_ptr<WatchView> makeView(const WatchPlan& plan, Console& console) {
    const NumberBase base = plan.output.base;
    if (plan.output.form == OutputOptions::Form::kJson) {
        return makeJsonView(console, base);
    }
    if (plan.output.form == OutputOptions::Form::kCsv) {
        return makeCsvView(console, base);
    }
    if (console.outCanMoveItsCursor() && !plan.plain && !plan.once) {
        const Connection& connection = plan.options.connection;
        std::unique_ptr<WatchView> table =
            makeTableView(console,
                          QStringLiteral("micro800 watch %1:%2")
                              .arg(connection.host, QString::number(connection.port)),
                          base);
        if (table) {
            return table;
        }
    }
    return makeLinesView(console, plan.output.quiet || plan.once, base);
}

/// The watch while it runs.
class Watch {
 public:
    Watch(const WatchPlan& wanted, DriverSession* opened, WatchView* shown, const Console& output)
        : plan(wanted),
          session(opened),
          view(shown),
          console(output),
          model(wanted.addresses, wanted.commands) {
        clock.start();
    }

    /// Until it is stopped, its time is over, or the rounds are done that it was asked for.
    void run() {
        const int rounds = plan.once ? 1 : plan.rounds;
        qint64 next = 0;
        for (int round = 1; !over(); ++round) {
            readRound();
            if (round == rounds) {
                break;
            }
            next = std::max(next + plan.intervalMs, now());
            waitUntil(next);
        }
        view->end(model, now());
    }

    /// A user's stop is no failure, for any tag states. The program reports an
    /// output that fails.
    int exitCode() const {
        return stops.stopped() || quit || model.allGood() ? kExitOk : kExitFailed;
    }

 private:
    qint64 now() const { return clock.elapsed(); }

    bool over() const {
        return quit || stops.stopped() || console.hasFailed() ||
               (plan.durationMs >= 0 && now() >= plan.durationMs);
    }

    void readRound() {
        for (int i = 0; i < model.size() && !over(); ++i) {
            const DriverResult result = session->read(model.tag(i).command);
            const WatchEvent event = model.take(i, result, now());
            if (event != WatchEvent::kNothing) {
                view->tell(model.tag(i), event);
            }
            // A read may take long, and the list may be long.
            if (now() - refreshedAt >= kRefreshMs) {
                refresh(0);
            }
        }
        refresh(0);
    }

    void waitUntil(qint64 time) {
        while (!over() && now() < time) {
            qint64 pause = std::min<qint64>(time - now(), kRefreshMs);
            if (plan.durationMs >= 0) {
                pause = std::min(pause, std::max<qint64>(plan.durationMs - now(), 0));
            }
            refresh(static_cast<int>(pause));
        }
    }

    /// Waits for a signal or a key at most `ms`, then shows how things are.
    void refresh(int ms) {
        stops.wait(ms, view->keyDescriptor());
        quit = view->takeKeys() || quit;
        view->refresh(model, now());
        refreshedAt = now();
    }

    const WatchPlan& plan;
    DriverSession* session;
    WatchView* view;
    const Console& console;
    WatchModel model;
    StopSignals stops;
    QElapsedTimer clock;
    qint64 refreshedAt = 0;
    bool quit = false;
};

QVector<OptionSpec> watchOptions() {
    return connectionOptionSpecs(true) +
           QVector<OptionSpec>{
               {QStringLiteral("interval"), QStringLiteral("MS"),
                QStringLiteral("From the start of one round of reads to the start of the next."),
                QString::number(kDefaultIntervalMs)},
               {QStringLiteral("duration"), QStringLiteral("S"),
                QStringLiteral("Ends after S seconds."), QStringLiteral("until stopped")},
               {QStringLiteral("once"), QString(),
                QStringLiteral("Reads every address once, prints them as lines, and ends."),
                QString()},
               {QStringLiteral("plain"), QString(),
                QStringLiteral("Prints lines on a terminal, too."), QString()},
               {QStringLiteral("count"), QStringLiteral("N"),
                QStringLiteral("Ends after N rounds of reads."), QStringLiteral("until stopped")},
           } +
           outputOptionSpecs(
               QStringLiteral("Prints one JSON object per change: address, type, ok, ms, at (UTC), "
                              "source (cache or controller) and value, or error."),
               QStringLiteral(
                   "Prints a line with the names of the fields, and one line per change with as "
                   "many fields: those of read --csv, then the time (UTC) and the source."),
               QStringLiteral("Omits the summary line at the end."));
}

}  // namespace

CommandHelp watchHelp() {
    CommandHelp help;
    help.name = QStringLiteral("watch");
    help.summary = QStringLiteral("polls tags through the driver and shows them");
    help.synopsis << QStringLiteral("--host HOST [OPTION...] ADDRESS|@FILE...");
    help.description
        << QStringLiteral(
               "Gives the addresses to the driver as its session list, which the driver then "
               "polls, and asks for their values once per interval. On a terminal it shows a table "
               "that refreshes in place; q, Ctrl-C or SIGTERM ends it with exit status 0. "
               "Elsewhere it prints a line for each first value and each change.")
        << addressFileHelp()
        << QStringLiteral(
               "The table marks a value that changed within the last second with *, and a tag "
               "whose last read failed with ! and the failure in place of the value. CHANGED is "
               "the time since the last change, AGE the time since the last read without a "
               "failure.")
        << QStringLiteral(
               "A read of less than 50 microseconds counts as served from the driver's cache, any "
               "other as answered by the controller. This is an estimate: on a busy machine a "
               "cached read can take longer. The driver's own polling reads are not shown.")
        << QStringLiteral(
               "With --once, --count or --duration the exit status is 1 if the last read of any "
               "tag failed.");
    help.options = watchOptions();
    help.examples << QStringLiteral(
                         "micro800 watch --host 192.168.1.20 DINT0:COUNTER REAL0:LEVEL "
                         "'INT0:LEVELS[2]'")
                  << QStringLiteral(
                         "micro800 watch --host 192.168.1.20 --plain --duration 2 "
                         "DINT0:COUNTER\n"
                         "14:03:07.112 DINT0:COUNTER = 41\n"
                         "14:03:07.613 DINT0:COUNTER = 42\n"
                         "...\n"
                         "2.0 s: 3 changes, 0 failed reads; reads per second: 1.5 from "
                         "the cache, 0.5\nfrom the controller")
                  << QStringLiteral(
                         "micro800 watch --host 192.168.1.20 --json DINT0:COUNTER | jq "
                         ".value");
    return help;
}

int runWatch(const CommandLine& line, Console& console) {
    WatchPlan plan;
    QString problem;
    if (!planWatch(line, &plan, &problem)) {
        return wrongUsage(console, QStringLiteral("watch"), problem);
    }
    DriverSession session(plan.options.connection);
    if (!openSession(plan.options, &session, console)) {
        return kExitFailed;
    }
    if (!session.watch(plan.commands.toList())) {
        console.error(
            QStringLiteral("micro800: the driver keeps no session list; every read goes "
                           "to the controller"));
    }
    const std::unique_ptr<WatchView> view = makeView(plan, console);
    Watch watch(plan, &session, view.get(), console);
    watch.run();
    return watch.exitCode();
}
