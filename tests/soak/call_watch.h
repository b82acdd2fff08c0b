#ifndef TESTS_SOAK_CALL_WATCH_H
#define TESTS_SOAK_CALL_WATCH_H

#include <QString>
#include <atomic>
#include <cstdint>
#include <thread>

/// How late a thread of this process comes that wants to run: a machine with other work makes every
/// call longer by that. Measured by a thread that sleeps.
class LatenessMeter {
 public:
    LatenessMeter();
    ~LatenessMeter();
    LatenessMeter(const LatenessMeter&) = delete;
    LatenessMeter& operator=(const LatenessMeter&) = delete;

    /// Forgets what was.
    void reset() { worst = 0; }
    /// The longest lateness since, in milliseconds.
    int64_t worstMs() const;
    /// The mean of the last two seconds, in microseconds.
    int64_t meanUs() const { return mean; }

 private:
    void run();

    std::atomic<bool> ended{false};
    std::atomic<int64_t> worst{0};
    std::atomic<int64_t> mean{0};
    std::atomic<int64_t> woke;
    std::thread thread;
};

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
