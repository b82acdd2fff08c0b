#include <QJsonObject>
#include <memory>

#include "apps/micro800/commands/command.h"
#include "apps/micro800/options/connection_options.h"
#include "apps/micro800/plugin/plugin.h"
#include "apps/micro800/project/app_directory.h"
#include "apps/micro800/reports/live_figures.h"
#include "apps/micro800/terminal/fact_list.h"
#include "common/device_setting.h"
#include "common/driver_setting.h"

namespace {

QVector<Fact> pluginFacts(const Plugin& plugin) {
    DriverInterface* driver = plugin.driver();
    return {
        textFact("Plugin", "plugin", plugin.fileName()),
        textFact("Interface", "interface", plugin.interfaceId()),
        textFact("Name", "name", driver->name()),
        textFact("Vendor", "vendor", driver->vender()),
        textFact("Version", "version", driver->getVersionNumber()),
    };
}

Fact driverSettingFact(DriverInterface* driver) {
    const std::unique_ptr<DriverSetting> setting(driver->getDefaultDriverSetting());
    const QJsonObject object{{QStringLiteral("timeout"), setting->timeout},
                             {QStringLiteral("retry"), setting->retry},
                             {QStringLiteral("station"), setting->stationid},
                             {QStringLiteral("delay"), setting->delay}};
    const QString text = QStringLiteral("time-out %1 ms, retry %2, station %3, delay %4 ms")
                             .arg(setting->timeout)
                             .arg(setting->retry)
                             .arg(setting->stationid)
                             .arg(setting->delay);
    return {"Driver setting", "driver_setting", object, text};
}

Fact serialSettingFact(DriverInterface* driver) {
    const std::unique_ptr<DeviceSetting> setting(driver->getDefaultSerialDeviceSetting());
    const int type = setting->type;
    const QJsonObject object{{QStringLiteral("type"), type},
                             {QStringLiteral("name"), setting->name},
                             {QStringLiteral("baudrate"), setting->baudrate},
                             {QStringLiteral("databits"), setting->databits},
                             {QStringLiteral("stopbits"), setting->stopbits},
                             {QStringLiteral("parity"), setting->parity}};
    const QString text =
        QStringLiteral("%1 (type %2), %3 baud, %4 data bits, stop bits code %5, parity code %6")
            .arg(setting->name, QString::number(type), QString::number(setting->baudrate),
                 QString::number(setting->databits), QString::number(setting->stopbits),
                 QString::number(setting->parity));
    return {"Serial setting", "serial_setting", object, text};
}

QVector<Fact> defaultFacts(DriverInterface* driver) {
    return {
        driverSettingFact(driver),
        textFact("Setting text", "setting_text", driver->getStringBasedDefaultDriverSetting()),
        serialSettingFact(driver),
    };
}

QVector<Fact> capabilityFacts(DriverInterface* driver) {
    const int flags = driver->supportedCommunicationFlags();
    const int block = driver->getBlockAccessSize();
    const int bitBlock = driver->getBitBlockAccessSize();
    const int total = driver->totalSize();
    const bool session = driver->isSupportSessionCommand();
    return {
        numberFact("Communication flags", "communication_flags", flags,
                   QStringLiteral("%1 (0x%2)").arg(flags).arg(flags, 0, 16)),
        numberFact("Total size", "total_size", total, QString::number(total)),
        numberFact("Block access", "block_access_size", block, QString::number(block)),
        numberFact("Bit block access", "bit_block_access_size", bitBlock,
                   QString::number(bitBlock)),
        {"Session commands", "session_commands", session,
         session ? QStringLiteral("supported") : QStringLiteral("not supported")},
    };
}

}  // namespace

CommandHelp infoHelp() {
    CommandHelp help;
    help.name = QStringLiteral("info");
    help.summary = QStringLiteral("shows the plugin's identity, settings and counters");
    help.synopsis << QStringLiteral("[OPTION...]")
                  << QStringLiteral("--host HOST [--for SECONDS] [OPTION...] [ADDRESS...]");
    help.description
        << QStringLiteral(
               "Loads the plugin file and prints its identity, its default settings and its "
               "features. No controller is needed.")
        << QStringLiteral(
               "With --host the driver polls the addresses for some time, and info prints the "
               "driver's counters: requests, replies by CIP status, time-outs, connections, the "
               "time of a pass and the longest wait of a call. Without an address it reads a name "
               "that no controller has; the refusal is a reply, too. The exit status is 1 if the "
               "controller did not reply at all.");
    help.options = liveFigureOptionSpecs();
    help.options << OptionSpec{QStringLiteral("json"), QString(),
                               QStringLiteral("Prints one JSON object."), QString()};
    help.examples << QStringLiteral(
                         "micro800 info\n"
                         "Plugin               "
                         ".../micro800/libab_micro800_ethernet.so\n"
                         "Interface            com.tarvelon.drivers.DriverInterface/1.1\n"
                         "Name                 Micro800 Ethernet\n"
                         "...")
                  << QStringLiteral("micro800 info --host 192.168.1.20 --for 10s DINT0:COUNTER")
                  << QStringLiteral("micro800 info --plugin ./libab_micro800_ethernet.so --json");
    return help;
}

int runInfo(const CommandLine& line, Console& console) {
    if (line.isSet(QStringLiteral("host"))) {
        return runLiveFigures(line, console);
    }
    if (!line.positional().isEmpty()) {
        return wrongUsage(console, QStringLiteral("info"),
                          QStringLiteral("unexpected argument %1").arg(line.positional().first()));
    }
    Plugin plugin;
    QString file;
    QString problem;
    if (!findPlugin(line.value(QStringLiteral("plugin")), programDirectory(), &file, &problem) ||
        !plugin.load(file, &problem)) {
        console.error(QStringLiteral("micro800: %1").arg(problem));
        return kExitFailed;
    }
    DriverInterface* driver = plugin.driver();
    printFacts(pluginFacts(plugin) + defaultFacts(driver) + capabilityFacts(driver),
               line.isSet(QStringLiteral("json")), console);
    return kExitOk;
}
