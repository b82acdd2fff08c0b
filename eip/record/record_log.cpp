#include "eip/record/record_log.h"

#include <errno.h>
#include <time.h>

namespace {

const long kNanosPerMs = 1000000;
const long kNanosPerSecond = 1000000000;
const unsigned long kMsPerSecond = 1000;

}  // namespace

RecordLog::RecordLog(const RecordSettings& settings, int64_t pauseUs)
    : pause(pauseUs),
      ring(settings.bytes, settings.messages),
      connection(0),
      state(kEmpty),
      copied(),
      wanted(false),
      ending(false),
      unwritten(false),
      nextAllowed(0) {
    copy.reserve(ring.copySize());
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&changed, &attributes);
    pthread_condattr_destroy(&attributes);
}

RecordLog::~RecordLog() {
    pthread_cond_destroy(&changed);
}

void RecordLog::append(RecordKind kind, const RecordTime& time, const void* data, size_t size) {
    std::lock_guard<std::mutex> lock(mutex);
    appendLocked(kind, time, data, size);
}

void RecordLog::append(RecordKind kind, const void* data, size_t size) {
    std::lock_guard<std::mutex> lock(mutex);
    appendLocked(kind, recordTimeNow(), data, size);
}

void RecordLog::appendLocked(RecordKind kind, const RecordTime& time, const void* data,
                             size_t size) {
    ring.append(kind, connection, time, data, size);
    unwritten = true;
    if (wanted) {
        makeCopy(pending);
        pending = Reason();
    }
}

void RecordLog::nextConnection() {
    std::lock_guard<std::mutex> lock(mutex);
    ++connection;
}

bool RecordLog::mayCopy(int64_t now) const {
    return state == kEmpty && now >= nextAllowed;
}

void RecordLog::makeCopy(const Reason& why) {
    ring.copyTo(&copy);
    copied = recordTimeNow();
    reason = why;
    state = kFilled;
    wanted = false;
    unwritten = false;
    pthread_cond_signal(&changed);
}

void RecordLog::trigger(const std::string& why, const std::string& detail) {
    std::lock_guard<std::mutex> lock(mutex);
    const Reason asked = {why, detail};
    if (mayCopy(monotonicMicros()) && pending.why.empty()) {
        makeCopy(asked);
    } else if (pending.why.empty()) {
        pending = asked;
    }
}

void RecordLog::triggerLater(const std::string& why) {
    std::lock_guard<std::mutex> lock(mutex);
    if (pending.why.empty()) {
        pending.why = why;
    }
}

void RecordLog::end() {
    std::lock_guard<std::mutex> lock(mutex);
    ending = true;
    pthread_cond_signal(&changed);
}

/// Sees to a recording that had to wait. The next thread that records makes the copy; when none
/// comes until the next call, the lock is free and the writer may make it.
void RecordLog::copyWhatWaits(int64_t now) {
    if (ending && state == kEmpty && unwritten) {
        const Reason atEnd = {"end", std::string()};
        makeCopy(pending.why.empty() ? atEnd : pending);
        pending = Reason();
    } else if (mayCopy(now) && wanted) {
        makeCopy(pending);
        pending = Reason();
    } else if (mayCopy(now)) {
        wanted = !pending.why.empty();
    }
}

void RecordLog::wait(std::unique_lock<std::mutex>& lock, unsigned long ms) {
    struct timespec until;
    clock_gettime(CLOCK_MONOTONIC, &until);
    until.tv_sec += static_cast<time_t>(ms / kMsPerSecond);
    until.tv_nsec += static_cast<long>(ms % kMsPerSecond) * kNanosPerMs;
    if (until.tv_nsec >= kNanosPerSecond) {
        until.tv_nsec -= kNanosPerSecond;
        ++until.tv_sec;
    }
    int result = 0;
    while (state != kFilled && !ending && result == 0) {
        result = pthread_cond_timedwait(&changed, lock.mutex()->native_handle(), &until);
    }
}

RecordLog::Step RecordLog::next(unsigned long ms, Job* job) {
    std::unique_lock<std::mutex> lock(mutex);
    wait(lock, ms);
    copyWhatWaits(monotonicMicros());
    if (state != kFilled) {
        return ending ? kEnd : kIdle;
    }
    state = kBeingWritten;
    job->why = reason.why;
    job->detail = reason.detail;
    job->last = copied;
    job->records = &copy;
    return kWrite;
}

void RecordLog::done() {
    std::lock_guard<std::mutex> lock(mutex);
    state = kEmpty;
    nextAllowed = monotonicMicros() + pause;
}
