// The application directory that the host makes for the driver: which project it contains, and that
// nothing of it remains.

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include "integration/cli/cli_program.h"

namespace {

const int kWaitMs = 30000;

class CliAppDirectory : public CliTest {
 protected:
    /// Elements 5 to 9 of an array: declared, the third is index 7; a controller without the
    /// declaration's offset gives the same, so the test looks at how the array is asked for.
    void declare(const QString& directory, const char* declaration, const char* link = "1") {
        const CliResult made = run({"project", directory, "--array", declaration, "--link", link});
        ASSERT_EQ(made.exitCode, 0) << made.err.constData();
    }

    /// How the controller was asked for the array in the last polled read.
    QString polledTag(const QStringList& options) {
        const int before = requests("ReadTag");
        auto process = start(withController("watch", options + QStringList{"INT0:A[7]"}));
        EXPECT_TRUE(controller->waitForLog(before + 8, [](const QJsonObject& request) {
            return request.value("service").toString() == "ReadTag";
        }));
        process->signal(SIGTERM);
        EXPECT_EQ(process->finish().exitCode, 0);
        QJsonObject last;
        for (const QJsonObject& request : controller->log()) {
            if (request.value("service").toString() == "ReadTag") {
                last = request;
            }
        }
        return last.value("tag").toString() + " " + QString::number(last.value("count").toInt());
    }

    bool waitForLeftovers(bool some) {
        QElapsedTimer clock;
        clock.start();
        while (leftovers().isEmpty() == some && clock.elapsed() < kWaitMs) {
            usleep(1000);
        }
        return leftovers().isEmpty() != some;
    }
};

TEST_F(CliAppDirectory, WithoutAProjectNothingIsDeclared) {
    startController({"--tag", "A:INT[5..9]=50,60,70,80,90"});
    EXPECT_EQ(polledTag({}), QString("A[7] 1"));
}

TEST_F(CliAppDirectory, TheProjectsDeclarationsReachTheDriver) {
    startController({"--tag", "A:INT[5..9]=50,60,70,80,90"});
    QTemporaryDir panel;
    declare(panel.path(), "INT0:A[5..9]");
    EXPECT_EQ(polledTag({"--project", panel.path()}), QString("A 5"));
    EXPECT_EQ(runWith("read", {"--project", panel.path(), "INT0:A[7]"}).out,
              QByteArray("INT0:A[7] = 70\n"));
}

TEST_F(CliAppDirectory, DeclarationsOfAnotherLinkDoNotApply) {
    startController({"--tag", "A:INT[5..9]=50,60,70,80,90"});
    QTemporaryDir panel;
    declare(panel.path(), "INT0:A[5..9]", "4");
    EXPECT_EQ(polledTag({"--project", panel.path()}), QString("A[7] 1"));
    EXPECT_EQ(polledTag({"--project", panel.path(), "--link", "4"}), QString("A 5"));
}

TEST_F(CliAppDirectory, TheProjectItselfIsLeftAsItWas) {
    startController({"--tag", "A:INT[5..9]=50,60,70,80,90"});
    QTemporaryDir panel;
    declare(panel.path(), "INT0:A[5..9]");
    const QString path = panel.path() + "/compile/database/database";
    QFile before(path);
    ASSERT_TRUE(before.open(QIODevice::ReadOnly));
    const QByteArray bytes = before.readAll();
    EXPECT_EQ(runWith("read", {"--project", panel.path(), "INT0:A[7]"}).exitCode, 0);
    QFile after(path);
    ASSERT_TRUE(after.open(QIODevice::ReadOnly));
    EXPECT_EQ(after.readAll(), bytes);
    EXPECT_EQ(QDir(panel.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList("compile"));
}

TEST_F(CliAppDirectory, ARelativeProjectAndPluginAreSeenFromWhereTheUserIs) {
    startController({"--tag", "A:INT[5..9]=50,60,70,80,90"});
    QTemporaryDir panel;
    declare(panel.path() + "/here", "INT0:A[5..9]");
    ASSERT_TRUE(QFile::link(MICRO800_PLUGIN_FILE, panel.path() + "/driver.so"));
    CliProcess process;
    ASSERT_TRUE(process.start(
        program(),
        withController("read", {"--project", "here", "--plugin", "driver.so", "INT0:A[7]"}),
        environment, panel.path()));
    const CliResult result = process.finish();
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_EQ(result.out, QByteArray("INT0:A[7] = 70\n"));
}

TEST_F(CliAppDirectory, AProjectThatIsMissingOrBroken) {
    startController({"--tag", "A:DINT=1"});
    QTemporaryDir panel;
    const CliResult missing = runWith("read", {"--project", panel.path(), "DINT0:A"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.err, QString("micro800: no project in %1: %1/compile/database/database is "
                                   "missing (micro800 project makes one)\n")
                               .arg(panel.path())
                               .toUtf8());
    ASSERT_TRUE(QDir().mkpath(panel.path() + "/compile/database"));
    QFile file(panel.path() + "/compile/database/database");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(4096, 'x'));
    file.close();
    const CliResult broken = runWith("read", {"--project", panel.path(), "DINT0:A"});
    EXPECT_EQ(broken.exitCode, 1);
    EXPECT_EQ(broken.err, QByteArray("failed to initialize array definition table\n"));
}

// ---- nothing remains; every test checks that at its end
// ---------------------------------------

TEST_F(CliAppDirectory, TheDirectoryIsPrivateWhileItIsThere) {
    startController({"--tag", "T:DINT=1"});
    auto process = start(withController("watch", {"DINT0:T"}));
    ASSERT_TRUE(controller->waitForLog(2, [](const QJsonObject& request) {
        return request.value("service").toString() == "ReadTag";
    }));
    ASSERT_EQ(leftovers().size(), 1);
    struct stat info;
    ASSERT_EQ(stat(QFile::encodeName(tmp.filePath(leftovers().first())).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700u);
    process->signal(SIGTERM);
    EXPECT_EQ(process->finish().exitCode, 0);
}

TEST_F(CliAppDirectory, SignalsThatEndAReadRemoveIt) {
    startController({"--tag", "T:DINT=1"});
    QTemporaryDir panel;
    declare(panel.path(), "INT0:A[5..9]");
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        for (const QStringList& options : {QStringList(), QStringList{"--project", panel.path()}}) {
            auto process =
                start(withController("read", options + QStringList{"--repeat", "1000000",
                                                                   "--interval", "20", "DINT0:T"}));
            ASSERT_TRUE(process->hasPrinted("DINT0:T = 1\n"));
            ASSERT_EQ(leftovers().size(), 1);
            process->signal(number);
            EXPECT_EQ(process->finish().signal, number);
            EXPECT_EQ(leftovers(), QStringList());
        }
    }
    EXPECT_TRUE(QFile::exists(panel.path() + "/compile/database/database"));
}

TEST_F(CliAppDirectory, ASignalAtAnyMomentOfTheStartLeavesNothing) {
    startController({"--tag", "T:DINT=1"});
    for (int i = 0; i < 30; ++i) {
        auto process =
            start(withController("read", {"--repeat", "1000000", "--interval", "20", "DINT0:T"}));
        usleep(static_cast<useconds_t>(i) * 2000);
        process->signal(SIGTERM);
        EXPECT_EQ(process->finish().signal, SIGTERM);
        ASSERT_EQ(leftovers(), QStringList()) << i;
    }
}

TEST_F(CliAppDirectory, AReaderThatGoesAwayLeavesNothing) {
    startController({"--tag", "T:DINT=1"});
    const CliResult result = runAndStopReading(
        withController("read", {"--repeat", "1000000", "--interval", "1", "DINT0:T"}),
        "DINT0:T = 1\n");
    EXPECT_EQ(result.signal, SIGPIPE);
}

TEST_F(CliAppDirectory, APluginThatCannotBeLoadedLeavesNothing) {
    QFile file(tmp.filePath("x.so"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("no library");
    file.close();
    const CliResult result =
        run({"read", "--host", "127.0.0.1", "--plugin", file.fileName(), "DINT0:T"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.startsWith("micro800: plugin " + file.fileName().toUtf8()));
    EXPECT_TRUE(file.remove());
}

TEST_F(CliAppDirectory, TheEmulatorsCommandRunsTheCopy) {
    if (qEnvironmentVariableIsSet("MICRO800_EMULATOR")) {
        GTEST_SKIP() << "runs under an emulator already";
    }
    startController({"--tag", "T:DINT=31"});
    environment.insert("MICRO800_EMULATOR", "env MICRO800_TEST=\"a b\"");
    const CliResult result = runWith("read", {"DINT0:T"});
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_EQ(result.out, QByteArray("DINT0:T = 31\n"));
    environment.insert("MICRO800_EMULATOR", "/no/such/emulator -L /sysroot");
    const CliResult failed = runWith("read", {"DINT0:T"});
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_TRUE(
        failed.err.startsWith("micro800: cannot start the program from " + tmp.path().toUtf8()))
        << failed.err.constData();
}

TEST_F(CliAppDirectory, NoPlaceForTemporaryFiles) {
    environment.insert("TMPDIR", "/proc");
    const CliResult result = run({"read", "--host", "127.0.0.1", "DINT0:T"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.startsWith("micro800: cannot make a temporary directory: "))
        << result.err.constData();
}

TEST_F(CliAppDirectory, ATemporaryDirectoryBehindALink) {
    startController({"--tag", "T:DINT=31"});
    QTemporaryDir elsewhere;
    ASSERT_TRUE(QFile::link(elsewhere.path(), tmp.path() + "/link"));
    environment.insert("TMPDIR", tmp.path() + "/link");
    const CliResult result = runWith("read", {"DINT0:T"});
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_EQ(result.out, QByteArray("DINT0:T = 31\n"));
    EXPECT_EQ(QDir(elsewhere.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList());
    EXPECT_TRUE(QFile::remove(tmp.path() + "/link"));
}

TEST_F(CliAppDirectory, AForeignHandoverMeansNothing) {
    startController({"--tag", "T:DINT=31"});
    QTemporaryDir other;
    QFile file(other.filePath("micro800"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    environment.insert("MICRO800_APP_DIRECTORY", "1:" + other.path());
    EXPECT_EQ(runWith("read", {"DINT0:T"}).out, QByteArray("DINT0:T = 31\n"));
    EXPECT_TRUE(file.exists());
}

}  // namespace
