#include "common/clock.h"

#include <time.h>

qint64 CurrentMSecsSinceBoot() {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<qint64>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}
