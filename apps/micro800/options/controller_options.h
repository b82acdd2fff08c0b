#ifndef APPS_MICRO800_OPTIONS_CONTROLLER_OPTIONS_H
#define APPS_MICRO800_OPTIONS_CONTROLLER_OPTIONS_H

#include "apps/micro800/controller/trace/traced_transport.h"
#include "apps/micro800/terminal/command_line.h"
#include "apps/micro800/terminal/console.h"

// What the commands share that ask the controller itself.

/// --verbose.
OptionSpec verboseOptionSpec();

/// With --verbose, writes what it is given to the error stream; else an empty function. `console`
/// must outlive it.
TraceSink traceFrom(const CommandLine& line, Console* console);

#endif
