#include "apps/micro800/address.h"
#include "apps/micro800/commands/command.h"
#include "apps/micro800/commands/connection_options.h"
#include "apps/micro800/tag_json.h"
#include "apps/micro800/value_format.h"

namespace {

struct WritePlan {
    ConnectionOptions options;
    TagAddress address;
    CommunicatorCommand command;
    QByteArray bytes;
    int count = 1;
    bool json = false;
    bool quiet = false;
};

bool valuesFrom(const QStringList& texts, const CommandLine& line, WritePlan* plan,
                QString* problem) {
    plan->count = texts.size();
    int wanted = 0;
    if (!line.number(QStringLiteral("count"), 1, 65535, plan->count, &wanted, problem))
        return false;
    if (plan->count == 0) {
        *problem = QStringLiteral("%1: no value given").arg(plan->address.text);
        return false;
    }
    if (wanted != plan->count) {
        *problem = QStringLiteral("--count %1, but %2 given")
                       .arg(QString::number(wanted),
                            plan->count == 1 ? QStringLiteral("1 value is")
                                             : QStringLiteral("%1 values are").arg(plan->count));
        return false;
    }
    if (!commandFor(plan->address, plan->count, &plan->command, problem))
        return false;
    for (const QString& text : texts) {
        if (!appendValue(*plan->address.type, text, &plan->bytes, problem)) {
            *problem = plan->address.text + QLatin1String(": ") + *problem;
            return false;
        }
    }
    // A string's command counts its bytes; for all others the count is right already.
    if (plan->address.type->kind == ValueKind::kString)
        plan->command.unitCount = static_cast<quint32>(plan->bytes.size());
    return true;
}

bool planWrite(const CommandLine& line, WritePlan* plan, QString* problem) {
    if (!connectionOptionsFrom(line, &plan->options, problem))
        return false;
    plan->json = line.isSet(QStringLiteral("json"));
    plan->quiet = line.isSet(QStringLiteral("quiet"));
    QStringList words = line.positional();
    if (words.isEmpty()) {
        *problem = QStringLiteral("no address given");
        return false;
    }
    return parseTagAddress(words.takeFirst(), &plan->address, problem) &&
           valuesFrom(words, line, plan, problem);
}

}  // namespace

CommandHelp writeHelp() {
    CommandHelp help;
    help.name = QStringLiteral("write");
    help.summary = QStringLiteral("writes one tag, or elements of one array");
    help.synopsis << QStringLiteral("--host HOST [OPTION...] ADDRESS VALUE...");
    help.description
        << QStringLiteral(
               "Writes the value and prints 'ADDRESS = VALUE' when the controller has "
               "confirmed it. Several values go to successive elements of an array in "
               "one request, beginning with the element that the address names. A write "
               "is never repeated: after 'no answer in time' read the tag to see what it "
               "holds.")
        << QStringLiteral(
               "Values are read by the prefix's type, and nothing is sent when one does "
               "not fit. Whole numbers are decimal or hexadecimal (0x2A), in the type's "
               "range. REAL and LREAL take finite numbers with a point, with or without "
               "an exponent. BOOL takes true, false, 1 or 0. A STRING is the argument as "
               "it stands: 1 to 255 characters of Latin-1.")
        << QStringLiteral(
               "A negative number is a value and never an option. After '--' everything "
               "is an address or a value.");
    help.options = connectionOptionSpecs(false);
    help.options << OptionSpec{QStringLiteral("count"), QStringLiteral("N"),
                               QStringLiteral("Refuses to write unless exactly N values are "
                                              "given."),
                               QStringLiteral("the number of values")}
                 << OptionSpec{QStringLiteral("json"), QString(),
                               QStringLiteral("Prints a JSON object: address, type, ok, ms, and "
                                              "value, values or error."),
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
    if (!planWrite(line, &plan, &problem))
        return wrongUsage(console, name, problem);
    DriverSession session(plan.options.connection);
    if (!openSession(plan.options, &session, console))
        return kExitFailed;
    if (plan.command.getDataSize() > session.blockSize())
        return wrongUsage(console, name, tooLarge(plan.command, session.blockSize()));

    const DriverResult result = session.write(plan.command, plan.bytes);
    if (plan.json)
        console.json(accessJson(plan.address, plan.count, result, plan.bytes));
    else if (result.ok && !plan.quiet)
        console.line(plan.address.text + QLatin1String(" = ") +
                     valueText(*plan.address.type, plan.bytes, plan.count));
    if (!result.ok)
        console.error(result.error);
    return result.ok ? kExitOk : kExitFailed;
}
