#ifndef EIP_QUICK_ANSWER_H
#define EIP_QUICK_ANSWER_H

#include <chrono>

/// Decides whether a wait for an answer begins awake. Being put to sleep and woken takes a thread
/// some tens of microseconds, more than a near controller takes to answer; a far one takes
/// milliseconds, and then not a cycle is to be spent on waiting. So a wait begins awake, and for
/// awake() at most, while the answer before came within quickLimit(). On a single processor it
/// never does: whoever stays awake there keeps the answer from being made.
///
/// One caller at a time.
class QuickAnswer {
 public:
    typedef std::chrono::steady_clock Clock;

    QuickAnswer() : several(false), quick(false) {}
    /// Whether the caller may run on several processors.
    explicit QuickAnswer(bool severalProcessors) : several(severalProcessors), quick(false) {}

    bool staysAwake() const { return quick; }
    static Clock::duration awake() { return std::chrono::microseconds(100); }
    static Clock::duration quickLimit() { return std::chrono::microseconds(300); }

    /// Notes the end of a wait. What did not come at all was not quick.
    void note(bool answered, Clock::duration waited) {
        quick = several && answered && waited <= quickLimit();
    }

 private:
    bool several;
    bool quick;
};

#endif
