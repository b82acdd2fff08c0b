#include "eip/record/record_writer.h"

#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>

#include <QtDebug>
#include <exception>

#include "eip/record/recording.h"

namespace {

const unsigned long kTickMs = 1000;
const int kLowestPriority = 19;
const size_t kPieceSize = 64 * 1024;
const int64_t kMicrosPerSecond = 1000000;
const char kApplication[] = "Micro800 Ethernet driver 1.0.0";

/// The host's signals are for the host's threads.
void keepSignalsAway() {
    sigset_t all;
    sigfillset(&all);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
        sigdelset(&all, fault);
    }
    pthread_sigmask(SIG_BLOCK, &all, 0);
}

/// What the file says of itself, a line for each fact.
std::string commentFor(const RecordLog::Job& job) {
    std::string comment = "why: " + job.why;
    if (!job.detail.empty()) {
        comment += "\ndetail: " + job.detail;
    }
    return comment + "\nmonotonic: " + std::to_string(job.last.monotonic) +
           " us since boot when the recording was taken";
}

}  // namespace

RecordWriter::RecordWriter(RecordLog* recordLog, const std::string& path)
    : log(recordLog), folder(path), ended(false) {}

RecordWriter::~RecordWriter() {
    ended.load(std::memory_order_acquire);
}

bool RecordWriter::begin() {
    start(QThread::InheritPriority);
    if (isRunning()) {
        return true;
    }
    note(false, "can not start the thread that writes recordings");
    return false;
}

void RecordWriter::run() {
    keepSignalsAway();
    setpriority(PRIO_PROCESS, 0, kLowestPriority);  // 0: this thread, on Linux
    RecordLog::Step step = RecordLog::kIdle;
    while (step != RecordLog::kEnd) {
        try {
            step = takeStep();
        } catch (const std::exception&) {
            // There was no memory for it.
            log->done();
            std::lock_guard<std::mutex> lock(mutex);
            ++results.failed;
        }
    }
    ended.store(true, std::memory_order_release);
}

/// Waits for what there is to do, and does it.
RecordLog::Step RecordWriter::takeStep() {
    RecordLog::Job job;
    const RecordLog::Step step = log->next(kTickMs, &job);
    if (step == RecordLog::kWrite) {
        std::string problem;
        const bool written = write(job, &problem);
        log->done();
        note(written, problem);
    }
    if (folder.dumpAsked()) {
        log->triggerLater("dump");
    }
    return step;
}

bool RecordWriter::write(const RecordLog::Job& job, std::string* problem) {
    if (!folder.begin(problem)) {
        return false;
    }
    Recording recording(job.last);
    std::vector<unsigned char> piece;
    piece.reserve(kPieceSize + kPieceSize / 2);
    recording.begin(kApplication, commentFor(job), &piece);
    size_t at = 0;
    RecordView record;
    while (nextRecord(job.records->data(), job.records->size(), &at, &record)) {
        recording.add(record, &piece);
        if (piece.size() >= kPieceSize) {
            if (!folder.write(piece, problem)) {
                return false;
            }
            piece.clear();
        }
    }
    return folder.write(piece, problem) &&
           folder.finish(static_cast<time_t>(job.last.wall / kMicrosPerSecond), job.why, problem);
}

void RecordWriter::note(bool written, const std::string& problem) {
    std::lock_guard<std::mutex> lock(mutex);
    if (written) {
        ++results.written;
        return;
    }
    ++results.failed;
    if (problem != results.problem) {
        results.problem = problem;
        qWarning("micro800 recorder: %s", problem.c_str());
    }
}

RecordingsMade RecordWriter::made() const {
    std::lock_guard<std::mutex> lock(mutex);
    return results;
}
