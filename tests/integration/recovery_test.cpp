// What the driver does when the controller or the network misbehaves, and how it comes back.

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QThread>
#include <QVariant>

#include "integration/driver_rig.h"
#include "support/app_directory/app_directory.h"
#include "support/reserved_port.h"

namespace {

class Recovery : public ::testing::Test {
 protected:
    void SetUp() override { writeProjectDatabase(QStringList()); }
};

TEST_F(Recovery, UnknownTagThenGoodTag) {
    Controller simulator({"--tag", "D:DINT=42"});
    TestDevice device(simulator.port());
    const std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_TRUE(driver->read(&device, dint("NOPE")).isEmpty());
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
}

TEST_F(Recovery, ControllerDownThenUp) {
    const ReservedPort reserved;
    const quint16 port = reserved.port();
    TestDevice device(port);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_TRUE(driver->read(&device, dint("D")).isEmpty());
    EXPECT_TRUE(driver->hasError());
    EXPECT_EQ(QString("read DINT0:D> Connection refused(111)"), driver->getLastError());
    Controller simulator({"--tag", "D:DINT=42"}, port);
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
}

TEST_F(Recovery, ControllerDownThenUpWithASession) {
    const ReservedPort reserved;
    const quint16 port = reserved.port();
    TestDevice device(port);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    driver->setSessionCommand(QList<CommunicatorCommand>() << dint("D"));
    EXPECT_TRUE(driver->read(&device, dint("D")).isEmpty());
    EXPECT_TRUE(driver->read(&device, dint("OTHER")).isEmpty());
    Controller simulator({"--tag", "D:DINT=42", "--tag", "OTHER:DINT=7"}, port);
    EXPECT_TRUE(waitFor([&] { return driver->read(&device, dint("D")) == dintBytes(42); }));
    EXPECT_EQ(7, readDint(driver.get(), &device, "OTHER"));
}

TEST_F(Recovery, AddressOfARefusingControllerCanBeCorrected) {
    Controller simulator({"--tag", "D:DINT=42"});
    const ReservedPort nobody;
    TestDevice device(nobody.port());
    const std::unique_ptr<DriverInterface> driver = createDriver();
    driver->setSessionCommand(QList<CommunicatorCommand>() << dint("D"));
    EXPECT_TRUE(driver->read(&device, dint("D")).isEmpty());
    device.device.setPort(simulator.port());
    EXPECT_TRUE(driver->deviceSettingChanged(&device.device));
    EXPECT_TRUE(waitFor([&] { return driver->read(&device, dint("D")) == dintBytes(42); }));
}

TEST_F(Recovery, ControllerRestarts) {
    const ReservedPort reserved;
    const quint16 port = reserved.port();
    std::unique_ptr<Controller> simulator(new Controller({"--tag", "D:DINT=1"}, port));
    TestDevice device(port, 500, 3);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_EQ(1, readDint(driver.get(), &device, "D"));
    simulator.reset();
    simulator.reset(new Controller({"--tag", "D:DINT=2"}, port));
    EXPECT_EQ(2, readDint(driver.get(), &device, "D"));
}

TEST_F(Recovery, IdleConnectionThatTheControllerDropped) {
    Controller simulator({"--tag", "D:DINT=42"});
    TestDevice device(simulator.port(), 300, 1);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    ASSERT_EQ("ok", simulator.command("drop-connections"));
    EXPECT_TRUE(waitFor([&] { return driver->read(&device, dint("D")) == dintBytes(42); }));
    EXPECT_FALSE(driver->hasError());
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
}

/// The controller keeps it for 32 s.
TEST_F(Recovery, ConnectionIsKeptOverAPause) {
    Controller simulator({"--tag", "D:DINT=42"});
    TestDevice device(simulator.port(), 300, 1);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    QThread::msleep(600);
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    const QVariantMap counters = driver->getThisObject()->property("counters").toMap();
    EXPECT_EQ(1, counters.value("connects").toInt());
    EXPECT_EQ(1, counters.value("opens").toInt());
}

/// One answer comes after the driver gave its wait up; later reads give their own values.
TEST_F(Recovery, LateAnswerDoesNotPutLaterReadsOutOfStep) {
    Controller simulator({"--tag", "SLOW:DINT=1", "--tag", "A:DINT=10", "--tag", "B:DINT=20",
                          "--fault", "late:1500x1@tag=SLOW"});
    TestDevice device(simulator.port(), 3000, 2);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_TRUE(driver->read(&device, dint("SLOW")).isEmpty());
    EXPECT_FALSE(driver->hasError());
    EXPECT_EQ(10, readDint(driver.get(), &device, "A"));
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(20, readDint(driver.get(), &device, "B"));
        EXPECT_EQ(10, readDint(driver.get(), &device, "A"));
        EXPECT_EQ(1, readDint(driver.get(), &device, "SLOW"));
    }
}

/// What an earlier attempt reported is not forgotten over an attempt that ends without any line.
TEST_F(Recovery, FailureBeforeASilentAttemptIsStillReported) {
    Controller simulator(
        {"--tag", "D:DINT=1", "--fault", "status:05x1", "--fault", "late:1500@2x1"});
    TestDevice device(simulator.port(), 3000, 3);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_TRUE(driver->read(&device, dint("D")).isEmpty());
    EXPECT_TRUE(driver->hasError());
    EXPECT_EQ(QString("read DINT0:D> AB error: 0005H"), driver->getLastError());
    EXPECT_EQ(2, simulator.countRequests("D"));
}

/// A value after a failed attempt takes the failure back.
TEST_F(Recovery, ValueAfterAFailedAttemptIsNoError) {
    Controller simulator({"--tag", "D:DINT=1", "--fault", "status:05x2"});
    TestDevice device(simulator.port(), 3000, 2);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_EQ(dintBytes(1), driver->read(&device, dint("D")));
    EXPECT_FALSE(driver->hasError());
    EXPECT_EQ(3, simulator.countRequests("D"));
}

/// The cache is fresh again without a call from the host, however the connection was lost.
TEST_F(Recovery, PollingComesBackByItself) {
    for (const char* loss : {"reset-peers", "close-peers", "drop-connections", "fault silencex1"}) {
        Controller simulator({"--tag", "D:DINT=1"});
        TestDevice device(simulator.port(), 300);
        const std::unique_ptr<DriverInterface> driver = createDriver();
        driver->setSessionCommand(QList<CommunicatorCommand>() << dint("D"));
        EXPECT_EQ(1, readDint(driver.get(), &device, "D"));
        ASSERT_EQ("ok", simulator.command(loss));
        ASSERT_EQ("ok", simulator.command("set D=2"));
        EXPECT_TRUE(waitFor([&] { return driver->read(&device, dint("D")) == dintBytes(2); }))
            << loss;
    }
}

/// Down and up again: how long until the first fresh value, from the controller's return on.
TEST_F(Recovery, FreshSoonAfterTheControllersReturn) {
    Controller simulator({"--tag", "D:DINT=1"});
    TestDevice device(simulator.port(), 500);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    driver->setSessionCommand(QList<CommunicatorCommand>() << dint("D"));
    EXPECT_EQ(1, readDint(driver.get(), &device, "D"));
    ASSERT_EQ("ok", simulator.command("down"));
    ASSERT_TRUE(waitFor([&] {
        return driver->read(&device, dint("D")).isEmpty() &&
               driver->getLastError() == "read DINT0:D> Connection refused(111)";
    }));
    ASSERT_EQ("ok", simulator.command("set D=2"));
    QElapsedTimer returned;
    ASSERT_EQ("ok", simulator.command("up"));
    returned.start();
    EXPECT_TRUE(waitFor([&] { return driver->read(&device, dint("D")) == dintBytes(2); }));
    printf("first fresh value %lld ms after the controller's return\n",
           static_cast<long long>(returned.elapsed()));
}

struct FaultRow {
    const char* fault;
    const char* error;  ///< text of the first read; null when that read still succeeds
    int retries = 0;    ///< of the next read
};

void PrintTo(const FaultRow& row, std::ostream* out) {
    *out << row.fault;
}

class RecoveryFrom : public ::testing::TestWithParam<FaultRow> {};

/// Every fault strikes one answer. The faulty answer fails the read with its text or is put right,
/// never gives another value, and the very next read is good again.
TEST_P(RecoveryFrom, AFaultyAnswer) {
    writeProjectDatabase(QStringList());
    Controller simulator({"--tag", "D:DINT=42", "--tag", "E:DINT=43", "--fault", GetParam().fault});
    TestDevice device(simulator.port(), 400);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    const QByteArray first = driver->read(&device, dint("D"));
    if (GetParam().error) {
        EXPECT_TRUE(first.isEmpty());
        EXPECT_EQ(QString("read DINT0:D> ") + GetParam().error, driver->getLastError());
    } else {
        EXPECT_EQ(dintBytes(42), first) << driver->getLastError().toStdString();
    }
    TestDevice next(simulator.port(), 400, GetParam().retries);
    EXPECT_EQ(43, readDint(driver.get(), &next, "E"));
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    EXPECT_EQ(43, readDint(driver.get(), &device, "E"));
}

INSTANTIATE_TEST_SUITE_P(
    All, RecoveryFrom,
    ::testing::Values(
        FaultRow{"silencex1", "Internal: receive timeout"},
        FaultRow{"cutx1", "Internal: receive timeout"},
        FaultRow{"cut:10x1", "Internal: receive error"},
        FaultRow{"resetx1", "Internal: receive error"}, FaultRow{"torn:24,5x1", nullptr},
        FaultRow{"tornx1", "Internal: receive error"},
        FaultRow{"torn-headerx1", "Internal: receive error"}, FaultRow{"late:100x1", nullptr},
        // On a busy machine the copy comes when the next request is out already, and fails its
        // attempt.
        FaultRow{"repeatx1", nullptr, 1}, FaultRow{"truncate:30x1", "Internal: receive timeout"},
        FaultRow{"wrong-commandx1", "Internal: unsolicited message"},
        FaultRow{"wrong-sessionx1", "Internal: unsolicited message"},
        FaultRow{"wrong-sequencex1", "Internal: unsolicited message"},
        FaultRow{"wrong-servicex1", "Internal: unknown error"},
        FaultRow{"encap-status:1x1", "EIP error: 0001H"},
        FaultRow{"encap-length-longx1", "Internal: receive timeout"},
        FaultRow{"encap-length-shortx1", "Internal: invalid reply"},
        FaultRow{"item-countx1", "EIP error: 0000H"},
        FaultRow{"item-length-longx1", "Internal: invalid reply"},
        FaultRow{"status:1Ax1", "AB error: 001AH"},
        FaultRow{"status:FF,2105x1", "AB error: 01FFH, 2105H"},
        FaultRow{"additional-status-sizex1", "Internal: invalid reply"},
        FaultRow{"additional-status-size:1x1", "AB error: 0100H"},
        FaultRow{"unknown-typex1", "Internal: unknown error"},
        FaultRow{"short-replyx1", "Internal: unknown error"},
        FaultRow{"short-reply:4x1", "Internal: unknown error"},
        FaultRow{"refuse-register:65x1", "EIP error: 0065H"},
        FaultRow{"refuse-open:113x1", "MR error: 0001H, 0113H"},
        FaultRow{"short-open-replyx1", "Internal: invalid reply"}));

}  // namespace
