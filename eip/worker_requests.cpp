// The worker's requests to the controller, which the driver's commands and the polling share.

#include "common/tools.h"
#include "eip/cip/cip_error.h"
#include "eip/cip/logix_services.h"
#include "eip/cip_plc_driver_callback.h"
#include "eip/lgx_data_cache.h"
#include "eip/worker.h"
#include "eip/worker_impl.h"

namespace {

/// Results that a caller may not want.
void setFalse(bool* out) {
    if (out) {
        *out = false;
    }
}

struct LgxReadDeleter {
    void operator()(_LGX_Read* read) const { _FreeLGXRead(read); }
};
typedef std::unique_ptr<_LGX_Read, LgxReadDeleter> LgxReadPtr;

}  // namespace

/// After a request that failed: keeps the library's text, and gives the connection up unless the
/// controller itself refused the request or the request never left. A failure that concerns the tag
/// alone withholds `cacheKey`, which is null when the request was to refresh no entry. Always
/// false.
bool EipWorker::finishFailedRequest(const QString& cacheKey, bool* broken) {
    const int type = cip_err_type();
    const bool neverSent = type == CIP_ERR_INTERNAL && cip_errno() == CIP_INTERNAL_BUFFER_TOO_SMALL;
    const bool lost = type != CIP_ERR_AB && !neverSent;
    // The flag makes other requests wait until the polling has the connection again; without
    // polling the next one has to try. A value that nobody can decode is that tag's error alone.
    const bool undecodable = type == CIP_ERR_INTERNAL && cip_errno() == CIP_INTERNAL_BAD_DATA;
    const bool outage = lost && !undecodable;
    d->setErrText(QString::fromLocal8Bit(cip_err_msg()), outage && !d->sessionHash.isEmpty());
    if (!outage && !cacheKey.isNull()) {
        d->receiver->cacheWithhold(cacheKey);
    }
    d->outage = d->outage || outage;
    if (lost) {
        noteLost(QString::fromLocal8Bit(cip_err_msg()));
        closeConnection();
        if (broken) {
            *broken = true;
        }
    } else if (type == CIP_ERR_AB) {
        d->lastTraffic = CurrentMSecsSinceBoot();
    }
    return false;
}

/// Reads in as many requests as it takes; ends with LgxProgress::more when the worker is to stop.
LgxProgress EipWorker::readInOneGo(LgxTagRead* read) {
    LgxProgress progress = LgxProgress::more;
    while (progress == LgxProgress::more && !d->stop.load()) {
        progress = _AdvanceLgxRead(d->session, d->connection, read);
    }
    return progress;
}

bool EipWorker::updateCache(const QString& name, int count, bool* broken) {
    const QByteArray ascii = name.toLatin1();
    LgxTagRead read(ascii.constData(), static_cast<uint16_t>(count & 0xFFFF));
    return storeInCache(name, count, readInOneGo(&read), &read, broken);
}

/// Puts what a read came to into the cache; true when that is a value.
bool EipWorker::storeInCache(const QString& name, int count, LgxProgress progress, LgxTagRead* read,
                             bool* broken) {
    setFalse(broken);
    const QString key = LgxDataCache::keyFrom(name, count);
    if (progress == LgxProgress::done) {
        const LgxReadPtr reply(read->release());
        d->lastTraffic = CurrentMSecsSinceBoot();
        d->receiver->cacheInsert(key, GetLGXValueAsByteArray(reply.get()));
        d->refreshedName = name;
    } else if (progress == LgxProgress::failed) {
        finishFailedRequest(key, broken);
    }
    sleep(kAfterRequestSleepMs);
    return progress == LgxProgress::done;
}

QByteArray EipWorker::readFromPLC(const QString& name, int count, bool* broken) {
    setFalse(broken);
    const QByteArray ascii = name.toLatin1();
    LgxTagRead read(ascii.constData(), static_cast<uint16_t>(count & 0xFFFF));
    const LgxProgress progress = readInOneGo(&read);
    if (progress != LgxProgress::done) {
        if (progress == LgxProgress::failed) {
            finishFailedRequest(QString(), broken);
        }
        return QByteArray();
    }
    const LgxReadPtr reply(read.release());
    d->lastTraffic = CurrentMSecsSinceBoot();
    const QByteArray value = GetLGXValueAsByteArray(reply.get());
    // An empty string is a value, not a failure: one zero byte, as a line carries it anyway.
    return value.isEmpty() ? QByteArray(1, 0) : value;
}

/// The cache entry that a write of this tag changes: its own, or that of the array it is in.
QString EipWorker::entryKeyOf(const QString& name) const {
    const QString entry =
        sessionReadCmdHashContains(name) ? name : name.left(name.indexOf(QLatin1Char('[')));
    return LgxDataCache::keyFrom(entry, sessionReadCmdHashValue(entry));
}

bool EipWorker::writeToPLC(const QString& name, _LGX_Data_Type type, QByteArray& data,
                           unsigned short count, bool* broken) {
    setFalse(broken);
    d->writtenName = name;
    const QByteArray ascii = name.toLatin1();
    LgxTagWrite write(ascii.constData(), type, data.constData(), count,
                      _GetConnectedRequestLimit(d->connection));
    // Nothing is served between the pieces: a read there would show a value that nobody wrote, half
    // the old one and half the new. The driver whose write this is asks for nothing meanwhile.
    LgxProgress progress = _AdvanceLgxWrite(d->session, d->connection, &write);
    while (progress == LgxProgress::more && !d->stop.load()) {
        progress = _AdvanceLgxWrite(d->session, d->connection, &write);
    }
    if (progress == LgxProgress::done) {
        d->lastTraffic = CurrentMSecsSinceBoot();
        return true;
    }
    // A part of the new value is in the controller, and the old one in the cache.
    const bool isPart = write.elementsWritten() > 0;
    if (progress == LgxProgress::failed) {
        finishFailedRequest(isPart ? entryKeyOf(name) : QString(), broken);
    }
    return false;
}
