#include "bench/bench_rig.h"

#include <malloc.h>
#include <time.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLibrary>
#include <QPluginLoader>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <cstdio>
#include <cstdlib>

namespace {

const int kStartMs = 10000;

const int kLink = 1;

[[noreturn]] void giveUp(const QString& why) {
    std::fprintf(stderr, "driver_bench: %s\n", qPrintable(why));
    std::exit(1);
}

}  // namespace

Simulator::Simulator(const QStringList& options) : printedPort(0) {
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(BENCH_SIMULATOR, QStringList() << "--port"
                                                 << "0" << options);
    while (!process.canReadLine()) {
        if (!process.waitForReadyRead(kStartMs)) {
            giveUp("the simulator did not start");
        }
    }
    printedPort = process.readLine().trimmed().toUShort();
}

Simulator::~Simulator() {
    process.terminate();
    process.waitForFinished();
}

LoopbackDevice::LoopbackDevice(quint16 port)
    : device(device_type(32), "COM2", 9600, 8, 0, 0), driver(3000, 0, 0, 0) {
    device.linkID = kLink;
    device.socketList.append(qMakePair(QString("127.0.0.1"), port));
}

std::unique_ptr<DriverInterface> newDriver() {
    QPluginLoader loader(BENCH_PLUGIN);
    DriverInterface* driver = qobject_cast<DriverInterface*>(loader.instance());
    if (!driver) {
        giveUp(loader.errorString());
    }
    return std::unique_ptr<DriverInterface>(driver);
}

std::unique_ptr<DriverInterface> anotherDriver() {
    QLibrary library(BENCH_PLUGIN);
    typedef DriverInterface* (*Create)();
    const Create create = reinterpret_cast<Create>(library.resolve("CreateDriver"));
    if (!create) {
        giveUp(library.errorString());
    }
    return std::unique_ptr<DriverInterface>(create());
}

RecorderIn::RecorderIn(const QString& folder) {
    if (!folder.isEmpty()) {
        qputenv("MICRO800_RECORD", QFile::encodeName(folder));
    }
}

RecorderIn::~RecorderIn() {
    qunsetenv("MICRO800_RECORD");
}

void makeProject(const QStringList& arrays) {
    const QString path = QCoreApplication::applicationDirPath() + "/compile/database/database";
    QDir().mkpath(QFileInfo(path).path());
    QFile::remove(path);
    {
        QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", "bench");
        database.setDatabaseName(path);
        if (!database.open()) {
            giveUp("can not write " + path);
        }
        QSqlQuery query(database);
        query.exec("CREATE TABLE custom_tag_table (address TEXT, connector_id INT)");
        query.prepare("INSERT INTO custom_tag_table VALUES (?, ?)");
        for (const QString& array : arrays) {
            query.addBindValue(array);
            query.addBindValue(kLink);
            query.exec();
        }
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

size_t heapInUse() {
    return mallinfo2().uordblks;
}
