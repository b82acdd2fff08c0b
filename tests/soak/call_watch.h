#ifndef TESTS_SOAK_CALL_WATCH_H
#define TESTS_SOAK_CALL_WATCH_H

#include <QString>
#include <cstdint>

#include "support/lateness_meter.h"

/// Holds the calls of a host against how long each may take: one second an attempt, two after a
/// late answer.
class CallWatch {
 public:
    /// A call begins, which makes at most so many attempts.
    void begin(int attempts);
    /// It ended. `outcome` says whether the next call may meet a late answer.
    enum Outcome { kCached, kAnswered, kRefused, kNoAnswer };
    void end(const char* what, Outcome outcome);

    const LatenessMeter& machine() const { return lateness; }
    int64_t longestMs() const { return longest; }
    /// The longest since the last question.
    int64_t takeLongestMs();
    /// By how much the worst call was longer than it may be, as it was measured and without the
    /// machine's lateness; negative: none was.
    int64_t worstOverMs() const { return worstOver; }
    int64_t worstOverHereMs() const { return worstOverHere; }
    /// What that call was.
    QString worstCall() const { return worstWhat; }

 private:
    LatenessMeter lateness;
    int64_t began = 0;
    int waits = 0;  ///< of a second each that the call may take
    bool mayBeLate = false;
    int64_t longest = 0;
    int64_t longestSince = 0;
    int64_t worstOver = -1000;
    int64_t worstOverHere = -1000;
    QString worstWhat;
};

#endif
