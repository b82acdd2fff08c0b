#include "apps/micro800/program.h"

#include "apps/micro800/base/near.h"
#include "apps/micro800/commands/command.h"

namespace {

QString overallHelp() {
    QStringList page;
    page << QStringLiteral("NAME")
         << QStringLiteral("    micro800 - reads and writes tags of a Micro800 controller")
         << QString() << QStringLiteral("SYNOPSIS")
         << QStringLiteral("    micro800 COMMAND [OPTION...] [ARGUMENT...]")
         << QStringLiteral("    micro800 COMMAND --help")
         << QStringLiteral("    micro800 --help | --version") << QString()
         << QStringLiteral("DESCRIPTION")
         << wrapped(
                QStringLiteral(
                    "A command-line host for the driver's plugin file. read, write, watch, save "
                    "and restore load the plugin as a panel's runtime does and show what a panel "
                    "shows. discover, identify, tags, check and doctor ask the controller itself, "
                    "without the plugin. Where the two differ, the fault is between them."),
                4, 79)
         << QString() << QStringLiteral("COMMANDS");
    for (const Command& command : commandTable()) {
        const CommandHelp help = command.help();
        page << QStringLiteral("    %1 %2").arg(help.name, -9).arg(help.summary);
    }
    page << QString() << QStringLiteral("ADDRESSES")
         << wrapped(QStringLiteral(
                        "PREFIX:NAME, or PREFIX:NAME[I], [I,J] or [I,J,K] for an element of an "
                        "array. The prefix is the tag's type, in upper case: BOOL0, SINT0, USINT0, "
                        "INT0, UINT0, DINT0, UDINT0, REAL0, LREAL0 or STRING0. Names are "
                        "case-insensitive. Put brackets in quotes for the shell."),
                    4, 79)
         << QString() << QStringLiteral("OUTPUT")
         << wrapped(QStringLiteral("One line per value or failure, in UTF-8. Control characters "
                                   "from a controller, a project or the command line are shown as "
                                   "\\n, \\r, \\t, \\xNN or \\uNNNN; in JSON as \\uNNNN. A program "
                                   "that cannot write its output ends with exit status 1."),
                    4, 79)
         << QString() << QStringLiteral("ENVIRONMENT")
         << QStringLiteral("    MICRO800_HOST      the controller, unless --host names one")
         << QStringLiteral("    MICRO800_PLUGIN    the plugin file, unless --plugin names one")
         << QStringLiteral(
                "    MICRO800_EMULATOR  command that runs a program, where this one runs "
                "under\n                       an emulator: \"qemu-arm-static -L "
                "/sysroot\"; the program that\n                       it runs does not see the "
                "variable")
         << QStringLiteral(
                "    TMPDIR             directory for the program's temporary directory; "
                "programs\n                       must be allowed to run from it")
         << QString() << QStringLiteral("EXAMPLES")
         << QStringLiteral(
                "    micro800 read --host 192.168.1.20 DINT0:COUNTER 'INT0:GRID[2,3]'\n"
                "    micro800 write --host 192.168.1.20 REAL0:SETPOINT -12.5\n"
                "    micro800 watch --host 192.168.1.20 DINT0:COUNTER REAL0:LEVEL\n"
                "    micro800 discover\n"
                "    micro800 identify --host 192.168.1.20\n"
                "    micro800 read --help")
         << QString() << QStringLiteral("EXIT STATUS")
         << QStringLiteral(
                "    0  everything was done\n    1  something failed: a tag, the plugin file, the "
                "project\n    2  the command line is wrong; nothing was sent");
    return page.join(QLatin1Char('\n'));
}

int runCommand(const Command& command, const CommandHelp& help, const QStringList& arguments,
               Console& console) {
    CommandLine line(help);
    QString problem;
    if (!line.parse(arguments, &problem)) {
        return wrongUsage(console, help.name, problem);
    }
    if (line.helpWanted()) {
        console.page(helpPage(help));
        return kExitOk;
    }
    return command.run(line, console);
}

QString unknownCommand(const QString& name) {
    if (name.startsWith(QLatin1Char('-'))) {
        return QStringLiteral("the command comes first: micro800 COMMAND %1").arg(name);
    }
    QStringList known;
    for (const Command& command : commandTable()) {
        known << command.help().name;
    }
    return QStringLiteral("unknown command %1%2").arg(name, suggestionFor(name, known));
}

int dispatch(QStringList arguments, Console& console) {
    if (arguments.isEmpty()) {
        return wrongUsage(console, QString(), QStringLiteral("no command given"));
    }
    QString name = arguments.takeFirst();
    if (name == QLatin1String("help") && !arguments.isEmpty()) {
        name = arguments.takeFirst();
        arguments = QStringList(QStringLiteral("--help"));
    }
    if (name == QLatin1String("--help") || name == QLatin1String("-h") ||
        name == QLatin1String("help")) {
        console.page(overallHelp());
        return kExitOk;
    }
    if (name == QLatin1String("--version")) {
        console.line(QStringLiteral("micro800 %1").arg(QLatin1String(MICRO800_VERSION)));
        return kExitOk;
    }
    for (const Command& command : commandTable()) {
        const CommandHelp help = command.help();
        if (help.name == name) {
            return runCommand(command, help, arguments, console);
        }
    }
    return wrongUsage(console, QString(), unknownCommand(name));
}

}  // namespace

int runProgram(const QStringList& arguments, Console& console) {
    const int code = dispatch(arguments, console);
    if (console.allWritten()) {
        return code;
    }
    console.error(QStringLiteral("micro800: the output could not be written"));
    return kExitFailed;
}
