// Many drivers in one process: each is of its own controller, and they end together.

#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <algorithm>
#include <cstring>
#include <thread>
#include <vector>

#include "integration/driver_rig.h"
#include "support/app_directory/app_directory.h"
#include "support/sanitizer.h"

namespace {

const int kControllers = 8;
/// A sanitizer makes each of them cost ten times as much.
const int kDrivers = kSanitized ? 16 : 64;
const int kTags = 5;
/// A stop waits for one request at most, and for the farewell. A loaded machine takes longer.
const int kStopMs = 20000;
const int kSettleMs = 200;
const int kReadMs = 60000;

int threads() {
    return QDir("/proc/self/task").entryList(QDir::NoDotAndDotDot | QDir::Dirs).size();
}

int valueOf(int controller, int tag) {
    return (controller + 1) * 1000 + tag;
}

QStringList tagsOf(int controller) {
    QStringList options;
    for (int tag = 0; tag < kTags; ++tag) {
        options << "--tag" << QString("T%1:DINT=%2").arg(tag).arg(valueOf(controller, tag));
    }
    return options << "--tag"
                   << "W:DINT";
}

QList<CommunicatorCommand> polledTags() {
    QList<CommunicatorCommand> list;
    for (int tag = 0; tag < kTags; ++tag) {
        list << dint(QString("T%1").arg(tag));
    }
    return list;
}

/// Reads until there is a value: a busy machine may take longer than an attempt may.
int valueOnceRead(DriverInterface* driver, TestDevice* device, const QString& name) {
    QByteArray bytes;
    const auto reads = [&] {
        bytes = driver->read(device, dint(name));
        return !bytes.isEmpty();
    };
    int value = -1;
    if (waitFor(reads, kReadMs)) {
        memcpy(&value, bytes.constData(), sizeof value);
    }
    return value;
}

TEST(ManyDrivers, KeepApartAndEndTogether) {
    writeProjectDatabase(QStringList());
    std::vector<std::unique_ptr<Controller>> controllers;
    std::vector<std::unique_ptr<TestDevice>> devices;
    for (int number = 0; number < kControllers; ++number) {
        controllers.emplace_back(new Controller(tagsOf(number)));
        devices.emplace_back(new TestDevice(controllers.back()->port(), 3000, 3));
    }
    // The first thread of a program may bring a sanitizer's own with it, and an ended one is listed
    // for a moment longer.
    std::thread([] {}).join();
    int before = threads();
    waitFor(
        [&] {
            before = std::min(before, threads());
            return false;
        },
        kSettleMs);
    std::vector<std::unique_ptr<DriverInterface>> drivers;
    for (int number = 0; number < kDrivers; ++number) {
        drivers.push_back(createDriver());
        drivers.back()->setSessionCommand(polledTags());
    }
    for (int round = 0; round < 3; ++round) {
        for (int number = 0; number < kDrivers; ++number) {
            const int controller = number % kControllers;
            for (int tag = 0; tag < kTags; ++tag) {
                EXPECT_EQ(valueOf(controller, tag),
                          valueOnceRead(drivers[size_t(number)].get(),
                                        devices[size_t(controller)].get(), QString("T%1").arg(tag)))
                    << "driver " << number;
            }
        }
    }
    EXPECT_TRUE(waitFor([&] { return threads() == before + kDrivers; })) << threads();
    for (int number = 0; number < kDrivers; ++number) {
        TestDevice* const device = devices[size_t(number % kControllers)].get();
        DriverInterface* const driver = drivers[size_t(number)].get();
        const QByteArray value = dintBytes(number + 1);
        EXPECT_TRUE(waitFor([&] { return driver->write(device, dint("W"), value); }, kReadMs));
        EXPECT_EQ(number + 1, valueOnceRead(driver, device, "W"));
    }
    QElapsedTimer stopping;
    stopping.start();
    drivers.clear();
    EXPECT_LT(stopping.elapsed(), kStopMs);
    EXPECT_TRUE(waitFor([&] { return threads() == before; }));
    for (const auto& controller : controllers) {
        EXPECT_GE(controller->connectionsOpened(), kDrivers / kControllers);
    }
}

}  // namespace
