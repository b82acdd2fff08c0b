#include <QElapsedTimer>
#include <QThread>

#include "apps/micro800/base/timings.h"
#include "apps/micro800/commands/command.h"
#include "apps/micro800/options/addresses.h"
#include "apps/micro800/options/connection_options.h"
#include "apps/micro800/options/output_options.h"
#include "apps/micro800/plugin/tag_csv.h"
#include "apps/micro800/plugin/tag_json.h"

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
    OutputOptions output;
};

bool planRead(const CommandLine& line, ReadPlan* plan, QString* problem) {
    if (!connectionOptionsFrom(line, &plan->options, problem) ||
        !line.number(QStringLiteral("count"), 1, 65535, 1, &plan->count, problem) ||
        !line.number(QStringLiteral("repeat"), 1, kMostRepeats, 1, &plan->repeat, problem) ||
        !line.number(QStringLiteral("interval"), 0, kLongestIntervalMs, kDefaultIntervalMs,
                     &plan->intervalMs, problem)) {
        return false;
    }
    return outputOptionsFrom(line, &plan->output, problem) &&
           addressesFrom(line, plan->count, &plan->addresses, &plan->commands, problem);
}

void printValue(const ReadPlan& plan, const TagAddress& address, const DriverResult& result,
                Console& console) {
    const OutputOptions& output = plan.output;
    if (output.quiet) {
        return;
    }
    if (output.form == OutputOptions::Form::kJson) {
        console.json(accessJson(address, plan.count, result, result.bytes, output.base));
    } else if (output.form == OutputOptions::Form::kCsv) {
        console.line(accessCsv(address, plan.count, result, output.base));
    } else if (result.ok) {
        console.line(address.text + QLatin1String(" = ") +
                     valueText(*address.type, result.bytes, plan.count, output.base));
    }
}

/// Reads one address and prints it.
void readOne(const ReadPlan& plan, int index, DriverSession* session, Timings* timings,
             Console& console) {
    const DriverResult result = session->read(plan.commands.at(index));
    printValue(plan, plan.addresses.at(index), result, console);
    if (result.ok) {
        timings->add(result.microseconds / 1000);
    } else {
        timings->addFailure();
        console.error(result.error);
    }
}

/// False when a read failed.
bool readRounds(const ReadPlan& plan, DriverSession* session, Console& console) {
    Timings timings;
    if (plan.output.form == OutputOptions::Form::kCsv && !plan.output.quiet) {
        console.line(accessCsvHeader());
    }
    QElapsedTimer clock;
    clock.start();
    for (int round = 0; round < plan.repeat && !console.hasFailed(); ++round) {
        // By the clock and not by pauses, so that slow reads do not stretch the rhythm.
        const qint64 pause = qint64(round) * plan.intervalMs - clock.elapsed();
        if (pause > 0) {
            QThread::msleep(static_cast<unsigned long>(pause));
        }
        for (int i = 0; i < plan.addresses.size(); ++i) {
            readOne(plan, i, session, &timings, console);
        }
        console.flush();
    }
    if (plan.repeat > 1 && plan.output.isText() && !plan.output.quiet) {
        console.line(timings.summary(QStringLiteral("reads")));
    }
    return timings.failures() == 0;
}

QVector<OptionSpec> readOptions() {
    return connectionOptionSpecs(true) +
           QVector<OptionSpec>{
               {QStringLiteral("count"), QStringLiteral("N"),
                QStringLiteral(
                    "Elements to read from each address, which must be an array element."),
                QStringLiteral("1")},
               {QStringLiteral("repeat"), QStringLiteral("N"),
                QStringLiteral("Rounds to read. After more than one round a line shows reads, "
                               "failures, median and 99th percentile of the read times."),
                QStringLiteral("1")},
               {QStringLiteral("interval"), QStringLiteral("MS"),
                QStringLiteral("From the start of one round to the start of the next."),
                QString::number(kDefaultIntervalMs)},
           } +
           outputOptionSpecs(
               QStringLiteral("Prints one JSON object per read: address, type, ok, ms, and value, "
                              "values (with --count) or error. Infinities and nan are strings. A "
                              "failure goes to standard error as well."),
               QStringLiteral(
                   "Prints a line with the names of the fields, and one line per read with as many "
                   "fields (RFC 4180). A failure goes to standard error as well."),
               QStringLiteral("Prints nothing but errors."));
}

}  // namespace

CommandHelp readHelp() {
    CommandHelp help;
    help.name = QStringLiteral("read");
    help.summary = QStringLiteral("reads tags and prints their values");
    help.synopsis << QStringLiteral("--host HOST [OPTION...] ADDRESS|@FILE...");
    help.description
        << QStringLiteral(
               "Reads each address once and prints a line 'ADDRESS = VALUE'. The driver's text of "
               "a failure goes to standard error; the other addresses are read, too.")
        << addressFileHelp()
        << QStringLiteral(
               "Whole numbers are decimal. REAL and LREAL are the shortest text that gives the "
               "same value again, or inf, -inf, nan. BOOL is true or false. A STRING is in double "
               "quotes with \\\" \\\\ \\n \\r \\t and \\xNN; zero bytes at its end are not shown, "
               "since the driver zero-pads.")
        << QStringLiteral(
               "An address without an index is one element, also if the controller has an array of "
               "that name. With --count the address is the first element, and the values are on "
               "one line.");
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
                         "micro800 read --host plc --hex --csv @alarms.txt\n"
                         "address,type,ok,ms,value,error\n"
                         "UINT0:ALARMS,UINT,true,6.390,0x8001,")
                  << QStringLiteral(
                         "micro800 read --host plc --repeat 100 --interval 0 DINT0:COUNTER\n"
                         "...\n"
                         "100 reads, 0 failures; median 6.402 ms, p99 7.115 ms")
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
    if (!planRead(line, &plan, &problem)) {
        return wrongUsage(console, QStringLiteral("read"), problem);
    }
    DriverSession session(plan.options.connection);
    if (!openSession(plan.options, &session, console)) {
        return kExitFailed;
    }
    for (const CommunicatorCommand& command : plan.commands) {
        if (command.getDataSize() > session.blockSize()) {
            return wrongUsage(console, QStringLiteral("read"),
                              tooLarge(command, session.blockSize()));
        }
    }
    return readRounds(plan, &session, console) ? kExitOk : kExitFailed;
}
