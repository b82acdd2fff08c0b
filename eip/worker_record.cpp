// The worker's events for the recorder, when there is one.

#include <QStringList>

#include "eip/cip_plc_driver_callback.h"
#include "eip/record/flight_recorder.h"
#include "eip/worker.h"
#include "eip/worker_impl.h"

void EipWorker::setRecorder(FlightRecorder* recorder) {
    d->recorder = recorder;
    d->receiver->setRecorder(recorder);
}

void EipWorker::noteOpened() {
    if (d->recorder) {
        d->recorder->opened();
    }
}

/// Sets the error. Always false.
bool EipWorker::openingFailed(const QString& reason) {
    setErrStr(reason);
    if (d->recorder) {
        d->recorder->openFailed(reason, !d->outage);
    }
    return false;
}

void EipWorker::noteLost(const QString& reason) {
    if (d->recorder) {
        d->recorder->lost(reason);
    }
}

void EipWorker::noteSessionList() {
    if (d->recorder && d->recorder->isOn()) {
        const QStringList names = d->sessionHash.keys();
        d->recorder->sessionList(names.join(QLatin1String(", ")), names.size());
    }
}

void EipWorker::noteAddress() {
    if (d->recorder) {
        d->recorder->addressChanged(d->ip, d->port);
    }
}

/// Only a pass that was neither broken nor stopped shows how long a pass takes.
void EipWorker::notePass(qint64 startedUs) {
    if (d->recorder && !d->stop.load()) {
        d->recorder->passed(monotonicMicros() - startedUs);
    }
}
