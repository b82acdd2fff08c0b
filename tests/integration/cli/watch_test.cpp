// "micro800 watch" against the simulated controller: as lines, as JSON, and as a table in a
// terminal.

#include <signal.h>

#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>

#include "integration/cli/cli_program.h"
#include "integration/cli/terminal.h"

namespace {

class CliWatch : public CliTest {};

// ---- lines --------------------------------------------------------------------------------------

TEST_F(CliWatch, OnceReadsEachAddressOnce) {
    startController({"--tag", "A:DINT=5", "--tag", "R:REAL=1.5", "--tag", "L:INT[0..2]=1,2,3"});
    const CliResult result = runWith("watch", {"--once", "DINT0:A", "REAL0:R", "INT0:L[2]"});
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_EQ(result.exitCode, 0);
    const QRegularExpression form(
        "^\\d\\d:\\d\\d:\\d\\d\\.\\d{3} DINT0:A = 5\n"
        "\\d\\d:\\d\\d:\\d\\d\\.\\d{3} REAL0:R = 1.5\n"
        "\\d\\d:\\d\\d:\\d\\d\\.\\d{3} INT0:L\\[2\\] = 3\n$");
    EXPECT_TRUE(form.match(result.out).hasMatch()) << result.out.constData();
}

TEST_F(CliWatch, OnceFailsWithATagThatFails) {
    startController({"--tag", "A:DINT=5"});
    const CliResult result = runWith("watch", {"--once", "--retry", "0", "DINT0:A", "DINT0:GONE"});
    EXPECT_TRUE(result.err.startsWith("read DINT0:GONE> ")) << result.err.constData();
    EXPECT_TRUE(result.out.contains(" DINT0:A = 5\n"));
    EXPECT_EQ(result.exitCode, 1);
}

TEST_F(CliWatch, PrintsChangesAndSumsUp) {
    startController({"--tag", "T:DINT=0", "--tag", "S:DINT=9", "--ramp", "50", "--ramp-tag", "T"});
    const CliResult result =
        runWith("watch", {"--duration", "1.5", "--interval", "100", "DINT0:T", "DINT0:S"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_EQ(result.out.count(" DINT0:S = 9\n"), 1);
    EXPECT_GE(result.out.count(" DINT0:T = "), 4);
    const QList<QByteArray> lines = result.out.trimmed().split('\n');
    const QRegularExpression form(
        "^1\\.[5-9] s: (\\d+) changes, 0 failed reads; reads per second: (\\d+\\.\\d) from the "
        "cache, \\d+\\.\\d from the controller$");
    const QRegularExpressionMatch match = form.match(lines.last());
    ASSERT_TRUE(match.hasMatch()) << lines.last().constData();
    EXPECT_EQ(match.captured(1).toInt(), lines.size() - 1 - 2);
}

TEST_F(CliWatch, TheDriverPollsTheListByItself) {
    startController({"--tag", "T:DINT=0", "--tag", "L:INT[0..2]=1,2,3"});
    // One round of reads in ten seconds, while the controller is asked over and over.
    auto process =
        start(withController("watch", {"--quiet", "--interval", "10000", "DINT0:T", "INT0:L[1]"}));
    EXPECT_TRUE(controller->waitForLog(20, [](const QJsonObject& request) {
        return request.value("service").toString() == "ReadTag" &&
               request.value("tag").toString().startsWith("L");
    }));
    process->signal(SIGTERM);
    const CliResult result = process->finish();
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out.count('\n'), 2);
}

TEST_F(CliWatch, CachedReadsAreCountedAsTheCaches) {
    startController({"--tag", "T:DINT=0"});
    const CliResult result = runWith("watch", {"--duration", "2", "--interval", "20", "DINT0:T"});
    const QRegularExpression form("reads per second: (\\d+\\.\\d) from the cache");
    EXPECT_GT(form.match(result.out).captured(1).toDouble(), 0.5) << result.out.constData();
}

TEST_F(CliWatch, SignalsEndItWithoutFailure) {
    startController({"--tag", "T:DINT=0", "--ramp", "20"});
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        auto process = start(withController("watch", {"--interval", "50", "DINT0:T"}));
        ASSERT_TRUE(process->hasPrinted(" DINT0:T = ", 3));
        process->signal(number);
        const CliResult result = process->finish();
        EXPECT_EQ(result.exitCode, 0) << number;
        EXPECT_TRUE(result.out.contains(" changes, 0 failed reads")) << number;
    }
}

TEST_F(CliWatch, WhatIsIgnoredAtTheStartStaysIgnored) {
    startController({"--tag", "T:DINT=0", "--ramp", "20"});
    // As nohup does it.
    const sighandler_t before = ::signal(SIGHUP, SIG_IGN);
    auto process = start(withController("watch", {"--interval", "50", "DINT0:T"}));
    ::signal(SIGHUP, before);
    ASSERT_TRUE(process->hasPrinted(" DINT0:T = ", 3));
    process->signal(SIGHUP);
    EXPECT_TRUE(process->hasPrinted(" DINT0:T = ", 30));
    process->signal(SIGTERM);
    EXPECT_EQ(process->finish().exitCode, 0);
}

TEST_F(CliWatch, AnOutputThatTakesNothingEndsIt) {
    startController({"--tag", "T:DINT=0", "--ramp", "20"});
    for (const QStringList& form : {QStringList(), QStringList("--json")}) {
        int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
        ASSERT_GE(full, 0);
        CliProcess process;
        ASSERT_TRUE(process.start(program(), withController("watch", form + QStringList("DINT0:T")),
                                  environment, QString(), full));
        close(full);
        const CliResult result = process.finish();
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err, QByteArray("micro800: the output could not be written\n"));
    }
}

TEST_F(CliWatch, AReadThatRepeatsEndsWithItsOutput) {
    startController({"--tag", "T:DINT=0"});
    int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    CliProcess process;
    ASSERT_TRUE(process.start(
        program(), withController("read", {"--repeat", "1000000", "--interval", "10", "DINT0:T"}),
        environment, QString(), full));
    close(full);
    EXPECT_EQ(process.finish().exitCode, 1);
}

TEST_F(CliWatch, TellsALossOnceAndTheReturn) {
    startController({"--tag", "T:DINT=7"});
    auto process = start(withController("watch", {"--interval", "50", "--retry", "0", "DINT0:T"}));
    ASSERT_TRUE(process->hasPrinted(" DINT0:T = 7\n"));
    ASSERT_EQ(controller->stop(), 0);
    ASSERT_TRUE(process->hasPrinted("read DINT0:T> Connection refused(111)\n"));
    ASSERT_TRUE(controller->restart()) << controller->error();
    // The value is the one from before, yet it is told again.
    EXPECT_TRUE(process->hasPrinted(" DINT0:T = 7\n", 2));
    process->signal(SIGTERM);
    const CliResult result = process->finish();
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err.count("Connection refused(111)"), 1) << result.err.constData();
}

TEST_F(CliWatch, JsonIsOneObjectAChange) {
    // Twelve rounds last at least half a second, in which the value changes five times.
    startController({"--tag", "T:DINT=0", "--ramp", "100"});
    const CliResult result = runWith("watch", {"--json", "--count", "12", "--interval", "50",
                                               "--retry", "0", "DINT0:T", "DINT0:GONE"});
    EXPECT_EQ(result.exitCode, 1);
    int values = 0;
    int errors = 0;
    int before = -1;
    for (const QByteArray& line : result.out.trimmed().split('\n')) {
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        if (object.value("ok").toBool()) {
            ++values;
            EXPECT_EQ(object.value("address").toString(), QString("DINT0:T"));
            EXPECT_GT(object.value("value").toInt(), before);
            before = object.value("value").toInt();
            const QString source = object.value("source").toString();
            EXPECT_TRUE(source == "cache" || source == "controller") << qPrintable(source);
        } else {
            ++errors;
            EXPECT_EQ(object.value("address").toString(), QString("DINT0:GONE"));
            EXPECT_TRUE(object.value("error").toString().startsWith("read DINT0:GONE> "));
        }
        EXPECT_TRUE(object.value("at").toString().endsWith('Z'));
    }
    EXPECT_GE(values, 3);
    EXPECT_EQ(errors, 1);
}

TEST_F(CliWatch, EndsAfterItsRounds) {
    startController({"--tag", "T:DINT=0"});
    const CliResult result = runWith("watch", {"--count", "3", "--interval", "300", "DINT0:T"});
    EXPECT_EQ(result.exitCode, 0);
    // Three rounds are two pauses.
    const QRegularExpression form("\n(\\d+\\.\\d) s: 0 changes, 0 failed reads; ");
    const double seconds = form.match(result.out).captured(1).toDouble();
    EXPECT_GE(seconds, 0.6) << result.out.constData();
    const CliResult bad =
        runWith("watch", {"--count", "1", "--retry", "0", "--quiet", "DINT0:GONE"});
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_EQ(bad.out, QByteArray());
}

TEST_F(CliWatch, CsvAndHex) {
    startController({"--tag", "T:INT=-2"});
    const CliResult result =
        runWith("watch", {"--csv", "--hex", "--count", "2", "--interval", "10", "INT0:T"});
    const QList<QByteArray> lines = result.out.split('\n');
    ASSERT_EQ(lines.size(), 3) << result.out.constData();
    EXPECT_EQ(lines.at(0), QByteArray("address,type,ok,ms,value,error,at,source"));
    const QRegularExpression form(
        "^INT0:T,INT,true,\\d+\\.\\d{3},0xFFFE,,\\d{4}-.*Z,(cache|controller)$");
    EXPECT_TRUE(form.match(lines.at(1)).hasMatch()) << lines.at(1).constData();
}

TEST_F(CliWatch, AReaderThatGoesAwayEndsIt) {
    startController({"--tag", "T:DINT=0", "--ramp", "5"});
    const CliResult result =
        runAndStopReading(withController("watch", {"--interval", "20", "DINT0:T"}), " DINT0:T = ");
    EXPECT_EQ(result.signal, SIGPIPE);
}

// ---- the table
// --------------------------------------------------------------------------------------

/// What a terminal of type xterm is told to leave the second screen.
const char kLeaveScreen[] = "\x1b[?1049l";
const char kEnterScreen[] = "\x1b[?1049h";

class CliTable : public CliWatch {
 protected:
    void SetUp() override {
        if (!MICRO800_HAS_TABLE) {
            GTEST_SKIP() << "built without the table";
        }
    }
};

TEST_F(CliTable, RefreshesInPlaceAndEndsOnCtrlC) {
    startController(
        {"--tag", "T:DINT=1000", "--tag", "N:STRING=Mixer 3", "--ramp", "50", "--ramp-tag", "T"});
    Terminal terminal(program(),
                      withController("watch", {"--interval", "50", "--retry", "0", "DINT0:T",
                                               "STRING0:N", "DINT0:GONE"}),
                      environment, "xterm");
    ASSERT_TRUE(terminal.shows(kEnterScreen));
    EXPECT_TRUE(terminal.shows("ADDRESS"));
    EXPECT_TRUE(terminal.shows("DINT0:T"));
    EXPECT_TRUE(terminal.shows("\"Mixer 3\""));
    EXPECT_TRUE(terminal.shows("reads/s: cache"));
    EXPECT_TRUE(terminal.shows("last error: read DINT0:GONE> "));
    EXPECT_TRUE(terminal.shows("q or Ctrl-C ends"));
    EXPECT_FALSE(terminal.takeScreen().contains(kLeaveScreen));
    EXPECT_FALSE(terminal.isRestored());
    terminal.press("\x03");
    EXPECT_EQ(terminal.wait(), 0);
    EXPECT_TRUE(terminal.isRestored());
    const QByteArray end = terminal.takeScreen();
    ASSERT_TRUE(end.contains(kLeaveScreen));
    // The last values stay on the user's own screen.
    const QByteArray after = end.mid(end.lastIndexOf(kLeaveScreen));
    EXPECT_TRUE(after.contains("STRING0:N = \"Mixer 3\"")) << after.constData();
    EXPECT_TRUE(after.contains(" changes, "));
}

TEST_F(CliTable, EndsOnQAndOnSigterm) {
    startController({"--tag", "T:DINT=1"});
    Terminal byKey(program(), withController("watch", {"DINT0:T"}), environment, "xterm");
    ASSERT_TRUE(byKey.shows("DINT0:T"));
    byKey.press("q");
    EXPECT_EQ(byKey.wait(), 0);
    EXPECT_TRUE(byKey.isRestored());

    Terminal bySignal(program(), withController("watch", {"DINT0:T"}), environment, "xterm");
    ASSERT_TRUE(bySignal.shows("DINT0:T"));
    bySignal.signal(SIGTERM);
    EXPECT_EQ(bySignal.wait(), 0);
    EXPECT_TRUE(bySignal.isRestored());
}

TEST_F(CliTable, EndsWhenItsTerminalIsGone) {
    startController({"--tag", "T:DINT=1"});
    // A hang-up ends the program; one that it ignores leaves it without anybody to talk to.
    const sighandler_t before = ::signal(SIGHUP, SIG_IGN);
    Terminal terminal(program(), withController("watch", {"DINT0:T"}), environment, "xterm");
    ::signal(SIGHUP, before);
    ASSERT_TRUE(terminal.shows("DINT0:T"));
    terminal.hangUp();
    EXPECT_EQ(terminal.wait(), 1);
}

TEST_F(CliTable, EndsWhileTheControllerIsSilent) {
    startController({"--tag", "T:DINT=1", "--fault", "silence@on=read"});
    Terminal terminal(program(), withController("watch", {"--timeout", "1500", "DINT0:T"}),
                      environment, "xterm");
    ASSERT_TRUE(terminal.shows("no answer in time"));
    terminal.press("\x03");
    EXPECT_EQ(terminal.wait(), 0);
    EXPECT_TRUE(terminal.isRestored());
}

TEST_F(CliTable, FollowsTheTerminalsSize) {
    startController({"--tag", "T:DINT=123456789"});
    Terminal terminal(program(), withController("watch", {"--interval", "50", "DINT0:T"}),
                      environment, "xterm");
    ASSERT_TRUE(terminal.shows("123456789"));
    for (const unsigned short rows : {1, 2, 3, 60}) {
        for (const unsigned short columns : {1, 5, 20, 200}) {
            terminal.takeScreen();
            terminal.resize(rows, columns);
            EXPECT_TRUE(terminal.shows("\x1b"));
        }
    }
    // The last line is at the bottom of the last size.
    EXPECT_TRUE(terminal.shows("\x1b[60"));
    terminal.press("q");
    EXPECT_EQ(terminal.wait(), 0);
}

TEST_F(CliTable, ACutValueShowsThatItIsCut) {
    startController({"--tag", "T:DINT=123456789"});
    Terminal terminal(program(), withController("watch", {"--interval", "50", "DINT0:T"}),
                      environment, "xterm");
    ASSERT_TRUE(terminal.shows("123456789"));
    terminal.resize(24, 20);
    EXPECT_TRUE(terminal.shows("~"));
    terminal.press("q");
    EXPECT_EQ(terminal.wait(), 0);
}

TEST_F(CliTable, ScrollsAListThatIsLongerThanTheScreen) {
    QStringList tags;
    QStringList addresses;
    for (int i = 0; i < 40; ++i) {
        // Only what differs from the row before is drawn anew: this name differs in every
        // character.
        const QString name = i == 19 ? QString("NINETEEN") : QString("TAG%1").arg(i);
        tags << "--tag" << QString("%1:DINT=%2").arg(name).arg(7000 + i);
        addresses << "DINT0:" + name;
    }
    startController(tags);
    Terminal terminal(program(),
                      withController("watch", QStringList{"--interval", "50"} + addresses),
                      environment, "xterm");
    ASSERT_TRUE(terminal.shows("1 to 19 of 40"));
    terminal.press("\x1bOB");  // arrow down
    EXPECT_TRUE(terminal.shows("NINETEEN")) << terminal.takeScreen().constData();
    terminal.press("q");
    EXPECT_EQ(terminal.wait(), 0);
}

TEST_F(CliTable, ATerminalThatIsNotKnownGetsLines) {
    startController({"--tag", "T:DINT=55"});
    Terminal terminal(program(), withController("watch", {"DINT0:T"}), environment, "no-such-one");
    EXPECT_TRUE(terminal.shows(" DINT0:T = 55"));
    terminal.press("\x03");
    EXPECT_EQ(terminal.wait(), 0);
    EXPECT_FALSE(terminal.takeScreen().contains(kEnterScreen));
}

TEST_F(CliTable, ADumbTerminalGetsPlainLines) {
    startController({"--tag", "T:DINT=55"});
    Terminal terminal(program(), withController("watch", {"--duration", "0.3", "DINT0:T"}),
                      environment, "dumb");
    EXPECT_EQ(terminal.wait(), 0);
    const QByteArray screen = terminal.takeScreen();
    EXPECT_TRUE(screen.contains(" DINT0:T = 55")) << screen.constData();
    EXPECT_FALSE(screen.contains("ADDRESS"));
    EXPECT_FALSE(screen.contains("\x1b"));
}

TEST_F(CliTable, PlainAndJsonAndOnceNeverDrawIt) {
    startController({"--tag", "T:DINT=55"});
    for (const char* option : {"--plain", "--json", "--once"}) {
        Terminal terminal(program(),
                          withController("watch", {option, "--duration", "0.3", "DINT0:T"}),
                          environment, "xterm");
        EXPECT_EQ(terminal.wait(), 0) << option;
        const QByteArray screen = terminal.takeScreen();
        EXPECT_TRUE(screen.contains("55")) << option;
        EXPECT_FALSE(screen.contains("\x1b")) << option;
    }
}

}  // namespace
