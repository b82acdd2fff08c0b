// Arrays that are larger than one packet of the connection, against a controller that keeps to it.

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <algorithm>

#include "integration/array_controller.h"
#include "integration/driver_rig.h"
#include "support/app_directory/app_directory.h"

namespace {

const int kReadTag = 0x4C;
const int kWriteTag = 0x4D;
const int kReadFragment = 0x52;
const int kWriteFragment = 0x53;
const int kRegisterSession = 0x65;
const int kUnRegisterSession = 0x66;

/// DINTs that one reply, and one piece of a write to an element, of 504 bytes contain.
const int kElementsAReply = 124;
const int kElementsAPiece = 121;

typedef ArrayController::Request Request;

QByteArray elements(int first, int count) {
    QByteArray bytes;
    for (int i = 0; i < count; ++i) {
        bytes += dintBytes(first + i);
    }
    return bytes;
}

/// The answer of a controller that takes the first piece of a write and no other.
QByteArray refuseLaterPieces(const Request& request) {
    return request.service == kWriteFragment && request.offset > 0 ? QByteArray::fromHex("d3000500")
                                                                   : QByteArray();
}

class Array : public ::testing::Test {
 protected:
    void start(int size, bool isDeclared, int retry = 0) {
        writeProjectDatabase(isDeclared ? QStringList(QString("DINT0:A[0..%1]").arg(size - 1))
                                        : QStringList());
        controller.reset(new ArrayController(size));
        device.reset(new TestDevice(controller->port(), 3000, retry));
        driver = createDriver();
    }
    /// Starts with the array polled, and its first values in the cache.
    void startPolled(int size) {
        start(size, true);
        poll("A[0]");
        ASSERT_EQ(elements(1000, 1), read("DINT0:A[0]", 1));
    }
    void poll(const char* name) {
        driver->setSessionCommand(QList<CommunicatorCommand>() << dint(name));
    }
    QByteArray read(const QString& address, int count) {
        return driver->read(
            device.get(),
            CommunicatorCommand(kUnitDoubleWord, static_cast<unsigned>(count), address));
    }
    bool write(const QString& address, const QByteArray& value) {
        return driver->write(device.get(), CommunicatorCommand(kUnitDoubleWord, 1, address), value);
    }
    /// Accesses to D between two pieces of one fetch, which went on where it had been.
    int accessesBetweenPieces() const {
        const QList<Request> requests = controller->requests();
        int between = 0;
        for (int i = 1; i + 1 < requests.size(); ++i) {
            between += requests[i].tag == 'D' && requests[i - 1].tag == 'A' &&
                               requests[i + 1].service == kReadFragment &&
                               requests[i + 1].offset > requests[i - 1].offset
                           ? 1
                           : 0;
        }
        return between;
    }
    /// Waits for the end of a fetch that began after this call.
    bool polledOnce(int size) {
        const int lastOffset = (size - 1) / kElementsAReply * kElementsAReply * 4;
        const int before = controller->requests().size();
        return waitFor([&] {
            bool began = false;
            bool ended = false;
            for (const Request& request : controller->requests().mid(before)) {
                began = began || request.service == kReadTag;
                ended = ended || (began && request.offset == lastOffset);
            }
            return ended;
        });
    }

    std::unique_ptr<ArrayController> controller;
    std::unique_ptr<TestDevice> device;
    std::unique_ptr<DriverInterface> driver;
};

TEST_F(Array, UndeclaredBlockIsReadInPieces) {
    start(400, false);
    EXPECT_EQ(elements(1010, 300), read("DINT0:A[10]", 300));
    const QList<Request> requests = controller->requests();
    ASSERT_EQ(3, requests.size());
    EXPECT_EQ(kReadTag, requests[0].service);
    for (int i = 1; i < 3; ++i) {
        EXPECT_EQ(kReadFragment, requests[i].service);
        EXPECT_EQ(10, requests[i].index);
        EXPECT_EQ(300, requests[i].count) << "of the whole";
        EXPECT_EQ(i * kElementsAReply * 4, requests[i].offset);
    }
    EXPECT_EQ(elements(1000, kElementsAReply), read("DINT0:A[0]", kElementsAReply));
    EXPECT_EQ(4, controller->requests().size()) << "what fits is one Read Tag";
}

TEST_F(Array, DeclaredArrayIsPolledWholeAndReadByElement) {
    startPolled(1000);
    for (int index : {0, 1, 123, 124, 500, 991, 992, 999}) {
        EXPECT_EQ(elements(1000 + index, 1), read(QString("DINT0:A[%1]").arg(index), 1)) << index;
    }
    EXPECT_EQ(elements(1200, 600), read("DINT0:A[200]", 600)) << "from the cache, of any size";
    controller->setValue(999, -7);
    EXPECT_TRUE(waitFor([&] { return read("DINT0:A[999]", 1) == dintBytes(-7); }));
    for (const Request& request : controller->requests()) {
        EXPECT_EQ(0, request.index);
        EXPECT_EQ(1000, request.count);
    }
    EXPECT_EQ(1, controller->countOfCommand(kRegisterSession));
}

/// The answer of the worker is one line.
TEST_F(Array, UndeclaredBlockBeyondALineIsAClearError) {
    start(600, false);
    EXPECT_TRUE(read("DINT0:A[0]", 511).isEmpty());
    EXPECT_EQ(QString("read DINT0:A[0]> Internal: buffer too small"), driver->getLastError());
    EXPECT_EQ(elements(1000, 510), read("DINT0:A[0]", 510));
}

TEST_F(Array, ControllerWithoutFragmentsRefusesTheWhole) {
    start(400, false);
    controller->setOtherwise([](const Request& request) {
        return request.service == kReadFragment ? QByteArray::fromHex("d2000800") : QByteArray();
    });
    EXPECT_TRUE(read("DINT0:A[0]", 300).isEmpty());
    EXPECT_EQ(QString("read DINT0:A[0]> AB error: 0006H"), driver->getLastError());
    EXPECT_EQ(42, readDint(driver.get(), device.get(), "D"));
    EXPECT_EQ(1, controller->countOfCommand(kRegisterSession));
}

TEST_F(Array, PieceOfAnotherTypeIsRefused) {
    start(400, false);
    controller->setOtherwise([](const Request& request) {
        return request.service == kReadFragment ? QByteArray::fromHex("d2000600c800") + "1234"
                                                : QByteArray();
    });
    EXPECT_TRUE(read("DINT0:A[0]", 300).isEmpty());
    EXPECT_EQ(QString("read DINT0:A[0]> Internal: invalid reply"), driver->getLastError());
}

TEST_F(Array, BlocksAreWrittenInPieces) {
    startPolled(1000);
    for (int first = 0; first < 900; first += 150) {
        ASSERT_TRUE(write(QString("DINT0:A[%1]").arg(first), elements(5000 + first, 150)))
            << driver->getLastError().toStdString();
        ASSERT_EQ(elements(5000 + first, 150), read(QString("DINT0:A[%1]").arg(first), 150));
    }
    EXPECT_EQ(5899, controller->value(899));
    EXPECT_EQ(1900, controller->value(900));
    EXPECT_EQ(12, controller->count(kWriteFragment));
    EXPECT_EQ(0, controller->count(kWriteTag));
    Request first = {};
    for (const Request& request : controller->requests()) {
        if (request.service == kWriteFragment && request.index == 150) {
            EXPECT_EQ(150, request.count);
            EXPECT_EQ(first.service == 0 ? 0 : first.bytes, request.offset);
            first = first.service == 0 ? request : first;
        }
    }
    EXPECT_EQ(kElementsAPiece * 4, first.bytes) << "as many whole elements as fit";
}

TEST_F(Array, WhatFitsIsOneWriteTag) {
    start(400, false);
    EXPECT_TRUE(write("DINT0:A[0]", elements(1, 100)));
    EXPECT_EQ(1, controller->count(kWriteTag));
    EXPECT_EQ(0, controller->count(kWriteFragment));
    EXPECT_EQ(100, controller->value(99));
}

TEST_F(Array, FailureBehindTheFirstPieceSaysWhatIsWrittenAndIsNotRepeated) {
    start(400, false, 3);
    controller->setOtherwise([](const Request& request) {
        return request.service == kWriteFragment && request.offset > 2 * kElementsAPiece * 4 - 1
                   ? QByteArray::fromHex("d300ff010521")
                   : QByteArray();
    });
    EXPECT_FALSE(write("DINT0:A[0]", elements(1, 400)));
    EXPECT_EQ(QString("write DINT0:A[0]> AB error: 01FFH, 2105H; 0 to 241 of 400 elements written"),
              driver->getLastError());
    EXPECT_EQ(3, controller->count(kWriteFragment));
    EXPECT_EQ(242, controller->value(241));
    EXPECT_EQ(1242, controller->value(242));
    EXPECT_EQ(1, controller->countOfCommand(kRegisterSession));
}

TEST_F(Array, PartThatWasWrittenIsReadAtOnce) {
    startPolled(1000);
    controller->setOtherwise(refuseLaterPieces);
    for (int i = 0; i < 20; ++i) {
        EXPECT_FALSE(write("DINT0:A[0]", elements(10000 * i, 150)));
        ASSERT_EQ(elements(10000 * i, 1), read("DINT0:A[0]", 1)) << i;
    }
}

/// The first element is polled as a tag of its own.
TEST_F(Array, PartThatWasWrittenFromAPolledElementOnIsReadAtOnce) {
    start(1000, false);
    poll("A[0]");
    ASSERT_EQ(elements(1000, 1), read("DINT0:A[0]", 1));
    controller->setOtherwise(refuseLaterPieces);
    for (int i = 0; i < 20; ++i) {
        EXPECT_FALSE(write("DINT0:A[0]", elements(10000 * i, 150)));
        ASSERT_EQ(elements(10000 * i, 1), read("DINT0:A[0]", 1)) << i;
    }
}

TEST_F(Array, ControllerWithoutWrittenFragmentsRefusesTheWhole) {
    start(400, false);
    controller->setOtherwise([](const Request& request) {
        return request.service == kWriteFragment ? QByteArray::fromHex("d3000800") : QByteArray();
    });
    EXPECT_FALSE(write("DINT0:A[0]", elements(1, 300)));
    EXPECT_EQ(QString("write DINT0:A[0]> AB error: 0008H"), driver->getLastError());
    EXPECT_EQ(1000, controller->value(0));
}

// ---- what comes between the pieces ------------------------------------------------------------

const int kManyElements = 4000;  // 33 pieces

TEST_F(Array, DriversReadWaitsForOnePieceOnly) {
    startPolled(kManyElements);
    controller->setDelay(3000);
    const int kReads = 20;
    for (int i = 0; i < kReads; ++i) {
        ASSERT_EQ(42, readDint(driver.get(), device.get(), "D"));
    }
    EXPECT_GT(accessesBetweenPieces(), kReads / 2);
}

TEST_F(Array, DriversWriteOfAnotherTagDoesNotBeginTheFetchAnew) {
    startPolled(kManyElements);
    controller->setDelay(3000);
    const int kWrites = 20;
    for (int i = 0; i < kWrites; ++i) {
        ASSERT_TRUE(write(i % 2 == 0 ? "DINT0:D" : "DINT0:D.M", dintBytes(i)));
    }
    EXPECT_GT(accessesBetweenPieces(), kWrites / 2);
}

/// The first values of a list that was just set come with a read, while the polling fetches them.
TEST_F(Array, ReadOfTheArrayThatIsJustBeingFetched) {
    start(kManyElements, true);
    controller->setDelay(200);
    for (int i = 0; i < 5; ++i) {
        driver = createDriver();
        poll("A[0]");
        ASSERT_EQ(42, readDint(driver.get(), device.get(), "D"));
        const int before = controller->requests().size();
        ASSERT_TRUE(waitFor([&] { return controller->requests().size() > before; }));
        ASSERT_EQ(elements(4999, 1), read("DINT0:A[3999]", 1));
        ASSERT_EQ(elements(1000, 1), read("DINT0:A[0]", 1));
        ASSERT_EQ(elements(1500, 300), read("DINT0:A[500]", 300));
    }
}

/// What a read got between two pieces of a fetch is newer than the pieces before it.
TEST_F(Array, ValueThatWasReadDoesNotGoBack) {
    start(kManyElements, true);
    controller->setDelay(500);
    poll("A[0]");
    ASSERT_EQ(42, readDint(driver.get(), device.get(), "D"));
    ASSERT_TRUE(waitFor([&] { return controller->requests().last().offset > 0; }));
    controller->setValue(0, 7);
    QElapsedTimer shown;
    ASSERT_TRUE(waitFor([&] { return readDint(driver.get(), device.get(), "A[0]") == 7; }));
    shown.start();
    while (shown.elapsed() < 300) {
        ASSERT_EQ(7, readDint(driver.get(), device.get(), "A[0]"));
    }
}

/// A write between two pieces of a fetch: what was fetched before it must not come back.
TEST_F(Array, WrittenValueStaysWritten) {
    start(kManyElements, true);
    controller->setDelay(300);
    ASSERT_EQ(42, readDint(driver.get(), device.get(), "D"));
    for (int i = 0; i < 10; ++i) {
        poll("A[0]");  // empties the cache: the write does not read the array back
        ASSERT_TRUE(waitFor([&] {
            const QList<Request> all = controller->requests();
            return all.last().offset > 1000 && all.last().offset < 12000;
        }));
        ASSERT_TRUE(write("DINT0:A[0]", dintBytes(i)));
        ASSERT_TRUE(polledOnce(kManyElements));
        ASSERT_EQ(dintBytes(i), read("DINT0:A[0]", 1)) << i;
    }
    for (int i = 0; i < 30; ++i) {
        // A write that is not confirmed in time is not confirmed at all; the confirmed one counts.
        ASSERT_TRUE(waitFor([&] { return write("DINT0:A[1]", dintBytes(i)); }));
        ASSERT_EQ(dintBytes(i), read("DINT0:A[1]", 1)) << i;
    }
}

TEST_F(Array, NewListEndsTheFetch) {
    startPolled(kManyElements);
    controller->setDelay(3000);
    ASSERT_TRUE(waitFor([&] { return controller->requests().last().offset > 0; }));
    poll("D");
    const int before = controller->requests().size();
    ASSERT_TRUE(waitFor([&] { return controller->count(kReadTag, 'D') >= 3; }));
    int pieces = 0;
    for (const Request& request : controller->requests().mid(before)) {
        pieces += request.tag == 'A' ? 1 : 0;
    }
    EXPECT_LE(pieces, 2);
}

TEST_F(Array, NewAddressEndsTheFetch) {
    startPolled(kManyElements);
    controller->setDelay(3000);
    ASSERT_TRUE(waitFor([&] { return controller->requests().last().offset > 0; }));
    Controller other({"--tag", "A:DINT[0..3999]", "--tag", "D:DINT=77"});
    device->device.socketList[0].second = other.port();
    const int before = controller->requests().size();
    ASSERT_TRUE(driver->deviceSettingChanged(&device->device));
    EXPECT_EQ(77, readDint(driver.get(), device.get(), "D"));
    EXPECT_LE(controller->requests().size() - before, 2);
}

TEST_F(Array, ConnectionLostBetweenThePieces) {
    start(kManyElements, true);
    std::atomic<int> left(5);
    controller->setOtherwise([&left](const Request& request) {
        // A reply that no request of this connection has.
        return request.service == kReadFragment && left.fetch_sub(1) == 1 ? QByteArray(1, 0)
                                                                          : QByteArray();
    });
    poll("A[0]");
    EXPECT_TRUE(waitFor([&] { return read("DINT0:A[3999]", 1) == elements(4999, 1); }));
    EXPECT_EQ(2, controller->countOfCommand(kRegisterSession));
}

// ---- the end ----------------------------------------------------------------------------------

const int kSlackMs = 1500;  // of a loaded machine

TEST_F(Array, StopDuringAFetch) {
    startPolled(kManyElements);
    controller->setDelay(100000);  // some 3 s for the array
    ASSERT_TRUE(waitFor([&] { return controller->requests().last().offset > 0; }));
    QElapsedTimer waited;
    waited.start();
    driver.reset();
    EXPECT_LT(waited.elapsed(), kSlackMs);
    EXPECT_TRUE(waitFor([&] { return controller->countOfCommand(kUnRegisterSession) == 1; }));
}

TEST_F(Array, StopDuringAWriteInPieces) {
    start(kManyElements, false);
    ASSERT_EQ(42, readDint(driver.get(), device.get(), "D"));
    controller->setDelay(400000);  // 2 s for the write, which the driver awaits for 1 s
    EXPECT_FALSE(write("DINT0:A[0]", elements(1, 500)));
    QElapsedTimer waited;
    waited.start();
    driver.reset();
    EXPECT_LT(waited.elapsed(), 400 + kSlackMs);
    EXPECT_TRUE(waitFor([&] { return controller->countOfCommand(kUnRegisterSession) == 1; }));
    EXPECT_LT(controller->count(kWriteFragment), 5);
}

// ---- the simulator ----------------------------------------------------------------------------

/// A plant's recipe of 1000 values, on a controller that keeps to the size of its connections.
TEST(LargeArray, IsPolledReadByElementAndWrittenInBlocks) {
    const int kSize = 1000;
    const int kBlock = 150;
    QStringList values;
    for (int i = 0; i < kSize; ++i) {
        values << QString::number(1000 + i);
    }
    writeProjectDatabase(QStringList("DINT0:RECIPE[0..999]"));
    Controller simulator({"--connection-size", "504", "--tag", "D:DINT=42", "--tag",
                          "RECIPE:DINT[0..999]=" + values.join(",")});
    TestDevice device(simulator.port());
    const std::unique_ptr<DriverInterface> driver = createDriver();
    const auto address = [](int index) { return QString("RECIPE[%1]").arg(index); };
    driver->setSessionCommand(QList<CommunicatorCommand>() << dint(address(0)) << dint("D"));
    for (int index = 0; index < kSize; ++index) {
        ASSERT_EQ(1000 + index, readDint(driver.get(), &device, address(index)));
    }
    for (int first = 0; first < kSize; first += kBlock) {
        const int count = std::min(kBlock, kSize - first);
        ASSERT_TRUE(driver->write(&device, dint(address(first)), elements(7000 + first, count)))
            << driver->getLastError().toStdString();
        ASSERT_EQ(42, readDint(driver.get(), &device, "D"));
    }
    for (int index = 0; index < kSize; ++index) {
        ASSERT_EQ(7000 + index, readDint(driver.get(), &device, address(index)));
    }
    // In four more spellings: more addresses than a driver keeps.
    for (const QString& spelling : {QString("dint0:RECIPE"), QString("Dint0:RECIPE"),
                                    QString("DINT0:recipe"), QString("DINT0:Recipe")}) {
        for (int index = 0; index < kSize; ++index) {
            const QString address = QString("%1[%2]").arg(spelling).arg(index);
            ASSERT_EQ(elements(7000 + index, 1),
                      driver->read(&device, CommunicatorCommand(kUnitDoubleWord, 1, address)))
                << address.toStdString();
        }
    }
    ASSERT_EQ("ok", simulator.command("set RECIPE[999]=-1"));
    EXPECT_TRUE(waitFor([&] { return readDint(driver.get(), &device, address(999)) == -1; }));
    EXPECT_EQ(1, simulator.connectionsOpened());
    QSet<QString> services;
    for (const QJsonObject& request : simulator.log()) {
        services << request.value("service").toString();
    }
    EXPECT_TRUE(services.contains("ReadTagFragmented"));
    EXPECT_TRUE(services.contains("WriteTagFragmented"));
}

}  // namespace
