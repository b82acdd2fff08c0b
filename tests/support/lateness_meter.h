#ifndef TESTS_SUPPORT_LATENESS_METER_H
#define TESTS_SUPPORT_LATENESS_METER_H

#include <atomic>
#include <cstdint>
#include <mutex>
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
    void reset();
    /// The longest lateness since, in milliseconds.
    int64_t worstMs() const;
    /// The mean of the last two seconds, in microseconds.
    int64_t meanUs() const;

 private:
    void run();

    std::atomic<bool> ended{false};
    mutable std::mutex mutex;
    int64_t worst = 0;  ///< guarded by mutex, as the next two
    int64_t mean = 0;
    int64_t woke;
    std::thread thread;
};

#endif
