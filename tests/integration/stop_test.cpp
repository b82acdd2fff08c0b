// The worker's thread really ends, in every state, within the time-outs of what it is doing.

#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <thread>

#include "integration/driver_rig.h"
#include "support/app_directory/app_directory.h"

namespace {

const int kTimeoutMs = 1000;
/// Scheduling of a loaded machine on top of what the time-outs allow.
const int kSlackMs = 1500;

int threads() { return QDir("/proc/self/task").entryList(QDir::NoDotAndDotDot | QDir::Dirs).size(); }

/// The system lists a thread for a moment after it was joined.
bool threadsAre(int count) {
    return waitFor([count] { return threads() == count; });
}

qint64 stopTime(std::unique_ptr<DriverInterface> driver) {
    QElapsedTimer waited;
    waited.start();
    driver.reset();
    return waited.elapsed();
}

class Stop : public ::testing::Test {
  protected:
    void SetUp() override {
        writeProjectDatabase(QStringList());
        // The first thread of a program may bring a sanitizer's own with it.
        std::thread([] {}).join();
    }
};

TEST_F(Stop, Idle) {
    Controller simulator({"--tag", "D:DINT=42"});
    TestDevice device(simulator.port(), kTimeoutMs);
    const int before = threads();
    std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    EXPECT_EQ(before + 1, threads());
    EXPECT_LT(stopTime(std::move(driver)), kSlackMs);
    EXPECT_TRUE(threadsAre(before));
}

TEST_F(Stop, Polling) {
    Controller simulator({"--tag", "D:DINT=42"});
    TestDevice device(simulator.port(), kTimeoutMs);
    std::unique_ptr<DriverInterface> driver = createDriver();
    driver->setSessionCommand(QList<CommunicatorCommand>() << dint("D"));
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    EXPECT_LT(stopTime(std::move(driver)), kSlackMs);
}

TEST_F(Stop, Connecting) {
    DeafServer listener;
    TestDevice device(listener.port(), kTimeoutMs);
    std::unique_ptr<DriverInterface> driver = createDriver();
    // The read's answer does not come in time: the worker is connecting, and again after that.
    driver->setSessionCommand(QList<CommunicatorCommand>() << dint("D"));
    driver->read(&device, dint("D"));
    EXPECT_LT(stopTime(std::move(driver)), kTimeoutMs + kSlackMs);
}

/// The opening goes no further than the step that it is at.
TEST_F(Stop, BetweenTheStepsOfAnOpening) {
    Controller simulator({"--tag", "D:DINT=42", "--fault", "late:600@on=register", "--fault",
                          "silence@on=open"});
    TestDevice device(simulator.port(), kTimeoutMs);
    std::unique_ptr<DriverInterface> driver = createDriver();
    driver->setSessionCommand(QList<CommunicatorCommand>() << dint("D"));
    driver->read(&device, CommunicatorCommand(7, 1, "DINT0:D"));
    ASSERT_TRUE(waitFor([&] { return !simulator.log().isEmpty(); }));
    EXPECT_LT(stopTime(std::move(driver)), 600 + kSlackMs);
    for (const QJsonObject& entry : simulator.log()) {
        EXPECT_NE(QString("ForwardOpen"), entry.value("service").toString());
    }
}

TEST_F(Stop, WaitingForAReply) {
    Controller simulator({"--tag", "D:DINT=42", "--fault", "silence"});
    TestDevice device(simulator.port(), 2 * kTimeoutMs);
    std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_TRUE(driver->read(&device, dint("D")).isEmpty());
    EXPECT_LT(stopTime(std::move(driver)), 2 * kTimeoutMs + kSlackMs);
}

TEST_F(Stop, SaysNoFarewell) {
    Controller simulator({"--tag", "D:DINT=42"});
    TestDevice device(simulator.port());
    std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    driver.reset();
    // What the first driver may have sent has come before another one has read a value.
    driver = createDriver();
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    for (const QJsonObject& request : simulator.log()) {
        EXPECT_NE("ForwardClose", request.value("service").toString().toStdString());
        EXPECT_NE("UnRegisterSession", request.value("command").toString().toStdString());
    }
}

TEST_F(Stop, ManyTimesLeavesNothing) {
    Controller simulator({"--tag", "D:DINT=42"});
    TestDevice device(simulator.port());
    const auto descriptors = [] {
        return QDir("/proc/self/fd").entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System).size();
    };
    const int before = threads();
    createDriver()->read(&device, dint("D"));
    const int fds = descriptors();
    for (int i = 0; i < 20; ++i) {
        const std::unique_ptr<DriverInterface> driver = createDriver();
        EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    }
    EXPECT_EQ(fds, descriptors());
    EXPECT_TRUE(threadsAre(before));
}

}  // namespace
