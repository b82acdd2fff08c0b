#ifndef EIP_COUNTDOWN_H
#define EIP_COUNTDOWN_H

#include <QtGlobal>
#include <algorithm>
#include <limits>

#include "common/clock.h"
#include "eip/socket_tools.h"

/// What is left of a time-out over the rounds of a waiting loop.
class Countdown {
 public:
    explicit Countdown(unsigned long ms)
        : remaining(static_cast<qint64>(
              std::min<quint64>(ms, std::numeric_limits<qint64>::max() / 1000))),
          roundStart(0) {}

    /// Starts a round; returns the time that it may wait.
    timeval beginRound() {
        roundStart = CurrentMSecsSinceBoot();
        return KTimevalFrom(static_cast<unsigned long>(remaining));
    }

    /// Ends a round; true when time is up. A round of no time counts as a millisecond, so that
    /// a loop of such rounds ends.
    bool expired() {
        const qint64 elapsed = CurrentMSecsSinceBoot() - roundStart;
        if (elapsed >= remaining) {
            return true;
        }
        remaining -= std::max<qint64>(elapsed, 1);
        return false;
    }

 private:
    qint64 remaining;
    qint64 roundStart;
};

#endif
