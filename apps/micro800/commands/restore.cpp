#include <unistd.h>

#include "apps/micro800/base/input.h"
#include "apps/micro800/base/problem.h"
#include "apps/micro800/base/signals.h"
#include "apps/micro800/commands/command.h"
#include "apps/micro800/options/connection_options.h"
#include "apps/micro800/reports/controller_record.h"
#include "apps/micro800/reports/restore_report.h"
#include "apps/micro800/setpoints/restorer.h"
#include "apps/micro800/setpoints/value_file.h"

namespace {

const int kForEver = -1;

struct RestorePlan {
    ConnectionOptions options;
    QString file;
    bool dryRun = false;
    bool yes = false;
    bool json = false;
};

bool planRestore(const CommandLine& line, RestorePlan* plan, QString* problem) {
    plan->dryRun = line.isSet(QStringLiteral("dry-run"));
    plan->yes = line.isSet(QStringLiteral("yes"));
    plan->json = line.isSet(QStringLiteral("json"));
    const QStringList words = line.positional();
    if (words.size() != 1) {
        return fail(problem, words.isEmpty()
                                 ? QStringLiteral("no file given")
                                 : QStringLiteral("unexpected argument %1").arg(words.at(1)));
    }
    plan->file = words.first();
    const bool canAsk = isatty(STDIN_FILENO) == 1 && !plan->json;
    if (!plan->dryRun && !plan->yes && !canAsk) {
        return fail(problem, QStringLiteral("nobody can be asked here: --yes writes without a "
                                            "question, --dry-run only shows the difference"));
    }
    return connectionOptionsFrom(line, &plan->options, problem);
}

bool loadFile(const QString& name, ValueFile* file, QString* problem) {
    QByteArray text;
    QString why;
    if (!readInput(name, &text, problem)) {
        return false;
    }
    return parseValueFile(text, file, &why) ||
           fail(problem, QStringLiteral("%1: %2").arg(name, why));
}

/// Whether the answer on the terminal is yes. A signal is a no.
bool isAnswerYes(StopSignals* stops) {
    if (stops->wait(kForEver, STDIN_FILENO)) {
        return false;
    }
    char answer[64];
    const ssize_t count = read(STDIN_FILENO, answer, sizeof answer);
    return count > 0 && (answer[0] == 'y' || answer[0] == 'Y');
}

/// From the comparison to the last write. Leaves in the report what was done and how it ended.
void restore(const RestorePlan& plan, StopSignals* stops, Restorer* restorer, Console& console,
             RestoreReport* report) {
    if (!restorer->compare()) {
        report->end = RestoreEnd::kStoppedBefore;
        return;
    }
    if (!plan.json) {
        printDifferences(*restorer, report->file, console);
    }
    if (restorer->differences().isEmpty() || plan.dryRun) {
        report->end = RestoreEnd::kCompared;
        return;
    }
    if (!plan.yes) {
        console.line(QStringLiteral("Write %1 values to %2? [y/N]")
                         .arg(QString::number(restorer->differences().size()),
                              controllerText(report->controller)));
        console.flush();
        if (!isAnswerYes(stops)) {
            report->end = RestoreEnd::kDeclined;
            return;
        }
    }
    report->end = restorer->write() ? RestoreEnd::kWritten : RestoreEnd::kStopped;
}

}  // namespace

CommandHelp restoreHelp() {
    CommandHelp help;
    help.name = QStringLiteral("restore");
    help.summary = QStringLiteral("writes the values of a saved file back to tags");
    help.synopsis << QStringLiteral("--host HOST [OPTION...] FILE");
    help.description
        << QStringLiteral(
               "Reads every address of a file that 'micro800 save' wrote, shows each different "
               "value ('ADDRESS: NOW -> SAVED'), asks, writes only the differences, and reads them "
               "back. It lists each value that the controller did not take, with the reason. Reads "
               "and writes go through the plugin; the controller itself is asked for its identity "
               "only.")
        << QStringLiteral(
               "Ctrl-C, or three refused writes in succession, stop it after the current write, "
               "and it shows the place. The same command then writes the rest.")
        << QStringLiteral(
               "REAL and LREAL get the saved bits. The driver cannot make a string empty. The exit "
               "status is 0 if the controller finally has all values of the file; with --dry-run, "
               "if all were compared.");
    help.options = connectionOptionSpecs(true);
    help.options << OptionSpec{QStringLiteral("dry-run"), QString(),
                               QStringLiteral("Shows the difference and writes nothing."),
                               QString()}
                 << OptionSpec{QStringLiteral("yes"), QString(),
                               QStringLiteral("Writes without a question. Required without a "
                                              "terminal, and with --json."),
                               QString()}
                 << OptionSpec{QStringLiteral("json"), QString(),
                               QStringLiteral("Prints one JSON object: ok, end, file, saved, "
                                              "controller, same, different (address, now, saved), "
                                              "unreadable, restored, not_taken and next."),
                               QString()};
    help.examples << QStringLiteral(
                         "micro800 restore --host 192.168.1.21 mixer.json\n"
                         "saved 2026-11-21T14:03:07.112Z from \"2080-LC50-48QWB\" 12.11, serial\n"
                         "number 0x6080C0DE, at 192.168.1.20:44818; this is another controller\n"
                         "REAL0:SPEED: 0 -> 12.5\n"
                         "DINT0:RECIPE[3]: 0 -> 250\n"
                         "210 values are the same, 2 differ\n"
                         "Write 2 values to \"2080-LC50-48QWB\" 12.11, serial number 0x6080C0E1,\n"
                         "at 192.168.1.21:44818? [y/N]\n"
                         "y\n"
                         "2 of 2 values restored")
                  << QStringLiteral("micro800 restore --host plc --dry-run mixer.json")
                  << QStringLiteral("micro800 restore --host plc --yes --json mixer.json");
    return help;
}

int runRestore(const CommandLine& line, Console& console) {
    RestorePlan plan;
    RestoreReport report;
    QString problem;
    if (!planRestore(line, &plan, &problem)) {
        return wrongUsage(console, QStringLiteral("restore"), problem);
    }
    if (!loadFile(plan.file, &report.file, &problem)) {
        console.error(QStringLiteral("micro800: %1").arg(problem));
        return kExitFailed;
    }
    DriverSession session(plan.options.connection);
    if (!openSession(plan.options, &session, console)) {
        return kExitFailed;
    }
    report.fileName = plan.file;
    report.controller = controllerRecord(plan.options.connection, &problem);
    if (!problem.isEmpty()) {
        console.error(
            QStringLiteral("micro800: the controller does not identify itself: %1").arg(problem));
    }
    if (!plan.json) {
        printOrigin(report, console);
    }
    StopSignals stops;
    Restorer restorer(report.file.values, &session, [&stops] { return stops.wait(0); });
    restore(plan, &stops, &restorer, console, &report);
    if (plan.json) {
        printJson(restorer, report, console);
    }
    return printEnd(restorer, report, plan.json, console) ? kExitOk : kExitFailed;
}
