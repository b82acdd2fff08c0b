#ifndef COMMON_CLOCK_H
#define COMMON_CLOCK_H

#include <QtGlobal>

/// Milliseconds of the monotonic clock, truncated. Never steps back; any thread.
qint64 CurrentMSecsSinceBoot();

#endif
