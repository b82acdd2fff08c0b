#include "drivers/ab_micro800_ethernet/micro800_worker.h"

#include <utility>

#include "drivers/ab_micro800_ethernet/micro800_driver_callback.h"
#include "eip/lgx_data_cache.h"

namespace {

const unsigned long kAfterWriteSleepMs = 1;
const int kLongestString = 255;  // a short string says its length in one byte

/// The element count of a write, 0 and false when the bytes are no whole number of elements. A
/// short string counts its characters and may be empty.
bool elementCountOf(_LGX_Data_Type type, int bytes, unsigned short* count) {
    if (type == LGX_TYPE_SHORT_STRING) {
        *count = static_cast<unsigned short>(bytes);
        return bytes <= kLongestString;
    }
    const int elementSize = _GetLGXDataSize(type);
    if (elementSize < 1 || bytes < elementSize || bytes % elementSize != 0 ||
        bytes / elementSize > 0xFFFF) {
        return false;
    }
    *count = static_cast<unsigned short>(bytes / elementSize);
    return true;
}

}  // namespace

struct Micro800Worker::Impl {
    explicit Impl(std::unique_ptr<Micro800DriverCallback> owned)
        : receiver(std::move(owned)),
          elementName(QLatin1String("^(\\w+)\\[\\d+(?:,\\d+){0,2}\\]$")) {}

    const std::unique_ptr<Micro800DriverCallback> receiver;
    QRegExp elementName;  // worker thread only
};

Micro800Worker::Micro800Worker(const QString& ip, unsigned short port, unsigned long timeout)
    : Micro800Worker(std::unique_ptr<Micro800DriverCallback>(new Micro800DriverCallback), ip, port,
                     timeout) {}

Micro800Worker::Micro800Worker(std::unique_ptr<Micro800DriverCallback> receiver, const QString& ip,
                               unsigned short port, unsigned long timeout)
    : EipWorker(receiver.get(), ip, port, timeout), m(new Impl(std::move(receiver))) {}

Micro800Worker::~Micro800Worker() {}

bool Micro800Worker::processDriverWriteCmd(QString* writtenName, bool* broken) {
    if (writtenName) {
        writtenName->clear();
    }
    if (broken) {
        *broken = false;
    }
    int pipe = 0;
    unsigned short tid = 0;
    bool ok = false;
    LgxMicro800WriteCmd command = m->receiver->driverWriteCmd(pipe, tid, &ok);
    m->receiver->clearDriverWriteCmd();
    if (!ok) {
        return false;
    }
    if (!ensureConnection()) {
        m->receiver->sendDriverWriteFailRsp(pipe, tid, errStr());
        if (broken) {
            *broken = true;
        }
        return false;
    }
    unsigned short count = 0;
    if (!elementCountOf(command.type, command.data.size(), &count)) {
        m->receiver->sendDriverWriteFailRsp(pipe, tid, QLatin1String("invalid data size"));
        return false;
    }
    if (!writeToPLC(command.name, command.type, command.data, count, broken)) {
        m->receiver->sendDriverWriteFailRsp(pipe, tid, errStr());
        return false;
    }
    sleep(kAfterWriteSleepMs);
    const QString refreshed = cachedNameFor(command.name);
    if (!updateCacheAfterWrite(pipe, tid, refreshed, broken)) {
        return false;
    }
    if (writtenName) {
        *writtenName = refreshed;
    }
    return true;
}

/// The cache entry that a written value belongs to: the whole array's when it is cached, else the
/// tag's own.
QString Micro800Worker::cachedNameFor(const QString& name) {
    if (m->elementName.indexIn(name) >= 0) {
        const QString arrayName = m->elementName.cap(1);
        const QString key = LgxDataCache::keyFrom(arrayName, sessionReadCmdHashValue(arrayName));
        if (m->receiver->cacheContains(key)) {
            return arrayName;
        }
    }
    return name;
}

bool Micro800Worker::updateCacheAfterWrite(int pipe, unsigned short tid, const QString& name,
                                           bool* broken) {
    const int count = sessionReadCmdHashValue(name);
    if (m->receiver->cacheContains(LgxDataCache::keyFrom(name, count)) &&
        !updateCache(name, count, broken)) {
        m->receiver->sendDriverWriteFailRsp(pipe, tid, errStr());
        return false;
    }
    m->receiver->sendDriverWriteOkRsp(pipe, tid);
    return true;
}
