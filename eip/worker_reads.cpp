// What the worker does for the driver's read and address commands.

#include "eip/cip/cip_error.h"
#include "eip/cip_plc_driver_callback.h"
#include "eip/lgx_data_cache.h"
#include "eip/worker.h"
#include "eip/worker_impl.h"

namespace {

/// The largest value that an answer line contains: two digits a byte, code, id, separators and line
/// feed within 4096 bytes.
const int kLargestAnswer = (4096 - 1 - 9) / 2;

/// Results that a caller may not want.
template <typename T>
void setOut(T* out, const T& value) {
    if (out) {
        *out = value;
    }
}

const char* tooLongForAnswer() {
    return CIPGetInternalErrMsg(CIP_INTERNAL_BUFFER_TOO_SMALL);
}

}  // namespace

bool EipWorker::sessionReadCmdHashContains(const QString& name) const {
    return d->sessionHash.contains(name);
}

int EipWorker::sessionReadCmdHashValue(const QString& name) const {
    return d->sessionHash.value(name, 0);
}

/// Whether the tag is a session entry whose values are cached under exactly this key.
bool EipWorker::isPolled(const QString& name, const QString& key) const {
    return sessionReadCmdHashContains(name) &&
           LgxDataCache::keyFrom(name, sessionReadCmdHashValue(name)) == key;
}

/// A value too long for a line is a failure that the driver hears of at once.
void EipWorker::answerRead(int pipe, unsigned short tid, const QByteArray& value) {
    if (value.size() > kLargestAnswer) {
        d->receiver->sendDriverReadFailRsp(pipe, tid, QLatin1String(tooLongForAnswer()));
    } else {
        d->receiver->sendDriverReadRsp(pipe, tid, value);
    }
}

void EipWorker::answerArrayElement(int pipe, unsigned short tid, const QByteArray& value) {
    if (value.size() > kLargestAnswer) {
        d->receiver->sendDriverReadArrayElementFailRsp(pipe, tid,
                                                       QLatin1String(tooLongForAnswer()));
    } else {
        d->receiver->sendDriverReadArrayElementRsp(pipe, tid, value);
    }
}

bool EipWorker::processDriverReadCmd(bool* broken, QString* servedName) {
    setOut(broken, false);
    setOut(servedName, QString());
    int pipe = 0;
    unsigned short tid = 0;
    bool ok = false;
    const LgxReadCmd command = d->receiver->driverReadCmd(pipe, tid, &ok);
    d->receiver->clearDriverReadCmd();
    if (!ok) {
        return false;
    }
    const QString key = LgxDataCache::keyFrom(command.name, command.count);
    QByteArray value;
    if (d->receiver->cacheValue(key, value)) {
        answerRead(pipe, tid, value);
        return true;
    }
    if (!ensureConnection()) {
        d->receiver->sendDriverReadFailRsp(pipe, tid, errStr());
        setOut(broken, true);
        return false;
    }
    if (isPolled(command.name, key)) {
        if (!updateCache(command.name, command.count, broken) ||
            !d->receiver->cacheValue(key, value)) {
            d->receiver->sendDriverReadFailRsp(pipe, tid, errStr());
            return false;
        }
        answerRead(pipe, tid, value);
        setOut(servedName, command.name);
        return true;
    }
    value = readFromPLC(command.name, command.count, broken);
    if (value.isEmpty()) {
        d->receiver->sendDriverReadFailRsp(pipe, tid, errStr());
        return false;
    }
    answerRead(pipe, tid, value);
    setOut(servedName, command.name);
    sleep(kAfterRequestSleepMs);
    return true;
}

/// A driver's request for elements of a declared array, and the keys it goes by.
struct EipWorker::ArrayRequest {
    int pipe;
    unsigned short tid;
    QString arrayName;
    QString elementName;  ///< array name and index text, e.g. ARR[3]
    int elementCount;
    int arraySize;
    int byteOffset;
    int wantedBytes;  ///< -1 without a size, or with one that no answer carries
    bool tooLong;
    QString arrayKey;
    QString elementKey;
};

bool EipWorker::takeArrayRequest(ArrayRequest* request) {
    QString indexText;
    _LGX_Data_Type type = _LGX_Data_Type(0);
    request->pipe = 0;
    request->tid = 0;
    const bool ok = d->receiver->driverReadArrayElementsCmd(
        request->pipe, request->tid, request->arrayName, indexText, type, request->elementCount,
        request->arraySize, request->byteOffset);
    d->receiver->clearDriverReadArrayElementCmd();
    if (!ok) {
        return false;
    }
    request->elementName = request->arrayName + indexText;
    request->arrayKey = LgxDataCache::keyFrom(request->arrayName, request->arraySize);
    request->elementKey = LgxDataCache::keyFrom(request->elementName, request->elementCount);
    const qint64 wanted = qint64(_GetLGXDataSize(type)) * request->elementCount;
    // Without a size nothing can be cut out of a cached array.
    request->tooLong = wanted > kLargestAnswer;
    request->wantedBytes = wanted > 0 && !request->tooLong ? static_cast<int>(wanted) : -1;
    return true;
}

bool EipWorker::arraySliceFromCache(const ArrayRequest& request, QByteArray* value) {
    if (request.wantedBytes < 0) {
        return false;
    }
    QByteArray slice(request.wantedBytes, 0);
    if (!d->receiver->cacheValue(request.arrayKey, slice, request.byteOffset)) {
        return false;
    }
    *value = slice;
    return true;
}

bool EipWorker::processDriverReadArrayElementCmd(bool* broken, QString* servedName) {
    setOut(broken, false);
    setOut(servedName, QString());
    ArrayRequest request;
    if (!takeArrayRequest(&request)) {
        return false;
    }
    if (request.tooLong) {
        d->receiver->sendDriverReadArrayElementFailRsp(request.pipe, request.tid,
                                                       QLatin1String(tooLongForAnswer()));
        return false;
    }
    QByteArray value;
    if (arraySliceFromCache(request, &value) ||
        (d->receiver->cacheValue(request.elementKey, value) &&
         value.size() >= request.wantedBytes)) {
        answerArrayElement(request.pipe, request.tid, value);
        return true;
    }
    if (!ensureConnection()) {
        d->receiver->sendDriverReadArrayElementFailRsp(request.pipe, request.tid, errStr());
        setOut(broken, true);
        return false;
    }
    QString refreshed;
    QString failure;
    if (!readArrayElements(request, &value, &refreshed, &failure, broken)) {
        d->receiver->sendDriverReadArrayElementFailRsp(request.pipe, request.tid, failure);
        return false;
    }
    answerArrayElement(request.pipe, request.tid, value);
    setOut(servedName, refreshed);
    if (refreshed.isEmpty()) {
        sleep(kAfterRequestSleepMs);  // what goes into the cache has had its pause
    }
    return true;
}

/// Reads the elements from the controller: the whole array when it is polled, the polled element,
/// or just the elements.
bool EipWorker::readArrayElements(const ArrayRequest& request, QByteArray* value,
                                  QString* refreshed, QString* failure, bool* broken) {
    if (isPolled(request.arrayName, request.arrayKey)) {
        *refreshed = request.arrayName;
        if (!updateCache(request.arrayName, request.arraySize, broken)) {
            *failure = errStr();
            return false;
        }
        if (!arraySliceFromCache(request, value)) {
            *failure = QLatin1String("invalid array element");
            return false;
        }
        return true;
    }
    if (isPolled(request.elementName, request.elementKey)) {
        *refreshed = request.elementName;
        if (!updateCache(request.elementName, request.elementCount, broken) ||
            !d->receiver->cacheValue(request.elementKey, *value)) {
            *failure = errStr();
            return false;
        }
        return true;
    }
    *value = readFromPLC(request.elementName, request.elementCount, broken);
    if (value->isEmpty()) {
        *failure = errStr();
        return false;
    }
    return true;
}

bool EipWorker::processDriverWriteCmd(QString* writtenName, bool* broken) {
    setOut(writtenName, QString());
    setOut(broken, false);
    return false;
}

bool EipWorker::processDriverIpSettingChangedCmd() {
    int pipe = 0;
    unsigned short tid = 0;
    QString ip;
    unsigned short port = 0;
    const bool ok = d->receiver->driverIpSettingChangedCmd(pipe, tid, ip, port);
    d->receiver->clearDriverIpSettingChangedCmd();
    if (!ok) {
        return false;
    }
    d->receiver->cacheClear();
    closeConnection();
    d->ip = ip;
    d->port = port;
    noteAddress();
    d->receiver->sendDriverIpSettingChangedOkRsp(pipe, tid);
    return true;
}
