// Reads through the plugin from the simulator: values, sizes, failures and their texts.

#include <gtest/gtest.h>

#include "integration/driver_rig.h"
#include "integration/scripted_controller.h"
#include "support/app_directory/app_directory.h"

namespace {

QByteArray hex(const char* text) {
    return QByteArray::fromHex(text);
}

class Read : public ::testing::Test {
 protected:
    void start(const QStringList& options, int retry = 0,
               const QStringList& declared = QStringList()) {
        writeProjectDatabase(declared);
        simulator.reset(new Controller(options));
        device.reset(new TestDevice(simulator->port(), 3000, retry));
        driver = createDriver();
    }

    QByteArray read(const char* address, int kind, unsigned count = 1) {
        return driver->read(device.get(), CommunicatorCommand(kind, count, address));
    }

    std::unique_ptr<Controller> simulator;
    std::unique_ptr<TestDevice> device;
    std::unique_ptr<DriverInterface> driver;
};

TEST_F(Read, ScalarsOfEveryType) {
    start({"--tag", "B:BOOL=1",
           "--tag", "S:SINT=-5",
           "--tag", "I:INT=-1234",
           "--tag", "D:DINT=-70000",
           "--tag", "US:USINT=200",
           "--tag", "UI:UINT=50000",
           "--tag", "UD:UDINT=4000000000",
           "--tag", "R:REAL=21.5",
           "--tag", "L:LREAL=-2",
           "--tag", "N:STRING=Mixer 3"});
    EXPECT_EQ(hex("01"), read("BOOL0:B", kUnitBit));
    EXPECT_EQ(hex("fb"), read("SINT0:S", kUnitByte));
    EXPECT_EQ(hex("2efb"), read("INT0:I", kUnitWord));
    EXPECT_EQ(hex("90eefeff"), read("DINT0:D", kUnitDoubleWord));
    EXPECT_EQ(hex("c8"), read("USINT0:US", kUnitByte));
    EXPECT_EQ(hex("50c3"), read("UINT0:UI", kUnitWord));
    EXPECT_EQ(hex("00286bee"), read("UDINT0:UD", kUnitDoubleWord));
    EXPECT_EQ(hex("0000ac41"), read("REAL0:R", kUnitDoubleWord));
    EXPECT_EQ(hex("00000000000000c0"), read("LREAL0:L", kUnitQuadWord));
    EXPECT_EQ(QByteArray("Mixer 3"), read("STRING0:N", kUnitBlock, 7));
    EXPECT_FALSE(driver->hasError());
    EXPECT_TRUE(driver->getLastError().isEmpty());
}

TEST_F(Read, NamesGoOutInUpperCase) {
    start({"--tag", "Counter:DINT=42"});
    EXPECT_EQ(dintBytes(42), read("DINT0:counter", kUnitDoubleWord));
    EXPECT_EQ(dintBytes(42), read("dint0:Counter", kUnitDoubleWord));
    EXPECT_EQ(QString("COUNTER"), simulator->requests().last().value("tag").toString());
}

TEST_F(Read, PlainTagIsOneElementPaddedOrCut) {
    start({"--tag", "D:DINT=1"});
    EXPECT_EQ(hex("0100000000000000"), read("DINT0:D", kUnitDoubleWord, 2));
    EXPECT_EQ(1, simulator->requests().last().value("count").toInt());
    EXPECT_EQ(hex("0100"), read("DINT0:D", kUnitWord, 1));
}

TEST_F(Read, UnknownUnitKindIsNoValueAndNoError) {
    start({"--tag", "D:DINT=1"});
    ASSERT_EQ(4, read("DINT0:D", kUnitDoubleWord).size());
    const int before = simulator->requests().size();
    EXPECT_TRUE(read("DINT0:D", 7).isEmpty());
    EXPECT_FALSE(driver->hasError());
    EXPECT_EQ(before, simulator->requests().size());
}

TEST_F(Read, EmptyStringIsOneZeroByte) {
    start({"--tag", "N:STRING="});
    EXPECT_EQ(hex("00"), read("STRING0:N", kUnitBlock, 1));
    EXPECT_EQ(hex("0000000000"), read("STRING0:N", kUnitBlock, 5));
    EXPECT_FALSE(driver->hasError());
}

TEST_F(Read, UndeclaredElements) {
    start({"--tag", "LEVELS:INT[0..4]=100,200,300,400,500", "--tag",
           "GRID:DINT[1..2,0..2]=10,11,12,20,21,22"});
    EXPECT_EQ(hex("9001"), read("INT0:LEVELS[3]", kUnitWord));
    EXPECT_EQ(hex("c8002c019001"), read("INT0:LEVELS[1]", kUnitWord, 3));
    EXPECT_EQ(hex("15000000"), read("DINT0:GRID[2,1]", kUnitDoubleWord));
    EXPECT_EQ(hex("0c00000014000000"), read("DINT0:GRID[1,2]", kUnitDoubleWord, 2));
}

TEST_F(Read, DeclaredElements) {
    start({"--tag", "GRID:DINT[1..2,0..2]=10,11,12,20,21,22"}, 0, {"DINT0:GRID[1..2,0..2]"});
    EXPECT_EQ(hex("15000000"), read("DINT0:GRID[2,1]", kUnitDoubleWord));
    EXPECT_EQ(QString("GRID[2,1]"), simulator->requests().last().value("tag").toString());
    EXPECT_EQ(hex("0c00000014000000"), read("DINT0:grid[1,2]", kUnitDoubleWord, 2));
}

TEST_F(Read, StringElementIsASingleTag) {
    start({"--tag", "NAMES:STRING[0..2]=one,two,three"}, 0, {"STRING0:NAMES[0..2]"});
    EXPECT_EQ(QByteArray("three"), read("STRING0:NAMES[2]", kUnitBlock, 5));
    EXPECT_EQ(1, simulator->requests().last().value("count").toInt());
    EXPECT_EQ(QByteArray("two\0\0", 5), read("STRING0:NAMES[1]", kUnitBlock, 5));
}

TEST_F(Read, ElementBeyondTheArrayIsTheControllersError) {
    start({"--tag", "LEVELS:INT[0..4]=1,2,3,4,5"}, 0, {"INT0:LEVELS[0..4]"});
    EXPECT_TRUE(read("INT0:LEVELS[5]", kUnitWord).isEmpty());
    EXPECT_EQ(QString("read INT0:LEVELS[5]> AB error: 01FFH, 2105H"), driver->getLastError());
    EXPECT_EQ(2, read("INT0:LEVELS[4]", kUnitWord).size());
}

TEST_F(Read, IndexBeyond32BitsNeverReachesAnotherElement) {
    start({"--tag", "LEVELS:INT[0..4]=1,2,3,4,5"}, 0, {"INT0:LEVELS[0..4]"});
    EXPECT_TRUE(read("INT0:LEVELS[4294967296]", kUnitWord).isEmpty());
    EXPECT_EQ(QString("read INT0:LEVELS[4294967296]> invalid array element"),
              driver->getLastError());
}

TEST_F(Read, UnknownTagIsTriedAsOftenAsTheDeviceAllows) {
    start({"--tag", "D:DINT=1"}, 2);
    EXPECT_TRUE(read("DINT0:NOPE", kUnitDoubleWord).isEmpty());
    EXPECT_TRUE(driver->hasError());
    EXPECT_EQ(QString("read DINT0:NOPE> AB error: 0005H"), driver->getLastError());
    int tries = 0;
    for (const QJsonObject& request : simulator->requests()) {
        tries += request.value("tag").toString() == "NOPE" ? 1 : 0;
    }
    EXPECT_EQ(3, tries);
}

TEST_F(Read, ErrorTextOutlivesALaterSuccess) {
    start({"--tag", "D:DINT=42"});
    EXPECT_TRUE(read("DINT0:NOPE", kUnitDoubleWord).isEmpty());
    EXPECT_TRUE(driver->hasError());
    EXPECT_EQ(dintBytes(42), read("DINT0:D", kUnitDoubleWord));
    EXPECT_FALSE(driver->hasError());
    EXPECT_EQ(QString("read DINT0:NOPE> AB error: 0005H"), driver->getLastError());
    EXPECT_TRUE(read("DINT0:NEITHER", kUnitDoubleWord).isEmpty());
    EXPECT_EQ(QString("read DINT0:NEITHER> AB error: 0005H"), driver->getLastError());
}

TEST_F(Read, OldFirmwareStatusForAnUnknownTag) {
    start({"--tag", "D:DINT=42", "--unknown-tag-status", "04"});
    EXPECT_TRUE(read("DINT0:NOPE", kUnitDoubleWord).isEmpty());
    EXPECT_EQ(QString("read DINT0:NOPE> AB error: 0004H"), driver->getLastError());
}

TEST_F(Read, NoAnswerInTimeIsNeitherRetriedNorReported) {
    start({"--tag", "D:DINT=42", "--fault", "silence@tag=D"}, 2);
    EXPECT_TRUE(read("DINT0:D", kUnitDoubleWord).isEmpty());
    EXPECT_FALSE(driver->hasError());
    EXPECT_TRUE(driver->getLastError().isEmpty());
    EXPECT_EQ(1, simulator->countRequests("D"));
}

TEST_F(Read, AddressThatCannotBeSentIsAClearError) {
    start({"--tag", "D:DINT=42"});
    ASSERT_EQ(dintBytes(42), read("DINT0:D", kUnitDoubleWord));
    const int before = simulator->requests().size();
    for (const char* address : {"DINT0:D\t1\n02\t0001\tD", "DINT0:A\nB", "DINT0:A\rB"}) {
        EXPECT_TRUE(read(address, kUnitDoubleWord).isEmpty());
        EXPECT_TRUE(driver->hasError());
        EXPECT_TRUE(driver->getLastError().startsWith("read DINT0:"));
    }
    EXPECT_TRUE(driver->read(device.get(), CommunicatorCommand(3, 1, "DINT0:" + QString(5000, 'A')))
                    .isEmpty());
    EXPECT_TRUE(driver->hasError());
    EXPECT_EQ(before, simulator->requests().size());
    EXPECT_EQ(dintBytes(42), read("DINT0:D", kUnitDoubleWord));
}

TEST_F(Read, NameTooLongForARequestDisturbsNobody) {
    start({"--tag", "D:DINT=42"});
    ASSERT_EQ(dintBytes(42), read("DINT0:D", kUnitDoubleWord));
    const QString longName =
        QString("DINT0:") + QStringList(QVector<QString>(10, QString(120, 'A')).toList()).join(".");
    EXPECT_TRUE(driver->read(device.get(), CommunicatorCommand(3, 1, longName)).isEmpty());
    EXPECT_TRUE(driver->getLastError().endsWith("> Internal: buffer too small"))
        << driver->getLastError().toStdString();
    EXPECT_EQ(dintBytes(42), read("DINT0:D", kUnitDoubleWord));
    EXPECT_EQ(1, simulator->connectionsOpened());
}

/// Cut to what the length byte of a name can say it would be another tag's.
TEST_F(Read, NameTooLongForItsLengthByteNeverReachesAnotherTag) {
    writeProjectDatabase(QStringList());
    const ScriptedController controller(
        [](const QByteArray&) { return hex("cc000000c4002a000000"); });
    device.reset(new TestDevice(controller.port()));
    driver = createDriver();
    const QString longest(255, 'N');
    ASSERT_EQ(42, readDint(driver.get(), device.get(), longest));
    const int before = controller.countRequests(0);
    const CommunicatorCommand longer = dint(longest + "N");
    EXPECT_TRUE(driver->read(device.get(), longer).isEmpty());
    EXPECT_EQ("read DINT0:" + longest + "N> Internal: buffer too small", driver->getLastError());
    EXPECT_FALSE(driver->write(device.get(), longer, dintBytes(7)));
    EXPECT_EQ("write DINT0:" + longest + "N> Internal: buffer too small", driver->getLastError());
    EXPECT_EQ(before, controller.countRequests(0));
    EXPECT_EQ(42, readDint(driver.get(), device.get(), longest));
    EXPECT_EQ(before + 1, controller.countRequests(0));
}

TEST_F(Read, WildSizesAreRefused) {
    start({"--tag", "D:DINT=42", "--tag", "A:DINT[0..3]"}, 0, {"DINT0:A[0..3]"});
    for (const char* address : {"DINT0:D", "DINT0:A[1]", "STRING0:D"}) {
        EXPECT_TRUE(read(address, kUnitQuadWord, 0xFFFFFFFFu).isEmpty()) << address;
        EXPECT_TRUE(driver->hasError());
    }
    EXPECT_EQ(dintBytes(42), read("DINT0:D", kUnitDoubleWord));
}

TEST_F(Read, MissingDatabaseFailsTheRead) {
    start({"--tag", "D:DINT=42"});
    removeProjectDatabase();
    EXPECT_TRUE(read("DINT0:D", kUnitDoubleWord).isEmpty());
    EXPECT_EQ(QString("can not open database"), driver->getLastError());
    writeProjectDatabase(QStringList());
    EXPECT_EQ(dintBytes(42), read("DINT0:D", kUnitDoubleWord));
}

TEST_F(Read, SeveralDriversDoNotDisturbOneAnother) {
    start({"--tag", "D:DINT=42"});
    Controller other({"--tag", "D:DINT=77"});
    TestDevice otherDevice(other.port());
    const std::unique_ptr<DriverInterface> second = createDriver();
    const std::unique_ptr<DriverInterface> third = createDriver();
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(42, readDint(driver.get(), device.get(), "D"));
        EXPECT_EQ(77, readDint(second.get(), &otherDevice, "D"));
        EXPECT_EQ(42, readDint(third.get(), device.get(), "D"));
    }
}

}  // namespace
