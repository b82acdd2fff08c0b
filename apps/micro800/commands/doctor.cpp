#include "apps/micro800/controller/doctor/doctor.h"

#include <memory>

#include "apps/micro800/commands/command.h"
#include "apps/micro800/options/connection_options.h"
#include "apps/micro800/options/controller_options.h"
#include "apps/micro800/terminal/progress_bar.h"

namespace {

const int kMostReads = 1000000;
const int kNameWidth = 14;
const int kPageWidth = 79;
/// Under the texts of the steps: mark, blank, name.
const int kAdviceIndent = 2 + kNameWidth;

bool planDoctor(const CommandLine& line, DoctorPlan* plan, QString* problem) {
    const QStringList words = line.positional();
    if (words.size() > 1) {
        *problem = QStringLiteral("one address at most, for the read at the end");
        return false;
    }
    return endpointFrom(line, &plan->connection, problem) &&
           line.number(QStringLiteral("reads"), 1, kMostReads, plan->reads, &plan->reads,
                       problem) &&
           (words.isEmpty() || parseTagAddress(words.first(), &plan->tag, problem));
}

QString markOf(DoctorStep::Result result) {
    switch (result) {
        case DoctorStep::Result::kGood:
            return QStringLiteral("\u2714");
        case DoctorStep::Result::kBad:
            return QStringLiteral("\u2718");
        case DoctorStep::Result::kSkipped:
            break;
    }
    return QStringLiteral("\u2013");
}

void printParagraph(const QString& text, Console& console) {
    for (const QString& line : wrapped(text, kAdviceIndent, kPageWidth).split(QLatin1Char('\n'))) {
        console.line(line);
    }
}

void printStep(const DoctorStep& step, Console& console) {
    console.line(QStringLiteral("%1 %2%3").arg(markOf(step.result),
                                               step.name.leftJustified(kNameWidth), step.text));
    if (!step.advice.isEmpty()) {
        printParagraph(QStringLiteral("Means: %1").arg(step.advice.means), console);
        printParagraph(QStringLiteral("Check: %1").arg(step.advice.check), console);
    }
    console.flush();
}

QJsonObject stepJson(const DoctorStep& step) {
    QJsonObject object = step.figures;
    object[QStringLiteral("step")] = step.name;
    object[QStringLiteral("text")] = step.text;
    object[QStringLiteral("ok")] = step.result == DoctorStep::Result::kSkipped
                                       ? QJsonValue()
                                       : step.result == DoctorStep::Result::kGood;
    if (!step.advice.isEmpty()) {
        object[QStringLiteral("means")] = step.advice.means;
        object[QStringLiteral("check")] = step.advice.check;
    }
    return object;
}

}  // namespace

CommandHelp doctorHelp() {
    CommandHelp help;
    help.name = QStringLiteral("doctor");
    help.summary = QStringLiteral("finds the step on the way to a controller that fails");
    help.synopsis << QStringLiteral("--host HOST [OPTION...] [ADDRESS]");
    help.description
        << QStringLiteral(
               "Checks step by step, without the plugin, and stops at the first step that fails: "
               "name, route, TCP, identity (a Micro800, its firmware, its status in words), "
               "session, Forward Open, the tag, a hundred reads. Each step is a line that begins "
               "with \u2714, \u2718, or \u2013 for a skipped one.")
        << QStringLiteral(
               "After a step that fails follow the meaning of its text and the checks, from "
               "docs/troubleshooting.md, which explains the panel's texts, too.")
        << QStringLiteral(
               "Without an ADDRESS it reads the first variable of the controller's list; a "
               "controller without a list needs an ADDRESS. The jitter is the mean difference "
               "between a read and the one before it. It stops after three reads without a reply.");
    help.options = endpointOptionSpecs(QStringLiteral(
                       "Time-out for the connection and for each reply, in milliseconds.")) +
                   QVector<OptionSpec>{
                       {QStringLiteral("reads"), QStringLiteral("N"),
                        QStringLiteral("Reads at the end."), QString::number(DoctorPlan().reads)},
                       {QStringLiteral("json"), QString(),
                        QStringLiteral("Prints one JSON object per step: step, ok (null for a "
                                       "skipped one), text, means and check; for the reads also "
                                       "reads, lost, loss_percent, median_ms, p99_ms, jitter_ms."),
                        QString()},
                       verboseOptionSpec(),
                   };
    help.examples << QStringLiteral(
                         "micro800 doctor --host 192.168.1.20 DINT0:COUNTER\n"
                         "\u2714 name          192.168.1.20 is an address\n"
                         "\u2714 route         from this computer's 192.168.1.5\n"
                         "\u2718 TCP           Connection refused(111)\n"
                         "                Means: A device is there and has nothing on this port.\n"
                         "                Check: Port (44818); is it the controller's address? Is "
                         "the\n"
                         "                controller's Ethernet set up?")
                  << QStringLiteral("micro800 doctor --host plc --reads 1000 --json");
    return help;
}

int runDoctor(const CommandLine& line, Console& console) {
    DoctorPlan plan;
    QString problem;
    if (!planDoctor(line, &plan, &problem)) {
        return wrongUsage(console, QStringLiteral("doctor"), problem);
    }
    const bool json = line.isSet(QStringLiteral("json"));
    std::unique_ptr<ProgressBar> bar;  // its clock begins with the reads
    DoctorSinks sinks;
    sinks.step = [&console, json](const DoctorStep& step) {
        if (json) {
            console.json(stepJson(step));
        } else {
            printStep(step, console);
        }
    };
    sinks.reads = [&](int done) {
        if (!bar) {
            bar = std::make_unique<ProgressBar>(plan.reads, &console);
        }
        bar->setDone(done);
    };
    return Doctor(plan, traceFrom(line, &console), sinks).run() ? kExitOk : kExitFailed;
}
