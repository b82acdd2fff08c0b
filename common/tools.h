#ifndef COMMON_TOOLS_H
#define COMMON_TOOLS_H

// The shared helpers of the runtime's drivers, all of them.

#include "common/bits.h"
#include "common/bytes.h"
#include "common/checksums.h"
#include "common/clock.h"
#include "common/command_data.h"
#include "common/crc.h"
#include "common/hex.h"
#include "common/hmi_port.h"
#include "common/hr_sleep.h"
#include "common/packing.h"
#include "common/process.h"
#include "common/project_database.h"
#include "common/project_paths.h"
#include "common/sizes.h"
#include "common/tx_package.h"

#endif
