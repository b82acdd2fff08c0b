// "micro800 record", --record and "micro800 info --host", with the real plugin file.

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>

#include "integration/cli/cli_program.h"

namespace {

class CliRecord : public CliTest {
 protected:
    QString folder() const { return dir.filePath("record"); }
    QTemporaryDir dir;
};

TEST_F(CliRecord, TellsWhatAFolderHolds) {
    startController({"--tag", "COUNTER:DINT=42", "--fault", "silence@2x1"});
    const CliResult read = runWith("read", {"--record", folder(), "--timeout", "300", "--retry",
                                            "0", "DINT0:COUNTER", "DINT0:COUNTER"});
    EXPECT_EQ(1, read.exitCode);
    const CliResult result = run({"record", folder()});
    EXPECT_EQ(QByteArray(), result.err);
    EXPECT_EQ(0, result.exitCode);
    // The time-out, and what a loaded machine adds to it.
    const QRegularExpressionMatch wait =
        QRegularExpression("no answer for (\\d+)").match(QString::fromUtf8(result.out));
    EXPECT_GE(wait.captured(1).toInt(), 300) << result.out.constData();
    for (const char* text :
         {"-connection-lost.pcapng\n  when    20",
          "\n  why     the connection was lost: Internal: receive timeout\n",
          "\n  last    Read Tag COUNTER, no answer for ", "\n  before  3 answers, half of them ",
          "\n  good    the last good answer at ", ", COUNTER\n"}) {
        EXPECT_TRUE(result.out.contains(text)) << text << " in\n" << result.out.constData();
    }
}

TEST_F(CliRecord, ShowsAFileAsATimeLine) {
    startController({"--tag", "COUNTER:DINT=42"});
    EXPECT_EQ(1, runWith("read", {"--record", folder(), "DINT0:NOPE"}).exitCode);
    const QStringList names = QDir(folder()).entryList({"*-error-text.pcapng"});
    ASSERT_EQ(1, names.size());
    const QString file = folder() + '/' + names.first();
    const CliResult result = run({"record", file});
    EXPECT_EQ(0, result.exitCode);
    for (const char* text :
         {" * read asked: DINT0:NOPE\n", " > RegisterSession\n", " < RegisterSession good\n",
          " < Forward Open good\n", " > Read Tag NOPE\n", " < Read Tag refused with status 05\n",
          " * error text: read DINT0:NOPE> AB error: 0005H\n"}) {
        EXPECT_TRUE(result.out.contains(text)) << text << " in\n" << result.out.constData();
    }
    const CliResult json = run({"record", "--json", file});
    const QList<QByteArray> lines = json.out.trimmed().split('\n');
    const QJsonObject first = QJsonDocument::fromJson(lines.first()).object();
    EXPECT_EQ(QString("event"), first.value("kind").toString());
    EXPECT_EQ(QString("read asked: DINT0:NOPE"), first.value("text").toString());
    const QJsonObject story =
        QJsonDocument::fromJson(run({"record", "--json", folder()}).out.split('\n').first())
            .object();
    EXPECT_EQ(QString("NOPE"), story.value("tag").toString());
    EXPECT_EQ(file, story.value("file").toString());
}

TEST_F(CliRecord, NothingToShow) {
    CliResult result = run({"record", dir.path()});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("micro800: " + dir.path().toLocal8Bit() + ": no recordings\n", result.err);
    result = run({"record", dir.filePath("missing.pcapng")});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_TRUE(result.err.contains("No such file or directory")) << result.err.constData();
    EXPECT_EQ(2, run({"record"}).exitCode);
}

TEST_F(CliRecord, AFileThatIsNone) {
    QFile file(dir.filePath("a.pcapng"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("no recording at all, though it is long enough");
    file.close();
    const CliResult result = run({"record", dir.path()});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("micro800: " + file.fileName().toLocal8Bit() + ": it is not a recording\n",
              result.err);
}

TEST_F(CliRecord, InfoCountsForAWhile) {
    startController({"--tag", "COUNTER:DINT=42", "--delay", "2"});
    const CliResult result = runWith("info", {"--for", "1s", "--json", "DINT0:COUNTER"});
    EXPECT_EQ(0, result.exitCode) << result.err.constData();
    const QJsonObject object = QJsonDocument::fromJson(result.out).object();
    EXPECT_GE(object.value("requests").toInt(), 50);
    EXPECT_EQ(1, object.value("connects").toInt());
    EXPECT_GE(object.value("passes").toObject().value("count").toInt(), 50);
    EXPECT_GE(object.value("answers_by_status").toObject().value("00").toInt(), 50);
}

TEST_F(CliRecord, InfoOfAControllerThatIsNotThere) {
    const CliResult result =
        run({"info", "--host", "127.0.0.1", "--port", "1", "--for", "1", "DINT0:A"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_TRUE(result.out.contains("Answers              0\n")) << result.out.constData();
    EXPECT_EQ(2, run({"info", "--host", "127.0.0.1", "--for", "0"}).exitCode);
    EXPECT_EQ(2, run({"info", "--host", "127.0.0.1", "--for", "soon"}).exitCode);
}

}  // namespace
