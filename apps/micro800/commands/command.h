#ifndef APPS_MICRO800_COMMANDS_COMMAND_H
#define APPS_MICRO800_COMMANDS_COMMAND_H

#include <QVector>

#include "apps/micro800/terminal/command_line.h"
#include "apps/micro800/terminal/console.h"

/// One subcommand. A new one is a file of its own with these two functions, declared below, and
/// a row in command_table.cpp.
struct Command {
    CommandHelp (*help)();
    /// Runs with arguments that parsed; returns the program's exit code.
    int (*run)(const CommandLine& line, Console& console);
};

CommandHelp readHelp();
int runRead(const CommandLine& line, Console& console);

CommandHelp writeHelp();
int runWrite(const CommandLine& line, Console& console);

CommandHelp watchHelp();
int runWatch(const CommandLine& line, Console& console);

CommandHelp serveHelp();
int runServe(const CommandLine& line, Console& console);

CommandHelp saveHelp();
int runSave(const CommandLine& line, Console& console);

CommandHelp restoreHelp();
int runRestore(const CommandLine& line, Console& console);

CommandHelp identifyHelp();
int runIdentify(const CommandLine& line, Console& console);

CommandHelp discoverHelp();
int runDiscover(const CommandLine& line, Console& console);

CommandHelp tagsHelp();
int runTags(const CommandLine& line, Console& console);

CommandHelp checkHelp();
int runCheck(const CommandLine& line, Console& console);

CommandHelp doctorHelp();
int runDoctor(const CommandLine& line, Console& console);

CommandHelp planHelp();
int runPlan(const CommandLine& line, Console& console);

CommandHelp recordHelp();
int runRecord(const CommandLine& line, Console& console);

CommandHelp infoHelp();
int runInfo(const CommandLine& line, Console& console);

CommandHelp projectHelp();
int runProject(const CommandLine& line, Console& console);

/// All of them, in the order in which the overall help names them.
const QVector<Command>& commandTable();

#endif
