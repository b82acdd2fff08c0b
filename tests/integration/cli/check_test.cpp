// "micro800 check" against the simulated controller.

#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <csignal>

#include "integration/cli/cli_program.h"

namespace {

class CliCheck : public CliTest {
 protected:
    void startPlant(const QStringList& more = QStringList()) {
        startController(QStringList{"--tag", "COUNTER:DINT=42", "--tag", "LEVEL:REAL=1.5", "--tag",
                                    "RECIPE:DINT[0..9]", "--tag", "GRID:INT[0..1,0..4]"} +
                        more);
    }
    /// Lines of the output without the time of a read.
    QStringList verdicts(const CliResult& result) const {
        QStringList lines = QString::fromUtf8(result.out).split('\n');
        lines.removeLast();
        return lines.replaceInStrings(QRegularExpression("[0-9.]+ (ms|s)\\b"), "T");
    }
};

TEST_F(CliCheck, OneVerdictALine) {
    startPlant();
    const CliResult result = runWith("check", {"DINT0:COUNTER", "DINT0:LEVEL", "DINT0:NOPE",
                                               "DINT0:RECIPE[0..9]", "DINT0:RECIPE[0..19]"});
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_EQ(verdicts(result),
              QStringList({
                  "DINT0:COUNTER  ok: 1 request, T",
                  "DINT0:LEVEL  wrong type: the controller has REAL; write REAL0:LEVEL",
                  "DINT0:NOPE  missing: the controller has no global variable of that name",
                  "DINT0:RECIPE[0..9]  ok: 1 request, T",
                  "DINT0:RECIPE[0..19]  too long: the controller's array ends at [9]; declare "
                  "DINT0:RECIPE[0..9]",
                  "5 addresses: 2 ok, 1 too long, 1 wrong type, 1 missing; 14 requests in T, a "
                  "read T (median), T (p99)",
              }));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(requests("ReadTag"), 14);
}

TEST_F(CliCheck, WhatIsInOrderTakesOneRequestEachOverOneConnection) {
    startPlant();
    const CliResult result =
        runWith("check", {"DINT0:COUNTER", "REAL0:LEVEL", "DINT0:RECIPE[3]", "INT0:GRID[1,4]"});
    EXPECT_EQ(result.exitCode, 0) << result.out.constData();
    EXPECT_EQ(requests("ReadTag"), 4);
    EXPECT_EQ(requests("ForwardOpen"), 1);
    EXPECT_EQ(requests("ForwardClose"), 1);
    EXPECT_EQ(requests("WriteTag"), 0);
}

TEST_F(CliCheck, WorstFirst) {
    startPlant();
    const CliResult result = runWith(
        "check", {"--sort", "DINT0:COUNTER", "DINT0:RECIPE[0..3]", "INT0:LEVEL", "DINT0:NOPE"});
    QStringList addresses;
    for (const QString& line : verdicts(result)) {
        addresses << line.section(' ', 0, 0);
    }
    EXPECT_EQ(addresses, QStringList({"DINT0:NOPE", "INT0:LEVEL", "DINT0:RECIPE[0..3]",
                                      "DINT0:COUNTER", "4"}));
}

TEST_F(CliCheck, AddressesFromAFile) {
    startPlant();
    QTemporaryDir dir;
    QFile file(dir.filePath("panel.txt"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("# the panel's\nDINT0:COUNTER\n\nDINT0:LEVEL  # a comment\n");
    file.close();
    const CliResult result = runWith("check", {"--json", "@" + file.fileName()});
    const QList<QByteArray> lines = result.out.split('\n');
    ASSERT_EQ(lines.size(), 4);
    const QJsonObject good = QJsonDocument::fromJson(lines.at(0)).object();
    EXPECT_EQ(good.value("address").toString(), QString("DINT0:COUNTER"));
    EXPECT_EQ(good.value("verdict").toString(), QString("ok"));
    EXPECT_TRUE(good.value("ok").toBool());
    EXPECT_EQ(good.value("read_requests").toInt(), 1);
    EXPECT_GT(good.value("ms").toDouble(), 0);
    const QJsonObject bad = QJsonDocument::fromJson(lines.at(1)).object();
    EXPECT_EQ(bad.value("verdict").toString(), QString("wrong_type"));
    EXPECT_EQ(bad.value("controller_type").toString(), QString("REAL"));
    EXPECT_EQ(bad.value("place").toString(), file.fileName() + ":4");
    const QJsonObject summary =
        QJsonDocument::fromJson(lines.at(2)).object().value("summary").toObject();
    EXPECT_EQ(summary.value("addresses").toInt(), 2);
    EXPECT_EQ(summary.value("wrong_type").toInt(), 1);
    EXPECT_EQ(summary.value("requests").toInt(), 2);
    EXPECT_EQ(result.exitCode, 1);
}

TEST_F(CliCheck, TheArraysOfAProject) {
    startPlant();
    QTemporaryDir dir;
    ASSERT_EQ(run({"project", dir.path(), "--array", "DINT0:RECIPE[0..9]", "--array",
                   "INT0:GRID[0..1,0..3]"})
                  .exitCode,
              0);
    const CliResult result = runWith("check", {"--project", dir.path()});
    EXPECT_EQ(verdicts(result).mid(0, 2),
              QStringList({"DINT0:RECIPE[0..9]  ok: 1 request, T",
                           "INT0:GRID[0..1,0..3]  too short: the controller has GRID[0,4] as well; "
                           "declare the bounds that it has, or the panel shows other elements"}));
    const CliResult element = runWith("check", {"--project", dir.path(), "INT0:GRID[0,4]"});
    EXPECT_EQ(verdicts(element).first(),
              QString("INT0:GRID[0,4]  no element: the project declares INT0:GRID[0..1,0..3], and "
                      "the panel would read something else"));
}

TEST_F(CliCheck, AnArrayInPieces) {
    startPlant({"--tag", "LONG:DINT[0..299]", "--connection-size", "504"});
    const CliResult result = runWith("check", {"DINT0:LONG[0..299]"});
    EXPECT_EQ(verdicts(result).first(), QString("DINT0:LONG[0..299]  ok: 3 requests, T"));
    const CliResult shown = runWith("check", {"--verbose", "DINT0:LONG[0..299]"});
    EXPECT_TRUE(shown.err.contains("52                       Read Tag Fragmented\n"));
    EXPECT_TRUE(shown.err.contains("byte offset              f0 01 00 00              496\n"));
}

TEST_F(CliCheck, OlderFirmwareSaysMissingInAnotherWay) {
    startPlant({"--unknown-tag-status", "04"});
    EXPECT_EQ(verdicts(runWith("check", {"DINT0:NOPE"})).first(),
              QString("DINT0:NOPE  missing: the controller has no global variable of that name"));
}

TEST_F(CliCheck, GoesOnAfterAnAddressWithoutAnAnswer) {
    startPlant({"--fault", "silence@tag=LEVEL"});
    const CliResult result = runWith("check", {"--timeout", "300", "REAL0:LEVEL", "DINT0:COUNTER"});
    EXPECT_EQ(verdicts(result).mid(0, 2),
              QStringList({"REAL0:LEVEL  no answer: Internal: receive timeout",
                           "DINT0:COUNTER  ok: 1 request, T"}));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(requests("ForwardOpen"), 2);
}

TEST_F(CliCheck, AControllerThatGoesAway) {
    startPlant({"--fault", "cut:0@tag=LEVEL", "--fault", "refuse-open:0113@2"});
    const CliResult result =
        runWith("check", {"--timeout", "300", "DINT0:COUNTER", "REAL0:LEVEL", "DINT0:RECIPE[0]"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains(" opens no connection: MR error: 0001H, 0113H; "))
        << result.err.constData();
    EXPECT_TRUE(verdicts(result).last().startsWith(
        "3 addresses: 1 ok, 1 no answer, 1 not checked; 2 requests in "))
        << result.out.constData();
}

TEST_F(CliCheck, NobodyListens) {
    startPlant();
    const QStringList arguments = withController("check", {"DINT0:COUNTER"});
    ASSERT_EQ(controller->stop(), 0);
    const CliResult result = run(arguments);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains(": Connection refused(111); check address, port and cable"))
        << result.err.constData();
}

TEST_F(CliCheck, CtrlCEndsItWithTheSummary) {
    startPlant({"--delay", "20"});
    QStringList many;
    for (int i = 0; i < 2000; ++i) {
        many << "DINT0:COUNTER";
    }
    auto process = start(withController("check", {"--json"}) + many);
    ASSERT_TRUE(controller->waitForLog(3, [](const QJsonObject& request) {
        return request.value("service").toString() == QString("ReadTag");
    }));
    process->signal(SIGINT);
    const CliResult result = process->finish();
    EXPECT_EQ(result.exitCode, 1);
    const QByteArray last = result.out.trimmed().split('\n').last();
    const QJsonObject summary = QJsonDocument::fromJson(last).object().value("summary").toObject();
    EXPECT_GE(summary.value("ok").toInt(), 2);
    EXPECT_EQ(summary.value("ok").toInt() + summary.value("not_checked").toInt(), 2000);
    EXPECT_EQ(requests("ForwardClose"), 1);
}

TEST_F(CliCheck, VerboseShowsTheRequests) {
    startPlant();
    const CliResult result = runWith("check", {"--verbose", "DINT0:COUNTER"});
    EXPECT_TRUE(result.err.contains("91 07 43 4f 55 4e 54 45  COUNTER\n"))
        << result.err.constData();
    EXPECT_TRUE(result.err.contains("data type                c4 00                    DINT\n"));
}

TEST_F(CliCheck, WrongUsageSendsNothing) {
    startPlant();
    EXPECT_EQ(runWith("check", {}).exitCode, 2);
    EXPECT_EQ(runWith("check", {"COUNTER"}).exitCode, 2);
    EXPECT_EQ(runWith("check", {"DINT0:COUNTER", "DINT0:A[9..0]"}).exitCode, 2);
    EXPECT_EQ(controller->log().size(), 0);
}

}  // namespace
