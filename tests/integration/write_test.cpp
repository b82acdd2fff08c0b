// Writes through the plugin: requests, replies, and the cache afterwards.

#include <gtest/gtest.h>

#include "integration/driver_rig.h"
#include "integration/scripted_controller.h"
#include "support/app_directory/app_directory.h"
#include "support/reserved_port.h"

namespace {

typedef QList<CommunicatorCommand> Commands;

QByteArray hex(const char* text) {
    return QByteArray::fromHex(text);
}

class Write : public ::testing::Test {
 protected:
    void start(const QStringList& options, const QStringList& declared = QStringList(),
               int retry = 0) {
        writeProjectDatabase(declared);
        simulator.reset(new Controller(options));
        device.reset(new TestDevice(simulator->port(), 3000, retry));
        driver = createDriver();
    }
    bool write(const char* address, const QByteArray& value) {
        return driver->write(device.get(), CommunicatorCommand(kUnitDoubleWord, 1, address), value);
    }
    QByteArray read(const char* address, int kind = kUnitDoubleWord, unsigned count = 1) {
        return driver->read(device.get(), CommunicatorCommand(kind, count, address));
    }
    /// The last Write Tag request from its service byte on, in hexadecimal.
    QByteArray lastWrite() {
        const QList<QJsonObject> all = simulator->requests();
        for (int i = all.size() - 1; i >= 0; --i) {
            if (Controller::isWrite(all.at(i))) {
                // Before it: header 24, prefix 6, item count 2, address item 8, item head 4,
                // sequence count 2.
                return Controller::rawRequest(all.at(i)).mid(46).toHex();
            }
        }
        return QByteArray();
    }
    bool polled(const char* tag, int times = 2) {
        const int before = simulator->countRequests(tag);
        return waitFor([&] { return simulator->countRequests(tag) >= before + times; });
    }

    std::unique_ptr<Controller> simulator;
    std::unique_ptr<TestDevice> device;
    std::unique_ptr<DriverInterface> driver;
};

TEST_F(Write, ScalarIsFittedToItsType) {
    start({"--tag", "D:DINT=0"});
    EXPECT_TRUE(write("DINT0:D", hex("2a000000")));
    EXPECT_EQ(hex("2a000000"), read("DINT0:D"));
    EXPECT_TRUE(write("DINT0:D", hex("0102")));
    EXPECT_EQ(QByteArray("4d0291014400c400010001020000"), lastWrite());
    EXPECT_EQ(hex("01020000"), read("DINT0:D"));
    EXPECT_TRUE(write("DINT0:D", hex("1112131415161718")));
    EXPECT_EQ(QByteArray("4d0291014400c400010011121314"), lastWrite());
}

TEST_F(Write, ElementIsPaddedByTheRemainder) {
    start({"--tag", "A:DINT[0..3]"});
    EXPECT_TRUE(write("DINT0:A[1]", hex("0102")));
    EXPECT_EQ(hex("01020000"), read("DINT0:A[1]"));
    EXPECT_TRUE(write("DINT0:A[1]", hex("0100000002000000")));
    EXPECT_EQ(hex("0100000002000000"), read("DINT0:A[1]", kUnitDoubleWord, 2));
    const int before = simulator->requests().size();
    EXPECT_FALSE(write("DINT0:A[1]", hex("0102030405")));
    EXPECT_TRUE(driver->hasError());
    EXPECT_EQ(QString("write DINT0:A[1]> invalid data size"), driver->getLastError());
    EXPECT_EQ(before, simulator->requests().size());
}

TEST_F(Write, TwoElementsOfATwoByteType) {
    start({"--tag", "A:INT[0..3]"});
    EXPECT_TRUE(write("INT0:A[2]", hex("01000200")));
    EXPECT_EQ(hex("01000200"), read("INT0:A[2]", kUnitWord, 2));
}

TEST_F(Write, StringGoesOutAsItIs) {
    start({"--tag", "NAME:STRING=old"});
    EXPECT_TRUE(write("STRING0:NAME", "OK"));
    EXPECT_EQ(QByteArray("4d0391044e414d45da000100024f4b"), lastWrite());
    EXPECT_EQ(QByteArray("OK"), read("STRING0:NAME", kUnitBlock, 2));
    EXPECT_TRUE(write("STRING0:NAME", "another name"));
    EXPECT_EQ(QByteArray("another name"), read("STRING0:NAME", kUnitBlock, 12));
}

TEST_F(Write, ElementOfAStringArrayGoesOutAsItIs) {
    start({"--tag", "NAMES:STRING[0..2]=one,two,three"});
    EXPECT_TRUE(write("STRING0:NAMES[1]", "second"));
    EXPECT_EQ(QByteArray("second"), read("STRING0:NAMES[1]", kUnitBlock, 6));
    EXPECT_EQ(QByteArray("three"), read("STRING0:NAMES[2]", kUnitBlock, 5));
}

TEST_F(Write, StringLongerThanItsLengthByteIsRefused) {
    start({"--tag", "NAME:STRING=old"});
    EXPECT_FALSE(write("STRING0:NAME", QByteArray(256, 'x')));
    EXPECT_EQ(QString("write STRING0:NAME> invalid data size"), driver->getLastError());
    EXPECT_EQ(QByteArray("old"), read("STRING0:NAME", kUnitBlock, 3));
}

/// A string is never split. Name and text take 510 bytes of the 502 that the connection carries.
TEST_F(Write, StringTooLongForTheConnectionIsRefusedAndTheConnectionStays) {
    writeProjectDatabase(QStringList());
    const ScriptedController controller([](const QByteArray& request) {
        return hex(request.at(0) == 0x4D ? "cd000000" : "cc000000c4002a000000");
    });
    device.reset(new TestDevice(controller.port()));
    driver = createDriver();
    const QByteArray address = "STRING0:" + QByteArray(245, 'N');
    ASSERT_TRUE(write(address, QByteArray(200, 'x')));
    const int before = controller.countRequests(0);
    EXPECT_FALSE(write(address, QByteArray(255, 'x')));
    EXPECT_EQ("write " + address + "> Internal: buffer too small", driver->getLastError());
    EXPECT_EQ(before, controller.countRequests(0));
    EXPECT_EQ(42, readDint(driver.get(), device.get(), "D"));
    EXPECT_EQ(before + 1, controller.countRequests(0));
}

TEST_F(Write, ControllersRefusalKeepsTheConnection) {
    start({"--tag", "D:INT=0"});
    EXPECT_FALSE(write("DINT0:D", hex("2a000000")));
    EXPECT_TRUE(driver->hasError());
    EXPECT_EQ(QString("write DINT0:D> AB error: 01FFH, 2107H"), driver->getLastError());
    EXPECT_FALSE(write("DINT0:NOPE", hex("2a000000")));
    EXPECT_EQ(QString("write DINT0:NOPE> AB error: 0005H"), driver->getLastError());
    EXPECT_TRUE(write("INT0:D", hex("2a00")));
    EXPECT_EQ(1, simulator->connectionsOpened());
}

TEST_F(Write, NoAnswerInTimeIsFalseWithoutAnError) {
    start({"--tag", "D:DINT=0", "--fault", "silence@tag=D"});
    EXPECT_FALSE(write("DINT0:D", hex("2a000000")));
    EXPECT_FALSE(driver->hasError());
    EXPECT_EQ(QString("write DINT0:D> "), driver->getLastError());
}

TEST_F(Write, AddressWithoutAUsablePrefixGetsNoAnswer) {
    start({"--tag", "D:DINT=0"});
    ASSERT_TRUE(write("DINT0:D", hex("01000000")));
    const int before = simulator->requests().size();
    EXPECT_FALSE(write("D0:D", hex("2a000000")));
    EXPECT_FALSE(driver->hasError());
    EXPECT_EQ(before, simulator->requests().size());
}

TEST_F(Write, UnknownPrefixIsRefused) {
    start({"--tag", "D:DINT=0"});
    EXPECT_FALSE(write("dint0:D", hex("2a000000")));
    EXPECT_EQ(QString("write dint0:D> invalid data size"), driver->getLastError());
}

TEST_F(Write, IsNeverRepeated) {
    start({"--tag", "D:DINT=0"}, QStringList(), 5);
    EXPECT_FALSE(write("INT0:D", hex("2a00")));
    EXPECT_EQ(1, simulator->countRequests("D"));
}

TEST_F(Write, UncachedTagIsNotReadAgain) {
    start({"--tag", "D:DINT=0"});
    EXPECT_TRUE(write("DINT0:D", hex("2a000000")));
    EXPECT_EQ(1, simulator->countRequests("D"));
}

TEST_F(Write, PolledTagIsFreshWhenTheWriteReturns) {
    start({"--tag", "A:DINT=0", "--tag", "B:DINT=0"});
    driver->setSessionCommand(Commands() << dint("A") << dint("B"));
    EXPECT_EQ(0, readDint(driver.get(), device.get(), "A"));
    ASSERT_TRUE(polled("A"));
    for (int i = 1; i <= 200; ++i) {
        ASSERT_TRUE(write("DINT0:A", dintBytes(i)));
        ASSERT_EQ(i, readDint(driver.get(), device.get(), "A"));
    }
}

TEST_F(Write, ElementOfAPolledArrayRefreshesTheWholeArray) {
    start({"--tag", "A:DINT[0..9]"}, {"DINT0:A[0..9]"});
    driver->setSessionCommand(Commands() << dint("A[0]"));
    EXPECT_EQ(0, readDint(driver.get(), device.get(), "A[0]"));
    ASSERT_TRUE(polled("A"));
    for (int i = 1; i <= 100; ++i) {
        ASSERT_TRUE(write("DINT0:A[3]", dintBytes(i)));
        ASSERT_EQ(i, readDint(driver.get(), device.get(), "A[3]"));
    }
    for (const QJsonObject& request : simulator->requests()) {
        const bool element = request.value("tag").toString() == "A[3]";
        EXPECT_TRUE(!element || Controller::isWrite(request));
    }
}

TEST_F(Write, ControllerDown) {
    writeProjectDatabase(QStringList());
    const ReservedPort nobody;
    device.reset(new TestDevice(nobody.port()));
    driver = createDriver();
    EXPECT_FALSE(write("DINT0:D", hex("2a000000")));
    EXPECT_EQ(QString("write DINT0:D> Connection refused(111)"), driver->getLastError());
}

TEST_F(Write, WithoutADatabaseNothingIsSent) {
    start({"--tag", "D:DINT=0"});
    removeProjectDatabase();
    EXPECT_FALSE(write("DINT0:D", hex("2a000000")));
    EXPECT_TRUE(driver->hasError());
    EXPECT_EQ(QString("can not open database"), driver->getLastError());
    EXPECT_TRUE(simulator->requests().isEmpty());
}

TEST_F(Write, WorkerThatCannotTakeItsListFailsTheWrite) {
    start({"--tag", "D:DINT=0"});
    Commands tooLong;
    for (int i = 0; i < 1000; ++i) {
        tooLong << dint(QString("TAG_NUMBER_%1").arg(i));
    }
    driver->setSessionCommand(tooLong);
    EXPECT_FALSE(write("DINT0:D", hex("2a000000")));
    EXPECT_TRUE(driver->hasError());
    EXPECT_EQ(QString("write DINT0:D> session commands not accepted"), driver->getLastError());
    EXPECT_TRUE(simulator->requests().isEmpty());
    // The list is offered once; the tags themselves stay within reach.
    EXPECT_TRUE(write("DINT0:D", hex("2a000000")));
    EXPECT_EQ(hex("2a000000"), read("DINT0:D"));
}

/// A name with a control character is no tag's name: cut at a NUL it would be another tag's.
TEST_F(Write, NameWithAControlCharacterIsRefusedUnsent) {
    start({"--tag", "A:DINT=1"});
    for (const char control : {'\0', '\t', '\n', '\r', '\x1b'}) {
        const QString address = QString("DINT0:A") + QLatin1Char(control) + "B";
        const CommunicatorCommand command(kUnitDoubleWord, 1, address);
        const QString problem = address + "> address or value does not fit a command";
        EXPECT_FALSE(driver->write(device.get(), command, hex("2a000000"))) << int(control);
        EXPECT_TRUE(driver->hasError());
        EXPECT_EQ("write " + problem, driver->getLastError());
        EXPECT_EQ(QByteArray(), driver->read(device.get(), command)) << int(control);
        EXPECT_TRUE(driver->hasError());
        EXPECT_EQ("read " + problem, driver->getLastError());
    }
    EXPECT_EQ(hex("01000000"), read("DINT0:A"));
    EXPECT_TRUE(lastWrite().isEmpty());
}

/// While the polling cannot reach the controller, a write is refused without being tried.
TEST_F(Write, WorkerInErrorRefusesAtOnce) {
    writeProjectDatabase(QStringList());
    const ReservedPort nobody;
    device.reset(new TestDevice(nobody.port()));
    driver = createDriver();
    driver->setSessionCommand(Commands() << dint("D"));
    EXPECT_FALSE(write("DINT0:D", hex("2a000000")));
    ASSERT_TRUE(waitFor([&] {
        driver->read(device.get(), dint("D"));
        return driver->hasError();
    }));
    EXPECT_FALSE(write("DINT0:D", hex("2a000000")));
    EXPECT_TRUE(driver->hasError());
    EXPECT_EQ(QString("write DINT0:D> Connection refused(111)"), driver->getLastError());
}

TEST_F(Write, NoAnswerInTimeLeavesTheTextOfAnEarlierFailure) {
    start({"--tag", "D:DINT=0", "--fault", "silence@tag=D"});
    EXPECT_FALSE(write("DINT0:NOPE", hex("2a000000")));
    EXPECT_FALSE(write("DINT0:D", hex("2a000000")));
    EXPECT_FALSE(driver->hasError());
    EXPECT_EQ(QString("write DINT0:NOPE> AB error: 0005H"), driver->getLastError());
}

TEST_F(Write, RefusedReadingAnewFailsTheWriteThatWasDone) {
    start({"--tag", "D:DINT=0"});
    driver->setSessionCommand(Commands() << dint("D"));
    EXPECT_EQ(0, readDint(driver.get(), device.get(), "D"));
    ASSERT_TRUE(polled("D"));
    ASSERT_EQ("ok", simulator->command("fault status:1A@tag=D@on=read"));
    EXPECT_FALSE(write("DINT0:D", hex("2a000000")));
    EXPECT_TRUE(driver->hasError());
    EXPECT_EQ(QString("write DINT0:D> AB error: 001AH"), driver->getLastError());
    EXPECT_EQ("ok 42", simulator->command("get D"));
    EXPECT_EQ(1, simulator->connectionsOpened());
}

TEST_F(Write, RefusedReadingAnewOfAnArrayFailsTheWriteThatWasDone) {
    start({"--tag", "A:DINT[0..3]"}, {"DINT0:A[0..3]"});
    driver->setSessionCommand(Commands() << dint("A[0]"));
    EXPECT_EQ(0, readDint(driver.get(), device.get(), "A[0]"));
    ASSERT_TRUE(polled("A"));
    ASSERT_EQ("ok", simulator->command("fault status:1A@tag=A@on=read"));
    EXPECT_FALSE(write("DINT0:A[2]", hex("2a000000")));
    EXPECT_EQ(QString("write DINT0:A[2]> AB error: 001AH"), driver->getLastError());
    EXPECT_EQ("ok 42", simulator->command("get A[2]"));
}

struct LossRow {
    const char* fault;
    const char* error;
};

void PrintTo(const LossRow& row, std::ostream* out) {
    *out << row.fault;
}

class WriteLoss : public ::testing::TestWithParam<LossRow> {};

/// The answer to a write is lost or spoilt: the caller hears why, the write is not repeated, and
/// the next one is sent on a new connection.
TEST_P(WriteLoss, IsReportedAndNotRepeated) {
    writeProjectDatabase(QStringList());
    Controller simulator({"--tag", "D:DINT=0", "--fault", GetParam().fault});
    TestDevice device(simulator.port(), 400, 3);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_FALSE(driver->write(&device, dint("D"), dintBytes(1)));
    EXPECT_TRUE(driver->hasError());
    EXPECT_EQ(QString("write DINT0:D> ") + GetParam().error, driver->getLastError());
    EXPECT_EQ(1, simulator.countRequests("D"));
    EXPECT_TRUE(driver->write(&device, dint("D"), dintBytes(2)));
    EXPECT_EQ(2, readDint(driver.get(), &device, "D"));
    EXPECT_EQ(3, simulator.countRequests("D"));
    EXPECT_EQ(2, simulator.connectionsOpened());
}

INSTANTIATE_TEST_SUITE_P(
    All, WriteLoss,
    ::testing::Values(LossRow{"silencex1@on=write", "Internal: receive timeout"},
                      LossRow{"resetx1@on=write", "Internal: receive error"},
                      LossRow{"cut:10x1@on=write", "Internal: receive error"},
                      LossRow{"torn-headerx1@on=write", "Internal: receive error"},
                      LossRow{"truncate:30x1@on=write", "Internal: receive timeout"},
                      LossRow{"wrong-sequencex1@on=write", "Internal: unsolicited message"},
                      LossRow{"wrong-commandx1@on=write", "Internal: unsolicited message"},
                      LossRow{"item-length-longx1@on=write", "Internal: invalid reply"}));

}  // namespace
