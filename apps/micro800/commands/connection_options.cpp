#include "apps/micro800/commands/connection_options.h"

#include "apps/micro800/app_directory.h"

namespace {

const int kLongestTimeoutMs = 600000;
const int kMostRetries = 100;

OptionSpec option(const char* name, const char* valueName, const char* description,
                  const QString& defaultText = QString()) {
    return {QLatin1String(name), QLatin1String(valueName), QLatin1String(description), defaultText};
}

bool isHostName(const QString& text) {
    for (const QChar character : text) {
        if (character.unicode() <= 0x20 || character.unicode() > 0x7E)
            return false;
    }
    return !text.isEmpty();
}

}  // namespace

OptionSpec pluginOptionSpec() {
    return option("plugin", "FILE",
                  "The driver's plugin file. Without it MICRO800_PLUGIN of the environment, or the "
                  "file in ../plugins or ../lib/micro800 seen from this program.");
}

QVector<OptionSpec> endpointOptionSpecs(const QString& timeoutDescription) {
    const Connection defaults;
    return {
        option("host", "HOST", "The controller's IP address or host name. Required."),
        option("port", "PORT", "Its TCP port.", QString::number(defaults.port)),
        {QStringLiteral("timeout"), QStringLiteral("MS"), timeoutDescription,
         QString::number(defaults.timeoutMs)},
    };
}

bool endpointFrom(const CommandLine& line, Connection* connection, QString* problem) {
    connection->host = line.value(QStringLiteral("host"));
    if (!line.isSet(QStringLiteral("host"))) {
        *problem = QStringLiteral("--host HOST is missing");
        return false;
    }
    if (!isHostName(connection->host)) {
        *problem =
            QStringLiteral("--host \"%1\": not a host name or IP address").arg(connection->host);
        return false;
    }
    int port = 0;
    if (!line.number(QStringLiteral("port"), 1, 65535, connection->port, &port, problem) ||
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
        "How long the driver's worker waits for a connection and for each reply of the "
        "controller, in milliseconds. The call for one tag does not wait that long: the "
        "driver gives an attempt up after 1000 ms."));
    if (withRetry) {
        specs << option("retry", "N",
                        "How often a read is tried again after the driver reported a failure. One "
                        "that got no answer in time is not tried again.",
                        QString::number(defaults.retry));
    }
    specs << option("link", "N",
                    "Number of the runtime's link: the array declarations of this number apply.",
                    QString::number(defaults.link))
          << option("project", "DIR",
                    "Directory that plays the runtime's application directory; the project's "
                    "array declarations are in DIR/compile/database/database (see 'micro800 "
                    "project'). Without it an empty temporary project is used.")
          << pluginOptionSpec();
    return specs;
}

bool connectionOptionsFrom(const CommandLine& line, ConnectionOptions* options, QString* problem) {
    Connection& connection = options->connection;
    const bool hasRetry = line.knows(QStringLiteral("retry"));
    if (!endpointFrom(line, &connection, problem) ||
        !line.number(QStringLiteral("link"), 0, 0x7FFFFFFF, connection.link, &connection.link,
                     problem) ||
        (hasRetry && !line.number(QStringLiteral("retry"), 0, kMostRetries, connection.retry,
                                  &connection.retry, problem))) {
        return false;
    }
    options->project = line.value(QStringLiteral("project"));
    if (line.isSet(QStringLiteral("project")) && options->project.isEmpty()) {
        *problem = QStringLiteral("--project: no directory given");
        return false;
    }
    options->plugin = line.value(QStringLiteral("plugin"));
    return true;
}

bool openSession(const ConnectionOptions& options, DriverSession* session, Console& console) {
    QString problem;
    QString plugin;
    // Looked for first: without it there is no point in starting anew.
    if (findPlugin(options.plugin, programDirectory(), &plugin, &problem) &&
        enterAppDirectory(options.project, &problem) && session->open(plugin, &problem)) {
        return true;
    }
    console.error(QStringLiteral("micro800: %1").arg(problem));
    return false;
}
