#include "eip/worker.h"

#include <pthread.h>
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <QSet>
#include <QTime>

#include "common/qt_compat.h"
#include "common/tools.h"
#include "eip/cip/cip_error.h"
#include "eip/cip/connection_manager.h"
#include "eip/cip/encapsulation.h"
#include "eip/cip_plc_driver_callback.h"
#include "eip/worker_impl.h"

namespace {

// What the Forward Open asks for (CIP Networks Library Vol. 1, 3-5.4).
const int kPlcKind = 3;
const unsigned char kPriorityTick = 5;
const unsigned char kTimeoutTicks = 247;
const uint32_t kTToOConnectionId = 0x80FE0001;
const uint16_t kConnectionSerial = 2;
const uint16_t kOriginatorVendorId = 0x501B;
const unsigned char kTimeoutMultiplier = 2;
const uint32_t kRpiMs = 2000;

/// The target drops a connection that was idle for RPI * (4 << multiplier); a sixteenth less, so
/// that a request that is about to leave does not meet that moment.
const qint64 kIdleLimitMs = qint64(kRpiMs) * (4 << kTimeoutMultiplier) * 15 / 16;

const unsigned long kIdleSleepMs = 20;

const unsigned long kTimerSlackNs = 1000;

/// How long a controller may take over the Forward Close: a driver command is waiting behind it.
const uint32_t kFarewellMs = 500;

/// Sets this worker apart from every other one in this process or started in the same second on
/// another panel: the controller takes two equal originators for one.
uint32_t makeSalt() {
    static std::atomic<uint32_t> counter(0);
    const uint32_t number = counter.fetch_add(1) + 1;
    const uint32_t clock = static_cast<uint32_t>(CurrentMSecsSinceBoot());
    return (number * 0x9E3779B1u) ^ (static_cast<uint32_t>(getpid()) << 16) ^ clock;
}

}  // namespace

EipWorker::Impl::Impl(CipPlcDriverCallback* owner, const QString& address, unsigned short tcpPort,
                      unsigned long ms, const std::vector<unsigned char>& route)
    : receiver(owner),
      timeout(ms),
      routePath(route),
      stop(false),
      ended(false),
      errFlag(false),
      ip(detachedCopy(address)),
      port(tcpPort),
      session(0),
      connection(0),
      originatorSalt(makeSalt()),
      lastTraffic(0) {}

EipWorker::Impl::~Impl() {
    if (connection) {
        DeleteConnection(&connection);
    }
    if (session) {
        DeleteSession(session);
    }
}

void EipWorker::Impl::setErrText(const QString& text, bool raise) {
    std::lock_guard<std::mutex> lock(errMutex);
    errText = detachedCopy(text);
    errFlag = errFlag || raise;
}

/// What serving a driver command meant for the polling pass.
struct EipWorker::Served {
    Served() : broken(false), addressChanged(false) {}
    bool broken;
    bool addressChanged;
    QString name;
};

EipWorker::EipWorker(CipPlcDriverCallback* receiver, const QString& ip, unsigned short port,
                     unsigned long timeout)
    : d(new Impl(receiver, ip, port, timeout, std::vector<unsigned char>())) {}

EipWorker::EipWorker(CipPlcDriverCallback* receiver, const QString& ip, unsigned short port,
                     unsigned long timeout, const std::vector<unsigned char>& routePath)
    : d(new Impl(receiver, ip, port, timeout, routePath)) {}

EipWorker::~EipWorker() { d->ended.load(std::memory_order_acquire); }

void EipWorker::stop() { d->stop.store(true); }

QString EipWorker::errStr() const {
    std::lock_guard<std::mutex> lock(d->errMutex);
    return detachedCopy(d->errText);
}

bool EipWorker::hasErr() const {
    std::lock_guard<std::mutex> lock(d->errMutex);
    return d->errFlag;
}

void EipWorker::setErrStr(const QString& text) { d->setErrText(text, true); }

void EipWorker::clearErr() {
    std::lock_guard<std::mutex> lock(d->errMutex);
    d->errFlag = false;
}

bool EipWorker::cacheValue(const QString& key, QByteArray& out) {
    return d->receiver->cacheValue(key, out);
}

bool EipWorker::cacheValue(const QString& key, QByteArray& out, int offset) {
    return d->receiver->cacheValue(key, out, offset);
}

bool EipWorker::pipesOpened() const { return d->receiver->pipesOpened(); }

int EipWorker::sendCmd(int pipe, const char* line, int length) {
    d->receiver->discardClientPipe(pipe);
    return d->receiver->sendClientPipe(pipe, line, length);
}

bool EipWorker::recvRsp(int pipe, char* buffer, int size, int* received) {
    bool gotLF = false;
    const int count = d->receiver->recvClientPipeUntilLF(pipe, buffer, size, &gotLF);
    if (received) {
        *received = count > 0 ? count : 0;
    }
    return gotLF;
}

CipPlcDriverCallback* EipWorker::receiver() const { return d->receiver; }

void EipWorker::setCPDC(CipPlcDriverCallback* receiver) { d->receiver = receiver; }

void EipWorker::sleep(unsigned long ms) {
    // A command that came in with the last wait has left the pipe: nothing would wake the sleep.
    if (!hasDriverCommand()) {
        d->receiver->sleep(ms);
    }
}

bool EipWorker::hasDriverCommand() const {
    return d->receiver->hasDriverWriteCmd() || d->receiver->hasDriverReadCmd() ||
           d->receiver->hasDriverReadArrayElementCmd() ||
           d->receiver->hasDriverIpSettingChangedCmd() || d->receiver->hasDriverSetSessionCmd();
}

bool EipWorker::connectionIsOpened() const { return d->session && d->connection; }

/// Gives an opening up halfway, without a word to the controller. Always false.
bool EipWorker::dropSession() {
    DeleteSession(d->session);
    d->session = 0;
    d->receiver->disconnect();
    return false;
}

bool EipWorker::openConnection() {
    if (!d->receiver->connect(d->ip.toLatin1().constData(), d->port, d->timeout)) {
        setErrStr(d->receiver->lastError());
        return false;
    }
    if (d->session) {
        DeleteSession(d->session);
    }
    d->session = NewSession(d->timeout, d->receiver);
    if (!d->session) {
        setErrStr(QLatin1String("can't allocate session"));
        d->receiver->disconnect();
        return false;
    }
    if (d->stop.load()) {
        return dropSession();
    }
    if (_RegisterSession(d->session) != 0) {
        setErrStr(QString::fromLocal8Bit(cip_err_msg()));
        return dropSession();
    }
    if (d->stop.load()) {
        return dropSession();
    }
    if (d->connection) {
        DeleteConnection(&d->connection);
    }
    const unsigned char* route = d->routePath.empty() ? 0 : d->routePath.data();
    const uint32_t originatorSerial = static_cast<uint32_t>(compatRand()) ^ d->originatorSalt;
    d->connection = _ConnectPLCOverCNET2(
        d->session, kPlcKind, kPriorityTick, kTimeoutTicks, kTToOConnectionId, kConnectionSerial,
        kOriginatorVendorId, originatorSerial, kTimeoutMultiplier, kRpiMs, _Transport, route,
        static_cast<unsigned char>(d->routePath.size()));
    if (!d->connection) {
        setErrStr(QString::fromLocal8Bit(cip_err_msg()));
        _UnRegisterSession(d->session);
        return dropSession();
    }
    d->lastTraffic = CurrentMSecsSinceBoot();
    clearErr();
    return true;
}

void EipWorker::closeConnection() {
    // A stopped worker makes no farewell: the owner waits for the thread.
    const bool farewell = !d->stop.load();
    if (d->session && d->session->timeoutMs > kFarewellMs) {
        d->session->timeoutMs = kFarewellMs;
    }
    if (d->connection) {
        if (farewell) {
            _Forward_Close(d->connection);
            d->connection = 0;
        } else {
            DeleteConnection(&d->connection);
        }
    }
    if (d->session) {
        if (farewell) {
            _UnRegisterSession(d->session);
        }
        DeleteSession(d->session);
        d->session = 0;
    }
    // The next open must meet the address that is set then, never the socket of this one.
    d->receiver->disconnect();
}

bool EipWorker::ensureConnection() {
    if (connectionIsOpened()) {
        if (CurrentMSecsSinceBoot() - d->lastTraffic < kIdleLimitMs) {
            return true;
        }
        closeConnection();
    }
    const bool opened = openConnection();
    if (!opened && d->sessionHash.isEmpty()) {
        clearErr();  // nothing polls the controller back: the next command has to try it
    }
    return opened;
}

void EipWorker::seedOriginator() {
    compatSeedRand(static_cast<unsigned int>(QTime(0, 0).secsTo(QTime::currentTime())));
}

void EipWorker::run() {
    seedOriginator();
    // The host's signals are for the host: one that ended a wait here would look like a lost reply.
    sigset_t all;
    sigfillset(&all);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
        sigdelset(&all, fault);  // what this thread itself brings about
    }
    pthread_sigmask(SIG_BLOCK, &all, 0);
    // The pause between two polls is a millisecond; the system's default lateness is a part of it.
    prctl(PR_SET_TIMERSLACK, kTimerSlackNs);
    while (!d->stop.load()) {
        Served served;
        serveOneDriverCommand(&served);
        if (d->receiver->hasDriverSetSessionCmd()) {
            takeSessionList();
        }
        if (d->sessionHash.isEmpty()) {
            // Nothing polls the connection back to life here: the next command has to try it.
            clearErr();
            sleep(kIdleSleepMs);
            continue;
        }
        pollSession();
    }
    d->ended.store(true, std::memory_order_release);
}

bool EipWorker::serveOneDriverCommand(Served* served) {
    if (d->receiver->hasDriverWriteCmd()) {
        processDriverWriteCmd(&served->name, &served->broken);
    } else if (d->receiver->hasDriverReadCmd()) {
        processDriverReadCmd(&served->broken, &served->name);
    } else if (d->receiver->hasDriverReadArrayElementCmd()) {
        processDriverReadArrayElementCmd(&served->broken, &served->name);
    } else if (d->receiver->hasDriverIpSettingChangedCmd()) {
        served->addressChanged = processDriverIpSettingChangedCmd();
    } else {
        return false;
    }
    return true;
}

bool EipWorker::takeSessionList() {
    bool ok = false;
    const QHash<QString, int> entries = d->receiver->driverSetSessionCmd2(&ok);
    d->receiver->clearDriverSetSessionCmd();
    if (ok) {
        d->sessionHash = entries;
        d->receiver->cacheClear();
    }
    return ok;
}

/// One pass over the session entries. Ends early when the connection breaks, when the list or the
/// controller's address changes, and when the worker is to stop.
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
        Served served;
        d->refreshedName.clear();
        serveOneDriverCommand(&served);
        if (d->receiver->hasDriverSetSessionCmd()) {
            takeSessionList();
            return;
        }
        if (served.broken || served.addressChanged || !connectionIsOpened()) {
            return;
        }
        // Only what went into the cache: a tag read with another count than the polled one is
        // still due.
        if (!served.name.isEmpty() && served.name == d->refreshedName) {
            done.insert(served.name);
        }
        if (done.contains(entry.key())) {
            continue;
        }
        done.insert(entry.key());
        if (!pollEntry(entry.key(), entry.value())) {
            d->brokenAt = entry.key();
            return;
        }
    }
}

/// Refreshes one entry; false when the connection broke over it.
bool EipWorker::pollEntry(const QString& name, int count) {
    bool broken = false;
    updateCache(name, count, &broken);
    if (broken) {
        sleep(kIdleSleepMs);
    }
    return !broken;
}
