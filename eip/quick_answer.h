#ifndef EIP_QUICK_ANSWER_H
#define EIP_QUICK_ANSWER_H

#include <algorithm>
#include <chrono>

/// Decides whether a wait for an answer begins awake. Being put to sleep and woken takes a thread
/// some tens of microseconds, more than a near controller takes to answer; a far one takes
/// milliseconds, and then not a cycle is to be spent on waiting. So a wait begins awake, and for
/// awake() at most, while the answer before came within quickLimit(). A wait that was awake in vain
/// is followed by waits asleep: by one, and by twice as many and one more each time that it happens
/// again, up to kMostAsleep. On a single processor no wait begins awake: a thread awake there
/// keeps the answer from being made.
///
/// One caller at a time.
class QuickAnswer {
 public:
    typedef std::chrono::steady_clock Clock;

    static constexpr int kMostAsleep = 63;

    QuickAnswer() : several(false), quick(false), penalty(0), asleep(0) {}
    /// Whether the caller may run on several processors.
    explicit QuickAnswer(bool severalProcessors)
        : several(severalProcessors), quick(false), penalty(0), asleep(0) {}

    bool staysAwake() const { return quick && asleep == 0; }
    static Clock::duration awake() { return std::chrono::microseconds(100); }
    static Clock::duration quickLimit() { return std::chrono::microseconds(300); }

    /// Notes the end of a wait. What did not come at all was not quick.
    void note(bool answered, Clock::duration waited) {
        if (!staysAwake()) {
            asleep = std::max(asleep - 1, 0);
        } else if (answered && waited <= awake()) {
            penalty = 0;
        } else {
            penalty = std::min<int>(2 * penalty + 1, kMostAsleep);
            asleep = penalty;
        }
        quick = several && answered && waited <= quickLimit();
    }

 private:
    bool several;
    bool quick;
    int penalty;  ///< waits asleep that the last vain one was worth
    int asleep;   ///< how many of them are still to come
};

#endif
