#include "eip/worker.h"

#include <pthread.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <QTime>
#include <exception>

#include "common/qt_compat.h"
#include "common/tools.h"
#include "eip/cip/cip_error.h"
#include "eip/cip/encapsulation.h"
#include "eip/cip_plc_driver_callback.h"
#include "eip/plc_connection.h"
#include "eip/timer_slack.h"
#include "eip/worker_impl.h"

namespace {

/// What the target allows (plc_connection.h) less a sixteenth, so that a request that is about to
/// leave does not meet that moment.
const qint64 kIdleLimitMs = qint64(kPlcRpiMs) * (4 << kPlcTimeoutMultiplier) * 15 / 16;

/// A host that reads one tag after the other gets there between two of its reads, and no further.
const int kPunctualIdleRounds = 2;

/// How long it may take over the Forward Close when the worker ends: its owner is waiting for the
/// thread.
const qint64 kLastFarewellMs = 50;

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
      recorder(nullptr),
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
      outage(false),
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

EipWorker::EipWorker(CipPlcDriverCallback* receiver, const QString& ip, unsigned short port,
                     unsigned long timeout)
    : d(new Impl(receiver, ip, port, timeout, std::vector<unsigned char>())) {}

EipWorker::EipWorker(CipPlcDriverCallback* receiver, const QString& ip, unsigned short port,
                     unsigned long timeout, const std::vector<unsigned char>& routePath)
    : d(new Impl(receiver, ip, port, timeout, routePath)) {}

EipWorker::~EipWorker() {
    d->ended.load(std::memory_order_acquire);
}

void EipWorker::stop() {
    d->stop.store(true);
}

QString EipWorker::errStr() const {
    std::lock_guard<std::mutex> lock(d->errMutex);
    return detachedCopy(d->errText);
}

bool EipWorker::hasErr() const {
    std::lock_guard<std::mutex> lock(d->errMutex);
    return d->errFlag;
}

void EipWorker::setErrStr(const QString& text) {
    d->setErrText(text, true);
}

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

bool EipWorker::pipesOpened() const {
    return d->receiver->pipesOpened();
}

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

CipPlcDriverCallback* EipWorker::receiver() const {
    return d->receiver;
}

void EipWorker::setCPDC(CipPlcDriverCallback* receiver) {
    d->receiver = receiver;
}

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

bool EipWorker::connectionIsOpened() const {
    return d->session && d->connection;
}

/// Gives up halfway through an opening or a closing, without a word to the controller. Always
/// false.
bool EipWorker::dropSession() {
    DeleteSession(d->session);
    d->session = 0;
    d->receiver->disconnect();
    return false;
}

bool EipWorker::openConnection() {
    if (!connectAndOpen()) {
        d->outage = true;
        return false;
    }
    if (d->outage) {
        // What was read before may be another program's value, or another controller's. Before the
        // error is cleared: from then on the host looks into the cache again.
        d->receiver->cacheWithholdAll();
        d->outage = false;
    }
    d->lastTraffic = CurrentMSecsSinceBoot();
    clearErr();
    noteOpened();
    return true;
}

/// The steps of an opening; false leaves the reason as the error, and nothing open.
bool EipWorker::connectAndOpen() {
    if (!d->receiver->connect(d->ip.toLatin1().constData(), d->port, d->timeout)) {
        return openingFailed(d->receiver->lastError());
    }
    if (d->session) {
        DeleteSession(d->session);
    }
    d->session = NewSession(d->timeout, d->receiver);
    if (!d->session) {
        openingFailed(QLatin1String("can't allocate session"));
        d->receiver->disconnect();
        return false;
    }
    if (d->stop.load()) {
        return dropSession();
    }
    if (_RegisterSession(d->session) != 0) {
        openingFailed(QString::fromLocal8Bit(cip_err_msg()));
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
    d->connection = openPlcConnection(d->session, originatorSerial, route,
                                      static_cast<unsigned char>(d->routePath.size()));
    if (!d->connection) {
        openingFailed(QString::fromLocal8Bit(cip_err_msg()));
        _UnRegisterSession(d->session);
        return dropSession();
    }
    return true;
}

void EipWorker::closeConnection() {
    // What a stopped worker closes is broken, and nobody there to hear a farewell. One that works
    // is closed at the end of the loop.
    const bool farewell = !d->stop.load();
    if (d->session && d->session->timeoutMs > kFarewellMs) {
        d->session->timeoutMs = kFarewellMs;
    }
    if (d->connection) {
        if (farewell) {
            _Eip_Connection* const closing = d->connection;
            d->connection = 0;
            _Forward_Close(closing);
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
        d->outage = true;
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
    try {
        seedOriginator();
    } catch (const std::exception&) {
        // Then the salt alone distinguishes this worker from others.
    }
    // The host's signals are for the host: one that ended a wait here would look like a lost reply.
    sigset_t all;
    sigfillset(&all);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
        sigdelset(&all, fault);  // what this thread itself brings about
    }
    pthread_sigmask(SIG_BLOCK, &all, 0);
    TimerSlack slack;
    int idleRounds = 0;
    while (!d->stop.load()) {
        // The pause between two polls is a millisecond, and lateness would be a part of it. Who
        // idles for longer is woken by a command at once; its pauses may be late.
        if (!d->sessionHash.isEmpty() || hasDriverCommand()) {
            idleRounds = 0;
            slack.bePunctual();
        } else if (idleRounds < kPunctualIdleRounds) {
            ++idleRounds;
        } else {
            slack.beLenient();
        }
        try {
            runOneRound();
        } catch (const std::exception&) {
            recoverFromNoMemory();
        }
    }
    try {
        sayFarewell();
    } catch (const std::exception&) {
        // The controller finds out by itself.
    }
    d->ended.store(true, std::memory_order_release);
}

/// A command of the driver if there is one, then a pass of polling or a pause.
void EipWorker::runOneRound() {
    Served served;
    serveOneDriverCommand(&served);
    if (d->receiver->hasDriverSetSessionCmd()) {
        takeSessionList();
    }
    if (d->sessionHash.isEmpty()) {
        // Nothing polls the connection back to life here: the next command has to try it.
        clearErr();
        sleep(kIdleSleepMs);
        return;
    }
    pollSession();
}

/// After a round in which memory ran out, at any step: the driver gets the error at once, and the
/// connection, which may be in the middle of an opening or an exchange, is made anew. What was read
/// before is served only when it has been read again: a refusal may not have reached the cache.
void EipWorker::recoverFromNoMemory() {
    d->receiver->failUnanswered();
    d->outage = true;
    try {
        closeConnection();
        // While there is none the worker must not take the processor as well.
        d->receiver->sleep(kIdleSleepMs);
    } catch (const std::exception&) {
        dropSession();  // the connection's record goes first
    }
}

/// Closes the connection that is open when the loop ends: the controller would keep it for half a
/// minute, and has few. No answer is needed for that, but closing the socket before the controller
/// has looked at the request could take it away. Nothing in here waits longer than kLastFarewellMs
/// in all; what does not leave at once stays unsent.
void EipWorker::sayFarewell() {
    if (!connectionIsOpened()) {
        return;
    }
    const qint64 start = CurrentMSecsSinceBoot();
    d->receiver->setTxTimeout(0);
    _Eip_Connection* const closing = d->connection;
    d->connection = 0;
    const int sent = _SendForwardClose(closing);
    if (sent > 0 && d->receiver->awaitData(kLastFarewellMs)) {
        const qint64 left = kLastFarewellMs - (CurrentMSecsSinceBoot() - start);
        free(d->receiver->recvData(static_cast<int>(qMax<qint64>(left, 0))));
    }
    _UnRegisterSession(d->session);
    dropSession();
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
        noteSessionList();
    }
    return ok;
}
