// "micro800 doctor" against simulated controllers that break at one rung after the other.

#include <QJsonDocument>
#include <QProcess>

#include "integration/cli/cli_program.h"

namespace {

class CliDoctor : public CliTest {
 protected:
    void startPlant(const QStringList& more = QStringList()) {
        startController(QStringList{"--tag", "COUNTER:DINT=42", "--tag", "LEVEL:REAL=1.5"} + more);
    }
    /// Runs it to its end with few reads; the steps as it prints them with --json.
    QList<QJsonObject> steps(const QStringList& arguments = QStringList(), int exitCode = 1) {
        const CliResult result = runWith(
            "doctor", QStringList{"--json", "--reads", "5", "--timeout", "300"} + arguments);
        EXPECT_EQ(result.exitCode, exitCode) << result.out.constData() << result.err.constData();
        QList<QJsonObject> objects;
        for (const QByteArray& line : result.out.trimmed().split('\n')) {
            objects << QJsonDocument::fromJson(line).object();
        }
        return objects;
    }
    /// All steps but the last are good, and the last is this one with this text and advice.
    void expectBreak(const QList<QJsonObject>& steps, const char* name, const QString& text,
                     const QString& means) {
        for (const QJsonObject& step : steps.mid(0, steps.size() - 1)) {
            EXPECT_TRUE(step.value("ok").toBool()) << qPrintable(step.value("text").toString());
        }
        const QJsonObject last = steps.last();
        EXPECT_FALSE(last.value("ok").toBool(true));
        EXPECT_EQ(last.value("step").toString(), QString(name));
        EXPECT_TRUE(last.value("text").toString().startsWith(text))
            << qPrintable(last.value("text").toString());
        EXPECT_TRUE(last.value("means").toString().contains(means))
            << qPrintable(last.value("means").toString());
        EXPECT_FALSE(last.value("check").toString().isEmpty());
    }
};

TEST_F(CliDoctor, EveryStepIsGood) {
    startPlant();
    const CliResult result = runWith("doctor", {"REAL0:LEVEL"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, QByteArray());
    const QStringList lines = QString::fromUtf8(result.out).split('\n');
    ASSERT_EQ(lines.size(), 9);
    const QString tick = QString(QChar(0x2714)) + ' ';
    EXPECT_EQ(lines.at(0), tick + "name          127.0.0.1 is an address");
    EXPECT_EQ(lines.at(1), tick + "route         from this computer's 127.0.0.1");
    EXPECT_EQ(lines.at(3), tick +
                               "identity      \"2080-LC50-48QWB\", firmware 12.11, serial "
                               "0x6080C0DE, operational, status 0x0034 (configured, no I/O "
                               "connections)");
    EXPECT_EQ(lines.at(6), tick + "tag           REAL0:LEVEL is read, a REAL");
    EXPECT_TRUE(lines.at(7).startsWith(tick + "reads         100 reads: median "));
    EXPECT_TRUE(lines.at(7).endsWith(", loss 0 %"));
    EXPECT_EQ(requests("ReadTag"), 101);
    EXPECT_EQ(requests("WriteTag"), 0);
    EXPECT_EQ(requests("ForwardClose"), 1);
}

TEST_F(CliDoctor, WithoutAnAddressItTakesOneOfTheControllers) {
    startPlant();
    QList<QJsonObject> all = steps({}, 0);
    ASSERT_EQ(all.size(), 8);
    EXPECT_EQ(all.at(6).value("text").toString(), QString("DINT0:COUNTER is read, a DINT"));
    EXPECT_EQ(all.at(7).value("reads").toInt(), 5);
    EXPECT_EQ(all.at(7).value("lost").toInt(), 0);
    EXPECT_GT(all.at(7).value("median_ms").toDouble(), 0);
    startPlant({"--tag-list", "none"});
    all = steps({}, 0);
    ASSERT_EQ(all.size(), 8);
    EXPECT_TRUE(all.at(6).value("ok").isNull());
    EXPECT_TRUE(all.at(7).value("ok").isNull());
}

TEST_F(CliDoctor, Name) {
    startPlant();
    const CliResult result = run({"doctor", "--host", QString(70, 'a'), "--json"});
    EXPECT_EQ(result.exitCode, 1);
    expectBreak({QJsonDocument::fromJson(result.out).object()}, "name",
                "host " + QString(70, 'a') + " is unknown: ", "knows no such name");
}

/// In a network of the test's own, where nothing is.
TEST_F(CliDoctor, Route) {
    if (environment.contains("MICRO800_EMULATOR")) {
        GTEST_SKIP() << "the shell of this machine starts no program of another";
    }
    QProcess network;
    network.setProcessEnvironment(environment);
    network.start("unshare", QStringList{"--map-root-user", "--net", program(), "doctor", "--json",
                                         "--host", "192.0.2.1"});
    ASSERT_TRUE(network.waitForFinished(kCliWaitMs));
    const QByteArray errors = network.readAllStandardError();
    if (errors.startsWith("unshare: ")) {
        GTEST_SKIP() << "no network of its own for this test: " << errors.constData();
    }
    EXPECT_EQ(network.exitCode(), 1);
    const QList<QByteArray> lines = network.readAllStandardOutput().trimmed().split('\n');
    ASSERT_EQ(lines.size(), 2);
    expectBreak({QJsonDocument::fromJson(lines.last()).object()}, "route",
                "Network is unreachable(101)", "no route to that network");
}

TEST_F(CliDoctor, Tcp) {
    startPlant();
    const QString port = QString::number(controller->port());
    ASSERT_EQ(controller->stop(), 0);
    const CliResult result = run({"doctor", "--host", "127.0.0.1:" + port});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(
        QString::fromUtf8(result.out)
            .endsWith(
                QString(QChar(0x2718)) +
                " TCP           Connection refused(111)\n"
                "                Means: A device is there and has nothing on this port.\n"
                "                Check: Port (44818); is it the controller's address? Is the\n"
                "                controller's Ethernet set up?\n"))
        << result.out.constData();
}

TEST_F(CliDoctor, EveryRungOfTheController) {
    const struct {
        const char* fault;
        const char* step;
        const char* text;
        const char* means;
    } rows[] = {
        {"silence@on=any", "identity", "Internal: timeout", "longer than allowed"},
        {"wrong-command@on=any", "identity", "Internal: unsolicited message", "another request"},
        {"refuse-register:69", "session", "EIP error: 0069H", "protocol revision"},
        {"silence@on=register", "session", "Internal: timeout", "longer than allowed"},
        {"refuse-open:0113", "Forward Open", "MR error: 0001H, 0113H", "any more connections"},
        {"status:08@on=open", "Forward Open", "MR error: 0008H", "Service not supported"},
        {"status:05@on=read", "tag", "AB error: 0005H", "could not be found"},
        {"status:FF,2105@on=read", "tag", "AB error: 01FFH, 2105H", "beyond the end"},
        {"silence@on=read", "tag", "Internal: receive timeout", "no whole reply came"},
        {"silence@2@on=read", "reads", "3 of ", "get lost"},
    };
    for (const auto& row : rows) {
        startPlant({"--fault", row.fault});
        const QList<QJsonObject> all = steps({"DINT0:COUNTER"});
        SCOPED_TRACE(row.fault);
        expectBreak(all, row.step, row.text, row.means);
    }
}

TEST_F(CliDoctor, AWrongType) {
    startPlant();
    expectBreak(steps({"DINT0:LEVEL"}), "tag",
                "wrong type: the controller has REAL; write REAL0:LEVEL", "another type");
}

TEST_F(CliDoctor, WrongUsageSendsNothing) {
    startPlant();
    EXPECT_EQ(runWith("doctor", {"DINT0:A", "DINT0:B"}).exitCode, 2);
    EXPECT_EQ(runWith("doctor", {"LEVEL"}).exitCode, 2);
    EXPECT_EQ(runWith("doctor", {"--reads", "0"}).exitCode, 2);
    EXPECT_EQ(controller->log().size(), 0);
}

}  // namespace
