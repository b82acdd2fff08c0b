// "micro800 read" against the simulated controller.

#include <fcntl.h>
#include <unistd.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include "integration/cli/cli_program.h"

namespace {

class CliRead : public CliTest {};

TEST_F(CliRead, OneLineAnAddress) {
    startController({"--tag", "B:BOOL=1",
                     "--tag", "S:SINT=-5",
                     "--tag", "I:INT=-1234",
                     "--tag", "D:DINT=42",
                     "--tag", "US:USINT=200",
                     "--tag", "UI:UINT=50000",
                     "--tag", "UD:UDINT=4000000000",
                     "--tag", "R:REAL=21.5",
                     "--tag", "L:LREAL=0.1",
                     "--tag", "N:STRING=Mixer 3",
                     "--tag", "GRID:INT[0..2,0..3]=0,1,2,3,10,11"});
    const CliResult result = runWith(
        "read", {"BOOL0:B", "SINT0:S", "INT0:I", "DINT0:D", "USINT0:US", "UINT0:UI", "UDINT0:UD",
                 "REAL0:R", "LREAL0:L", "STRING0:N", "INT0:GRID[1,1]", "DINT0:d"});
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_EQ(result.out, QByteArray("BOOL0:B = true\n"
                                     "SINT0:S = -5\n"
                                     "INT0:I = -1234\n"
                                     "DINT0:D = 42\n"
                                     "USINT0:US = 200\n"
                                     "UINT0:UI = 50000\n"
                                     "UDINT0:UD = 4000000000\n"
                                     "REAL0:R = 21.5\n"
                                     "LREAL0:L = 0.1\n"
                                     "STRING0:N = \"Mixer 3\"\n"
                                     "INT0:GRID[1,1] = 11\n"
                                     "DINT0:d = 42\n"));
    EXPECT_EQ(result.exitCode, 0);
}

TEST_F(CliRead, TrueIsAnyByteOfTheController) {
    startController({"--tag", "B:BOOL[0..1]=1,0", "--bool-true", "FF"});
    EXPECT_EQ(runWith("read", {"BOOL0:B[0]", "BOOL0:B[1]"}).out,
              QByteArray("BOOL0:B[0] = true\nBOOL0:B[1] = false\n"));
}

TEST_F(CliRead, SeveralElementsStandSideBySide) {
    startController(
        {"--tag", "A:INT[0..3]=10,-20,30,40", "--tag", "F:BOOL[0..9]=1,0,1,1,0,0,0,1,1,1"});
    EXPECT_EQ(runWith("read", {"--count", "3", "INT0:A[1]"}).out,
              QByteArray("INT0:A[1] = -20 30 40\n"));
    // More than one byte of bits: each element is a byte of its own.
    EXPECT_EQ(runWith("read", {"--count", "10", "BOOL0:F[0]"}).out,
              QByteArray("BOOL0:F[0] = true false true true false false false true true true\n"));
}

TEST_F(CliRead, EmptyStringsAndLongOnes) {
    startController({"--tag", "E:STRING=", "--tag", "L:STRING=" + QString(80, 'x')});
    EXPECT_EQ(runWith("read", {"STRING0:E", "STRING0:L"}).out,
              "STRING0:E = \"\"\nSTRING0:L = \"" + QByteArray(80, 'x') + "\"\n");
}

TEST_F(CliRead, AFailureIsTheDriversTextAndTheOthersAreRead) {
    startController({"--tag", "A:DINT=1", "--tag", "B:DINT=2"});
    const CliResult result =
        runWith("read", {"--retry", "0", "DINT0:A", "DINT0:NO_SUCH_TAG", "DINT0:B"});
    EXPECT_EQ(result.out, QByteArray("DINT0:A = 1\nDINT0:B = 2\n"));
    EXPECT_TRUE(result.err.startsWith("read DINT0:NO_SUCH_TAG> ")) << result.err.constData();
    EXPECT_EQ(result.err.count('\n'), 1);
    EXPECT_GT(result.err.size(), int(sizeof "read DINT0:NO_SUCH_TAG> "));
    EXPECT_EQ(result.exitCode, 1);
}

TEST_F(CliRead, RetriesAsOftenAsItIsTold) {
    startController({"--tag", "A:DINT=1"});
    runWith("read", {"--retry", "2", "DINT0:NO_SUCH_TAG"});
    EXPECT_EQ(requests("ReadTag"), 3);
}

TEST_F(CliRead, JsonIsOneObjectARead) {
    startController({"--tag", "A:DINT=7", "--tag", "R:REAL[0..1]=0.1,0.2"});
    const CliResult result =
        runWith("read", {"--json", "--retry", "0", "--count", "1", "DINT0:A", "DINT0:GONE"});
    EXPECT_EQ(result.exitCode, 1);
    const QList<QByteArray> lines = result.out.split('\n');
    ASSERT_EQ(lines.size(), 3);
    const QJsonObject good = QJsonDocument::fromJson(lines.at(0)).object();
    EXPECT_EQ(good.value("address").toString(), QString("DINT0:A"));
    EXPECT_EQ(good.value("type").toString(), QString("DINT"));
    EXPECT_TRUE(good.value("ok").toBool());
    EXPECT_EQ(good.value("value").toInt(-1), 7);
    EXPECT_GT(good.value("ms").toDouble(), 0);
    const QJsonObject bad = QJsonDocument::fromJson(lines.at(1)).object();
    EXPECT_FALSE(bad.value("ok").toBool(true));
    EXPECT_EQ(bad.value("error").toString().toUtf8() + '\n', result.err);
    EXPECT_FALSE(bad.contains("value"));

    const CliResult several = runWith("read", {"--json", "--count", "2", "REAL0:R[0]"});
    EXPECT_EQ(QJsonDocument::fromJson(several.out).object().value("values").toArray(),
              (QJsonArray{0.1, 0.2}));
}

TEST_F(CliRead, RepeatsAndSeesTheValueMove) {
    startController({"--tag", "T:DINT=0", "--ramp", "5"});
    const CliResult result = runWith("read", {"--repeat", "4", "--interval", "100", "DINT0:T"});
    const QList<QByteArray> lines = result.out.trimmed().split('\n');
    ASSERT_EQ(lines.size(), 5);
    EXPECT_NE(lines.at(0), lines.at(3));
    const QRegularExpression form(
        "^4 reads, 0 failures; median (\\d+\\.\\d{3}) ms, p99 (\\d+\\.\\d{3}) ms$");
    const QRegularExpressionMatch match = form.match(lines.last());
    ASSERT_TRUE(match.hasMatch()) << lines.last().constData();
    EXPECT_LE(match.captured(1).toDouble(), match.captured(2).toDouble());
    EXPECT_GT(match.captured(1).toDouble(), 0);
    EXPECT_EQ(result.exitCode, 0);
}

TEST_F(CliRead, CsvAndHex) {
    startController({"--tag", "A:INT=-2", "--tag", "N:STRING=\"a, b\""});
    const CliResult result =
        runWith("read", {"--csv", "--hex", "--retry", "0", "INT0:A", "STRING0:N", "DINT0:GONE"});
    const QList<QByteArray> lines = result.out.split('\n');
    ASSERT_EQ(lines.size(), 5);
    EXPECT_EQ(lines.at(0), QByteArray("address,type,ok,ms,value,error"));
    EXPECT_TRUE(lines.at(1).startsWith("INT0:A,INT,true,")) << lines.at(1).constData();
    EXPECT_TRUE(lines.at(1).endsWith(",0xFFFE,"));
    EXPECT_TRUE(lines.at(2).endsWith(",\"a, b\","));
    EXPECT_TRUE(lines.at(3).startsWith("DINT0:GONE,DINT,false,"));
    EXPECT_TRUE(lines.at(3).contains(",,read DINT0:GONE> "));
    EXPECT_EQ(result.exitCode, 1);
}

TEST_F(CliRead, QuietPrintsErrorsOnly) {
    startController({"--tag", "A:INT=-2"});
    const CliResult result = runWith("read", {"--quiet", "--retry", "0", "--repeat", "2",
                                              "--interval", "0", "INT0:A", "DINT0:GONE"});
    EXPECT_EQ(result.out, QByteArray());
    EXPECT_EQ(result.err.count("read DINT0:GONE> "), 2);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(runWith("read", {"--quiet", "INT0:A"}).exitCode, 0);
}

TEST_F(CliRead, AControllerThatIsNotThere) {
    startController({"--tag", "A:DINT=1"});
    const QStringList arguments = withController("read", {"DINT0:A"});
    ASSERT_EQ(controller->stop(), 0);
    const CliResult result = run(arguments);
    EXPECT_EQ(result.err, QByteArray("read DINT0:A> Connection refused(111)\n"));
    EXPECT_EQ(result.out, QByteArray());
    EXPECT_EQ(result.exitCode, 1);
}

TEST_F(CliRead, AControllerThatDoesNotAnswer) {
    startController({"--tag", "A:DINT=1", "--fault", "silence@on=read"});
    const CliResult result = runWith("read", {"--timeout", "3000", "DINT0:A"});
    EXPECT_TRUE(result.err.startsWith("read DINT0:A> no answer in time (waited "))
        << result.err.constData();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(requests("ReadTag"), 1);
}

TEST_F(CliRead, TheHostOfTheEnvironment) {
    startController({"--tag", "A:DINT=7"});
    environment.insert("MICRO800_HOST", "127.0.0.1");
    const QStringList port{"--port", QString::number(controller->port())};
    EXPECT_EQ(run(QStringList{"read", "DINT0:A"} + port).out, QByteArray("DINT0:A = 7\n"));
    EXPECT_EQ(run(QStringList{"identify"} + port).exitCode, 0);
    // The one of the command line comes first.
    environment.insert("MICRO800_HOST", "not a host");
    EXPECT_EQ(runWith("read", {"DINT0:A"}).out, QByteArray("DINT0:A = 7\n"));
}

TEST_F(CliRead, WrongUsageSendsNothing) {
    startController({"--tag", "A:DINT=1"});
    for (const char* address : {"A", "DINT:A", "dint0:A", "WORD0:A", "DINT0:A[1].B"}) {
        const CliResult result = runWith("read", {"DINT0:A", address});
        EXPECT_EQ(result.exitCode, 2) << address;
        EXPECT_TRUE(result.err.startsWith("micro800 read: ")) << result.err.constData();
        EXPECT_EQ(result.out, QByteArray());
    }
    EXPECT_EQ(controller->log().size(), 0);
}

TEST_F(CliRead, MoreThanTheDriversBlockIsWrongUsage) {
    startController({"--tag", "A:DINT[0..1]=1,2"});
    const CliResult result = runWith("read", {"--count", "257", "DINT0:A[0]"});
    EXPECT_EQ(result.err.split('\n').first(),
              QByteArray("micro800 read: DINT0:A[0]: 1028 bytes asked for, the driver takes at "
                         "most 1024 at a time"));
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(controller->log().size(), 0);
}

TEST_F(CliRead, OutputThatCannotBeWrittenIsAFailure) {
    startController({"--tag", "A:DINT=1"});
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    CliProcess process;
    ASSERT_TRUE(process.start(program(), withController("read", {"DINT0:A"}), environment,
                              QString(), full));
    close(full);
    const CliResult result = process.finish();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, QByteArray("micro800: the output could not be written\n"));
}

/// Every run gives its connection back: this controller has four, and keeps what nobody closes. A
/// run that a slow machine did not let have its answer in time does so too.
TEST_F(CliRead, HundredRunsUseUpNoConnection) {
    startController({"--tag", "D:DINT=42", "--connections", "4", "--keep-connections"});
    int slow = 0;
    for (int i = 0; i < 100; ++i) {
        const CliResult result = runWith("read", {"DINT0:D"});
        if (result.err.contains("no answer in time") && slow < 50) {
            ++slow;
            continue;
        }
        ASSERT_EQ(result.exitCode, 0) << i << ": " << result.err.constData();
        ASSERT_EQ(result.out, QByteArray("DINT0:D = 42\n"));
    }
}

}  // namespace
