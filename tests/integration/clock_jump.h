#ifndef TESTS_INTEGRATION_CLOCK_JUMP_H
#define TESTS_INTEGRATION_CLOCK_JUMP_H

/// From now on the monotonic clock shows so much more time to the code that is linked into this
/// program. The linker puts it in (--wrap).
void jumpClock(long seconds);

#endif
