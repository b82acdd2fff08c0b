#include "eip/record/flight_recorder.h"

#include <exception>
#include <mutex>
#include <new>

namespace {

const int kLongestText = 1024;
const char kErrorTextWhy[] = "error-text";
const char kLostWhy[] = "connection-lost";
const char kOpenFailedWhy[] = "connect-failed";

/// How long an end waits for the disk.
const unsigned long kEndMs = 1000;

/// A writer that the disk did not let go, and what it uses. Both must outlive its thread, whose end
/// no thread waits for: they are kept as long as the process.
struct LeftWriter {
    RecordLog* log;
    RecordWriter* writer;
    LeftWriter* next;
};
std::mutex leftMutex;
LeftWriter* firstLeft = nullptr;  // guarded by leftMutex

/// As UTF-8, in one line.
std::string plain(const QString& text) {
    QString line = text.left(kLongestText);
    for (int i = 0; i < line.size(); ++i) {
        const ushort code = line.at(i).unicode();
        if (code < 0x20 || (code >= 0x7F && code < 0xA0)) {
            line[i] = QLatin1Char(' ');
        }
    }
    const QByteArray bytes = line.toUtf8();
    return std::string(bytes.constData(), static_cast<size_t>(bytes.size()));
}

QString titled(const char* title, const QString& detail) {
    return QLatin1String(title) + QLatin1String(": ") + detail;
}

QString target(const QString& host, unsigned short port) {
    return host + QLatin1Char(':') + QString::number(port);
}

QString milliseconds(int64_t micros) {
    return QString::number(double(micros) / 1000, 'f', 1) + QLatin1String(" ms");
}

bool isPowerOfTen(unsigned number) {
    while (number >= 10 && number % 10 == 0) {
        number /= 10;
    }
    return number == 1;
}

}  // namespace

FlightRecorder::FlightRecorder(const RecordSettings& settings)
    : started(false), connectAsked(), repeats(0) {
    if (!settings.folder.empty()) {
        log.reset(new RecordLog(settings));
        writer.reset(new RecordWriter(log.get(), settings.folder));
    }
}

FlightRecorder::~FlightRecorder() {
    end(kEndMs);
    if (writer && writer->isRunning()) {
        std::lock_guard<std::mutex> lock(leftMutex);
        LeftWriter* const left = new (std::nothrow) LeftWriter{log.get(), writer.get(), firstLeft};
        firstLeft = left ? left : firstLeft;
        log.release();
        writer.release();
    }
}

RecordingsMade FlightRecorder::recordings() const {
    return writer ? writer->made() : RecordingsMade();
}

void FlightRecorder::start() {
    if (writer && !started) {
        started = writer->begin();
    }
}

void FlightRecorder::end(unsigned long ms) {
    started = true;
    if (writer && writer->isRunning()) {
        log->end();
        writer->wait(ms);
    }
}

void FlightRecorder::record(RecordKind kind, const RecordTime& time, const QString& text) {
    const std::string bytes = plain(text);
    log->append(kind, time, bytes.data(), bytes.size());
}

void FlightRecorder::event(const QString& text) {
    record(kRecordEvent, recordTimeNow(), text);
}

// ---- host thread ------------------------------------------------------------------------------

void FlightRecorder::asked(const char* verb, const QString& address) try {
    if (log) {
        event(QLatin1String(verb) + titled(" asked", address));
    }
} catch (const std::exception&) {
    // there was no memory for it
}

void FlightRecorder::answered(const char* verb, const QString& address, int bytes,
                              int64_t waited) try {
    counters.noteHostWait(waited);
    if (!log) {
        return;
    }
    const QString outcome = bytes < 0 ? QString::fromLatin1("no value")
                                      : QString::number(bytes) + QLatin1String(" bytes");
    event(QLatin1String(verb) +
          titled(" answered", address + QLatin1String(": ") + outcome + QLatin1String(" after ") +
                                  milliseconds(waited)));
} catch (const std::exception&) {
    // there was no memory for it
}

/// A text that only repeats why the connection was lost, with an address before it, is no news. At
/// each new text a writer that found no thread tries again: now there is something to write.
void FlightRecorder::errorText(const QString& text) try {
    counters.noteErrorText();
    if (!log) {
        return;
    }
    const int64_t now = monotonicMicros();
    const int behind = text.indexOf(QLatin1String("> "));
    const bool knownLoss = behind >= 0 && seen.knows(plain(text.mid(behind + 2)), now);
    const bool known = seen.note(plain(text), now);
    event(titled("error text", text));
    if (!known) {
        start();
    }
    if (!known && !knownLoss) {
        log->trigger(kErrorTextWhy, plain(text));
    }
} catch (const std::exception&) {
    // there was no memory for it
}

// ---- worker thread: traffic -------------------------------------------------------------------

void FlightRecorder::sent(const _Encap_Header* request, bool whole) try {
    counters.noteRequest();
    if (!log) {
        return;
    }
    log->append(kRecordSent, request, size_t(kEncapHeaderSize) + _GetEncapLength(request));
    if (!whole) {
        event(QLatin1String("request not sent: the connection did not take all of it"));
    }
} catch (const std::exception&) {
    // there was no memory for it
}

void FlightRecorder::received(const _Encap_Header* reply) try {
    counters.noteAnswer(statusOfReply(reply));
    if (log) {
        log->append(kRecordReceived, reply, size_t(kEncapHeaderSize) + _GetEncapLength(reply));
    }
} catch (const std::exception&) {
    // there was no memory for it
}

void FlightRecorder::receivedPart(const void* bytes, size_t size, bool timedOut) try {
    if (timedOut) {
        counters.noteTimeout();
    }
    if (!log) {
        return;
    }
    if (size > 0) {
        log->append(kRecordReceived, bytes, size);
    }
    const QString what = QLatin1String(timedOut ? "the time was up" : "the connection ended");
    event(titled("no whole answer", what + QLatin1String(" after ") +
                                        QString::number(static_cast<qulonglong>(size)) +
                                        QLatin1String(" bytes")));
} catch (const std::exception&) {
    // there was no memory for it
}

void FlightRecorder::thrownAway(const void* bytes, size_t size) try {
    if (log) {
        log->append(kRecordReceived, bytes, size);
        event(titled("thrown away", QString::number(static_cast<qulonglong>(size)) +
                                        QLatin1String(" bytes that came unasked")));
    }
} catch (const std::exception&) {
    // there was no memory for it
}

// ---- worker thread: connection ----------------------------------------------------------------

void FlightRecorder::connecting(const QString& host, unsigned short port) try {
    if (log) {
        target = ::target(host, port);
        connectAsked = recordTimeNow();
    }
} catch (const std::exception&) {
    // there was no memory for it
}

/// Records that are to come belong to a new connection.
void FlightRecorder::beginConnection() {
    tellRepeats();
    log->nextConnection();
    record(kRecordConnecting, connectAsked, titled("connect", target));
}

void FlightRecorder::tellRepeats() {
    if (repeats > 0) {
        event(titled("connect failed", QString::number(repeats) + QLatin1String(" times more")));
    }
    repeats = 0;
}

void FlightRecorder::connected() try {
    counters.noteConnect(true);
    if (!log) {
        return;
    }
    beginConnection();
    lastConnectFailure = QString();
    const RecordTime now = recordTimeNow();
    record(kRecordConnected, now,
           titled("connected",
                  QLatin1String("after ") + milliseconds(now.monotonic - connectAsked.monotonic)));
} catch (const std::exception&) {
    // there was no memory for it
}

void FlightRecorder::connectFailed(const QString& reason) try {
    counters.noteConnect(false);
    if (!log) {
        return;
    }
    const QString failure = target + QLatin1Char(' ') + reason;
    if (failure == lastConnectFailure) {
        ++repeats;
        if (isPowerOfTen(repeats)) {
            event(titled("connect failed", reason + QLatin1String(", so far ") +
                                               QString::number(repeats) +
                                               QLatin1String(" times more")));
        }
        return;
    }
    beginConnection();
    lastConnectFailure = failure;
    event(titled("connect failed", reason));
} catch (const std::exception&) {
    // there was no memory for it
}

void FlightRecorder::closed() try {
    if (log) {
        record(kRecordClosed, recordTimeNow(), QLatin1String("closed"));
    }
} catch (const std::exception&) {
    // there was no memory for it
}

void FlightRecorder::opened() try {
    counters.noteOpen();
    if (log) {
        event(titled("opened", target));
    }
} catch (const std::exception&) {
    // there was no memory for it
}

void FlightRecorder::openFailed(const QString& reason, bool first) try {
    if (!log) {
        return;
    }
    seen.note(plain(reason), monotonicMicros());
    if (first) {
        event(titled("open failed", reason));
        log->trigger(kOpenFailedWhy, plain(reason));
    }
} catch (const std::exception&) {
    // there was no memory for it
}

void FlightRecorder::lost(const QString& reason) try {
    counters.noteLoss();
    if (!log) {
        return;
    }
    seen.note(plain(reason), monotonicMicros());
    event(titled("connection lost", reason));
    log->trigger(kLostWhy, plain(reason));
} catch (const std::exception&) {
    // there was no memory for it
}

void FlightRecorder::addressChanged(const QString& host, unsigned short port) try {
    if (log) {
        event(titled("address changed", ::target(host, port)));
    }
} catch (const std::exception&) {
    // there was no memory for it
}

void FlightRecorder::sessionList(const QString& names, int count) try {
    if (log) {
        event(titled("session list", QString::number(count) + QLatin1String(" tags: ") + names));
    }
} catch (const std::exception&) {
    // there was no memory for it
}
