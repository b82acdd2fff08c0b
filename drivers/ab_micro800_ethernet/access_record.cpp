// The driver's events for its recorder, and its counters for a host.

#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"
#include "drivers/ab_micro800_ethernet/border.h"
#include "eip/record/flight_recorder.h"
#include "runtime/communicator_command.h"

namespace {

const double kMicrosPerMs = 1000;

QVariant milliseconds(uint64_t micros) {
    return double(micros) / kMicrosPerMs;
}

QVariant number(uint64_t value) {
    return static_cast<qlonglong>(value);
}

/// General status in two hexadecimal digits -> number of answers, those that there were.
QVariantMap byStatus(const LiveFigures& figures) {
    QVariantMap result;
    for (size_t status = 0; status < figures.byStatus.size(); ++status) {
        if (figures.byStatus[status] > 0) {
            const QString code = QString::number(static_cast<uint>(status), 16).toUpper();
            result.insert(code.rightJustified(2, QLatin1Char('0')),
                          number(figures.byStatus[status]));
        }
    }
    return result;
}

QVariantMap passTimes(const LiveFigures& figures) {
    QVariantMap result;
    result.insert(QLatin1String("count"), number(figures.passes));
    result.insert(QLatin1String("last_ms"), milliseconds(figures.passLast));
    result.insert(QLatin1String("mean_ms"), milliseconds(figures.passMean));
    result.insert(QLatin1String("p99_ms"), milliseconds(figures.passP99));
    return result;
}

QVariantMap recordingState(const FlightRecorder& recorder) {
    const RecordingsMade made = recorder.recordings();
    QVariantMap result;
    result.insert(QLatin1String("on"), recorder.isOn());
    result.insert(QLatin1String("written"), number(made.written));
    result.insert(QLatin1String("failed"), number(made.failed));
    result.insert(QLatin1String("problem"), QString::fromLocal8Bit(made.problem.c_str()));
    return result;
}

}  // namespace

QVariantMap DriverABMicro800Eth::counters() const {
    return withoutThrowing(QVariantMap(), [this] { return allCounters(); });
}

QVariantMap DriverABMicro800Eth::allCounters() const {
    const LiveFigures figures = recorder->figures();
    QVariantMap result;
    result.insert(QLatin1String("requests"), number(figures.requests));
    result.insert(QLatin1String("answers"), number(figures.answers));
    result.insert(QLatin1String("answers_by_status"), byStatus(figures));
    result.insert(QLatin1String("encapsulation_errors"), number(figures.encapsulationErrors));
    result.insert(QLatin1String("timeouts"), number(figures.timeouts));
    result.insert(QLatin1String("connects"), number(figures.connects));
    result.insert(QLatin1String("connect_failures"), number(figures.connectFailures));
    result.insert(QLatin1String("opens"), number(figures.opens));
    result.insert(QLatin1String("reconnects"), number(figures.opens > 0 ? figures.opens - 1 : 0));
    result.insert(QLatin1String("connections_lost"), number(figures.losses));
    result.insert(QLatin1String("error_texts"), number(figures.errorTexts));
    result.insert(QLatin1String("host_calls"), number(figures.hostCalls));
    result.insert(QLatin1String("longest_host_wait_ms"), milliseconds(figures.longestHostWait));
    result.insert(QLatin1String("passes"), passTimes(figures));
    result.insert(QLatin1String("recording"), recordingState(*recorder));
    return result;
}

void DriverABMicro800Eth::startRecorder() {
    recorder->start();
    recorderStarted = true;
}

/// To be called when a line goes to the worker: an access that the cache serves is none of the
/// recorder's.
void DriverABMicro800Eth::noteAsked() {
    if (access && askedAt == 0) {
        askedAt = monotonicMicros();
        recorder->asked(accessVerb, access->address);
    }
}

void DriverABMicro800Eth::tellAccess(int bytes) {
    if (askedAt != 0) {
        recorder->answered(accessVerb, access->address, bytes, monotonicMicros() - askedAt);
    }
    if (commError) {
        recorder->errorText(lastError);
    }
}
