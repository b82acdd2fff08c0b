// How the controller is named: HOST, HOST:PORT, and a name that nobody has.

#include "integration/cli/cli_program.h"

namespace {

class CliEndpoint : public CliTest {
 protected:
    QString address() const { return QString("127.0.0.1:%1").arg(controller->port()); }
};

TEST_F(CliEndpoint, EveryCommandTakesWhatIdentifyPrints) {
    startController({"--tag", "T:DINT=31"});
    const CliResult identity = run({"identify", "--host", address()});
    EXPECT_EQ(identity.exitCode, 0) << identity.err.constData();
    // The fact is the controller's own word for where it is.
    EXPECT_TRUE(identity.out.contains("Address              " + address().toUtf8() + "\n"))
        << identity.out.constData();
    EXPECT_EQ(run({"read", "--host", address(), "DINT0:T"}).out, QByteArray("DINT0:T = 31\n"));
    EXPECT_EQ(run({"write", "--host", address(), "DINT0:T", "32"}).out,
              QByteArray("DINT0:T = 32\n"));
    EXPECT_TRUE(
        run({"watch", "--once", "--host", address(), "DINT0:T"}).out.endsWith(" DINT0:T = 32\n"));
    QTemporaryDir panel;
    EXPECT_EQ(run({"project", panel.path(), "--host", address()}).out,
              (address() + " on link 1: default node\n").toUtf8());
}

TEST_F(CliEndpoint, TwoPortsAreOneTooMany) {
    startController({"--tag", "T:DINT=31"});
    const QString port = QString::number(controller->port());
    EXPECT_EQ(run({"read", "--host", address(), "--port", port, "DINT0:T"}).exitCode, 0);
    EXPECT_EQ(run({"read", "--host", address(), "--port", "1", "DINT0:T"}).exitCode, 2);
    QTemporaryDir panel;
    EXPECT_EQ(run({"project", panel.path(), "--host", address(), "--port", "1"}).exitCode, 2);
}

TEST_F(CliEndpoint, EveryCommandTellsThatAHostIsUnknown) {
    const QString host(70, 'a');  // longer than a name can be
    const QByteArray problem = ("micro800: host " + host + " is unknown: ").toUtf8();
    for (const QStringList& command :
         {QStringList{"identify", "--host", host}, QStringList{"read", "--host", host, "DINT0:T"},
          QStringList{"write", "--host", host, "DINT0:T", "1"},
          QStringList{"watch", "--host", host, "DINT0:T"}}) {
        const CliResult result = run(command);
        EXPECT_EQ(result.exitCode, 1) << qPrintable(command.first());
        EXPECT_TRUE(result.err.startsWith(problem)) << result.err.constData();
    }
}

}  // namespace
