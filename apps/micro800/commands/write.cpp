#include "apps/micro800/commands/command.h"
#include "apps/micro800/format/value_format.h"
#include "apps/micro800/options/connection_options.h"
#include "apps/micro800/plugin/tag_json.h"
#include "apps/micro800/reports/write_steps.h"

namespace {

struct WritePlan {
    ConnectionOptions options;
    QVector<WriteStep> steps;
    bool json = false;
    bool quiet = false;
};

bool countFits(const CommandLine& line, const WritePlan& plan, QString* problem) {
    if (!line.isSet(QStringLiteral("count"))) {
        return true;
    }
    if (areAssignments(line.positional())) {
        *problem = QStringLiteral("--count goes with ADDRESS VALUE..., not with assignments");
        return false;
    }
    const int given = plan.steps.first().count;
    int wanted = 0;
    if (!line.number(QStringLiteral("count"), 1, 65535, given, &wanted, problem)) {
        return false;
    }
    if (wanted != given) {
        *problem = QStringLiteral("--count %1, but %2 given")
                       .arg(QString::number(wanted),
                            given == 1 ? QStringLiteral("1 value is")
                                       : QStringLiteral("%1 values are").arg(given));
        return false;
    }
    return true;
}

bool planWrite(const CommandLine& line, WritePlan* plan, QString* problem) {
    plan->json = line.isSet(QStringLiteral("json"));
    plan->quiet = line.isSet(QStringLiteral("quiet"));
    return connectionOptionsFrom(line, &plan->options, problem) &&
           writeStepsFrom(line.positional(), &plan->steps, problem) &&
           countFits(line, *plan, problem);
}

bool writeOne(const WritePlan& plan, const WriteStep& step, DriverSession* session,
              Console& console) {
    const DriverResult result = session->write(step.command, step.bytes);
    if (plan.json) {
        console.json(accessJson(step.address, step.count, result, step.bytes));
    } else if (result.ok && !plan.quiet) {
        console.line(step.address.text + QLatin1String(" = ") +
                     valueText(*step.address.type, step.bytes, step.count));
    }
    if (!result.ok) {
        console.error(result.error);
    }
    return result.ok;
}

/// Says what was left out: a set point must not be taken for written.
void tellNotWritten(const WritePlan& plan, int from, Console& console) {
    QStringList left;
    for (int i = from; i < plan.steps.size(); ++i) {
        const TagAddress& address = plan.steps.at(i).address;
        left << address.text;
        if (plan.json) {
            DriverResult result;
            result.error = QStringLiteral("not written, since the write before it failed");
            console.json(accessJson(address, 1, result, QByteArray()));
        }
    }
    if (!left.isEmpty()) {
        console.error(QStringLiteral("micro800: not written, since the write before failed: %1")
                          .arg(left.join(QLatin1String(", "))));
    }
}

}  // namespace

CommandHelp writeHelp() {
    CommandHelp help;
    help.name = QStringLiteral("write");
    help.summary = QStringLiteral("writes tags and elements of arrays");
    help.synopsis << QStringLiteral("--host HOST [OPTION...] ADDRESS VALUE...")
                  << QStringLiteral("--host HOST [OPTION...] ADDRESS=VALUE[,VALUE...]|@FILE...");
    help.description
        << QStringLiteral(
               "Writes the value and prints 'ADDRESS = VALUE' after the controller has confirmed "
               "it. Several values go to successive elements of an array in one request, from the "
               "element in the address on. A write is never repeated: after 'no answer in time' "
               "read the tag.")
        << QStringLiteral(
               "With assignments, writes several tags in the given order. All of them are checked "
               "before the first is sent. After a failure the rest is not written. Separate values "
               "for successive elements with commas; a STRING is all text after the =. @FILE "
               "stands for the assignments in FILE and - for those on standard input: one per "
               "line, # begins a comment.")
        << QStringLiteral(
               "The prefix gives the type of the values; nothing is sent if one does not fit. "
               "Whole numbers are decimal or hexadecimal (0x2A), in the type's range. REAL and "
               "LREAL take finite numbers with a point, with or without an exponent. BOOL takes "
               "true, false, on, off, yes, no, 1 or 0. A STRING is the whole argument: 1 to 255 "
               "characters of Latin-1.")
        << QStringLiteral(
               "A negative number is a value and never an option. After '--' every argument is an "
               "address or a value.");
    help.options = connectionOptionSpecs(false);
    help.options << OptionSpec{QStringLiteral("count"), QStringLiteral("N"),
                               QStringLiteral("Refuses to write unless exactly N values are "
                                              "given."),
                               QStringLiteral("the number of values")}
                 << OptionSpec{QStringLiteral("json"), QString(),
                               QStringLiteral("Prints one JSON object per write: address, type, "
                                              "ok, ms, and value, values or error."),
                               QString()}
                 << OptionSpec{QStringLiteral("quiet"), QString(),
                               QStringLiteral("Prints nothing but errors."), QString()};
    help.examples << QStringLiteral(
                         "micro800 write --host 192.168.1.20 DINT0:SETPOINT 42\n"
                         "DINT0:SETPOINT = 42")
                  << QStringLiteral(
                         "micro800 write --host 192.168.1.20 'INT0:LEVELS[3]' 10 -20 30\n"
                         "INT0:LEVELS[3] = 10 -20 30")
                  << QStringLiteral(
                         "micro800 write --host plc DINT0:SETPOINT=42 BOOL0:RUN=on "
                         "'INT0:LEVELS[0]=1,2'\n"
                         "DINT0:SETPOINT = 42\n"
                         "BOOL0:RUN = true\n"
                         "INT0:LEVELS[0] = 1 2")
                  << QStringLiteral(
                         "micro800 write --host 192.168.1.20 DINT0:SETPOINT 5000000000\n"
                         "micro800 write: DINT0:SETPOINT: 5000000000 does not fit DINT "
                         "(-2147483648 to\n2147483647)")
                  << QStringLiteral(
                         "micro800 write --host 192.168.1.20 STRING0:NAME -- --none--\n"
                         "STRING0:NAME = \"--none--\"");
    return help;
}

int runWrite(const CommandLine& line, Console& console) {
    const QString name = QStringLiteral("write");
    WritePlan plan;
    QString problem;
    if (!planWrite(line, &plan, &problem)) {
        return wrongUsage(console, name, problem);
    }
    DriverSession session(plan.options.connection);
    if (!openSession(plan.options, &session, console)) {
        return kExitFailed;
    }
    for (const WriteStep& step : plan.steps) {
        if (step.command.getDataSize() > session.blockSize()) {
            return wrongUsage(console, name, tooLarge(step.command, session.blockSize()));
        }
    }
    for (int i = 0; i < plan.steps.size(); ++i) {
        if (!writeOne(plan, plan.steps.at(i), &session, console)) {
            tellNotWritten(plan, i + 1, console);
            return kExitFailed;
        }
    }
    return kExitOk;
}
