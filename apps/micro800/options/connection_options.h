#ifndef APPS_MICRO800_OPTIONS_CONNECTION_OPTIONS_H
#define APPS_MICRO800_OPTIONS_CONNECTION_OPTIONS_H

#include <QString>
#include <QVector>

#include "apps/micro800/base/connection.h"
#include "apps/micro800/plugin/driver_session.h"
#include "apps/micro800/terminal/command_line.h"
#include "apps/micro800/terminal/console.h"

/// The options that read, write and watch share.
struct ConnectionOptions {
    Connection connection;
    QString project;  ///< directory that contains the project; empty for an empty project
    QString plugin;   ///< plugin file; empty for the usual place
    QString record;   ///< where the driver is to record; empty for the environment's word
};

/// HOST or HOST:PORT, and where it was given: an option or a variable of the environment.
struct HostText {
    const char* source;
    QString text;
};

/// Takes the host and the port from that text and --port. False when they are no endpoint or name
/// two ports.
bool hostAndPortFrom(const CommandLine& line, const HostText& given, QString* host, int* port,
                     QString* problem);

/// --host, --port and --timeout, and what the last one is the limit of.
QVector<OptionSpec> endpointOptionSpecs(const QString& timeoutDescription);
/// Takes them from the command line. False when one is missing or wrong.
bool endpointFrom(const CommandLine& line, Connection* connection, QString* problem);

/// The endpoint's, --link, --project and --plugin; with --retry for commands that read.
QVector<OptionSpec> connectionOptionSpecs(bool withRetry);
OptionSpec pluginOptionSpec();

/// --link and --project alone, for a command that may go without a controller.
bool projectOptionsFrom(const CommandLine& line, ConnectionOptions* options, QString* problem);
/// Takes them from the command line. False when one is missing or wrong.
bool connectionOptionsFrom(const CommandLine& line, ConnectionOptions* options, QString* problem);

/// Makes the application directory contain the project (which starts the program anew, once), loads
/// the plugin and opens the session. False with the reason on the console.
bool openSession(const ConnectionOptions& options, DriverSession* session, Console& console);

#endif
