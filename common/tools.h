#ifndef COMMON_TOOLS_H
#define COMMON_TOOLS_H

// The shared helpers of the runtime's drivers, all of them.

#include "common/clock.h"
#include "common/hmi_port.h"
#include "common/process.h"
#include "common/project_database.h"
#include "common/project_paths.h"

#endif
