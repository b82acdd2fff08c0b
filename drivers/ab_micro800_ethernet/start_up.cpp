// The driver's life: construction, the worker's start, changes of its address, the end.

#include <unistd.h>
#include <QPointer>
#include <QSqlDatabase>

#include <climits>
#include <mutex>

#include "common/clock.h"
#include "common/device_setting.h"
#include "common/driver_setting.h"
#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"
#include "drivers/ab_micro800_ethernet/border.h"
#include "drivers/ab_micro800_ethernet/micro800_worker.h"
#include "eip/pipe_protocol.h"
#include "eip/record/flight_recorder.h"
#include "runtime/abstract_device_interface.h"

namespace {

const int kBufferSize = 4096;

// Captures: 1 prefix symbol, 2 element text, 3 array name, 4 index list.
const char kElementPattern[] = "\\b([a-z]+0):((\\w+)\\[(\\d+(?:,\\d+){0,2})\\])";
// Captures: 1 prefix symbol, 2 array name, 3 range list.
const char kRangePattern[] = "\\b([a-z]+0):(\\w+)\\[(\\d+\\.\\.\\d+(?:,\\d+\\.\\.\\d+){0,2})\\]";

QRegExp matcher(const char* pattern) {
    return QRegExp(QLatin1String(pattern), Qt::CaseInsensitive, QRegExp::RegExp);
}

struct PrefixType {
    const char* symbol;
    int type;  // CIP elementary data type code
};

const PrefixType kPrefixTypes[] = {
    {"USINT0", 0xC6}, {"SINT0", 0xC2}, {"INT0", 0xC3},   {"UINT0", 0xC7},   {"UDINT0", 0xC8},
    {"DINT0", 0xC4},  {"REAL0", 0xCA}, {"LREAL0", 0xCB}, {"STRING0", 0xDA}, {"BOOL0", 0xC1},
};

/// How long the end of the process waits for all workers, which may be inside a connect or a
/// request, and then for all recordings: they end beside each other.
const unsigned long kExitWaitMs = 1000;

/// What is left of it since that moment.
unsigned long restOfExitWait(qint64 startMs) {
    const qint64 elapsed = CurrentMSecsSinceBoot() - startMs;
    return static_cast<unsigned long>(qMax<qint64>(0, qint64(kExitWaitMs) - elapsed));
}

/// All drivers of this process. A driver may be destroyed after the handlers of exit() have run, so
/// neither of the two has a destructor.
std::mutex livingMutex;
DriverABMicro800Eth* firstLiving = 0;

}  // namespace

/// Ends what the living drivers have running when exit() comes to its handlers, or when the library
/// is unloaded. Handlers run in reverse order: what existed before this object is still there.
class DriverABMicro800Eth::EndWithTheProcess {
 public:
    EndWithTheProcess() : process(getpid()) {}
    ~EndWithTheProcess() {
        // The threads of a process do not exist in the one that it forked.
        if (process == getpid()) {
            endLivingDrivers();
        }
    }

 private:
    const pid_t process;
};

/// To be called when Qt's list of database connections exists.
void DriverABMicro800Eth::endBeforeTheDatabase() {
    static const EndWithTheProcess end;
}

/// To be called when a worker's thread has started, with all that it needs of Qt.
void DriverABMicro800Eth::endBeforeTheThread() {
    static const EndWithTheProcess end;
}

DriverABMicro800Eth::DriverABMicro800Eth()
    : commError(false),
      debugMode(false),
      dbOpen(false),
      connectionListed(false),
      arrayDefsLoaded(false),
      elementMatcher(matcher(kElementPattern)),
      elementMatcher1(matcher(kElementPattern)),
      rangeMatcher(matcher(kRangePattern)),
      rspLength(0),
      sentId(0),
      answerOutstanding(false),
      workerProcess(0),
      cmdBuf(kBufferSize, 0),
      rspBuf(kBufferSize, 0),
      pendingPort(0),
      noMemory(QLatin1String("not enough memory")),
      recorder(new FlightRecorder(recordSettingsFromEnvironment())),
      recorderStarted(false),
      access(nullptr),
      accessVerb(""),
      askedAt(0) {
    transactionIds[0] = 0;
    transactionIds[1] = 0;
    for (const PrefixType& entry : kPrefixTypes) {
        prefixTypes.insert(QLatin1String(entry.symbol), _LGX_Data_Type(entry.type));
    }
    becomeLiving();
}

QObject* DriverABMicro800Eth::pluginInstance() {
    static QPointer<QObject> instance;
    if (!instance) {
        withoutThrowing(false, [] {
            std::unique_ptr<DriverABMicro800Eth> made(new DriverABMicro800Eth);
            instance = made.get();
            made.release();
            return true;
        });
    }
    return instance;
}

DriverABMicro800Eth::~DriverABMicro800Eth() {
    stopWorker();
    // Only where the declarations could not be read is the database still open, and never after
    // endLivingDrivers(): Qt's list of connections may be gone by then.
    if (connectionListed) {
        closeDatabase();
    }
    stopBeingLiving();
}

void DriverABMicro800Eth::stopWorker() {
    if (worker && workerProcess != getpid()) {
        // A forked process has a copy of the objects and none of their threads: the wait would
        // never end, a lock can be one that nobody opens any more, and the controller is the
        // parent's.
        worker.release();
        recorder.release();
    } else if (worker) {
        worker->stop();
        worker->wait(ULONG_MAX);
        worker.reset();  // which still records the closing of the connection
    }
}

/// Enters the list with a connection name of its own. Qt keeps connections by name for the whole
/// process, and every thread's generator begins alike.
void DriverABMicro800Eth::becomeLiving() {
    std::lock_guard<std::mutex> lock(livingMutex);
    bool taken = true;
    while (taken) {
        connectionName = QString::number(compatRand());
        taken = QSqlDatabase::contains(connectionName);
        for (DriverABMicro800Eth* other = firstLiving; other; other = other->nextLiving) {
            taken = taken || other->connectionName == connectionName;
        }
    }
    nextLiving = firstLiving;
    firstLiving = this;
}

void DriverABMicro800Eth::stopBeingLiving() {
    std::lock_guard<std::mutex> lock(livingMutex);
    DriverABMicro800Eth** link = &firstLiving;
    while (*link != this) {
        link = &(*link)->nextLiving;
    }
    *link = nextLiving;
}

void DriverABMicro800Eth::endLivingDrivers() {
    std::lock_guard<std::mutex> lock(livingMutex);
    for (DriverABMicro800Eth* driver = firstLiving; driver; driver = driver->nextLiving) {
        if (driver->worker) {
            driver->worker->stop();
        }
    }
    qint64 start = CurrentMSecsSinceBoot();
    for (DriverABMicro800Eth* driver = firstLiving; driver; driver = driver->nextLiving) {
        if (driver->worker) {
            driver->worker->wait(restOfExitWait(start));
        }
        driver->recorder->end(0);
    }
    start = CurrentMSecsSinceBoot();
    for (DriverABMicro800Eth* driver = firstLiving; driver; driver = driver->nextLiving) {
        driver->recorder->end(restOfExitWait(start));
        if (driver->connectionListed) {
            driver->closeDatabase();
        }
    }
}

bool DriverABMicro800Eth::initWorker(AbstractDeviceInterface* device) {
    if (!worker) {
        const DeviceSetting* setting = device->deviceSetting();
        std::unique_ptr<Micro800Worker> started(new Micro800Worker(
            setting->socketIP(-1), setting->port(-1),
            static_cast<unsigned long>(qMax(0, device->driverSetting()->timeout))));
        if (!started->pipesOpened()) {
            setCommError(QLatin1String("can not create pipes to the worker"));
            return false;
        }
        started->setRecorder(recorder.get());
        started->start(QThread::InheritPriority);
        if (!started->isRunning()) {
            setCommError(QLatin1String("can not start the worker thread"));
            return false;
        }
        worker = std::move(started);
        workerProcess = getpid();
        endBeforeTheThread();
    }
    if (pendingSessionCommands.isEmpty()) {
        return true;
    }
    if (!pendingIP.isEmpty() && pendingPort != 0) {
        notifyWorkerDeviceSettingChanged(pendingIP, pendingPort);
    }
    pendingIP = QLatin1String("");
    pendingPort = 0;
    if (!sendSetSessionCmd(pendingSessionCommands)) {
        return false;
    }
    pendingSessionCommands.clear();
    return true;
}

bool DriverABMicro800Eth::deviceSettingChanged(const DeviceSetting* setting) {
    return withoutThrowing(false, [this, setting] {
        const QString ip = setting->socketIP(-1);
        const unsigned short port = setting->port(-1);
        if (worker) {
            return notifyWorkerDeviceSettingChanged(ip, port);
        }
        pendingIP = ip;
        pendingPort = port;
        return true;
    });
}

bool DriverABMicro800Eth::notifyWorkerDeviceSettingChanged(const QString& ip, unsigned short port) {
    const int length = LgxDriverPackIpSettingChangedCmd(
        cmdBuf.data(), static_cast<int>(cmdBuf.size()), nextTID(0), ip, port);
    return workerConfirms(length, LgxDriverCheckIpSettingChangedRsp);
}

unsigned short DriverABMicro800Eth::nextTID(int pipe) {
    return ++transactionIds[pipe == 0 ? 0 : 1];
}

unsigned short DriverABMicro800Eth::tid(int pipe) const {
    return transactionIds[pipe == 0 ? 0 : 1];
}
