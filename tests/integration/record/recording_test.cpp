// When the driver writes a recording, what is in it, and what it costs when it cannot.

#include "integration/record/record_rig.h"

#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <functional>

#include "support/app_directory/app_directory.h"
#include "support/hex_bytes.h"

namespace {

class RecordingFrom : public RecordTest {};

TEST_F(RecordingFrom, ADriverThatIsNotAskedTo) {
    unsetenv("MICRO800_RECORD");
    Controller simulator({"--tag", "D:DINT=42"});
    TestDevice device(simulator.port(), 400);
    {
        const std::unique_ptr<DriverInterface> driver = createDriver();
        EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
        driver->read(&device, dint("NOPE"));
    }
    EXPECT_EQ(QStringList(), QDir(folder.path()).entryList(QDir::Files | QDir::Hidden));
}

TEST_F(RecordingFrom, ADriverThatDidNothing) {
    createDriver();
    EXPECT_EQ(QStringList(), QDir(folder.path()).entryList(QDir::Files | QDir::Hidden));
}

/// The bytes on the wire, by the controller's own log.
TEST_F(RecordingFrom, AReadAndAWrite) {
    Controller simulator({"--tag", "D:DINT=42"});
    TestDevice device(simulator.port(), 400);
    {
        const std::unique_ptr<DriverInterface> driver = createDriver();
        EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
        EXPECT_TRUE(driver->write(&device, dint("D"), dintBytes(7)));
    }
    ASSERT_EQ(1, recordings().size());
    const CaptureFile file = read(recordings().first());
    ASSERT_TRUE(simulator.waitForLog(1, [](const QJsonObject& request) {
        return request.value("command").toString() == "UnRegisterSession";
    }));
    QByteArray requests;
    QByteArray replies;
    for (const QJsonObject& request : simulator.log()) {
        requests += Controller::rawRequest(request);
        replies += QByteArray::fromHex(request.value("reply").toString().toLatin1());
    }
    EXPECT_EQ(requests.toHex(), file.bytesToController().toHex());
    EXPECT_EQ(replies.toHex(), file.bytesFromController().toHex());
    expectSound(recordings().first());
    const QString target = QString("127.0.0.1:%1").arg(simulator.port());
    QStringList expected;
    expected << "read asked: DINT0:D"
             << "connect: " + target << "connected: after "
             << "opened: " + target << "read answered: DINT0:D: 4 bytes after "
             << "write asked: DINT0:D"
             << "write answered: DINT0:D: 4 bytes after "
             << "closed";
    const QStringList comments = file.comments();
    ASSERT_EQ(expected.size(), comments.size()) << comments.join('\n').toStdString();
    for (int i = 0; i < expected.size(); ++i) {
        EXPECT_TRUE(comments.at(i).startsWith(expected.at(i))) << comments.at(i).toStdString();
    }
}

/// One access of the host's, however often the driver tries.
TEST_F(RecordingFrom, AReadThatIsRepeated) {
    Controller simulator({"--tag", "D:DINT=42"});
    TestDevice device(simulator.port(), 400, 2);
    {
        const std::unique_ptr<DriverInterface> driver = createDriver();
        EXPECT_TRUE(driver->read(&device, dint("NOPE")).isEmpty());
    }
    EXPECT_EQ(3, simulator.countRequests("NOPE"));
    const CaptureFile file = read(waitForRecording("error-text"));
    EXPECT_EQ(QStringList("read asked: DINT0:NOPE"), file.comments().filter("asked"));
    EXPECT_EQ(1, file.comments().filter("read answered: DINT0:NOPE: no value after ").size());
}

/// The view of a reader with tshark alone: the tag of each request, and its status.
TEST_F(RecordingFrom, ARefusedTagIsNamedByTshark) {
    Controller simulator({"--tag", "D:DINT=42"});
    TestDevice device(simulator.port(), 400);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    driver->read(&device, dint("NOPE"));
    const QString name = waitForRecording("error-text");
    EXPECT_EQ((QStringList() << "D"
                             << "NOPE"),
              tshark(pathOf(name), "cip.sc == 0x4c && tcp.dstport == 44818", {"cip.symbol"}));
    EXPECT_EQ((QStringList() << "0x00"
                             << "0x05"),
              tshark(pathOf(name), "cip.sc == 0x4c && tcp.srcport == 44818", {"cip.genstat"}));
    EXPECT_EQ("error text: read DINT0:NOPE> AB error: 0005H", read(name).comments().last());
}

/// A recording that begins long after the connection was opened is still understood.
TEST_F(RecordingFrom, APollThatRunsForLong) {
    setenv("MICRO800_RECORD_SIZE", "20", 1);
    Controller simulator({"--tag", "D:DINT=42", "--fault", "silence@200"});
    TestDevice device(simulator.port(), 300);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    driver->setSessionCommand(QList<CommunicatorCommand>() << dint("D"));
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    const QString name = waitForRecording("connection-lost");
    expectSound(name);
    EXPECT_EQ(QStringList(),
              tshark(pathOf(name), "enip.command == 0x70 && !cip", {"frame.number"}));
    EXPECT_EQ(
        10,
        tshark(pathOf(name), "cip.symbol == \"D\" && tcp.dstport == 44818", {"cip.symbol"}).size());
    const QStringList comments = read(name).comments();
    EXPECT_FALSE(comments.filter("overwritten: ").isEmpty());
    EXPECT_EQ("connection lost: Internal: receive timeout", comments.last());
}

TEST_F(RecordingFrom, ASignalFile) {
    Controller simulator({"--tag", "D:DINT=42"});
    TestDevice device(simulator.port(), 400);
    const std::unique_ptr<DriverInterface> driver = createDriver();
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    QFile signal(pathOf("dump"));
    ASSERT_TRUE(signal.open(QIODevice::WriteOnly));
    expectSound(waitForRecording("dump"));
    EXPECT_FALSE(QFile::exists(pathOf("dump")));
}

TEST_F(RecordingFrom, AnAddressThatChanges) {
    Controller first({"--tag", "D:DINT=1"});
    Controller second({"--tag", "D:DINT=2"});
    TestDevice device(first.port());
    {
        const std::unique_ptr<DriverInterface> driver = createDriver();
        EXPECT_EQ(1, readDint(driver.get(), &device, "D"));
        device.device.setPort(second.port());
        EXPECT_TRUE(driver->deviceSettingChanged(&device.device));
        EXPECT_EQ(2, readDint(driver.get(), &device, "D"));
    }
    ASSERT_EQ(1, recordings().size());
    expectSound(recordings().first());
    EXPECT_TRUE(read(recordings().first())
                    .comments()
                    .contains(QString("address changed: 127.0.0.1:%1").arg(second.port())));
    EXPECT_EQ((QStringList() << "0"
                             << "1"),
              tshark(pathOf(recordings().first()), "tcp.flags.syn == 1 && tcp.flags.ack == 0",
                     {"tcp.stream"}));
}

/// Each has a recording of its own, of its own controller only.
TEST_F(RecordingFrom, TwoDriversInOneProcess) {
    Controller first({"--tag", "ONE:DINT=1"});
    Controller second({"--tag", "TWO:DINT=2"});
    TestDevice firstDevice(first.port());
    TestDevice secondDevice(second.port());
    {
        const std::unique_ptr<DriverInterface> one = createDriver();
        const std::unique_ptr<DriverInterface> two = createDriver();
        for (int i = 0; i < 20; ++i) {
            EXPECT_EQ(1, readDint(one.get(), &firstDevice, "ONE"));
            EXPECT_EQ(2, readDint(two.get(), &secondDevice, "TWO"));
        }
    }
    ASSERT_EQ(2, recordings().size());
    QStringList tags;
    for (const QString& name : recordings()) {
        expectSound(name);
        QStringList symbols =
            tshark(pathOf(name), "cip.symbol && tcp.dstport == 44818", {"cip.symbol"});
        EXPECT_EQ(20, symbols.size());
        symbols.removeDuplicates();
        tags << symbols;
    }
    tags.sort();
    EXPECT_EQ((QStringList() << "ONE"
                             << "TWO"),
              tags);
}

/// A fork of a process that is killed, over and over, while its driver writes recordings.
TEST_F(RecordingFrom, AProcessThatIsKilled) {
    Controller simulator({"--tag", "D:DINT=42"});
    for (int round = 0; round < 10; ++round) {
        const QStringList before = recordings();
        const pid_t child = fork();
        if (child == 0) {
            TestDevice device(simulator.port(), 400);
            for (;;) {
                const std::unique_ptr<DriverInterface> driver = createDriver();
                for (int i = 0; i < 50; ++i) {
                    readDint(driver.get(), &device, "D");
                }
            }
        }
        EXPECT_TRUE(waitFor([&] { return recordings() != before; }, 20000));
        usleep(static_cast<useconds_t>(1000 + 3000 * round));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        for (const QString& name : recordings()) {
            EXPECT_FALSE(read(name).packets.isEmpty());
        }
    }
}

/// Runs `work` in a process of its own, with a file system in memory over the folder. -1 when that
/// needs rights that we do not have, 0 when nothing failed.
int overTheFolder(const QString& path, const char* options, unsigned long flags,
                  const std::function<void()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        const bool ready =
            (unshare(CLONE_NEWNS) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) &&
            mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
            mount("tmpfs", path.toLocal8Bit().constData(), "tmpfs", flags, options) == 0;
        if (!ready) {
            _exit(2);
        }
        work();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 1;
    return code == 2 ? -1 : code;
}

class RecordingTo : public RecordTest {
 protected:
    /// Reads and fails and reads; the reads are good, and the recording is lost.
    void readWithoutARecording(const QString& problem) {
        Controller simulator({"--tag", "D:DINT=42"});
        TestDevice device(simulator.port(), 400);
        const std::unique_ptr<DriverInterface> driver = createDriver();
        EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
        EXPECT_TRUE(driver->read(&device, dint("NOPE")).isEmpty());
        const auto recording = [&] {
            return driver->getThisObject()->property("counters").toMap().value("recording").toMap();
        };
        EXPECT_TRUE(waitFor([&] { return recording().value("failed").toInt() == 1; }));
        EXPECT_EQ(problem, recording().value("problem").toString());
        EXPECT_EQ(0, recording().value("written").toInt());
        EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    }
};

TEST_F(RecordingTo, AFullDisk) {
    const int result = overTheFolder(folder.path(), "size=4k", 0, [this] {
        QFile other(pathOf("other"));
        EXPECT_TRUE(other.open(QIODevice::WriteOnly));
        other.write(QByteArray(8192, 'x'));
        other.close();
        readWithoutARecording("can not write a recording to " + folder.path() +
                              "/: No space left on device");
        EXPECT_EQ(QStringList("other"), QDir(folder.path()).entryList(QDir::Files | QDir::Hidden));
    });
    if (result < 0) {
        GTEST_SKIP() << "no rights to mount";
    }
    EXPECT_EQ(0, result);
}

TEST_F(RecordingTo, AReadOnlyDisk) {
    const int result = overTheFolder(folder.path(), "size=64k", MS_RDONLY, [this] {
        readWithoutARecording("can not write to " + folder.path() + "/: Read-only file system");
    });
    if (result < 0) {
        GTEST_SKIP() << "no rights to mount";
    }
    EXPECT_EQ(0, result);
}

TEST_F(RecordingTo, AFolderThatCannotBe) {
    QFile file(pathOf("file"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    setenv("MICRO800_RECORD", pathOf("file/sub").toLocal8Bit().constData(), 1);
    readWithoutARecording("can not write to " + pathOf("file/sub") + "/: Not a directory");
}

TEST_F(RecordingTo, AMissingFolder) {
    setenv("MICRO800_RECORD", pathOf("a/b").toLocal8Bit().constData(), 1);
    Controller simulator({"--tag", "D:DINT=42"});
    TestDevice device(simulator.port(), 400);
    {
        const std::unique_ptr<DriverInterface> driver = createDriver();
        EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    }
    EXPECT_EQ(1, QDir(pathOf("a/b")).entryList({"*-end.pcapng"}, QDir::Files).size());
}

}  // namespace
