// The polling pass: every session entry in turn, and the driver's commands in between.

#include <QSet>

#include "common/tools.h"
#include "eip/cip/logix_services.h"
#include "eip/cip_plc_driver_callback.h"
#include "eip/record/record.h"
#include "eip/worker.h"
#include "eip/worker_impl.h"

namespace {

/// The tag without its indices and members.
QString baseOf(const QString& name) {
    int end = 0;
    while (end < name.size() && name.at(end) != QLatin1Char('[') &&
           name.at(end) != QLatin1Char('.')) {
        ++end;
    }
    return name.left(end);
}

}  // namespace

void EipWorker::pollSession() {
    if (d->stop.load()) {
        return;
    }
    if (!ensureConnection()) {
        // A connect that is refused at once never waits; the pipes must be served all the same,
        // or a corrected address could not get in.
        d->receiver->emptyRxBuffer();
        return;
    }
    clearErr();
    // A copy: a command served below may bring a new list.
    const QHash<QString, int> entries = d->sessionHash;
    QSet<QString> done;
    const qint64 started = monotonicMicros();
    // The entry that broke the last pass comes last in this one: were it always before the others,
    // they would never be read again.
    QHash<QString, int>::const_iterator entry = entries.constFind(d->brokenAt);
    if (entry != entries.constEnd()) {
        ++entry;
    }
    d->brokenAt.clear();
    for (int left = entries.size(); left > 0 && !d->stop.load(); --left, ++entry) {
        if (entry == entries.constEnd()) {
            entry = entries.constBegin();
        }
        if (!serveDuringPass(&done)) {
            return;
        }
        if (!done.contains(entry.key()) && !pollEntry(entry.key(), entry.value(), &done)) {
            return;
        }
        done.insert(entry.key());
    }
    notePass(started);
}

/// Serves a driver command in the middle of a pass; false when the pass ends with it. `done` takes
/// up the entry that it refreshed.
bool EipWorker::serveDuringPass(QSet<QString>* done) {
    Served served;
    d->refreshedName.clear();
    d->writtenName.clear();
    serveOneDriverCommand(&served);
    if (d->receiver->hasDriverSetSessionCmd()) {
        takeSessionList();
        return false;
    }
    if (served.broken || served.addressChanged || !connectionIsOpened()) {
        return false;
    }
    // Only what went into the cache: a tag read with another count than the polled one is still
    // due.
    if (!served.name.isEmpty() && served.name == d->refreshedName) {
        done->insert(served.name);
    }
    return true;
}

/// Refreshes one entry; false when the pass ends over it. An array that takes several requests is
/// one read of the pass, but a driver's command waits for one of its pieces only.
bool EipWorker::pollEntry(const QString& name, int count, QSet<QString>* done) {
    const QByteArray ascii = name.toLatin1();
    LgxTagRead read(ascii.constData(), static_cast<uint16_t>(count & 0xFFFF));
    LgxProgress progress = _AdvanceLgxRead(d->session, d->connection, &read);
    bool broken = false;
    while (progress == LgxProgress::more) {
        d->lastTraffic = CurrentMSecsSinceBoot();
        if (d->stop.load() || !serveDuringPass(done)) {
            return false;
        }
        if (done->contains(name)) {
            return true;  // the command was for this array, and what it read is newer
        }
        if (!d->writtenName.isEmpty() && baseOf(d->writtenName) == baseOf(name)) {
            // The pieces so far are older than what the driver now knows to be written. In one go,
            // or a host that writes all the time would never see the array.
            updateCache(name, count, &broken);
            return finishPoll(name, broken);
        }
        progress = _AdvanceLgxRead(d->session, d->connection, &read);
    }
    storeInCache(name, count, progress, &read, &broken);
    return finishPoll(name, broken);
}

/// Notes the entry that broke the connection; false when it did.
bool EipWorker::finishPoll(const QString& name, bool broken) {
    if (broken) {
        sleep(kIdleSleepMs);
        d->brokenAt = name;
    }
    return !broken;
}
