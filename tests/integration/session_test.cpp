// Session lists: what is polled, and what reads get from it.

#include <gtest/gtest.h>

#include "integration/driver_rig.h"
#include "support/app_directory/app_directory.h"

namespace {

typedef QList<CommunicatorCommand> Commands;

class Session : public ::testing::Test {
 protected:
    void start(const QStringList& options, const QStringList& declared = QStringList()) {
        writeProjectDatabase(declared);
        simulator.reset(new Controller(options));
        device.reset(new TestDevice(simulator->port()));
        driver = createDriver();
    }
    /// Waits until the simulator has read the tag `times` more times.
    bool polled(const char* tag, int times = 2) {
        const int before = simulator->countRequests(tag);
        return waitFor([&] { return simulator->countRequests(tag) >= before + times; });
    }
    /// The element count of the first request for the tag; 0 when there was none.
    int countOf(const char* tag) {
        for (const QJsonObject& request : simulator->requests()) {
            if (request.value("tag").toString() == tag) {
                return request.value("count").toInt();
            }
        }
        return 0;
    }
    QByteArray read(const char* address, int kind = kUnitDoubleWord, unsigned count = 1) {
        return driver->read(device.get(), CommunicatorCommand(kind, count, address));
    }

    std::unique_ptr<Controller> simulator;
    std::unique_ptr<TestDevice> device;
    std::unique_ptr<DriverInterface> driver;
};

TEST_F(Session, ListBeforeTheFirstReadIsDeliveredWithIt) {
    start({"--tag", "A:DINT=1", "--tag", "B:DINT=2"});
    driver->setSessionCommand(Commands() << dint("A") << dint("B") << dint("A"));
    EXPECT_EQ(1, readDint(driver.get(), device.get(), "A"));
    EXPECT_TRUE(polled("A"));
    EXPECT_TRUE(polled("B"));
    EXPECT_EQ(1, countOf("A"));
    EXPECT_EQ(2, readDint(driver.get(), device.get(), "B"));
}

TEST_F(Session, PrefixesOfThreeLettersArePolledShorterOnesAreNot) {
    start({"--tag", "A:INT=1", "--tag", "B:DINT=2"});
    driver->setSessionCommand(Commands()
                              << CommunicatorCommand(kUnitWord, 1, "INT0:A")
                              << CommunicatorCommand(kUnitWord, 1, "NT0:B") << dint("C"));
    EXPECT_EQ(QByteArray("\1\0", 2), read("INT0:A", kUnitWord));
    EXPECT_TRUE(polled("C"));
    EXPECT_TRUE(polled("A"));
    EXPECT_EQ(0, simulator->countRequests("B"));
}

TEST_F(Session, LastPendingListWins) {
    start({"--tag", "A:DINT=1", "--tag", "B:DINT=2"});
    driver->setSessionCommand(Commands() << dint("A"));
    driver->setSessionCommand(Commands() << dint("B"));
    driver->setSessionCommand(Commands());
    EXPECT_EQ(2, readDint(driver.get(), device.get(), "B"));
    EXPECT_TRUE(polled("B"));
    EXPECT_EQ(0, simulator->countRequests("A"));
}

TEST_F(Session, PolledValueIsReadWithoutARequest) {
    start({"--tag", "A:DINT=1"});
    driver->setSessionCommand(Commands() << dint("A"));
    EXPECT_EQ(1, readDint(driver.get(), device.get(), "A"));
    ASSERT_TRUE(polled("A"));
    const int kReads = 100000;
    for (int i = 0; i < kReads; ++i) {
        ASSERT_EQ(4, driver->read(device.get(), dint("A")).size());
    }
    // Only the polling pass asked the controller meanwhile.
    EXPECT_LT(simulator->countRequests("A"), kReads / 10);
}

TEST_F(Session, ValuesStayFresh) {
    start({"--tag", "A:DINT=1"});
    driver->setSessionCommand(Commands() << dint("A"));
    EXPECT_EQ(1, readDint(driver.get(), device.get(), "A"));
    ASSERT_TRUE(polled("A"));
    simulator->command("set A=2");
    EXPECT_TRUE(waitFor([&] { return readDint(driver.get(), device.get(), "A") == 2; }));
}

/// A value that the host keeps stays what it was, for any later reads.
TEST_F(Session, ValueInTheHostsHandsDoesNotChange) {
    start({"--tag", "A:DINT=1", "--tag", "NAME:STRING=longer than its command"});
    driver->setSessionCommand(Commands()
                              << dint("A") << CommunicatorCommand(kUnitBlock, 8, "STRING0:NAME"));
    readDint(driver.get(), device.get(), "A");
    ASSERT_TRUE(polled("A"));
    ASSERT_TRUE(polled("NAME"));
    const QByteArray first = read("DINT0:A");
    const QByteArray name = read("STRING0:NAME", kUnitBlock, 8);
    EXPECT_EQ(dintBytes(1), first);
    EXPECT_EQ("longer t", name);

    EXPECT_EQ("ok", simulator->command("set A=2"));
    EXPECT_EQ("ok", simulator->command("set NAME=x"));
    EXPECT_TRUE(waitFor([&] { return read("DINT0:A") == dintBytes(2); }));
    EXPECT_TRUE(waitFor(
        [&] { return read("STRING0:NAME", kUnitBlock, 8) == QByteArray("x\0\0\0\0\0\0\0", 8); }));
    EXPECT_EQ(dintBytes(1), first);
    EXPECT_EQ("longer t", name);
}

TEST_F(Session, DeclaredArrayIsPolledWhole) {
    start({"--tag", "LEVELS:REAL[0..9]=0,1,2,3,4,5,6,7,8,9"}, {"REAL0:LEVELS[0..9]"});
    driver->setSessionCommand(Commands() << CommunicatorCommand(3, 1, "REAL0:LEVELS[1]")
                                         << CommunicatorCommand(3, 1, "REAL0:LEVELS[2]"));
    EXPECT_EQ(QByteArray::fromHex("0000803f"), read("REAL0:LEVELS[1]"));
    ASSERT_TRUE(polled("LEVELS"));
    EXPECT_EQ(10, countOf("LEVELS"));
    EXPECT_EQ(QByteArray::fromHex("00001041"), read("REAL0:LEVELS[9]"));
    EXPECT_EQ(0, simulator->countRequests("LEVELS[9]"));
}

TEST_F(Session, ElementOutsideAPolledArrayIsNamedAsSuch) {
    start({"--tag", "A:DINT[0..9]=0,1,2,3,4,5,6,7,8,9"}, {"DINT0:A[0..9]"});
    driver->setSessionCommand(Commands() << dint("A[0]"));
    EXPECT_EQ(0, readDint(driver.get(), device.get(), "A[0]"));
    ASSERT_TRUE(polled("A"));
    EXPECT_TRUE(read("DINT0:A[12]").isEmpty());
    EXPECT_EQ(QString("read DINT0:A[12]> invalid array element"), driver->getLastError());
    EXPECT_EQ(9, readDint(driver.get(), device.get(), "A[9]"));
}

/// The whole array comes with the first element that is asked for.
TEST_F(Session, FirstElementReadFillsTheCacheWithTheArray) {
    start({"--tag", "A:DINT[0..9]=0,1,2,3,4,5,6,7,8,9", "--delay", "30"}, {"DINT0:A[0..9]"});
    driver->setSessionCommand(Commands() << dint("A[0]"));
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(i, readDint(driver.get(), device.get(), QString("A[%1]").arg(i)));
    }
    EXPECT_EQ(QSet<QString>() << "A", simulator->tagsRead());
}

TEST_F(Session, UndeclaredArrayIsPolledByElement) {
    start({"--tag", "LEVELS:REAL[0..9]=0,1,2,3,4,5,6,7,8,9"});
    driver->setSessionCommand(Commands() << CommunicatorCommand(3, 1, "REAL0:LEVELS[1]")
                                         << CommunicatorCommand(3, 1, "REAL0:LEVELS[2]"));
    EXPECT_FALSE(read("REAL0:LEVELS[1]").isEmpty());
    EXPECT_TRUE(polled("LEVELS[1]"));
    EXPECT_TRUE(polled("LEVELS[2]"));
    EXPECT_EQ(1, countOf("LEVELS[1]"));
    EXPECT_EQ(1, countOf("LEVELS[2]"));
}

TEST_F(Session, PolledEmptyStringIsOneZeroByte) {
    start({"--tag", "NAME:STRING=", "--tag", "A:DINT=1"});
    driver->setSessionCommand(Commands() << CommunicatorCommand(kUnitBlock, 4, "STRING0:NAME"));
    EXPECT_EQ(1, readDint(driver.get(), device.get(), "A"));
    ASSERT_TRUE(polled("NAME"));
    // Padded to the command's size, as every short value is.
    EXPECT_EQ(QByteArray(4, 0), read("STRING0:NAME", kUnitBlock, 4));
    EXPECT_EQ(QByteArray(1, 0), read("STRING0:NAME", kUnitBlock, 1));
    EXPECT_FALSE(driver->hasError());
}

TEST_F(Session, DeclaredStringArrayIsPolledByElement) {
    start({"--tag", "NAMES:STRING[0..2]=one,two,three"}, {"STRING0:NAMES[0..2]"});
    driver->setSessionCommand(Commands() << CommunicatorCommand(5, 3, "STRING0:NAMES[1]"));
    EXPECT_EQ(QByteArray("two"), read("STRING0:NAMES[1]", kUnitBlock, 3));
    EXPECT_TRUE(polled("NAMES[1]"));
    EXPECT_EQ(1, countOf("NAMES[1]"));
    EXPECT_EQ(0, simulator->countRequests("NAMES"));
}

/// The cache serves as many characters as it has; a command for more goes to the controller.
TEST_F(Session, PolledStringElementIsServedWhileItIsLongEnough) {
    start({"--tag", "NAMES:STRING[0..2]=one,two,three"});
    driver->setSessionCommand(Commands() << CommunicatorCommand(kUnitBlock, 5, "STRING0:NAMES[2]"));
    EXPECT_EQ(QByteArray("three"), read("STRING0:NAMES[2]", kUnitBlock, 5));
    ASSERT_TRUE(polled("NAMES[2]"));
    const int kReads = 20000;
    for (int i = 0; i < kReads; ++i) {
        ASSERT_EQ(QByteArray("thr"), read("STRING0:NAMES[2]", kUnitBlock, 3));
    }
    // Only the polling pass asked the controller meanwhile.
    EXPECT_LT(simulator->countRequests("NAMES[2]"), kReads / 4);
    EXPECT_EQ(QByteArray("three\0\0", 7), read("STRING0:NAMES[2]", kUnitBlock, 7));
    EXPECT_FALSE(driver->hasError());
}

TEST_F(Session, AddressThatNamesNoTagIsSkipped) {
    start({"--tag", "X:DINT=1", "--tag", "A:DINT=2"});
    driver->setSessionCommand(Commands()
                              << CommunicatorCommand(3, 1, "A0:X") << CommunicatorCommand(3, 1, "X")
                              << CommunicatorCommand(3, 1, "DINT0:")
                              << CommunicatorCommand(3, 1, "DINT0:A\tB") << dint("A"));
    EXPECT_EQ(2, readDint(driver.get(), device.get(), "A"));
    EXPECT_TRUE(polled("A"));
    EXPECT_EQ(0, simulator->countRequests("X"));
}

TEST_F(Session, NewListReplacesTheOldOneAndAnEmptyOneDoesNot) {
    start({"--tag", "A:DINT=1", "--tag", "B:DINT=2"});
    driver->setSessionCommand(Commands() << dint("A"));
    EXPECT_EQ(1, readDint(driver.get(), device.get(), "A"));
    ASSERT_TRUE(polled("A"));
    driver->setSessionCommand(Commands() << dint("B"));
    ASSERT_TRUE(polled("B", 3));
    const int before = simulator->countRequests("A");
    driver->setSessionCommand(Commands());
    driver->clearSessionCommand();
    ASSERT_TRUE(polled("B", 10));
    EXPECT_EQ(before, simulator->countRequests("A"));
}

TEST_F(Session, ListTooLongForALineChangesNothing) {
    start({"--tag", "A:DINT=1"});
    driver->setSessionCommand(Commands() << dint("A"));
    EXPECT_EQ(1, readDint(driver.get(), device.get(), "A"));
    Commands longList;
    for (int i = 0; i < 1000; ++i) {
        longList << dint(QString("TAG_NUMBER_%1").arg(i));
    }
    driver->setSessionCommand(longList);
    EXPECT_FALSE(driver->hasError());
    EXPECT_TRUE(polled("A", 5));
    EXPECT_EQ(0, simulator->countRequests("TAG_NUMBER_0"));
    EXPECT_EQ(1, readDint(driver.get(), device.get(), "A"));
}

/// What the runtime asks for several times goes into the line once.
TEST_F(Session, TagThatIsListedOftenIsSentOnce) {
    start({"--tag", "A:DINT=1", "--tag", "B:DINT=2"});
    Commands list;
    for (int i = 0; i < 5000; ++i) {
        list << dint("A");
    }
    driver->setSessionCommand(list << dint("B"));
    EXPECT_EQ(2, readDint(driver.get(), device.get(), "B"));
    EXPECT_TRUE(polled("A"));
    EXPECT_TRUE(polled("B"));
}

TEST_F(Session, BiggestListThatFitsIsPolledWhole) {
    // "01\tTTTT" is 7 characters, an entry "\tTnnn\t1" 7, the line feed 1: 584 entries are 4096.
    const int kEntries = (4096 - 7 - 1) / 7;
    QStringList options;
    Commands list;
    for (int i = 0; i < kEntries; ++i) {
        const QString name = QString("T%1").arg(i, 3, 10, QChar('0'));
        options << "--tag" << name + ":DINT=" + QString::number(i);
        list << dint(name);
    }
    start(options);
    driver->setSessionCommand(list);
    EXPECT_EQ(0, readDint(driver.get(), device.get(), "T000"));
    EXPECT_TRUE(waitFor([&] { return simulator->tagsRead().size() == kEntries; }, 30000));
    EXPECT_EQ(kEntries - 1, readDint(driver.get(), device.get(), QString("T%1").arg(kEntries - 1)));
}

TEST_F(Session, RefusedTagLeavesTheOthersAlone) {
    start({"--tag", "A:DINT=1", "--tag", "B:DINT=2"});
    driver->setSessionCommand(Commands() << dint("A") << dint("NOPE") << dint("B"));
    EXPECT_EQ(1, readDint(driver.get(), device.get(), "A"));
    ASSERT_TRUE(polled("NOPE", 3));
    ASSERT_TRUE(polled("B", 3));
    EXPECT_EQ(2, readDint(driver.get(), device.get(), "B"));
    EXPECT_TRUE(driver->read(device.get(), dint("NOPE")).isEmpty());
    EXPECT_EQ(QString("read DINT0:NOPE> AB error: 0005H"), driver->getLastError());
    EXPECT_EQ(1, readDint(driver.get(), device.get(), "A"));
    EXPECT_EQ(1, simulator->connectionsOpened());
}

/// A value of a type that nobody can decode ends every pass at its tag, at any place.
TEST_F(Session, UndecodableTagLeavesTheOthersAlone) {
    start({"--tag", "A:DINT=1", "--tag", "B:DINT=2", "--tag", "C:DINT=3", "--fault",
           "unknown-type:DB@tag=B"});
    driver->setSessionCommand(Commands() << dint("A") << dint("B") << dint("C"));
    EXPECT_EQ(1, readDint(driver.get(), device.get(), "A"));
    ASSERT_TRUE(polled("B", 3));
    EXPECT_TRUE(driver->read(device.get(), dint("B")).isEmpty());
    EXPECT_EQ(QString("read DINT0:B> Internal: unknown error"), driver->getLastError());
    ASSERT_EQ("ok", simulator->command("set A=11"));
    ASSERT_EQ("ok", simulator->command("set C=13"));
    EXPECT_TRUE(waitFor([&] { return readDint(driver.get(), device.get(), "A") == 11; }));
    EXPECT_TRUE(waitFor([&] { return readDint(driver.get(), device.get(), "C") == 13; }));
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ(11, readDint(driver.get(), device.get(), "A"));
        ASSERT_EQ(13, readDint(driver.get(), device.get(), "C"));
    }
}

TEST_F(Session, TagPolledWithAnotherCountIsReadDirectlyAndNotCached) {
    start({"--tag", "LEVELS:DINT[0..4]=1,2,3,4,5"});
    driver->setSessionCommand(Commands() << CommunicatorCommand(3, 1, "DINT0:LEVELS[1]"));
    ASSERT_EQ(4, read("DINT0:LEVELS[1]").size());
    ASSERT_TRUE(polled("LEVELS[1]"));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(QByteArray::fromHex("0200000003000000"),
                  read("DINT0:LEVELS[1]", kUnitDoubleWord, 2));
    }
    int direct = 0;
    for (const QJsonObject& request : simulator->requests()) {
        const bool pair = request.value("count").toInt() == 2;
        direct += pair && request.value("tag").toString() == "LEVELS[1]" ? 1 : 0;
    }
    EXPECT_EQ(2, direct);
}

/// Reading a polled tag with another count all the time must not keep its polled value old.
TEST_F(Session, DirectReadsDoNotStarveThePolledValue) {
    start({"--tag", "LEVELS:DINT[0..4]=1,2,3,4,5"});
    driver->setSessionCommand(Commands() << CommunicatorCommand(3, 1, "DINT0:LEVELS[1]"));
    ASSERT_EQ(4, read("DINT0:LEVELS[1]").size());
    ASSERT_TRUE(polled("LEVELS[1]"));
    simulator->command("set LEVELS[1]=77");
    EXPECT_TRUE(waitFor([&] {
        read("DINT0:LEVELS[1]", kUnitDoubleWord, 2);
        return read("DINT0:LEVELS[1]") == dintBytes(77);
    }));
}

/// A polled tag's cache key is its name and count: the name of another tag may look just like it.
TEST_F(Session, TagNamedLikeACacheKeyGetsItsOwnValue) {
    start({"--tag", "MOTOR:DINT=11", "--tag", "MOTOR_1:DINT=22"});
    driver->setSessionCommand(Commands() << dint("MOTOR"));
    EXPECT_EQ(11, readDint(driver.get(), device.get(), "MOTOR"));
    ASSERT_TRUE(polled("MOTOR"));
    EXPECT_EQ(22, readDint(driver.get(), device.get(), "MOTOR_1"));
}

TEST_F(Session, AddressChangeEmptiesTheCache) {
    start({"--tag", "A:DINT=1"});
    Controller other({"--tag", "A:DINT=100"});
    driver->setSessionCommand(Commands() << dint("A"));
    EXPECT_EQ(1, readDint(driver.get(), device.get(), "A"));
    ASSERT_TRUE(polled("A"));
    device->device.setPort(other.port());
    ASSERT_TRUE(driver->deviceSettingChanged(&device->device));
    // From now on never the old controller's value.
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(100, readDint(driver.get(), device.get(), "A"));
    }
}

TEST_F(Session, PendingAddressChangeGoesOutWithThePendingList) {
    start({"--tag", "A:DINT=1"});
    Controller other({"--tag", "A:DINT=100"});
    DeviceSetting changed = device->device;
    changed.setPort(other.port());
    EXPECT_TRUE(driver->deviceSettingChanged(&changed));
    driver->setSessionCommand(Commands() << dint("A"));
    EXPECT_EQ(100, readDint(driver.get(), device.get(), "A"));
}

TEST_F(Session, PendingAddressChangeWithoutAListStaysBehind) {
    start({"--tag", "A:DINT=1"});
    Controller other({"--tag", "A:DINT=100"});
    DeviceSetting changed = device->device;
    changed.setPort(other.port());
    EXPECT_TRUE(driver->deviceSettingChanged(&changed));
    EXPECT_EQ(1, readDint(driver.get(), device.get(), "A"));
}

TEST_F(Session, PendingChangeWithoutAPortOrAddressIsNotSent) {
    for (const bool noPort : {true, false}) {
        start({"--tag", "A:DINT=1"});
        DeviceSetting changed = device->device;
        if (noPort) {
            changed.setPort(0);
        } else {
            changed.setSocketIP("");
        }
        EXPECT_TRUE(driver->deviceSettingChanged(&changed));
        driver->setSessionCommand(Commands() << dint("A"));
        EXPECT_EQ(1, readDint(driver.get(), device.get(), "A"));
    }
}

}  // namespace
