#ifndef EIP_TIMER_SLACK_H
#define EIP_TIMER_SLACK_H

#include <sys/prctl.h>

#ifndef PR_SET_TIMERSLACK
// Linux's number, for headers before 2.6.28.
#define PR_SET_TIMERSLACK 29
#endif

/// How late the waits of the calling thread may end when nothing but their time ends them. The
/// system uses that to wake a processor less often. Linux before 2.6.28 refuses, and its waits stay
/// as they are.
///
/// One thread: the one that it is for.
class TimerSlack {
 public:
    TimerSlack() : set(0) {}

    /// At most a microsecond.
    void bePunctual() { use(1000); }
    /// At most 30 ms.
    void beLenient() { use(30000000); }

 private:
    void use(unsigned long nanoseconds) {
        if (set != nanoseconds) {
            prctl(PR_SET_TIMERSLACK, nanoseconds);
            set = nanoseconds;
        }
    }

    unsigned long set;  ///< nanoseconds, 0 before the first call
};

#endif
