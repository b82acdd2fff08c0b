// "micro800 plan": what it works out is what the driver does.

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>

#include "integration/cli/cli_program.h"

namespace {

class CliPlan : public CliTest {};

TEST_F(CliPlan, WithoutAControllerItReckons) {
    QByteArray list;
    for (int i = 0; i < 40; ++i) {
        list += "DINT0:T" + QByteArray::number(i) + '\n';
    }
    const CliResult result =
        run({"plan", "--read-ms", "6", "@" + fileWith("list", list), "REAL0:R"});
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.out.contains("Requests per pass    41\n")) << result.out.constData();
    EXPECT_TRUE(result.out.contains("Time of a pass       287.0 ms\n"));
    EXPECT_TRUE(
        result.out.contains("  40 DINT tags                        40 req  280.0 ms  98 %  "
                            "#######################################\n"))
        << result.out.constData();
    EXPECT_TRUE(
        result.out.contains("  move 40 DINT tags into one array of the controller and "
                            "declare it\n    40 requests -> 1, 280.0 ms -> 7.0 ms, "));
    EXPECT_TRUE(result.out.contains("  all of it\n    41 requests -> 2, 287.0 ms -> 14.0 ms, "));
}

TEST_F(CliPlan, AProjectsArraysAndTheirPieces) {
    QTemporaryDir panel;
    ASSERT_EQ(run({"project", panel.path(), "--array", "DINT0:BIG[0..299]"}).exitCode, 0);
    const CliResult alone = run({"plan", "--json", "--project", panel.path()});
    const QJsonObject object = QJsonDocument::fromJson(alone.out).object();
    EXPECT_EQ(object.value("requests").toInt(), 3);
    EXPECT_EQ(object.value("entries").toInt(), 1);
    EXPECT_EQ(object.value("pass_ms").toDouble(), 19);
    EXPECT_EQ(object.value("list_limit").toInt(), 4096);
    EXPECT_TRUE(object.value("polled").toBool());
    const CliResult elements =
        run({"plan", "--json", "--project", panel.path(), "DINT0:BIG[1]", "DINT0:BIG[2]"});
    EXPECT_EQ(QJsonDocument::fromJson(elements.out).object().value("entries").toInt(), 1);
}

TEST_F(CliPlan, Usage) {
    EXPECT_EQ(run({"plan"}).exitCode, 2);
    EXPECT_EQ(run({"plan", "--read-ms", "0", "DINT0:A"}).err.split('\n').first(),
              QByteArray("micro800 plan: --read-ms 0: not a number of milliseconds above 0"));
    EXPECT_EQ(run({"plan", "--read-ms", "1", "--host", "h", "DINT0:A"}).exitCode, 2);
}

TEST_F(CliPlan, ItMeasuresTheController) {
    startController({"--tag", "A:DINT=1", "--tag", "B:INT[0..9]=1", "--delay", "8"});
    const CliResult result = runWith("plan", {"--json", "DINT0:A", "INT0:B[0..9]"});
    EXPECT_EQ(result.exitCode, 0) << result.err.constData();
    const QJsonObject object = QJsonDocument::fromJson(result.out).object();
    EXPECT_GE(object.value("read_ms").toDouble(), 8);
    EXPECT_EQ(object.value("read_source").toString(),
              QString("median of 20 reads through the plugin"));
    EXPECT_EQ(object.value("requests").toInt(), 2);
    EXPECT_EQ(requests("ReadTag"), 21);
    const CliResult gone = runWith("plan", {"--retry", "0", "DINT0:GONE"});
    EXPECT_TRUE(gone.err.startsWith("read DINT0:GONE> ")) << gone.err.constData();
    EXPECT_EQ(gone.exitCode, 1);
}

/// Tags with names so long that the list has exactly as many bytes.
QStringList tagsOfAList(int bytes) {
    const int each = 1 + 40 + 1 + 1;
    QStringList names;
    int left = bytes - 8;
    for (int i = 0; left > 0; ++i) {
        const int length = left >= 2 * each ? 40 : left > each ? left / 2 - 3 : left - 3;
        names << QString("T%1").arg(i, 3, 10, QChar('0')).leftJustified(length, 'X');
        left -= length + 3;
    }
    return names;
}

TEST_F(CliPlan, TheDriverPollsAListOfExactlyTheLimitAndNoLongerOne) {
    for (const int bytes : {4096, 4097}) {
        const QStringList names = tagsOfAList(bytes);
        QStringList tags;
        QStringList addresses;
        for (const QString& name : names) {
            tags << "--tag" << name + ":DINT=1";
            addresses << "DINT0:" + name;
        }
        const CliResult result = run(QStringList{"plan", "--json"} + addresses);
        const QJsonObject object = QJsonDocument::fromJson(result.out).object();
        ASSERT_EQ(object.value("list_bytes").toInt(), bytes);
        const bool polled = bytes <= 4096;
        EXPECT_EQ(object.value("polled").toBool(), polled);
        EXPECT_EQ(result.exitCode, polled ? 0 : 1);
        startController(tags);
        // One round of reads: a tag that is read more often is polled.
        auto process = start(
            withController("watch", QStringList{"--quiet", "--interval", "100000"} + addresses));
        if (polled) {
            EXPECT_TRUE(controller->waitForLog(names.size() * 4, [](const QJsonObject& request) {
                return request.value("service").toString() == "ReadTag";
            }));
            process->signal(SIGTERM);
            EXPECT_EQ(process->finish().exitCode, 0);
        } else {
            EXPECT_EQ(process->finish().exitCode, 2);
        }
    }
}

}  // namespace
