#ifndef APPS_MICRO800_REPORTS_LIVE_FIGURES_H
#define APPS_MICRO800_REPORTS_LIVE_FIGURES_H

#include "apps/micro800/terminal/command_line.h"
#include "apps/micro800/terminal/console.h"

/// What "info" does with --host: has the driver work on a controller for a while and prints what
/// it counted.

QVector<OptionSpec> liveFigureOptionSpecs();
/// Returns the program's exit code.
int runLiveFigures(const CommandLine& line, Console& console);

#endif
