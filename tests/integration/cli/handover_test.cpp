// How the host hands over to its copy in the application directory: that nothing outside can repeat
// or forge it, and that both are one program to the caller.

#include <signal.h>
#include <unistd.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include "integration/cli/cli_program.h"
#include "support/sanitizer.h"

namespace {

const int kWaitMs = 30000;

class CliHandover : public CliTest {
 protected:
    void SetUp() override {
        if (qEnvironmentVariableIsSet("MICRO800_EMULATOR")) {
            GTEST_SKIP() << "the shell runs the program itself";
        }
        startController({"--tag", "T:DINT=31"});
    }

    /// Runs a line of the shell, in which "$0" is the program and "$@" are its arguments.
    CliResult runInShell(const QString& line, const QStringList& arguments) {
        CliProcess process;
        EXPECT_TRUE(
            process.start("/bin/sh", QStringList{"-c", line, program()} + arguments, environment));
        return process.finish();
    }

    /// Has an executable file of shell lines run the copy. Its arguments are the words of the copy:
    /// the program, the option of the handover, what the user gave.
    void emulateBy(const QByteArray& lines) {
        QFile script(tools.filePath("emulator"));
        ASSERT_TRUE(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\n" + lines + "\n");
        script.close();
        ASSERT_TRUE(script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        environment.insert("MICRO800_EMULATOR", script.fileName());
    }

    /// A project in a directory of its own that looks like the private one of a copy.
    QString projectWithCopy() {
        EXPECT_EQ(run({"project", panel.path(), "--array", "INT0:A[5..9]"}).exitCode, 0);
        EXPECT_TRUE(QFile::copy(program(), panel.filePath("micro800")));
        return panel.path();
    }
    bool projectIsThere() const {
        return QFile::exists(panel.filePath("compile/database/database")) &&
               QFile::exists(panel.filePath("micro800"));
    }

    /// A read that goes on and on, once it has shown its first value.
    std::unique_ptr<CliProcess> longRead() {
        auto process =
            start(withController("read", {"--repeat", "1000000", "--interval", "20", "DINT0:T"}));
        EXPECT_TRUE(process->hasPrinted("DINT0:T = 31\n"));
        return process;
    }

    QTemporaryDir tools;
    QTemporaryDir panel;
};

/// The one child of a process; 0 when it has none.
pid_t childOf(pid_t parent) {
    QFile list(QString("/proc/%1/task/%1/children").arg(parent));
    return list.open(QIODevice::ReadOnly) ? list.readAll().trimmed().toInt() : 0;
}

/// The letter of /proc/PID/stat: R, S, T, ...; 0 when there is no such process.
char stateOf(pid_t process) {
    QFile file(QString("/proc/%1/stat").arg(process));
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    const QByteArray text = file.readAll();
    return text.at(text.lastIndexOf(')') + 2);
}

bool waitForState(pid_t process, const char* states) {
    QElapsedTimer clock;
    clock.start();
    while (!QByteArray(states).contains(stateOf(process)) && clock.elapsed() < kWaitMs) {
        usleep(1000);
    }
    return QByteArray(states).contains(stateOf(process));
}

// ---- it cannot be repeated
// -----------------------------------------------------------------------

TEST_F(CliHandover, ACommandThatForksRunsOneCopy) {
    emulateBy("echo started >&2; \"$@\"; true");
    const CliResult result = runWith("read", {"DINT0:T"});
    EXPECT_EQ(result.out, QByteArray("DINT0:T = 31\n"));
    EXPECT_EQ(result.err, QByteArray("started\n"));
    EXPECT_EQ(result.exitCode, 0);
}

TEST_F(CliHandover, ACommandThatRunsNothingLeavesNothing) {
    environment.insert("MICRO800_EMULATOR", "true");
    const CliResult result = runWith("read", {"DINT0:T"});
    EXPECT_EQ(result.out + result.err, QByteArray());
    EXPECT_EQ(result.exitCode, 0);
    environment.insert("MICRO800_EMULATOR", "false");
    EXPECT_EQ(runWith("read", {"DINT0:T"}).exitCode, 1);
}

TEST_F(CliHandover, ACommandThatForgetsTheHandoverRunsOneCopyMore) {
    // The same variable, the same program, the user's arguments alone.
    environment.insert("PROGRAM", program());
    emulateBy("echo started >&2; shift 2; exec \"$PROGRAM\" \"$@\"");
    const CliResult result = runWith("read", {"DINT0:T"});
    EXPECT_EQ(result.out, QByteArray("DINT0:T = 31\n"));
    EXPECT_EQ(result.err, QByteArray("started\n"));
}

TEST_F(CliHandover, ACommandThatTakesTheDescriptorAwayEndsIt) {
    emulateBy(
        "copy=$1 option=$2; shift 2; fd=${option##*=}\n"
        "eval \"exec $fd<&-\"; exec \"$copy\" \"$option\" \"$@\"");
    const CliResult result = runWith("read", {"DINT0:T"});
    EXPECT_TRUE(result.err.contains("is for the copy that this program starts of itself"))
        << result.err.constData();
    EXPECT_EQ(result.exitCode, 1);
}

TEST_F(CliHandover, TheSecondToUseItIsNoCopy) {
    emulateBy("\"$@\" && \"$@\"");
    const CliResult result = runWith("read", {"DINT0:T"});
    EXPECT_EQ(result.out, QByteArray("DINT0:T = 31\n"));
    EXPECT_TRUE(result.err.contains("is for the copy that this program starts of itself"))
        << result.err.constData();
    EXPECT_EQ(result.exitCode, 1);
}

// ---- it cannot be forged
// -------------------------------------------------------------------------

TEST_F(CliHandover, AProcessIdInTheEnvironmentMeansNothing) {
    environment.insert("PANEL", projectWithCopy());
    const CliResult result = runInShell("MICRO800_APP_DIRECTORY=$$:$PANEL exec \"$0\" \"$@\"",
                                        withController("read", {"DINT0:T"}));
    EXPECT_EQ(result.out, QByteArray("DINT0:T = 31\n"));
    EXPECT_TRUE(projectIsThere());
}

TEST_F(CliHandover, TheOptionAloneMeansNothing) {
    for (const char* number : {"0", "2", "7", "-1", "x", ""}) {
        const CliResult result = run(QStringList(QString("--app-directory-from=") + number) +
                                     withController("read", {"DINT0:T"}));
        EXPECT_TRUE(result.err.contains("is for the copy that this program starts of itself"))
            << number << result.err.constData();
        EXPECT_EQ(result.exitCode, 1);
    }
}

TEST_F(CliHandover, AForgedPipeRemovesNothing) {
    environment.insert("PANEL", projectWithCopy());
    const QString forged = "printf '%s\\0%s\\0' \"$PANEL\" \"$PANEL\" | ";
    const CliResult elsewhere = runInShell(forged + "\"$0\" --app-directory-from=9 \"$@\" 9<&0",
                                           withController("read", {"DINT0:T"}));
    EXPECT_TRUE(elsewhere.err.contains(" finds itself in ")) << elsewhere.err.constData();
    EXPECT_EQ(elsewhere.exitCode, 1);
    // From the directory itself it even works, and leaves everything where it is.
    environment.insert("MICRO800_PLUGIN", MICRO800_PLUGIN_FILE);
    const CliResult inPlace =
        runInShell(forged + "\"$PANEL\"/micro800 --app-directory-from=9 \"$@\" 9<&0",
                   withController("read", {"DINT0:T"}));
    EXPECT_EQ(inPlace.out, QByteArray("DINT0:T = 31\n")) << inPlace.err.constData();
    EXPECT_TRUE(projectIsThere());
}

// ---- nothing remains after any end: every test checks that at its end
// ---------------------

TEST_F(CliHandover, RarerSignalsReachTheCopy) {
    if (kSanitized) {
        GTEST_SKIP() << "the sanitizer takes the signals of faults";
    }
    for (const int number : {SIGUSR1, SIGUSR2, SIGALRM, SIGVTALRM, SIGXFSZ, SIGIO, SIGABRT, SIGSEGV,
                             SIGBUS, SIGTRAP, SIGSYS, SIGRTMIN, SIGRTMAX}) {
        auto process = longRead();
        process->signal(number);
        EXPECT_EQ(process->finish().signal, number);
        EXPECT_EQ(leftovers(), QStringList()) << number;
    }
}

TEST_F(CliHandover, ACrashOfTheCopyIsOneOfTheProgram) {
    if (kSanitized) {
        GTEST_SKIP() << "the sanitizer takes the signals of faults";
    }
    for (const int number : {SIGSEGV, SIGKILL}) {
        auto process = longRead();
        ASSERT_GT(childOf(process->processId()), 0);
        kill(childOf(process->processId()), number);
        EXPECT_EQ(process->finish().signal, number);
        EXPECT_EQ(leftovers(), QStringList()) << number;
    }
}

TEST_F(CliHandover, AProgramThatIsKilledTakesTheCopyAlong) {
    auto process = longRead();
    const pid_t copy = childOf(process->processId());
    ASSERT_GT(copy, 0);
    process->signal(SIGKILL);
    // It returns when the copy, too, has let go of the output.
    EXPECT_EQ(process->finish().signal, SIGKILL);
    EXPECT_NE(stateOf(copy), 'S');
    for (const QString& left : leftovers()) {
        EXPECT_TRUE(QDir(tmp.filePath(left)).removeRecursively());
    }
}

TEST_F(CliHandover, BothStopAndGoOnTogether) {
    auto process = longRead();
    const pid_t copy = childOf(process->processId());
    ASSERT_GT(copy, 0);
    kill(copy, SIGSTOP);
    EXPECT_TRUE(waitForState(process->processId(), "T"));
    kill(process->processId(), SIGCONT);
    EXPECT_TRUE(waitForState(process->processId(), "RSD"));
    EXPECT_TRUE(waitForState(copy, "RSD"));
    process->signal(SIGTERM);
    EXPECT_EQ(process->finish().signal, SIGTERM);
}

TEST_F(CliHandover, WhereEndsOfChildrenAreNotKept) {
    const CliResult result =
        runInShell("trap '' CHLD; exec \"$0\" \"$@\"", withController("read", {"DINT0:GONE"}));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.startsWith("read DINT0:GONE> ")) << result.err.constData();
}

}  // namespace
