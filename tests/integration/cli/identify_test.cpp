// "micro800 identify" against the simulated controller.

#include <QJsonDocument>

#include "integration/cli/cli_program.h"

namespace {

class CliIdentify : public CliTest {
 protected:
    QString endpoint() const { return QString("127.0.0.1 port %1").arg(controller->port()); }
    /// What follows "micro800: ENDPOINT " on standard error, the one line there.
    QString complaint(const CliResult& result) const {
        const QString start = "micro800: " + endpoint() + ' ';
        const QString text = QString::fromUtf8(result.err);
        EXPECT_TRUE(text.startsWith(start) && text.count('\n') == 1) << qPrintable(text);
        return text.mid(start.size()).trimmed();
    }
};

TEST_F(CliIdentify, TellsWhatTheControllerIs) {
    startController({});
    const CliResult result = runWith("identify", {});
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_EQ(result.out, QString("Vendor               Rockwell Automation/Allen-Bradley (1)\n"
                                  "Product type         programmable logic controller (14)\n"
                                  "Product code         186\n"
                                  "Product name         \"2080-LC50-48QWB\"\n"
                                  "Revision             12.11\n"
                                  "Serial number        0x6080C0DE\n"
                                  "Status               0x0034 (configured, no I/O connections)\n"
                                  "State                operational\n"
                                  "Address              127.0.0.1:%1\n")
                              .arg(controller->port())
                              .toUtf8());
    EXPECT_EQ(result.exitCode, 0);
    // One request, and neither a session nor a connection for it.
    ASSERT_EQ(controller->log().size(), 1);
    EXPECT_EQ(controller->log().first().value("command").toString(), QString("ListIdentity"));
}

TEST_F(CliIdentify, NeedsNoPlugin) {
    startController({});
    environment.insert("MICRO800_PLUGIN", "/no/such.so");
    EXPECT_EQ(runWith("identify", {}).exitCode, 0);
}

TEST_F(CliIdentify, Json) {
    startController({});
    const CliResult result = runWith("identify", {"--json"});
    EXPECT_EQ(result.out.count('\n'), 1);
    const QJsonObject object = QJsonDocument::fromJson(result.out).object();
    EXPECT_TRUE(object.value("ok").toBool());
    EXPECT_EQ(object.value("host").toString(), QString("127.0.0.1"));
    EXPECT_EQ(object.value("port").toInt(), controller->port());
    EXPECT_EQ(object.value("vendor").toObject().value("id").toInt(), 1);
    EXPECT_EQ(object.value("product_name").toString(), QString("2080-LC50-48QWB"));
    EXPECT_EQ(object.value("state").toObject().value("text").toString(), QString("operational"));
}

TEST_F(CliIdentify, VerboseShowsRequestAndReply) {
    startController({});
    const CliResult result = runWith("identify", {"--verbose"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.err.startsWith("> ListIdentity request, 24 bytes\n"));
    EXPECT_TRUE(result.err.contains("\n< ListIdentity reply, 79 bytes\n"));
    EXPECT_TRUE(result.err.contains("\n  003a  serial number            de c0 80 60\n"));
    EXPECT_TRUE(result.out.startsWith("Vendor "));
}

TEST_F(CliIdentify, NobodyListens) {
    startController({});
    const QStringList arguments = withController("identify", {"--json"});
    ASSERT_EQ(controller->stop(), 0);
    const CliResult result = run(arguments);
    EXPECT_EQ(result.exitCode, 1);
    const QString problem = "nothing answers at " + endpoint() +
                            ": Connection refused(111); check address, port and cable, and that "
                            "the controller has power";
    EXPECT_EQ(result.err, ("micro800: " + problem + '\n').toUtf8());
    const QJsonObject object = QJsonDocument::fromJson(result.out).object();
    EXPECT_FALSE(object.value("ok").toBool(true));
    EXPECT_EQ(object.value("error").toString(), problem);
    EXPECT_EQ(object.value("port").toInt(), controller->port());
}

TEST_F(CliIdentify, UnknownHost) {
    const QString host(70, 'a');  // longer than a name can be
    const CliResult result = run({"identify", "--host", host});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, QByteArray());
    EXPECT_TRUE(result.err.startsWith(("micro800: host " + host + " is unknown: ").toUtf8()))
        << result.err.constData();
}

TEST_F(CliIdentify, ASilentController) {
    startController({"--fault", "silence@on=any"});
    const CliResult result = runWith("identify", {"--timeout", "200"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, QByteArray());
    EXPECT_TRUE(complaint(result).startsWith(
        "takes the connection but gives no whole answer within 200 ms; "));
}

TEST_F(CliIdentify, AnAnswerInPieces) {
    startController({"--fault", "torn:24,5@on=any"});
    const CliResult result = runWith("identify", {});
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_TRUE(result.out.contains("2080-LC50-48QWB")) << result.out.constData();
}

TEST_F(CliIdentify, AnAnswerThatBreaksOff) {
    for (const char* fault : {"cut:0@on=any", "cut:23@on=any", "cut:24@on=any", "cut:70@on=any",
                              "reset:40@on=any", "torn-header:10,2000@on=any"}) {
        startController({"--fault", fault});
        const CliResult result = runWith("identify", {});
        EXPECT_EQ(result.exitCode, 1) << fault;
        EXPECT_TRUE(complaint(result).startsWith("broke off its answer; ")) << fault;
    }
}

TEST_F(CliIdentify, AnAnswerThatIsNone) {
    startController({"--fault", "encap-status:1@on=any"});
    CliResult result = runWith("identify", {});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(complaint(result).startsWith("refuses to identify itself: EIP error: 0001H ("));
    EXPECT_EQ(controller->command("fault none"), "ok");
    EXPECT_EQ(controller->command("fault wrong-command@on=any"), "ok");
    result = runWith("identify", {});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(complaint(result).startsWith("answers, but not with an identity: "));
}

TEST_F(CliIdentify, WrongUsageSendsNothing) {
    startController({});
    EXPECT_EQ(runWith("identify", {"DINT0:A"}).exitCode, 2);
    EXPECT_EQ(run({"identify"}).exitCode, 2);
    EXPECT_EQ(controller->log().size(), 0);
}

}  // namespace
