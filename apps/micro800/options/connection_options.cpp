#include "apps/micro800/options/connection_options.h"

#include <QDir>
#include <QFile>

#include "apps/micro800/base/host_lookup.h"
#include "apps/micro800/project/app_directory.h"

namespace {

const char kHostVariable[] = "MICRO800_HOST";
const char kRecordVariable[] = "MICRO800_RECORD";  // read by the plugin
const int kLongestTimeoutMs = 600000;
const int kMostRetries = 100;

OptionSpec option(const char* name, const char* valueName, const char* description,
                  const QString& defaultText = QString()) {
    return {QLatin1String(name), QLatin1String(valueName), QLatin1String(description), defaultText};
}

}  // namespace

OptionSpec pluginOptionSpec() {
    return option("plugin", "FILE",
                  "The driver's plugin file. Default: MICRO800_PLUGIN of the environment, or the "
                  "file in ../plugins or in the installed folder lib/ARCHITECTURE/micro800.");
}

QVector<OptionSpec> endpointOptionSpecs(const QString& timeoutDescription) {
    const Connection defaults;
    return {
        option("host", "HOST",
               "The controller's IP address or host name, or HOST:PORT as identify prints it. "
               "Default: MICRO800_HOST of the environment."),
        option("port", "PORT", "Its TCP port, unless the host contains one.",
               QString::number(defaults.port)),
        {QStringLiteral("timeout"), QStringLiteral("MS"), timeoutDescription,
         QString::number(defaults.timeoutMs)},
    };
}

bool hostAndPortFrom(const CommandLine& line, const HostText& given, QString* host, int* port,
                     QString* problem) {
    Endpoint endpoint;
    if (!parseEndpoint(given.text, &endpoint, problem)) {
        *problem = QStringLiteral("%1 %2").arg(QLatin1String(given.source), *problem);
        return false;
    }
    const int byDefault = endpoint.port > 0 ? endpoint.port : Connection().port;
    if (!line.number(QStringLiteral("port"), 1, 65535, byDefault, port, problem)) {
        return false;
    }
    if (endpoint.port > 0 && endpoint.port != *port) {
        *problem = QStringLiteral("%1 %2 and --port %3 name two ports")
                       .arg(QLatin1String(given.source), given.text, QString::number(*port));
        return false;
    }
    *host = endpoint.host;
    return true;
}

bool endpointFrom(const CommandLine& line, Connection* connection, QString* problem) {
    const bool isGiven = line.isSet(QStringLiteral("host"));
    const QString host =
        isGiven ? line.value(QStringLiteral("host")) : qEnvironmentVariable(kHostVariable);
    if (!isGiven && host.isEmpty()) {
        *problem = QStringLiteral("--host HOST is missing");
        return false;
    }
    int port = 0;
    const HostText given = {isGiven ? "--host" : kHostVariable, host};
    if (!hostAndPortFrom(line, given, &connection->host, &port, problem) ||
        !line.number(QStringLiteral("timeout"), 1, kLongestTimeoutMs, connection->timeoutMs,
                     &connection->timeoutMs, problem)) {
        return false;
    }
    connection->port = static_cast<unsigned short>(port);
    return true;
}

QVector<OptionSpec> connectionOptionSpecs(bool withRetry) {
    const Connection defaults;
    QVector<OptionSpec> specs = endpointOptionSpecs(QStringLiteral(
        "The driver's time-out in milliseconds: the worker waits so long for a connection and for "
        "each reply of the controller. A call for one tag ends an attempt after 1000 ms."));
    if (withRetry) {
        specs << option("retry", "N",
                        "Number of attempts after a read that the driver reported as failed. A "
                        "read without an answer in time is not tried again.",
                        QString::number(defaults.retry));
    }
    specs << option("link", "N",
                    "Number of the runtime's link, which selects the array declarations.",
                    QString::number(defaults.link))
          << option("project", "DIR",
                    "Directory in place of the runtime's application directory; the project's "
                    "array declarations are in DIR/compile/database/database (see 'micro800 "
                    "project'). Default: an empty temporary project.")
          << option("record", "DIR",
                    "The driver records into this directory, as with MICRO800_RECORD of the "
                    "environment (see 'micro800 record').")
          << pluginOptionSpec();
    return specs;
}

bool projectOptionsFrom(const CommandLine& line, ConnectionOptions* options, QString* problem) {
    options->project = line.value(QStringLiteral("project"));
    if (line.isSet(QStringLiteral("project")) && options->project.isEmpty()) {
        *problem = QStringLiteral("--project: no directory given");
        return false;
    }
    int* link = &options->connection.link;
    return line.number(QStringLiteral("link"), 0, 0x7FFFFFFF, *link, link, problem);
}

bool connectionOptionsFrom(const CommandLine& line, ConnectionOptions* options, QString* problem) {
    Connection& connection = options->connection;
    const bool hasRetry = line.knows(QStringLiteral("retry"));
    if (!endpointFrom(line, &connection, problem) || !projectOptionsFrom(line, options, problem) ||
        (hasRetry && !line.number(QStringLiteral("retry"), 0, kMostRetries, connection.retry,
                                  &connection.retry, problem))) {
        return false;
    }
    options->plugin = line.value(QStringLiteral("plugin"));
    options->record = line.value(QStringLiteral("record"));
    if (line.isSet(QStringLiteral("record")) && options->record.isEmpty()) {
        *problem = QStringLiteral("--record: no directory given");
        return false;
    }
    return true;
}

bool openSession(const ConnectionOptions& options, DriverSession* session, Console& console) {
    if (!options.record.isEmpty()) {
        qputenv(kRecordVariable, QFile::encodeName(QDir().absoluteFilePath(options.record)));
    }
    QString problem;
    QString plugin;
    QString address;
    // Looked for first: without it there is no point in starting anew.
    if (findPlugin(options.plugin, programDirectory(), &plugin, &problem) &&
        enterAppDirectory(options.project, &problem) &&
        // The driver says of an unknown host that it is out of reach.
        lookUpHost(options.connection.host, &address, &problem) &&
        session->open(plugin, &problem)) {
        return true;
    }
    console.error(QStringLiteral("micro800: %1").arg(problem));
    return false;
}
