#ifndef EIP_RECORD_FLIGHT_RECORDER_H
#define EIP_RECORD_FLIGHT_RECORDER_H

#include <QString>
#include <memory>

#include "eip/cip/encap_header.h"
#include "eip/record/live_counters.h"
#include "eip/record/record_log.h"
#include "eip/record/record_settings.h"
#include "eip/record/record_writer.h"
#include "eip/record/seen_texts.h"

/// The statistics of one driver: counters, which are always kept, and the flight recorder,
/// which is on when the settings name a folder.
///
/// Each operation counts and, when the recorder is on, makes a record. Nothing here waits for the
/// disk: the writer thread alone touches it. Texts may contain any character; an unprintable one
/// becomes a blank. Nothing throws.
class FlightRecorder {
 public:
    /// Allocates what the recorder needs when it is on. No thread yet.
    explicit FlightRecorder(const RecordSettings& settings);
    /// Ends the writer thread and waits up to a second for it. One that the disk keeps longer is
    /// left to itself, with all that it uses.
    ~FlightRecorder();

    bool isOn() const { return log != nullptr; }
    LiveFigures figures() const { return counters.figures(); }
    RecordingsMade recordings() const;

    // ---- host thread ----------------------------------------------------------------------

    /// Starts the writer thread when the recorder is on and it was not started yet. When the system
    /// has no thread, the log of the runtime says so, and the next new error text tries again.
    void start();
    /// Has the writer write what is not written yet, and waits up to `ms` for its end. Afterwards
    /// nothing is written any more.
    void end(unsigned long ms);

    /// A read or write that has to ask the worker; `verb` is "read" or "write".
    void asked(const char* verb, const QString& address);
    /// Its end: `bytes` of a value, or -1 without one; `waited` in microseconds.
    void answered(const char* verb, const QString& address, int bytes, int64_t waited);
    /// The text that the host was given.
    void errorText(const QString& text);

    // ---- worker thread: traffic -----------------------------------------------------------

    /// A request has gone out; not `whole` when it could not be sent to its end.
    void sent(const _Encap_Header* request, bool whole);
    /// A whole reply.
    void received(const _Encap_Header* reply);
    /// Instead of a whole reply came these bytes, which may be none.
    void receivedPart(const void* bytes, size_t size, bool timedOut);
    /// Bytes that came unasked.
    void thrownAway(const void* bytes, size_t size);

    // ---- worker thread: connection --------------------------------------------------------

    /// A TCP connection is asked for. connected() or connectFailed() reports the result. An
    /// attempt that fails like the one before it is counted and makes no record.
    void connecting(const QString& host, unsigned short port);
    void connected();
    void connectFailed(const QString& reason);
    void closed();
    /// The class 3 connection is open.
    void opened();
    /// It could not be opened; `first`: the attempts before were not in vain.
    void openFailed(const QString& reason, bool first);
    /// A failure costs the connection.
    void lost(const QString& reason);
    void addressChanged(const QString& host, unsigned short port);
    void sessionList(const QString& names, int count);
    /// A polling pass over the whole list took so many microseconds.
    void passed(int64_t micros) { counters.notePass(micros); }

 private:
    FlightRecorder(const FlightRecorder&) = delete;
    FlightRecorder& operator=(const FlightRecorder&) = delete;

    void event(const QString& text);
    void record(RecordKind kind, const RecordTime& time, const QString& text);
    void beginConnection();
    void tellRepeats();

    LiveCounters counters;
    std::unique_ptr<RecordLog> log;  ///< constant; null when off
    std::unique_ptr<RecordWriter> writer;
    SeenTexts seen;

    // host thread
    bool started;  ///< the writer thread, or it is to be started no more

    // worker thread
    QString target;  ///< of the connect that is under way
    RecordTime connectAsked;
    QString lastConnectFailure;  ///< with its target; null when the last connect succeeded
    unsigned repeats;            ///< attempts that failed in the same way since
};

#endif
