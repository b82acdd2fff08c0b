#include "integration/driver_rig.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QLibrary>
#include <chrono>
#include <cstring>
#include <thread>

Controller::Controller(const QStringList& options, quint16 port) : SimulatorProcess(options) {
    if (!start(port)) {
        ADD_FAILURE() << error();
        abort();  // nothing that follows could mean anything
    }
}

QList<QJsonObject> Controller::requests() const {
    QList<QJsonObject> tagRequests;
    for (const QJsonObject& request : log()) {
        const QString service = request.value("service").toString();
        if (service == "ReadTag" || service == "WriteTag") {
            tagRequests << request;
        }
    }
    return tagRequests;
}

int Controller::countRequests(const QString& tag) const {
    int count = 0;
    for (const QJsonObject& request : requests()) {
        count += request.value("tag").toString() == tag ? 1 : 0;
    }
    return count;
}

int Controller::connectionsOpened() const {
    int count = 0;
    for (const QJsonObject& request : log()) {
        const bool open = request.value("service").toString() == "ForwardOpen";
        count += open && request.value("status").toString() == "00" ? 1 : 0;
    }
    return count;
}

QSet<QString> Controller::tagsRead() const {
    QSet<QString> tags;
    for (const QJsonObject& request : requests()) {
        tags << request.value("tag").toString();
    }
    return tags;
}

bool Controller::isWrite(const QJsonObject& request) {
    return request.value("service").toString() == "WriteTag";
}

QByteArray Controller::rawRequest(const QJsonObject& request) {
    return QByteArray::fromHex(request.value("request").toString().toLatin1());
}

TestDevice::TestDevice(quint16 port, int timeoutMs, int retry)
    : device(device_type(32), "COM2", 9600, 8, 0, 0),
      driver(timeoutMs, retry, 0, 0),
      retries(retry) {
    device.linkID = 1;
    device.socketList.append(qMakePair(QString("127.0.0.1"), port));
}

QString pluginFile() {
    // Another build of it, e.g. one with a fault on purpose.
    const QString other = QString::fromLocal8Bit(qgetenv("MICRO800_TEST_PLUGIN"));
    return other.isEmpty() ? QString(PLUGIN_FILE) : other;
}

std::unique_ptr<DriverInterface> createDriver() {
    QLibrary library(pluginFile());
    typedef DriverInterface* (*Create)();
    const Create create = reinterpret_cast<Create>(library.resolve("CreateDriver"));
    EXPECT_TRUE(create) << library.errorString().toStdString();
    return std::unique_ptr<DriverInterface>(create ? create() : 0);
}

CommunicatorCommand dint(const QString& name) {
    return CommunicatorCommand(kUnitDoubleWord, 1, "DINT0:" + name);
}

int readDint(DriverInterface* driver, AbstractDeviceInterface* device, const QString& name) {
    const QByteArray bytes = driver->read(device, dint(name));
    EXPECT_FALSE(driver->hasError()) << driver->getLastError().toStdString();
    EXPECT_EQ(4, bytes.size()) << name.toStdString();
    qint32 value = -1;
    if (bytes.size() == 4) {
        std::memcpy(&value, bytes.constData(), 4);
    }
    return value;
}

QByteArray dintBytes(int value) {
    return QByteArray(reinterpret_cast<const char*>(&value), sizeof value);
}

bool waitFor(const std::function<bool()>& done, int ms) {
    QElapsedTimer waited;
    waited.start();
    while (!done()) {
        if (waited.elapsed() > ms) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}
