#include <QElapsedTimer>
#include <QThread>

#include "apps/micro800/commands/addresses.h"
#include "apps/micro800/commands/command.h"
#include "apps/micro800/commands/connection_options.h"
#include "apps/micro800/tag_json.h"
#include "apps/micro800/value_format.h"

namespace {

const int kMostRepeats = 1000000000;
const int kLongestIntervalMs = 3600000;
const int kDefaultIntervalMs = 1000;

struct ReadPlan {
    ConnectionOptions options;
    QVector<TagAddress> addresses;
    QVector<CommunicatorCommand> commands;  // one an address
    int count = 1;
    int repeat = 1;
    int intervalMs = kDefaultIntervalMs;
    bool json = false;
};

bool planRead(const CommandLine& line, ReadPlan* plan, QString* problem) {
    if (!connectionOptionsFrom(line, &plan->options, problem) ||
        !line.number(QStringLiteral("count"), 1, 65535, 1, &plan->count, problem) ||
        !line.number(QStringLiteral("repeat"), 1, kMostRepeats, 1, &plan->repeat, problem) ||
        !line.number(QStringLiteral("interval"), 0, kLongestIntervalMs, kDefaultIntervalMs,
                     &plan->intervalMs, problem)) {
        return false;
    }
    plan->json = line.isSet(QStringLiteral("json"));
    return addressesFrom(line, plan->count, &plan->addresses, &plan->commands, problem);
}

/// Reads one address and prints it. False when the read failed.
bool readOne(const ReadPlan& plan, int index, DriverSession* session, Console& console) {
    const TagAddress& address = plan.addresses.at(index);
    const DriverResult result = session->read(plan.commands.at(index));
    if (plan.json)
        console.json(accessJson(address, plan.count, result, result.bytes));
    else if (result.ok)
        console.line(address.text + QLatin1String(" = ") +
                     valueText(*address.type, result.bytes, plan.count));
    if (!result.ok)
        console.error(result.error);
    return result.ok;
}

bool readRounds(const ReadPlan& plan, DriverSession* session, Console& console) {
    bool allOk = true;
    QElapsedTimer clock;
    clock.start();
    for (int round = 0; round < plan.repeat; ++round) {
        // By the clock and not by pauses, so that slow reads do not stretch the rhythm.
        const qint64 pause = qint64(round) * plan.intervalMs - clock.elapsed();
        if (pause > 0)
            QThread::msleep(static_cast<unsigned long>(pause));
        for (int i = 0; i < plan.addresses.size(); ++i)
            allOk = readOne(plan, i, session, console) && allOk;
        console.flush();
    }
    return allOk;
}

QVector<OptionSpec> readOptions() {
    return connectionOptionSpecs(true) +
           QVector<OptionSpec>{
               {QStringLiteral("count"), QStringLiteral("N"),
                QStringLiteral(
                    "Elements to read from each address, which must be an array element."),
                QStringLiteral("1")},
               {QStringLiteral("repeat"), QStringLiteral("N"), QStringLiteral("Rounds to read."),
                QStringLiteral("1")},
               {QStringLiteral("interval"), QStringLiteral("MS"),
                QStringLiteral("From the start of one round to the start of the next."),
                QString::number(kDefaultIntervalMs)},
               {QStringLiteral("json"), QString(),
                QStringLiteral("Prints one JSON object a read: address, type, ok, ms, and value, "
                               "values (with --count) or error. Infinities and nan are strings. A "
                               "failure goes to standard error as well."),
                QString()},
           };
}

}  // namespace

CommandHelp readHelp() {
    CommandHelp help;
    help.name = QStringLiteral("read");
    help.summary = QStringLiteral("reads tags and prints their values");
    help.synopsis << QStringLiteral("--host HOST [OPTION...] ADDRESS...");
    help.description
        << QStringLiteral(
               "Reads each address once and prints a line 'ADDRESS = VALUE'. A failure "
               "goes to standard error as the driver words it; the other addresses are "
               "read all the same.")
        << QStringLiteral(
               "Whole numbers are decimal. REAL and LREAL are the shortest text that "
               "gives the same value again, or inf, -inf, nan. BOOL is true or false. A "
               "STRING stands in double quotes with \\\" \\\\ \\n \\r \\t and \\xNN; "
               "zero bytes at its end are not shown, since the driver pads with them.")
        << QStringLiteral(
               "An address without an index is one element, also where the controller "
               "has an array of that name. With --count the address names the first "
               "element, and the values stand side by side.");
    help.options = readOptions();
    help.examples << QStringLiteral(
                         "micro800 read --host 192.168.1.20 DINT0:COUNTER "
                         "'INT0:GRID[2,3]' STRING0:NAME\n"
                         "DINT0:COUNTER = 42\n"
                         "INT0:GRID[2,3] = -7\n"
                         "STRING0:NAME = \"Mixer 3\"")
                  << QStringLiteral(
                         "micro800 read --host 192.168.1.20 --count 3 "
                         "'REAL0:LEVELS[0]'\n"
                         "REAL0:LEVELS[0] = 1.5 2 2.5")
                  << QStringLiteral(
                         "micro800 read --host plc --json --repeat 60 DINT0:COUNTER\n"
                         "{\"address\":\"DINT0:COUNTER\",\"ms\":6.412,\"ok\":true,"
                         "\"type\":\"DINT\",\"value\":42}\n"
                         "...");
    return help;
}

int runRead(const CommandLine& line, Console& console) {
    ReadPlan plan;
    QString problem;
    if (!planRead(line, &plan, &problem))
        return wrongUsage(console, QStringLiteral("read"), problem);
    DriverSession session(plan.options.connection);
    if (!openSession(plan.options, &session, console))
        return kExitFailed;
    for (const CommunicatorCommand& command : plan.commands) {
        if (command.getDataSize() > session.blockSize()) {
            return wrongUsage(console, QStringLiteral("read"),
                              tooLarge(command, session.blockSize()));
        }
    }
    return readRounds(plan, &session, console) ? kExitOk : kExitFailed;
}
