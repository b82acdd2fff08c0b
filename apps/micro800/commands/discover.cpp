#include "apps/micro800/commands/command.h"
#include "apps/micro800/controller/discovery/device_list.h"
#include "apps/micro800/controller/discovery/discovery.h"
#include "apps/micro800/options/controller_options.h"

namespace {

const int kShortestTimeoutMs = 10;
const int kLongestTimeoutMs = 600000;

bool planDiscover(const CommandLine& line, DiscoveryPlan* plan, QString* problem) {
    if (!line.positional().isEmpty()) {
        *problem = QStringLiteral("unexpected argument %1").arg(line.positional().first());
        return false;
    }
    plan->interfaces = line.values(QStringLiteral("interface"));
    plan->broadcasts = line.values(QStringLiteral("broadcast"));
    int port = 0;
    if (!line.number(QStringLiteral("port"), 1, 65535, plan->port, &port, problem) ||
        !line.number(QStringLiteral("timeout"), kShortestTimeoutMs, kLongestTimeoutMs,
                     plan->timeoutMs, &plan->timeoutMs, problem)) {
        return false;
    }
    plan->port = static_cast<unsigned short>(port);
    return true;
}

QVector<OptionSpec> discoverOptions() {
    const DiscoveryPlan defaults;
    return {
        {QStringLiteral("interface"), QStringLiteral("NAME"),
         QStringLiteral("Asks on this network interface only. May be given more than once."),
         QString()},
        {QStringLiteral("broadcast"), QStringLiteral("IP"),
         QStringLiteral("Sends to this address, of a broadcast or of one device, and to no "
                        "interface that --interface does not name. May be given more than once."),
         QString()},
        {QStringLiteral("port"), QStringLiteral("PORT"), QStringLiteral("The devices' UDP port."),
         QString::number(defaults.port)},
        {QStringLiteral("timeout"), QStringLiteral("MS"),
         QStringLiteral("Time to collect replies, in milliseconds. A device may delay its reply by "
                        "half a second."),
         QString::number(defaults.timeoutMs)},
        {QStringLiteral("json"), QString(),
         QStringLiteral("Prints one JSON object per device: addresses, and the fields of 'micro800 "
                        "identify --json'."),
         QString()},
        verboseOptionSpec(),
    };
}

}  // namespace

CommandHelp discoverHelp() {
    CommandHelp help;
    help.name = QStringLiteral("discover");
    help.summary = QStringLiteral("finds the controllers on the network");
    help.synopsis << QStringLiteral("[OPTION...]");
    help.description
        << QStringLiteral(
               "Broadcasts ListIdentity by UDP on every active network interface and lists the "
               "devices that reply, one line per device, also if it replies more than once or from "
               "several addresses. Every EtherNet/IP device replies, drives and panels as well; "
               "the product name of a Micro800 begins with 2080-.")
        << QStringLiteral(
               "A broadcast does not pass a router. For a controller in another network use "
               "'micro800 identify --host HOST'.")
        << QStringLiteral("The exit status is 1 if no device replies.");
    help.options = discoverOptions();
    help.examples
        << QStringLiteral(
               "micro800 discover\n"
               "ADDRESS             PRODUCT      REVISION  SERIAL      STATE        VENDOR\n"
               "192.168.1.20:44818  \"2080-LC50\"  12.11     0x6080C0DE  operational  ...")
        << QStringLiteral("micro800 discover --interface eth1 --timeout 3000")
        << QStringLiteral("micro800 discover --broadcast 192.168.1.255 --json | jq .addresses");
    return help;
}

int runDiscover(const CommandLine& line, Console& console) {
    DiscoveryPlan plan;
    QString problem;
    if (!planDiscover(line, &plan, &problem)) {
        return wrongUsage(console, QStringLiteral("discover"), problem);
    }
    DeviceList list;
    const AnswerSink take = [&list](const QString& sender, const CipIdentity& identity) {
        list.add(sender, identity);
    };
    if (!discover(plan, traceFrom(line, &console), take, &problem)) {
        console.error(QStringLiteral("micro800: %1").arg(problem));
        return kExitFailed;
    }
    if (list.devices().isEmpty()) {
        console.error(
            QStringLiteral("micro800: no device answers within %1 ms; check the cable, and that "
                           "this computer is in the controller's network; 'micro800 identify "
                           "--host HOST' asks one address directly")
                .arg(plan.timeoutMs));
        return kExitFailed;
    }
    if (line.isSet(QStringLiteral("json"))) {
        for (const FoundDevice& device : list.devices()) {
            console.json(deviceJson(device));
        }
    } else {
        for (const QString& text : deviceTable(list.devices())) {
            console.line(text);
        }
    }
    return kExitOk;
}
