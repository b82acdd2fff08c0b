#include "apps/micro800/base/problem.h"
#include "apps/micro800/base/timings.h"
#include "apps/micro800/commands/command.h"
#include "apps/micro800/options/addresses.h"
#include "apps/micro800/options/connection_options.h"
#include "apps/micro800/polling/poll_plan.h"
#include "apps/micro800/reports/plan_report.h"

namespace {

/// What a Micro800 takes for a read on a quiet network.
const double kUsualReadMs = 6;
const double kLongestReadMs = 600000;
const int kMeasuredReads = 20;

struct PollRequest {
    ConnectionOptions options;
    QVector<ListedAddress> addresses;
    QVector<ListedAddress> declared;
    ReadTime read;
    bool measure = false;
    bool json = false;
};

bool readTimeFrom(const CommandLine& line, ReadTime* read, QString* problem) {
    read->ms = kUsualReadMs;
    read->source = QStringLiteral("assumed; --host measures it, --read-ms states it");
    if (!line.isSet(QStringLiteral("read-ms"))) {
        return true;
    }
    const QString text = line.value(QStringLiteral("read-ms"));
    bool ok = false;
    read->ms = text.toDouble(&ok);
    read->source = QStringLiteral("as given");
    // Written so that nan fails as well.
    return (ok && read->ms > 0 && read->ms <= kLongestReadMs) ||
           fail(problem,
                QStringLiteral("--read-ms %1: not a number of milliseconds above 0").arg(text));
}

bool requestFrom(const CommandLine& line, PollRequest* request, QString* problem) {
    const bool stated = line.isSet(QStringLiteral("read-ms"));
    const bool named = line.isSet(QStringLiteral("host"));
    if (stated && named) {
        return fail(problem,
                    QStringLiteral("--host measures what --read-ms states: give one of them"));
    }
    request->json = line.isSet(QStringLiteral("json"));
    request->measure = named || (!stated && !qEnvironmentVariableIsEmpty("MICRO800_HOST"));
    ConnectionOptions* options = &request->options;
    if (!(request->measure ? connectionOptionsFrom(line, options, problem)
                           : projectOptionsFrom(line, options, problem)) ||
        !readTimeFrom(line, &request->read, problem) ||
        !listedAddressesFrom(line, &request->addresses, problem)) {
        return false;
    }
    return options->project.isEmpty() ||
           declaredArrays(options->project, options->connection.link, &request->declared, problem);
}

/// Reads entries from all over the list through the plugin. False when none of them can be read.
bool measure(const QVector<ListedAddress>& addresses, DriverSession* session, ReadTime* time,
             QString* problem) {
    Timings timings;
    // One more than is counted: the first read opens the connection.
    for (int i = 0; i <= kMeasuredReads; ++i) {
        const int place = static_cast<int>(qint64(i) * addresses.size() / (kMeasuredReads + 1));
        CommunicatorCommand command;
        if (!commandFor(addresses.at(place).first, 1, &command, problem)) {
            return false;
        }
        const DriverResult result = session->read(command);
        if (!result.ok) {
            *problem = result.error;
        } else if (i > 0) {
            timings.add(result.microseconds / 1000);
        }
    }
    time->ms = timings.median();
    time->source = QStringLiteral("median of %1 reads through the plugin").arg(timings.good());
    return timings.good() > 0;
}

}  // namespace

CommandHelp planHelp() {
    CommandHelp help;
    help.name = QStringLiteral("plan");
    help.summary = QStringLiteral("calculates the cost of polling tags, and improvements");
    help.synopsis << QStringLiteral("[--host HOST|--read-ms MS] [OPTION...] ADDRESS|@FILE...")
                  << QStringLiteral("[--host HOST|--read-ms MS] [OPTION...] --project DIR");
    help.description
        << QStringLiteral(
               "Calculates the polling of a panel's addresses: the session list, the requests per "
               "pass, and the time of a pass. Every tag is refreshed once per pass.")
        << QStringLiteral(
               "The driver polls one entry after the other with a pause of 1 ms after each. A "
               "declared array is one entry, with one request per 496 bytes of values; an element "
               "of another array is an entry of its own, and so is every STRING. The session list "
               "has at most 4096 bytes; a longer one is not polled at all.")
        << QStringLiteral(
               "With --project the arrays that the project declares are polled as a whole; without "
               "addresses they are the list. A range among the addresses, INT0:LEVELS[0..9], "
               "counts as a declared array.")
        << addressFileHelp()
        << QStringLiteral(
               "Bars show the parts of a pass. The improvements have their gain: a declaration for "
               "elements that are polled one by one, an array for tags of one type. The "
               "declaration gets the largest index of the list as its bound; a real array can be "
               "larger. The exit status is 1 if the list is too long.");
    help.options = connectionOptionSpecs(true);
    help.options << OptionSpec{QStringLiteral("read-ms"), QStringLiteral("MS"),
                               QStringLiteral("Time of a read, in milliseconds. With --host (or "
                                              "MICRO800_HOST) it is measured instead."),
                               QString::number(kUsualReadMs)}
                 << OptionSpec{
                        QStringLiteral("json"), QString(),
                        QStringLiteral("Prints one JSON object: addresses, entries, requests, "
                                       "read_ms, pass_ms, refresh_ms, list_bytes, list_limit, "
                                       "polled, parts and advice."),
                        QString()};
    help.examples << QStringLiteral(
                         "micro800 plan --read-ms 6 @panel.txt\n"
                         "Addresses            41\n"
                         "Entries              41\n"
                         "Requests per pass    41\n"
                         "Time of a read       6.0 ms (as given)\n"
                         "Time of a pass       287.0 ms\n"
                         "Refresh of a tag     every 287.0 ms, once per pass\n"
                         "Session list         242 of 4096 bytes\n"
                         "...")
                  << QStringLiteral(
                         "micro800 plan --host 192.168.1.20 --project ./panel @panel.txt")
                  << QStringLiteral("micro800 plan --json @panel.txt | jq .polled");
    return help;
}

int runPlan(const CommandLine& line, Console& console) {
    PollRequest request;
    QString problem;
    if (!requestFrom(line, &request, &problem)) {
        return wrongUsage(console, QStringLiteral("plan"), problem);
    }
    if (request.measure) {
        DriverSession session(request.options.connection);
        if (!openSession(request.options, &session, console)) {
            return kExitFailed;
        }
        if (!measure(request.addresses, &session, &request.read, &problem)) {
            console.error(problem);
            return kExitFailed;
        }
    }
    const PollPlan plan(request.addresses, request.declared);
    printPlan(plan, request.addresses.size(), request.read, request.json, console);
    return plan.fits() ? kExitOk : kExitFailed;
}
