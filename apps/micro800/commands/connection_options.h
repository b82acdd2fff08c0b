#ifndef APPS_MICRO800_COMMANDS_CONNECTION_OPTIONS_H
#define APPS_MICRO800_COMMANDS_CONNECTION_OPTIONS_H

#include <QString>
#include <QVector>

#include "apps/micro800/command_line.h"
#include "apps/micro800/console.h"
#include "apps/micro800/device.h"
#include "apps/micro800/driver_session.h"

/// The options that read, write and watch share.
struct ConnectionOptions {
    Connection connection;
    QString project;  ///< directory that holds the project; empty for an empty project
    QString plugin;   ///< plugin file; empty for the usual place
};

/// --host, --port and --timeout, and what the last one is the limit of.
QVector<OptionSpec> endpointOptionSpecs(const QString& timeoutDescription);
/// Takes them from the command line. False when one is missing or wrong.
bool endpointFrom(const CommandLine& line, Connection* connection, QString* problem);

/// The endpoint's, --link, --project and --plugin; with --retry for commands that read.
QVector<OptionSpec> connectionOptionSpecs(bool withRetry);
OptionSpec pluginOptionSpec();

/// Takes them from the command line. False when one is missing or wrong.
bool connectionOptionsFrom(const CommandLine& line, ConnectionOptions* options, QString* problem);

/// Makes the application directory hold the project (which starts the program anew, once), loads
/// the plugin and opens the session. False with the reason on the console.
bool openSession(const ConnectionOptions& options, DriverSession* session, Console& console);

#endif
