#ifndef COMMON_HR_SLEEP_H
#define COMMON_HR_SLEEP_H

/// Blocks the calling thread for `ms` milliseconds; a signal does not shorten the sleep.
///
/// The time is counted in 32 bits of nanoseconds, on purpose: it wraps round at 4295 ms
/// (HRSleep(4295) sleeps 0.03 ms). Callers use it for pauses between bytes, far below that.
void HRSleep(unsigned long ms);

#endif
