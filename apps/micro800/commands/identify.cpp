#include "apps/micro800/commands/command.h"
#include "apps/micro800/controller/identity_facts.h"
#include "apps/micro800/controller/identity_query.h"
#include "apps/micro800/options/connection_options.h"
#include "apps/micro800/options/controller_options.h"

namespace {

/// Both results of --json say whom was asked.
QJsonObject resultJson(const Connection& connection, bool ok, QJsonObject object) {
    object[QStringLiteral("host")] = connection.host;
    object[QStringLiteral("port")] = connection.port;
    object[QStringLiteral("ok")] = ok;
    return object;
}

bool planIdentify(const CommandLine& line, Connection* connection, QString* problem) {
    if (!line.positional().isEmpty()) {
        *problem = QStringLiteral("unexpected argument %1").arg(line.positional().first());
        return false;
    }
    return endpointFrom(line, connection, problem);
}

}  // namespace

CommandHelp identifyHelp() {
    CommandHelp help;
    help.name = QStringLiteral("identify");
    help.summary = QStringLiteral("shows a controller's model, firmware and state");
    help.synopsis << QStringLiteral("--host HOST [OPTION...]");
    help.description << QStringLiteral(
                            "Sends one ListIdentity over TCP and prints the device's vendor, "
                            "product, revision, serial number, status word and state. It opens no "
                            "session, uses no connection of the controller, and needs neither "
                            "plugin nor project: try it first when reads fail.")
                     << QStringLiteral(
                            "The product name is in double quotes with \\\" \\\\ \\n \\r \\t and "
                            "\\xNN. A vendor or product type without a name in this program is a "
                            "number. The device itself reports the address.");
    help.options =
        endpointOptionSpecs(QStringLiteral(
            "Time-out for the connection and for the reply, in milliseconds each.")) +
        QVector<OptionSpec>{
            {QStringLiteral("json"), QString(),
             QStringLiteral("Prints one JSON object: host, port, ok, and the facts or error. A "
                            "failure goes to standard error as well."),
             QString()},
            verboseOptionSpec(),
        };
    help.examples << QStringLiteral(
                         "micro800 identify --host 192.168.1.20\n"
                         "Vendor               Rockwell Automation/Allen-Bradley (1)\n"
                         "Product type         programmable logic controller (14)\n"
                         "Product code         186\n"
                         "Product name         \"2080-LC50-48QWB\"\n"
                         "Revision             12.11\n"
                         "Serial number        0x6080C0DE\n"
                         "Status               0x0034 (configured, no I/O connections)\n"
                         "State                operational\n"
                         "Address              192.168.1.20:44818")
                  << QStringLiteral("micro800 identify --host plc --timeout 500 --json");
    return help;
}

int runIdentify(const CommandLine& line, Console& console) {
    Connection connection;
    QString problem;
    if (!planIdentify(line, &connection, &problem)) {
        return wrongUsage(console, QStringLiteral("identify"), problem);
    }
    const bool json = line.isSet(QStringLiteral("json"));
    CipIdentity identity;
    if (!queryIdentity(connection, traceFrom(line, &console), &identity, &problem)) {
        if (json) {
            console.json(resultJson(connection, false, {{QStringLiteral("error"), problem}}));
        }
        console.error(QStringLiteral("micro800: %1").arg(problem));
        return kExitFailed;
    }
    const QVector<Fact> facts = identityFacts(identity);
    if (json) {
        console.json(resultJson(connection, true, factsJson(facts)));
    } else {
        printFacts(facts, false, console);
    }
    return kExitOk;
}
