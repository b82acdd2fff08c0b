#include "common/hr_sleep.h"

#include <errno.h>
#include <time.h>

#include <QtGlobal>

void HRSleep(unsigned long ms) {
    const quint32 nanoseconds = static_cast<quint32>(ms) * 1000000u;
    struct timespec left;
    left.tv_sec = nanoseconds / 1000000000u;
    left.tv_nsec = nanoseconds % 1000000000u;
    while (nanosleep(&left, &left) == -1 && errno == EINTR) {
    }
}
