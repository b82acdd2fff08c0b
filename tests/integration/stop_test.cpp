// The worker's thread really ends, in every state, within the time-outs of what it is doing.

#include <gtest/gtest.h>
#include <linux/capability.h>
#include <linux/securebits.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QElapsedTimer>
#include <functional>
#include <thread>

#include "integration/driver_rig.h"
#include "support/app_directory/app_directory.h"
#include "support/lateness_meter.h"

namespace {

const int kTimeoutMs = 1000;
/// Scheduling of a loaded machine on top of what the time-outs allow.
const int kSlackMs = 1500;

/// Exit code of a child that may not become another user.
const int kCannotTry = 77;

int threads() {
    return QDir("/proc/self/task").entryList(QDir::NoDotAndDotDot | QDir::Dirs).size();
}

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

/// Gives up the right to exceed limits, and keeps every other right over the change of the user.
bool becomeUserWithLimits(uid_t user) {
    if (prctl(PR_SET_SECUREBITS, SECBIT_NO_SETUID_FIXUP) != 0 || setresuid(user, user, user) != 0) {
        return false;
    }
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct rights[_LINUX_CAPABILITY_U32S_3];
    if (syscall(SYS_capget, &header, rights) != 0) {
        return false;
    }
    rights[0].effective &= ~(CAP_TO_MASK(CAP_SYS_RESOURCE) | CAP_TO_MASK(CAP_SYS_ADMIN));
    return syscall(SYS_capset, &header, rights) == 0;
}

/// Runs `act` where no further thread can be started: as a user of its own whose one process this
/// is.
int withoutFurtherThreads(const std::function<int()>& act) {
    const uid_t ownUser = 54321;
    const rlimit one = {1, 1};
    if ((getuid() == 0 && !becomeUserWithLimits(ownUser)) || setrlimit(RLIMIT_NPROC, &one) != 0) {
        return kCannotTry;
    }
    return act();
}

/// A panel that has no thread left says so, and the next read tries again.
TEST(StartDeathTest, ThreadThatCannotBeStartedIsTheText) {
    writeProjectDatabase(QStringList());
    GTEST_FLAG_SET(death_test_style, "fast");
    const auto readTwice = [] {
        TestDevice device(1);
        const std::unique_ptr<DriverInterface> driver = createDriver();
        for (int i = 0; i < 2; ++i) {
            if (!driver->read(&device, dint("D")).isEmpty() || !driver->hasError() ||
                driver->getLastError() != "read DINT0:D> can not start the worker thread") {
                fprintf(stderr, "%s\n", qPrintable(driver->getLastError()));
                return 1;
            }
        }
        return 0;
    };
    EXPECT_EXIT(
        _exit(withoutFurtherThreads(readTwice)),
        [](int status) {
            return WIFEXITED(status) &&
                   (WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == kCannotTry);
        },
        "");
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
    // The read's answer does not arrive in time: the worker is connecting, and again after that.
    driver->setSessionCommand(QList<CommunicatorCommand>() << dint("D"));
    driver->read(&device, dint("D"));
    EXPECT_LT(stopTime(std::move(driver)), kTimeoutMs + kSlackMs);
}

/// The opening goes no further than the step that it is at.
TEST_F(Stop, BetweenTheStepsOfAnOpening) {
    Controller simulator(
        {"--tag", "D:DINT=42", "--fault", "late:600@on=register", "--fault", "silence@on=open"});
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

/// How many requests of the log have this text under this key.
int countRequests(const Controller& simulator, const char* key, const char* text) {
    int count = 0;
    for (const QJsonObject& request : simulator.log()) {
        count += request.value(key).toString() == text ? 1 : 0;
    }
    return count;
}

TEST_F(Stop, SaysFarewell) {
    Controller simulator({"--tag", "D:DINT=42"});
    TestDevice device(simulator.port());
    for (const bool isPolled : {false, true}) {
        std::unique_ptr<DriverInterface> driver = createDriver();
        if (isPolled) {
            driver->setSessionCommand(QList<CommunicatorCommand>() << dint("D"));
        }
        EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
        driver.reset();
        const int count = isPolled ? 2 : 1;
        EXPECT_TRUE(waitFor(
            [&] { return countRequests(simulator, "command", "UnRegisterSession") == count; }));
        EXPECT_EQ(count, countRequests(simulator, "service", "ForwardClose"));
        EXPECT_EQ(count, simulator.connectionsOpened());
    }
    EXPECT_EQ("UnRegisterSession", simulator.log().last().value("command").toString().toStdString())
        << "behind the Forward Close";
}

/// A worker that never opened a connection has none to close.
TEST_F(Stop, SaysNothingWithoutAConnection) {
    Controller simulator({"--tag", "D:DINT=42", "--fault", "refuse-open:113x1"});
    TestDevice device(simulator.port());
    std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_TRUE(driver->read(&device, dint("D")).isEmpty());
    driver.reset();
    // What the first driver may have sent has come before another one has read a value.
    driver = createDriver();
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    EXPECT_EQ(0, countRequests(simulator, "service", "ForwardClose"));
}

/// Whatever becomes of the Forward Close, the session is given back, and the stop takes no more
/// than the pause of an idle worker and the farewell.
TEST_F(Stop, FarewellThatNobodyAnswers) {
    const int kPauseMs = 20;
    const int kFarewellMs = 50;
    const int kSchedulingMs = 100;  // the best of some tries has less
    for (const char* fault : {"silence@on=close", "late:2000@on=close", "cut:10@on=close",
                              "torn:30,1000@on=close", "encap-length-long@on=close"}) {
        Controller simulator({"--tag", "D:DINT=42", "--fault", fault});
        TestDevice device(simulator.port(), 3000);
        qint64 best = kSlackMs;
        LatenessMeter machine;
        for (int i = 0; i < 5; ++i) {
            std::unique_ptr<DriverInterface> driver = createDriver();
            EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
            machine.reset();
            const qint64 took = stopTime(std::move(driver));
            best = qMin(best, took - machine.worstMs());
        }
        EXPECT_LT(best, kPauseMs + kFarewellMs + kSchedulingMs) << fault;
        EXPECT_EQ(5, countRequests(simulator, "service", "ForwardClose")) << fault;
    }
}

TEST_F(Stop, ControllerThatHangsAtTheFarewell) {
    Controller simulator({"--tag", "D:DINT=42"});
    TestDevice device(simulator.port(), 3000);
    std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    ASSERT_EQ(0, ::kill(simulator.pid(), SIGSTOP));
    EXPECT_LT(stopTime(std::move(driver)), kSlackMs);
    ::kill(simulator.pid(), SIGCONT);
}

TEST_F(Stop, ManyTimesLeavesNothing) {
    Controller simulator({"--tag", "D:DINT=42"});
    TestDevice device(simulator.port());
    const auto descriptors = [] {
        return QDir("/proc/self/fd")
            .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)
            .size();
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
