#ifndef EIP_RECORD_RECORD_LOG_H
#define EIP_RECORD_RECORD_LOG_H

#include <pthread.h>

#include <mutex>
#include <string>
#include <vector>

#include "eip/record/record_ring.h"
#include "eip/record/record_settings.h"

/// The ring between the threads that record and the one that writes.
///
/// Whoever brings a failure also makes the copy that is written, so that what it did last is the
/// last thing in it, and since the writer, at low priority, must not keep the lock from anybody.
/// Memory for ring and copy is allocated once.
class RecordLog {
 public:
    /// Between the end of one recording and the next copy there are `pauseUs` microseconds at
    /// least.
    explicit RecordLog(const RecordSettings& settings, int64_t pauseUs = kPauseUs);
    ~RecordLog();

    // ---- any thread: no longer than a copy in memory ------------------------------------------

    /// Records something that happened at `time`.
    void append(RecordKind kind, const RecordTime& time, const void* data, size_t size);
    /// Something that happened now.
    void append(RecordKind kind, const void* data, size_t size);
    /// From now on records belong to the next TCP connection.
    void nextConnection();
    /// Asks for a recording. It is made at once, or later when the last one is too young or is
    /// still being written; of several that must wait the first gives its reason.
    void trigger(const std::string& why, const std::string& detail);
    /// The same for a thread of low priority: leaves the copy to a thread that records, or to
    /// next() when nothing is recorded.
    void triggerLater(const std::string& why);
    /// What has not been written yet is to be written, and then next() gives kEnd.
    void end();

    // ---- writer thread ------------------------------------------------------------------------

    enum Step { kIdle, kWrite, kEnd };
    struct Job {
        std::string why;
        std::string detail;
        RecordTime last;  ///< of the copy
        const std::vector<unsigned char>* records;
    };
    /// Waits up to `ms` for something to do. With kWrite, `job` is valid until done().
    Step next(unsigned long ms, Job* job);
    void done();

    static const int64_t kPauseUs = 10 * 1000000;

 private:
    RecordLog(const RecordLog&) = delete;
    RecordLog& operator=(const RecordLog&) = delete;

    struct Reason {
        std::string why;
        std::string detail;
    };
    void appendLocked(RecordKind kind, const RecordTime& time, const void* data, size_t size);
    bool mayCopy(int64_t now) const;
    void makeCopy(const Reason& reason);
    void copyWhatWaits(int64_t now);
    void wait(std::unique_lock<std::mutex>& lock, unsigned long ms);

    const int64_t pause;
    std::mutex mutex;
    pthread_cond_t changed;

    // guarded by mutex
    enum CopyState { kEmpty, kFilled, kBeingWritten };
    RecordRing ring;
    uint16_t connection;
    std::vector<unsigned char> copy;  ///< of the writer while it is being written
    CopyState state;
    Reason reason;  ///< of the copy
    RecordTime copied;
    Reason pending;  ///< of a recording that must wait; empty without one
    bool wanted;     ///< the next append() is to make the copy
    bool ending;
    bool unwritten;       ///< something came since the last copy
    int64_t nextAllowed;  ///< monotonic microseconds
};

#endif
