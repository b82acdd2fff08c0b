#ifndef EIP_RECORD_RECORD_WRITER_H
#define EIP_RECORD_RECORD_WRITER_H

#include <QThread>
#include <atomic>
#include <mutex>
#include <string>

#include "eip/record/record_folder.h"
#include "eip/record/record_log.h"

/// What became of the recordings so far.
struct RecordingsMade {
    RecordingsMade() : written(0), failed(0) {}
    unsigned written;
    unsigned failed;
    std::string problem;  ///< of the last one that failed
};

/// The thread that writes recordings, at the lowest priority that the system has for ordinary
/// work. It wakes once a second to look for a file `dump`. A failure to write costs the recording
/// and nothing else; its text goes to the log of the runtime once.
class RecordWriter : public QThread {
 public:
    /// `log` is not owned and must outlive the thread. The folder is made with the first recording.
    RecordWriter(RecordLog* log, const std::string& folder);
    /// The thread must have ended.
    ~RecordWriter();

    /// Starts the thread, once. False when the system has none, which counts as a recording that
    /// failed; then it may be called again. One thread at a time.
    bool begin();

    /// Any thread.
    RecordingsMade made() const;

 protected:
    void run();

 private:
    RecordLog::Step takeStep();
    bool write(const RecordLog::Job& job, std::string* problem);
    void note(bool written, const std::string& problem);

    RecordLog* const log;
    RecordFolder folder;  // writer thread
    std::atomic<bool> ended;
    mutable std::mutex mutex;
    RecordingsMade results;  // guarded by mutex
};

#endif
