// "micro800 save" and "micro800 restore": set points from one simulated controller to another.

#include <signal.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include "integration/cli/cli_program.h"
#include "integration/cli/terminal.h"

namespace {

QByteArray contentOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

class CliRestore : public CliTest {
 protected:
    QString file() const { return files.filePath("values.json"); }
    void save(const QStringList& addresses) {
        const CliResult result = runWith("save", QStringList{"-o", file()} + addresses);
        ASSERT_EQ(result.exitCode, 0) << result.err.constData();
    }
    CliResult restore(const QStringList& options) {
        return runWith("restore", options + QStringList(file()));
    }
};

// ---- save ---------------------------------------------------------------------------------------

TEST_F(CliRestore, SaveWritesWhatItReadAndFromWhom) {
    startController({"--tag", "D:DINT=-5", "--tag", "G:INT[2..3,0..1]=1,2,3,4", "--tag",
                     "N:STRING[0..1]=a,", "--tag", "R:REAL=0.1"});
    const CliResult result = runWith("save", {"-o", file(), "@" + fileWith("list", "DINT0:D\n"),
                                              "INT0:G[2..3,0..1]", "STRING0:N[0..1]", "REAL0:R"});
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_TRUE(result.out.startsWith(
        file().toUtf8() +
        ": 8 values of 4 addresses from \"2080-LC50-48QWB\" 12.11, serial number "
        "0x6080C0DE, at 127.0.0.1:"))
        << result.out.constData();
    EXPECT_EQ(result.exitCode, 0);
    const QJsonObject saved = QJsonDocument::fromJson(contentOf(file())).object();
    EXPECT_EQ(saved.value("format").toString(), QString("micro800-values/1"));
    EXPECT_TRUE(saved.value("saved").toString().endsWith('Z'));
    EXPECT_EQ(saved.value("controller").toObject().value("serial_number").toString(),
              QString("0x6080C0DE"));
    EXPECT_EQ(
        saved.value("values").toArray(),
        (QJsonArray{
            QJsonObject{{"address", "DINT0:D"}, {"type", "DINT"}, {"value", -5}},
            QJsonObject{{"address", "INT0:G[2..3,0..1]"},
                        {"type", "INT"},
                        {"value", QJsonArray{1, 2, 3, 4}}},
            QJsonObject{
                {"address", "STRING0:N[0..1]"}, {"type", "STRING"}, {"value", QJsonArray{"a", ""}}},
            QJsonObject{{"address", "REAL0:R"}, {"type", "REAL"}, {"value", 0.1}},
        }));
}

TEST_F(CliRestore, SaveOfAProjectTakesItsArrays) {
    startController({"--tag", "A:DINT[0..299]=7", "--tag", "B:INT[1..2]=5,6"});
    QTemporaryDir panel;
    ASSERT_EQ(
        run({"project", panel.path(), "--array", "DINT0:A[0..299]", "--array", "INT0:B[1..2]"})
            .exitCode,
        0);
    const CliResult result = runWith("save", {"-o", file(), "--json", "--project", panel.path()});
    EXPECT_EQ(result.exitCode, 0) << result.err.constData();
    const QJsonObject object = QJsonDocument::fromJson(result.out).object();
    EXPECT_TRUE(object.value("ok").toBool());
    EXPECT_EQ(object.value("addresses").toInt(), 2);
    EXPECT_EQ(object.value("values").toInt(), 302);
    const QJsonArray values =
        QJsonDocument::fromJson(contentOf(file())).object().value("values").toArray();
    EXPECT_EQ(values.at(0).toObject().value("value").toArray().size(), 300);
}

TEST_F(CliRestore, SaveWritesNoPartUnlessItIsTold) {
    startController({"--tag", "A:DINT=1"});
    ASSERT_EQ(fileWith("values.json", "before"), file());
    const QStringList addresses{"--retry", "0", "DINT0:A", "DINT0:GONE"};
    const CliResult result = runWith("save", QStringList{"-o", file()} + addresses);
    EXPECT_TRUE(result.err.contains("read DINT0:GONE> ")) << result.err.constData();
    EXPECT_TRUE(
        result.err.endsWith("is not written: 1 of 2 addresses could not be read; "
                            "--keep-going saves the others\n"));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(contentOf(file()), QByteArray("before"));
    EXPECT_EQ(runWith("save", QStringList{"--keep-going", "-o", file()} + addresses).exitCode, 1);
    const QJsonArray values =
        QJsonDocument::fromJson(contentOf(file())).object().value("values").toArray();
    ASSERT_EQ(values.size(), 2);
    EXPECT_EQ(values.at(0).toObject().value("value").toInt(), 1);
    EXPECT_TRUE(
        values.at(1).toObject().value("problem").toString().startsWith("read DINT0:GONE> "));
    const CliResult restored = restore({"--dry-run"});
    EXPECT_TRUE(restored.err.contains("DINT0:GONE was not saved: read DINT0:GONE> "))
        << restored.err.constData();
    EXPECT_TRUE(restored.out.endsWith("1 values are the same, 0 differ\n"));
    EXPECT_EQ(restored.exitCode, 0);
}

TEST_F(CliRestore, SaveUsage) {
    startController({"--tag", "A:DINT=1"});
    EXPECT_EQ(runWith("save", {"DINT0:A"}).err.split('\n').first(),
              QByteArray("micro800 save: -o FILE is missing"));
    EXPECT_EQ(runWith("save", {"-o", file()}).err.split('\n').first(),
              QByteArray("micro800 save: no address given"));
    EXPECT_EQ(runWith("save", {"-o", "/no/such/folder/f", "DINT0:A"}).exitCode, 1);
    EXPECT_EQ(controller->log().size(), 0);
}

// ---- restore ------------------------------------------------------------------------------------

TEST_F(CliRestore, EveryTypeGetsItsVeryBitsInAnotherController) {
    const QStringList dims{"B:BOOL[0..2]",  "S:SINT[0..2]",   "US:USINT[0..2]",  "I:INT[0..2]",
                           "UI:UINT[0..2]", "D:DINT[0..2]",   "UD:UDINT[0..2]",  "R:REAL[0..5]",
                           "L:LREAL[0..5]", "N:STRING[0..2]", "BIG:DINT[0..999]"};
    const QStringList values{"1,0,1",
                             "-128,127,0",
                             "255,1,0",
                             "-32768,32767,0",
                             "65535,1,0",
                             "-2147483648,2147483647,0",
                             "4294967295,1,0",
                             "0.1,-0,inf,-inf,nan,16777217",
                             "0.1,-0,inf,-inf,nan,9007199254740991",
                             "\"a, b\",x\\xFFy,\\x1B[31m",
                             "1,2,3"};
    QStringList full;
    QStringList empty;
    QStringList addresses;
    for (int i = 0; i < dims.size(); ++i) {
        full << "--tag" << dims.at(i) + '=' + values.at(i);
        empty << "--tag" << dims.at(i);
        const QString type = dims.at(i).section(':', 1).section('[', 0, 0);
        addresses << type + "0:" + dims.at(i).section(':', 0, 0) + '[' + dims.at(i).section('[', 1);
    }
    startController(full);
    save(addresses);
    QList<std::string> before;
    for (const QString& one : dims) {
        before << controller->command("get " + one.section(':', 0, 0));
    }
    startController(empty);
    const CliResult result = restore({"--yes"});
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.out.contains("STRING0:N[0]: \"\" -> \"a, b\"\n")) << result.out.constData();
    for (int i = 0; i < dims.size(); ++i) {
        EXPECT_EQ(controller->command("get " + dims.at(i).section(':', 0, 0)), before.at(i));
    }
    // Only what differed was written, and now nothing does.
    const int writes = requests("WriteTag");
    EXPECT_LE(writes, 20);
    const CliResult again = restore({"--yes"});
    EXPECT_TRUE(again.out.endsWith("1036 values are the same, 0 differ\n"))
        << again.out.constData();
    EXPECT_EQ(again.exitCode, 0);
    EXPECT_EQ(requests("WriteTag"), writes);
}

TEST_F(CliRestore, TheSimulatorPlaysTheFile) {
    startController({"--tag", "B:BOOL[0..1]=1,0", "--tag", "U:UDINT=4294967295", "--tag",
                     "R:REAL[0..4]=0.1,-0,inf,-inf,nan", "--tag", "L:LREAL=-1e-300", "--tag",
                     "N:STRING[0..2]=\"a, b\",,\\x1B\\xFF", "--tag", "G:INT[2..3,0..299]=1,-2,3",
                     "--tag", "D:DINT[0..9]=1,2,3,7,8"});
    save({"BOOL0:B[0..1]", "UDINT0:U", "REAL0:R[0..4]", "LREAL0:L", "STRING0:N[0..2]",
          "INT0:G[2..3,0..299]", "DINT0:D[3]", "DINT0:D[4]"});
    startController({"--tags", file()});
    const CliResult result = restore({"--dry-run"});
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_TRUE(result.out.endsWith("\n614 values are the same, 0 differ\n"))
        << result.out.constData();
    EXPECT_TRUE(contentOf(file()).contains("[0.1,\"-0\",\"inf\",\"-inf\",\"nan\"]"));
    EXPECT_EQ(controller->command("get D[3]"), "ok 7");
}

TEST_F(CliRestore, ADryRunShowsAndWritesNothing) {
    startController({"--tag", "A:DINT=1", "--tag", "G:INT[0..3]=1,2,3,4"});
    save({"DINT0:A", "INT0:G[0..3]"});
    controller->command("set G[2]=-9");
    const CliResult result = restore({"--dry-run"});
    EXPECT_TRUE(result.out.contains("; this is the same controller\n"));
    EXPECT_TRUE(result.out.endsWith("INT0:G[2]: -9 -> 3\n4 values are the same, 1 differ\n"))
        << result.out.constData();
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(requests("WriteTag"), 0);
}

TEST_F(CliRestore, WithoutATerminalNobodyIsAsked) {
    startController({"--tag", "A:DINT=1"});
    save({"DINT0:A"});
    const int before = controller->log().size();
    for (const QStringList& options : {QStringList(), QStringList("--json")}) {
        const CliResult result = restore(options);
        EXPECT_TRUE(result.err.startsWith("micro800 restore: nobody can be asked here"))
            << result.err.constData();
        EXPECT_EQ(result.exitCode, 2);
    }
    EXPECT_EQ(controller->log().size(), before);
}

TEST_F(CliRestore, OnATerminalTheUserDecides) {
    startController({"--tag", "A:DINT=1"});
    save({"DINT0:A"});
    controller->command("set A=5");
    const struct {
        const char* keys;
        int exitCode;
        const char* value;
    } rows[] = {{"n\r", 1, "ok 5"}, {"\r", 1, "ok 5"}, {"\x03", 1, "ok 5"}, {"y\r", 0, "ok 1"}};
    for (const auto& row : rows) {
        Terminal terminal(program(), withController("restore", {file()}), environment, "xterm");
        ASSERT_TRUE(terminal.shows("DINT0:A: 5 -> 1"));
        ASSERT_TRUE(terminal.shows("[y/N]"));
        terminal.press(row.keys);
        EXPECT_EQ(terminal.wait(), row.exitCode) << row.keys;
        EXPECT_EQ(controller->command("get A"), row.value) << row.keys;
    }
}

TEST_F(CliRestore, WhatDidNotTakeIsListed) {
    startController({"--tag", "A:DINT=7", "--tag", "B:DINT=7", "--tag", "C:INT=7"});
    save({"DINT0:A", "DINT0:B", "INT0:C"});
    // Here B returns its ordinal beside what was written, and C has another type.
    startController({"--tag", "A:DINT=0", "--tag", "B:DINT=0", "--tag", "C:DINT=0", "--oracle"});
    const CliResult result = restore({"--yes", "--retry", "0"});
    EXPECT_TRUE(result.err.contains("INT0:C is not compared: ") ||
                result.err.contains("INT0:C did not take: "))
        << result.err.constData();
    EXPECT_TRUE(result.err.contains("DINT0:B did not take: written 7, reads 1048583\n"))
        << result.err.constData();
    EXPECT_TRUE(result.out.contains("1 of ")) << result.out.constData();
    EXPECT_EQ(result.exitCode, 1);
}

TEST_F(CliRestore, ThreeRefusalsOnEndStopItAndTheSameCommandGoesOn) {
    QStringList tags;
    QStringList addresses;
    for (int i = 0; i < 6; ++i) {
        tags << "--tag" << QString("T%1:DINT=%2").arg(i).arg(100 + i);
        addresses << QString("DINT0:T%1").arg(i);
    }
    startController(tags);
    save(addresses);
    for (int i = 0; i < 6; ++i) {
        controller->command(QString("set T%1=0").arg(i));
    }
    controller->command("fault status:0F@2@on=write");
    const CliResult refused = restore({"--yes"});
    EXPECT_TRUE(
        refused.err.endsWith("micro800: stopped before DINT0:T4; 1 of 6 values restored, the "
                             "same command writes the rest\n"))
        << refused.err.constData();
    EXPECT_EQ(refused.err.count(" did not take: write DINT0:T"), 3);
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(requests("WriteTag"), 4);
    controller->command("fault none");
    const CliResult result = restore({"--yes", "--json"});
    const QJsonObject object = QJsonDocument::fromJson(result.out).object();
    EXPECT_TRUE(object.value("ok").toBool());
    EXPECT_EQ(object.value("restored").toInt(), 5);
    EXPECT_EQ(object.value("same").toInt(), 1);
    EXPECT_EQ(object.value("end").toString(), QString("written"));
    EXPECT_EQ(result.exitCode, 0);
}

TEST_F(CliRestore, InterruptedItSaysWhereAndCanBeRunAgain) {
    QStringList tags;
    QStringList addresses;
    for (int i = 0; i < 200; ++i) {
        tags << "--tag" << QString("T%1:DINT=%2").arg(i).arg(1000 + i);
        addresses << QString("DINT0:T%1").arg(i);
    }
    startController(tags);
    save({"@" + fileWith("list", addresses.join('\n').toUtf8())});
    for (int i = 0; i < 200; ++i) {
        controller->command(QString("set T%1=0").arg(i));
    }
    auto process = start(withController("restore", {"--yes", file()}));
    ASSERT_TRUE(controller->waitForLog(
        3, [](const QJsonObject& request) { return request.value("service") == "WriteTag"; }));
    process->signal(SIGINT);
    const CliResult stopped = process->finish();
    EXPECT_EQ(stopped.exitCode, 1);
    EXPECT_TRUE(stopped.err.contains("micro800: stopped before DINT0:T"))
        << stopped.err.constData();
    EXPECT_EQ(restore({"--yes"}).exitCode, 0);
    EXPECT_EQ(controller->command("get T199"), "ok 1199");
}

TEST_F(CliRestore, AFileThatIsNoneSendsNothing) {
    startController({"--tag", "A:DINT=1"});
    for (const char* text : {"", "{}", "{\"format\":\"micro800-values/1\",\"values\":[{}]}"}) {
        const CliResult result = runWith("restore", {"--yes", fileWith("bad", text)});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_TRUE(result.err.startsWith("micro800: " + files.filePath("bad").toUtf8() + ": "))
            << result.err.constData();
    }
    EXPECT_EQ(runWith("restore", {"--yes"}).exitCode, 2);
    EXPECT_EQ(controller->log().size(), 0);
}

}  // namespace
