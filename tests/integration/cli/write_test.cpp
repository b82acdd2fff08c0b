// "micro800 write" against the simulated controller.

#include <QJsonDocument>

#include "integration/cli/cli_program.h"

namespace {

class CliWrite : public CliTest {};

TEST_F(CliWrite, EachTypeArrivesAndReadsBack) {
    startController({"--tag",    "B:BOOL=0",  "--tag",     "S:SINT=0",   "--tag",
                     "I:INT=0",  "--tag",     "D:DINT=0",  "--tag",      "US:USINT=0",
                     "--tag",    "UI:UINT=0", "--tag",     "UD:UDINT=0", "--tag",
                     "R:REAL=0", "--tag",     "L:LREAL=0", "--tag",      "N:STRING=old"});
    const struct {
        const char* address;
        const char* value;
        const char* shown;
    } rows[] = {
        {"BOOL0:B", "true", "true"},
        {"BOOL0:B", "0", "false"},
        {"SINT0:S", "-128", "-128"},
        {"INT0:I", "-20000", "-20000"},
        {"DINT0:D", "42", "42"},
        {"DINT0:D", "-2147483648", "-2147483648"},
        {"USINT0:US", "0xFF", "255"},
        {"UINT0:UI", "65535", "65535"},
        {"UDINT0:UD", "4294967295", "4294967295"},
        {"REAL0:R", "-12.5", "-12.5"},
        {"REAL0:R", "0.1", "0.1"},
        {"LREAL0:L", "-1e-300", "-1e-300"},
        {"STRING0:N", "Mixer \"3\"", "\"Mixer \\\"3\\\"\""},
        {"STRING0:N", "-5", "\"-5\""},
    };
    for (const auto& row : rows) {
        const QByteArray line = QByteArray(row.address) + " = " + row.shown + "\n";
        const CliResult written = runWith("write", {row.address, row.value});
        EXPECT_EQ(written.err, QByteArray());
        EXPECT_EQ(written.out, line);
        EXPECT_EQ(written.exitCode, 0);
        EXPECT_EQ(runWith("read", {row.address}).out, line);
    }
    EXPECT_EQ(requests("WriteTag"), int(sizeof rows / sizeof rows[0]));
}

TEST_F(CliWrite, SeveralValuesGoToSuccessiveElementsInOneRequest) {
    startController({"--tag", "A:INT[0..4]=1,2,3,4,5"});
    const CliResult result = runWith("write", {"--count", "3", "INT0:A[1]", "-20", "30", "-40"});
    EXPECT_EQ(result.out, QByteArray("INT0:A[1] = -20 30 -40\n"));
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(requests("WriteTag"), 1);
    EXPECT_EQ(runWith("read", {"--count", "5", "INT0:A[0]"}).out,
              QByteArray("INT0:A[0] = 1 -20 30 -40 5\n"));
}

TEST_F(CliWrite, AssignmentsGoOutInTheirOrder) {
    startController({"--tag", "D:DINT=0", "--tag", "A:INT[0..3]=0,0,0,0", "--tag", "B:BOOL=0",
                     "--tag", "N:STRING=old", "--tag", "R:REAL=0"});
    const QString file = fileWith("values", "# start\nREAL0:R = -0.5\nSTRING0:N = a, b=c # name\n");
    const CliResult result =
        runWith("write", {"DINT0:D=-5", "INT0:A[1]=1, -2,0x3", "BOOL0:B=on", "@" + file});
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_EQ(result.out, QByteArray("DINT0:D = -5\nINT0:A[1] = 1 -2 3\nBOOL0:B = true\n"
                                     "REAL0:R = -0.5\nSTRING0:N = \"a, b=c\"\n"));
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(controller->command("get A"), "ok 0,1,-2,3");
    EXPECT_EQ(requests("WriteTag"), 5);
    // The present form keeps an equals sign in a value.
    EXPECT_EQ(runWith("write", {"STRING0:N", "x=1"}).out, QByteArray("STRING0:N = \"x=1\"\n"));
}

TEST_F(CliWrite, NothingIsSentBeforeAllAreChecked) {
    startController({"--tag", "D:DINT=0", "--tag", "A:DINT[0..9]=1"});
    QStringList many;
    for (int i = 0; i < 257; ++i) {
        many << "7";
    }
    for (const QString& last : {QString("DINT0:D=x"), "DINT0:A[0]=" + many.join(',')}) {
        const CliResult result = runWith("write", {"DINT0:D=1", last});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.out, QByteArray());
    }
    EXPECT_EQ(controller->log().size(), 0);
}

TEST_F(CliWrite, AfterAFailureTheRestIsNotWritten) {
    startController({"--tag", "A:DINT=0", "--tag", "B:INT=0", "--tag", "C:DINT=0"});
    const CliResult result = runWith("write", {"DINT0:A=1", "DINT0:B=2", "DINT0:C=3", "DINT0:A=4"});
    EXPECT_EQ(result.out, QByteArray("DINT0:A = 1\n"));
    EXPECT_TRUE(result.err.startsWith("write DINT0:B> ")) << result.err.constData();
    EXPECT_TRUE(
        result.err.endsWith("micro800: not written, since the write before failed: "
                            "DINT0:C, DINT0:A\n"))
        << result.err.constData();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(controller->command("get C"), "ok 0");
    const CliResult json = runWith("write", {"--json", "DINT0:B=2", "DINT0:C=3"});
    EXPECT_EQ(json.out.count("\"ok\":false"), 2) << json.out.constData();
}

TEST_F(CliWrite, WhatDoesNotFitIsNotSent) {
    startController({"--tag", "X:DINT=1", "--tag", "B:BOOL=1", "--tag", "A:INT[0..2]=1,2,3"});
    const QStringList lines[] = {
        {"DINT0:X", "5000000000"},   {"BOOL0:B", "maybe"},
        {"INT0:A[0]", "1", "40000"}, {"DINT0:X"},
        {"DINT0:X", "1", "2"},       {"--count", "2", "INT0:A[0]", "1"},
        {"DINT0:X", "1.0"},          {"REAL0:X", "nan"},
        {"STRING0:X", ""},           {"STRING0:X", QString(256, 'x')},
    };
    for (const QStringList& line : lines) {
        const CliResult result = runWith("write", line);
        EXPECT_EQ(result.exitCode, 2) << qPrintable(line.join(' '));
        EXPECT_TRUE(result.err.startsWith("micro800 write: ")) << result.err.constData();
    }
    EXPECT_EQ(controller->log().size(), 0);
}

TEST_F(CliWrite, TwoDashesEndTheOptions) {
    startController({"--tag", "N:STRING=x", "--tag", "D:DINT=1"});
    EXPECT_EQ(runWith("write", {"STRING0:N", "--", "--json"}).out,
              QByteArray("STRING0:N = \"--json\"\n"));
    EXPECT_EQ(runWith("write", {"--", "DINT0:D", "-7"}).out, QByteArray("DINT0:D = -7\n"));
    EXPECT_EQ(controller->command("get D"), "ok -7");
}

TEST_F(CliWrite, ARefusalIsTheDriversText) {
    startController({"--tag", "X:DINT=1"});
    const CliResult result = runWith("write", {"INT0:X", "5"});
    EXPECT_TRUE(result.err.startsWith("write INT0:X> ")) << result.err.constData();
    EXPECT_EQ(result.out, QByteArray());
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(controller->command("get X"), "ok 1");
    EXPECT_EQ(requests("WriteTag"), 1);
}

TEST_F(CliWrite, WithoutAnAnswerItIsNotRepeated) {
    startController({"--tag", "X:DINT=1", "--fault", "silence@on=write"});
    const CliResult result = runWith("write", {"DINT0:X", "5"});
    EXPECT_TRUE(result.err.startsWith("write DINT0:X> no answer in time (waited "))
        << result.err.constData();
    EXPECT_TRUE(result.err.endsWith("the controller may or may not have taken the value\n"));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(requests("WriteTag"), 1);
}

TEST_F(CliWrite, QuietAndJson) {
    startController({"--tag", "A:INT[0..1]=1,2"});
    EXPECT_EQ(runWith("write", {"--quiet", "INT0:A[0]", "3"}).out, QByteArray());
    const QJsonObject object =
        QJsonDocument::fromJson(runWith("write", {"--json", "INT0:A[1]", "-4"}).out).object();
    EXPECT_EQ(object.value("address").toString(), QString("INT0:A[1]"));
    EXPECT_TRUE(object.value("ok").toBool());
    EXPECT_EQ(object.value("value").toInt(), -4);
    EXPECT_EQ(controller->command("get A"), "ok 3,-4");
}

TEST_F(CliWrite, AnElementOfADeclaredArray) {
    startController({"--tag", "R:DINT[1..3,0..1]=1,2,3,4,5,6"});
    QTemporaryDir panel;
    ASSERT_EQ(run({"project", panel.path(), "--array", "DINT0:R[1..3,0..1]"}).exitCode, 0);
    EXPECT_EQ(runWith("write", {"--project", panel.path(), "DINT0:R[2,1]", "99"}).exitCode, 0);
    EXPECT_EQ(runWith("read", {"--project", panel.path(), "DINT0:R[2,1]"}).out,
              QByteArray("DINT0:R[2,1] = 99\n"));
    EXPECT_EQ(controller->command("get R"), "ok 1,2,3,99,5,6");
}

}  // namespace
