// The driver's life: construction, the worker's start, changes of its address, the end.

#include <QSqlDatabase>
#include <QSet>
#include <climits>
#include <mutex>

#include "common/device_setting.h"
#include "common/driver_setting.h"
#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"
#include "drivers/ab_micro800_ethernet/micro800_worker.h"
#include "eip/pipe_protocol.h"
#include "runtime/abstract_device_interface.h"

namespace {

const int kBufferSize = 4096;

// Captures: 1 prefix symbol, 2 element text, 3 array name, 4 index list.
const char kElementPattern[] = "\\b([a-z]+0):((\\w+)\\[(\\d+(?:,\\d+){0,2})\\])";
// Captures: 1 prefix symbol, 2 array name, 3 range list.
const char kRangePattern[] =
    "\\b([a-z]+0):(\\w+)\\[(\\d+\\.\\.\\d+(?:,\\d+\\.\\.\\d+){0,2})\\]";

QRegExp matcher(const char* pattern) {
    return QRegExp(QLatin1String(pattern), Qt::CaseInsensitive, QRegExp::RegExp);
}

struct PrefixType {
    const char* symbol;
    int type;  // CIP elementary data type code
};

const PrefixType kPrefixTypes[] = {
    {"USINT0", 0xC6}, {"SINT0", 0xC2},  {"INT0", 0xC3},   {"UINT0", 0xC7},   {"UDINT0", 0xC8},
    {"DINT0", 0xC4},  {"REAL0", 0xCA}, {"LREAL0", 0xCB}, {"STRING0", 0xDA}, {"BOOL0", 0xC1},
};

/// Names of the database connections that living drivers of this process hold. Qt keeps
/// connections by name for the whole process, and every thread's generator begins alike.
std::mutex namesMutex;
QSet<QString>& connectionNames() {
    static QSet<QString> names;
    return names;
}

QString takeConnectionName() {
    std::lock_guard<std::mutex> lock(namesMutex);
    QString name;
    do {
        name = QString::number(compatRand());
    } while (connectionNames().contains(name) || QSqlDatabase::contains(name));
    connectionNames().insert(name);
    return name;
}

void releaseConnectionName(const QString& name) {
    std::lock_guard<std::mutex> lock(namesMutex);
    connectionNames().remove(name);
}

}  // namespace

DriverABMicro800Eth::DriverABMicro800Eth()
    : commError(false),
      debugMode(false),
      dbOpen(false),
      arrayDefsLoaded(false),
      elementMatcher(matcher(kElementPattern)),
      elementMatcher1(matcher(kElementPattern)),
      rangeMatcher(matcher(kRangePattern)),
      connectionName(takeConnectionName()),
      rspLength(0),
      sentId(0),
      answerOutstanding(false),
      cmdBuf(kBufferSize, 0),
      rspBuf(kBufferSize, 0),
      pendingPort(0) {
    transactionIds[0] = 0;
    transactionIds[1] = 0;
    for (const PrefixType& entry : kPrefixTypes) {
        prefixTypes.insert(QLatin1String(entry.symbol), _LGX_Data_Type(entry.type));
    }
}

DriverABMicro800Eth::~DriverABMicro800Eth() {
    if (worker) {
        worker->stop();
        worker->wait(ULONG_MAX);
    }
    if (QSqlDatabase::contains(connectionName)) {
        QSqlDatabase::removeDatabase(connectionName);
    }
    releaseConnectionName(connectionName);
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
        worker = std::move(started);
        worker->start(QThread::InheritPriority);
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
    if (worker) {
        return notifyWorkerDeviceSettingChanged(setting->socketIP(-1), setting->port(-1));
    }
    pendingIP = setting->socketIP(-1);
    pendingPort = setting->port(-1);
    return true;
}

bool DriverABMicro800Eth::notifyWorkerDeviceSettingChanged(const QString& ip,
                                                           unsigned short port) {
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
