#ifndef TESTS_SUPPORT_LATENESS_METER_H
#define TESTS_SUPPORT_LATENESS_METER_H

#include <atomic>
#include <cstdint>
#include <thread>

/// How late a thread of this process comes that wants to run: a machine with other work makes every
/// call longer by that. Measured by a thread that sleeps. Any thread may use it.
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

#endif
