// The figures of a driver, as a host reads them: by the name of a property.

#include <QVariant>
#include <thread>

#include "integration/record/record_rig.h"
#include "support/reserved_port.h"

namespace {

QVariantMap countersOf(DriverInterface* driver) {
    return driver->getThisObject()->property("counters").toMap();
}

class Counters : public RecordTest {
 protected:
    void SetUp() override {
        RecordTest::SetUp();
        unsetenv("MICRO800_RECORD");  // they are kept without a recorder
    }
};

TEST_F(Counters, OfADriverThatDidNothing) {
    const std::unique_ptr<DriverInterface> driver = createDriver();
    const QVariantMap counters = countersOf(driver.get());
    EXPECT_EQ(0, counters.value("requests").toLongLong());
    EXPECT_EQ(QVariantMap(), counters.value("answers_by_status").toMap());
    EXPECT_FALSE(counters.value("recording").toMap().value("on").toBool());
    EXPECT_EQ((QStringList() << "answers"
                             << "answers_by_status"
                             << "connect_failures"
                             << "connections_lost"
                             << "connects"
                             << "encapsulation_errors"
                             << "error_texts"
                             << "host_calls"
                             << "longest_host_wait_ms"
                             << "opens"
                             << "passes"
                             << "reconnects"
                             << "recording"
                             << "requests"
                             << "timeouts"),
              QStringList(counters.keys()));
}

TEST_F(Counters, StatusesAreTwoHexadecimalDigits) {
    Controller simulator({"--tag", "A:DINT[0..1]=1,2"});
    TestDevice device(simulator.port(), 3000);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    driver->read(&device, dint("A[9]"));
    EXPECT_EQ(QString("read DINT0:A[9]> AB error: 01FFH, 2105H"), driver->getLastError());
    const QVariantMap statuses = countersOf(driver.get()).value("answers_by_status").toMap();
    EXPECT_EQ(1, statuses.value("FF").toLongLong());
    EXPECT_EQ((QStringList() << "00"
                             << "FF"),
              QStringList(statuses.keys()));
}

TEST_F(Counters, ReadsAndTheirAnswers) {
    Controller simulator({"--tag", "D:DINT=42", "--delay", "20"});
    TestDevice device(simulator.port(), 3000);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    driver->read(&device, dint("NOPE"));
    const QVariantMap counters = countersOf(driver.get());
    // RegisterSession, Forward Open, three reads.
    EXPECT_EQ(5, counters.value("requests").toLongLong());
    EXPECT_EQ(5, counters.value("answers").toLongLong());
    const QVariantMap statuses = counters.value("answers_by_status").toMap();
    EXPECT_EQ(3, statuses.value("00").toLongLong());
    EXPECT_EQ(1, statuses.value("05").toLongLong());
    EXPECT_EQ(2, statuses.size());
    EXPECT_EQ(1, counters.value("connects").toLongLong());
    EXPECT_EQ(1, counters.value("opens").toLongLong());
    EXPECT_EQ(0, counters.value("reconnects").toLongLong());
    EXPECT_EQ(1, counters.value("error_texts").toLongLong());
    EXPECT_EQ(3, counters.value("host_calls").toLongLong());
    // The first read waited for three answers of 20 ms each.
    EXPECT_GE(counters.value("longest_host_wait_ms").toDouble(), 55);
    EXPECT_LT(counters.value("longest_host_wait_ms").toDouble(), 2000);
}

TEST_F(Counters, TimeoutsAndReconnects) {
    Controller simulator({"--tag", "D:DINT=42", "--fault", "silence@2x1"});
    TestDevice device(simulator.port(), 200);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    EXPECT_TRUE(driver->read(&device, dint("D")).isEmpty());
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    const QVariantMap counters = countersOf(driver.get());
    EXPECT_EQ(1, counters.value("timeouts").toLongLong());
    EXPECT_EQ(1, counters.value("connections_lost").toLongLong());
    EXPECT_EQ(1, counters.value("reconnects").toLongLong());
    EXPECT_EQ(2, counters.value("connects").toLongLong());
}

TEST_F(Counters, FailedConnects) {
    const ReservedPort nobody;
    TestDevice device(nobody.port(), 200);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_TRUE(driver->read(&device, dint("D")).isEmpty());
    EXPECT_EQ(1, countersOf(driver.get()).value("connect_failures").toLongLong());
    EXPECT_EQ(0, countersOf(driver.get()).value("connects").toLongLong());
}

/// Read from another thread while the worker counts.
TEST_F(Counters, PassesOverTheSessionList) {
    Controller simulator({"--tag", "A:DINT=1", "--tag", "B:DINT=2", "--delay", "5"});
    TestDevice device(simulator.port(), 3000);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    driver->setSessionCommand(QList<CommunicatorCommand>() << dint("A") << dint("B"));
    EXPECT_EQ(1, readDint(driver.get(), &device, "A"));
    QVariantMap passes;
    std::thread other([&] {
        waitFor([&] {
            passes = countersOf(driver.get()).value("passes").toMap();
            return passes.value("count").toLongLong() >= 10;
        });
    });
    other.join();
    EXPECT_GE(passes.value("count").toLongLong(), 10);
    // Two answers of 5 ms and two pauses of 1 ms.
    EXPECT_GE(passes.value("mean_ms").toDouble(), 11);
    EXPECT_GE(passes.value("p99_ms").toDouble(), passes.value("mean_ms").toDouble());
    EXPECT_GE(passes.value("last_ms").toDouble(), 11);
}

}  // namespace
