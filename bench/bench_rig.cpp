#include "bench/bench_rig.h"

#include <malloc.h>
#include <time.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QPluginLoader>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <cstdio>
#include <cstdlib>

namespace {

const int kStartMs = 10000;

[[noreturn]] void giveUp(const QString& why) {
    std::fprintf(stderr, "driver_bench: %s\n", qPrintable(why));
    std::exit(1);
}

}  // namespace

Simulator::Simulator(const QStringList& options) : m_port(0) {
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(BENCH_SIMULATOR, QStringList() << "--port"
                                                   << "0" << options);
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(kStartMs)) {
            giveUp("the simulator did not start");
        }
    }
    m_port = m_process.readLine().trimmed().toUShort();
}

Simulator::~Simulator() {
    m_process.terminate();
    m_process.waitForFinished();
}

LoopbackDevice::LoopbackDevice(quint16 port)
    : m_device(device_type(32), "COM2", 9600, 8, 0, 0), m_driver(3000, 0, 0, 0) {
    m_device.socketList.append(qMakePair(QString("127.0.0.1"), port));
}

std::unique_ptr<DriverInterface> newDriver() {
    QPluginLoader loader(BENCH_PLUGIN);
    DriverInterface* driver = qobject_cast<DriverInterface*>(loader.instance());
    if (!driver) {
        giveUp(loader.errorString());
    }
    return std::unique_ptr<DriverInterface>(driver);
}

void makeEmptyProject() {
    const QString path = QCoreApplication::applicationDirPath() + "/compile/database/database";
    QDir().mkpath(QFileInfo(path).path());
    QFile::remove(path);
    {
        QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", "bench");
        database.setDatabaseName(path);
        if (!database.open()) {
            giveUp("can not write " + path);
        }
        QSqlQuery(database).exec("CREATE TABLE custom_tag_table (address TEXT, connector_id INT)");
    }
    QSqlDatabase::removeDatabase("bench");
}

QStringList dintTags(int count) {
    QStringList options;
    for (int i = 0; i < count; ++i) {
        options << "--tag" << QString("T%1:DINT=%1").arg(i);
    }
    return options;
}

CommunicatorCommand dintCommand(const QString& name) {
    return CommunicatorCommand(kUnitDoubleWord, 1, "DINT0:" + name);
}

void waitUntilCached(DriverInterface* driver, AbstractDeviceInterface* device,
                     const CommunicatorCommand& command) {
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < kStartMs) {
        QElapsedTimer one;
        one.start();
        const bool answered = !driver->read(device, command).isEmpty();
        if (answered && one.nsecsElapsed() < 5000) {
            return;
        }
    }
    giveUp("the session's values do not come into the cache");
}

double processorSeconds() {
    timespec now;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}

size_t heapInUse() { return mallinfo2().uordblks; }
