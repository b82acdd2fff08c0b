#ifndef APPS_MICRO800_PROGRAM_H
#define APPS_MICRO800_PROGRAM_H

#include <QStringList>

#include "apps/micro800/terminal/console.h"

/// The whole program but for what main() sets up: finds the subcommand in `arguments` (without
/// the program's name) and runs it. Returns the exit code.
int runProgram(const QStringList& arguments, Console& console);

#endif
