#include "eip/record/record_folder.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <functional>
#include <thread>

#include "unit/eip/record/failing_link.h"

namespace {

typedef std::vector<unsigned char> Bytes;

const time_t kWhen = 1700000000;

class RecordFolderIn : public ::testing::Test {
 protected:
    RecordFolderIn() {
        setenv("TZ", "UTC", 1);
        tzset();
    }

    std::string path(const char* name = "") const {
        return (dir.path() + '/' + name).toStdString();
    }

    QStringList names(const QString& sub = QString()) const {
        return QDir(dir.path() + '/' + sub).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

    void put(const QString& name, int size = 1) const {
        QFile file(dir.path() + '/' + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_TRUE(file.resize(size));
    }

    static bool writeOne(RecordFolder* folder, const std::string& why, std::string* problem,
                         size_t size = 10, time_t when = kWhen) {
        return folder->begin(problem) && folder->write(Bytes(size, 'x'), problem) &&
               folder->finish(when, why, problem);
    }

    /// Stops a process that writes recordings when there are whole ones and one that has no name
    /// yet. False when that does not come.
    bool stopInTheMiddle(pid_t child) const {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (std::chrono::steady_clock::now() < limit) {
            int status = 0;
            if (kill(child, SIGSTOP) != 0 || waitpid(child, &status, WUNTRACED) != child) {
                return false;
            }
            const QString unnamed = QString(".micro800-%1-").arg(child);
            if (!names().filter(unnamed).isEmpty() && !names().filter(".pcapng").isEmpty()) {
                return true;
            }
            kill(child, SIGCONT);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return false;
    }

    QTemporaryDir dir;
    std::string problem;
};

TEST_F(RecordFolderIn, WithoutHardLinksAFileStillGetsANameThatNoOtherHas) {
    const FailingLink noLinks(EPERM);
    RecordFolder folder(path());
    ASSERT_TRUE(writeOne(&folder, "a", &problem, 10)) << problem;
    ASSERT_TRUE(writeOne(&folder, "a", &problem, 20)) << problem;
    EXPECT_EQ(QStringList({"20231114-221320-a-2.pcapng", "20231114-221320-a.pcapng"}), names());
    EXPECT_EQ(10, QFileInfo(dir.path() + "/20231114-221320-a.pcapng").size());
    EXPECT_EQ(20, QFileInfo(dir.path() + "/20231114-221320-a-2.pcapng").size());
}

TEST_F(RecordFolderIn, AFileThatIsGoneBeforeItsEndIsSaid) {
    RecordFolder folder(path());
    ASSERT_TRUE(folder.begin(&problem)) << problem;
    ASSERT_EQ(1, names().size());
    ASSERT_TRUE(QFile::remove(dir.path() + '/' + names().first()));
    EXPECT_FALSE(folder.finish(kWhen, "a", &problem));
    EXPECT_EQ("can not finish a recording in " + path() + "/: No such file or directory", problem);
    EXPECT_EQ(QStringList(), names());
}

TEST_F(RecordFolderIn, AReasonWithAHundredRecordingsInOneSecondIsFull) {
    put("20231114-221320-a.pcapng");
    for (int number = 2; number <= 100; ++number) {
        put(QString("20231114-221320-a-%1.pcapng").arg(number));
    }
    RecordFolder folder(path());
    EXPECT_FALSE(writeOne(&folder, "a", &problem));
    EXPECT_EQ("can not finish a recording in " + path() + "/: File exists", problem);
    EXPECT_EQ(100, names().size());
    EXPECT_EQ(0, names().filter(".part").size());
}

TEST_F(RecordFolderIn, AFullDiskIsSaidAndNothingStays) {
    for (const int error : {ENOSPC, EROFS}) {
        const FailingLink full(error);
        RecordFolder folder(path());
        EXPECT_FALSE(writeOne(&folder, "a", &problem)) << error;
        EXPECT_EQ("can not finish a recording in " + path() + "/: " + strerror(error), problem);
        EXPECT_EQ(QStringList(), names()) << error;
    }
}

TEST_F(RecordFolderIn, NamesAreTimeAndReason) {
    RecordFolder folder(path());
    ASSERT_TRUE(writeOne(&folder, "connection-lost", &problem)) << problem;
    EXPECT_EQ(QStringList("20231114-221320-connection-lost.pcapng"), names());
    EXPECT_EQ(10, QFileInfo(dir.path() + '/' + names().first()).size());
}

TEST_F(RecordFolderIn, ANameIsUsedOnce) {
    RecordFolder folder(path());
    RecordFolder other(path());
    ASSERT_TRUE(writeOne(&folder, "end", &problem)) << problem;
    ASSERT_TRUE(writeOne(&other, "end", &problem)) << problem;
    ASSERT_TRUE(writeOne(&folder, "end", &problem)) << problem;
    EXPECT_EQ((QStringList() << "20231114-221320-end-2.pcapng"
                             << "20231114-221320-end-3.pcapng"
                             << "20231114-221320-end.pcapng"),
              names());
}

TEST_F(RecordFolderIn, HasNoNameBeforeItIsWhole) {
    RecordFolder folder(path());
    ASSERT_TRUE(folder.begin(&problem)) << problem;
    ASSERT_TRUE(folder.write(Bytes(10, 'x'), &problem)) << problem;
    ASSERT_EQ(1, names().size());
    EXPECT_TRUE(names().first().endsWith(".part"));
    ASSERT_TRUE(folder.finish(kWhen, "end", &problem)) << problem;
    EXPECT_EQ(QStringList("20231114-221320-end.pcapng"), names());
}

TEST_F(RecordFolderIn, AFileThatIsGivenUpLeavesNothing) {
    {
        RecordFolder folder(path());
        ASSERT_TRUE(folder.begin(&problem)) << problem;
    }
    EXPECT_EQ(QStringList(), names());
}

TEST_F(RecordFolderIn, AMissingFolderIsMade) {
    RecordFolder folder(path("a/b"));
    ASSERT_TRUE(writeOne(&folder, "end", &problem)) << problem;
    EXPECT_EQ(1, names("a/b").size());
}

TEST_F(RecordFolderIn, AFolderThatCannotBeMade) {
    put("file");
    RecordFolder folder(path("file/sub"));
    EXPECT_FALSE(folder.begin(&problem));
    EXPECT_EQ("can not write to " + path("file/sub/") + ": Not a directory", problem);
}

TEST_F(RecordFolderIn, TenFilesStay) {
    RecordFolder folder(path());
    put("notes.txt");
    put("other.pcapng");
    put("20200101-000000-my notes.pcapng");
    for (int i = 0; i < 13; ++i) {
        ASSERT_TRUE(writeOne(&folder, "dump", &problem, 10, kWhen + i)) << problem;
    }
    const QStringList left = names().filter("-dump");
    ASSERT_EQ(10, left.size());
    EXPECT_EQ("20231114-221323-dump.pcapng", left.first());
    EXPECT_EQ("20231114-221332-dump.pcapng", left.last());
    EXPECT_EQ(13, names().size()) << "what is not the recorder's stays";
}

TEST_F(RecordFolderIn, TwentyMegabytesStay) {
    RecordFolder folder(path());
    put("20200101-000000-end.pcapng", 10 * 1024 * 1024);
    put("20200102-000000-end.pcapng", 9 * 1024 * 1024);
    put("20200103-000000-end.pcapng", 1024 * 1024);
    ASSERT_TRUE(writeOne(&folder, "end", &problem)) << problem;
    EXPECT_EQ((QStringList() << "20200102-000000-end.pcapng"
                             << "20200103-000000-end.pcapng"
                             << "20231114-221320-end.pcapng"),
              names());
}

/// The panel's clock stood in the future when the others were written.
TEST_F(RecordFolderIn, TheNewestStaysWhateverItsName) {
    RecordFolder folder(path());
    for (int i = 0; i < 10; ++i) {
        put(QString("2099010%1-000000-end.pcapng").arg(i));
    }
    ASSERT_TRUE(writeOne(&folder, "end", &problem)) << problem;
    EXPECT_EQ(10, names().size());
    EXPECT_EQ("20231114-221320-end.pcapng", names().first());
}

TEST_F(RecordFolderIn, LeftoversOfDeadProcessesGo) {
    const pid_t dead = fork();
    if (dead == 0) {
        _exit(0);
    }
    waitpid(dead, nullptr, 0);
    put(QString(".micro800-%1-0.part").arg(dead));
    put(QString(".micro800-%1-77.part").arg(getpid()));
    put(".micro800-x.part");
    RecordFolder folder(path());
    ASSERT_TRUE(writeOne(&folder, "end", &problem)) << problem;
    EXPECT_EQ((QStringList() << QString(".micro800-%1-77.part").arg(getpid()) << ".micro800-x.part"
                             << "20231114-221320-end.pcapng"),
              names());
}

TEST_F(RecordFolderIn, EachObjectHearsOfADumpOnce) {
    RecordFolder folder(path());
    RecordFolder other(path());
    EXPECT_FALSE(folder.dumpAsked());
    put("dump");
    EXPECT_TRUE(folder.dumpAsked());
    EXPECT_EQ(QStringList(), names());
    EXPECT_FALSE(folder.dumpAsked());
    EXPECT_TRUE(other.dumpAsked());
    EXPECT_FALSE(other.dumpAsked());
    put("dump");
    EXPECT_TRUE(other.dumpAsked());
}

TEST_F(RecordFolderIn, ADumpThatCannotBeRemovedAsksForNothing) {
    QDir(dir.path()).mkdir("dump");
    RecordFolder folder(path());
    EXPECT_FALSE(folder.dumpAsked());
}

/// Runs `work` in a process of its own, where the folder is a file system of its own: a small one
/// in memory, with these options. 0 when `work` is content, -1 when that needs rights that we do
/// not have.
int inASmallFileSystem(const std::string& path, const char* options, unsigned long flags,
                       const std::function<bool()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        const bool ready =
            (unshare(CLONE_NEWNS) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) &&
            mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
            mount("tmpfs", path.c_str(), "tmpfs", flags, options) == 0;
        _exit(!ready ? 2 : work() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 1;
    return code == 2 ? -1 : code;
}

TEST_F(RecordFolderIn, AFullDiskCostsTheRecording) {
    const int result = inASmallFileSystem(path(), "size=64k", 0, [this] {
        RecordFolder folder(path());
        const bool small = writeOne(&folder, "end", &problem);
        const bool large = writeOne(&folder, "end", &problem, 100000);
        return small && !large &&
               problem == "can not write a recording to " + path() + "/: No space left on device" &&
               names().size() == 1;
    });
    if (result < 0) {
        GTEST_SKIP() << "no rights to mount";
    }
    EXPECT_EQ(0, result);
}

TEST_F(RecordFolderIn, AReadOnlyDiskCostsTheRecording) {
    const int result = inASmallFileSystem(path(), "size=64k", MS_RDONLY, [this] {
        RecordFolder folder(path());
        return !folder.begin(&problem) &&
               problem == "can not write to " + path() + "/: Read-only file system" &&
               !folder.dumpAsked();
    });
    if (result < 0) {
        GTEST_SKIP() << "no rights to mount";
    }
    EXPECT_EQ(0, result);
}

/// A process that is killed while it writes leaves whole files and one that has no name.
TEST_F(RecordFolderIn, KilledInTheMiddle) {
    for (int round = 0; round < 20; ++round) {
        const pid_t child = fork();
        if (child == 0) {
            RecordFolder folder(path());
            for (time_t when = kWhen;; ++when) {
                writeOne(&folder, "dump", &problem, 200000, when);
            }
        }
        EXPECT_TRUE(stopInTheMiddle(child));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        for (const QString& name : names().filter(".pcapng")) {
            ASSERT_EQ(200000, QFileInfo(dir.path() + '/' + name).size()) << name.toStdString();
        }
        ASSERT_EQ(1, names().filter(".part").size());
    }
    RecordFolder folder(path());
    ASSERT_TRUE(writeOne(&folder, "dump", &problem, 200000, kWhen + 1000000)) << problem;
    EXPECT_EQ(0, names().filter(".part").size());
}

}  // namespace
