#ifndef APPS_MICRO800_CONTROLLER_CHECK_ARRAY_CHECK_H
#define APPS_MICRO800_CONTROLLER_CHECK_ARRAY_CHECK_H

#include "apps/micro800/controller/check/check_run.h"

/// Checks a declared array: both ends, what is beyond them, and the whole (see TagChecker).
void checkArray(const ListedAddress& array, CheckRun& run);

#endif
