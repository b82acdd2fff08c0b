#ifndef EIP_WORKER_IMPL_H
#define EIP_WORKER_IMPL_H

#include <QHash>
#include <QString>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include "eip/worker.h"

class CipPlcDriverCallback;
class FlightRecorder;
struct _Eip_Connection;
struct _Eip_Session;

/// State of EipWorker, grouped by the thread that may touch it.
struct EipWorker::Impl {
    Impl(CipPlcDriverCallback* owner, const QString& address, unsigned short tcpPort,
         unsigned long ms, const std::vector<unsigned char>& route);
    ~Impl();

    void setErrText(const QString& text, bool raise);

    // constant while the thread runs
    CipPlcDriverCallback* receiver;
    FlightRecorder* recorder;     ///< null: no recorder
    const unsigned long timeout;  ///< milliseconds
    const std::vector<unsigned char> routePath;

    // any thread
    std::atomic<bool> stop;
    std::atomic<bool> ended;  ///< the loop's last store; its reader sees all that the loop did

    // guarded by errMutex
    mutable std::mutex errMutex;
    QString errText;
    bool errFlag;

    // worker thread only
    QString ip;
    unsigned short port;
    _Eip_Session* session;
    _Eip_Connection* connection;
    QHash<QString, int> sessionHash;  ///< tag name -> element count
    uint32_t originatorSalt;
    bool outage;            ///< the connection was lost since the cached values were read
    qint64 lastTraffic;     ///< when the controller last answered, milliseconds since boot
    QString refreshedName;  ///< the tag whose cache entry was refreshed last
    QString writtenName;    ///< the tag that a write was sent for last
    QString brokenAt;       ///< the session entry over which the last pass broke
};

/// What serving a driver command meant for the polling pass.
struct EipWorker::Served {
    Served() : broken(false), addressChanged(false) {}
    bool broken;
    bool addressChanged;
    QString name;
};

/// A pause in which nothing is to be asked of the controller.
const unsigned long kIdleSleepMs = 20;
/// The pause after a read or a write.
const unsigned long kAfterRequestSleepMs = 1;

/// A copy that shares no storage, for texts that cross threads.
inline QString detachedCopy(const QString& text) {
    return QString(text.constData(), text.size());
}

#endif
