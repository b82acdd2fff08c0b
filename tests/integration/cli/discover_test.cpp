// "micro800 discover" against simulated controllers, by datagrams on loopback only.

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>

#include "integration/cli/cli_program.h"

namespace {

class CliDiscover : public CliTest {
 protected:
    /// Asks on the simulated controller's UDP port.
    CliResult discover(const QStringList& arguments) {
        return run(QStringList{"discover", "--port", QString::number(controller->port()),
                               "--timeout", "300"} +
                   arguments);
    }
};

TEST_F(CliDiscover, OneLineADevice) {
    startController({"--udp"});
    const CliResult result = discover({"--broadcast", "127.0.0.1"});
    EXPECT_EQ(result.err, QByteArray());
    const QString address = QString("127.0.0.1:%1").arg(controller->port());
    const QStringList lines = QString::fromUtf8(result.out).split('\n');
    ASSERT_EQ(lines.size(), 3);
    EXPECT_TRUE(lines.at(0).startsWith("ADDRESS ")) << qPrintable(lines.at(0));
    EXPECT_EQ(lines.at(1).simplified(),
              address +
                  " \"2080-LC50-48QWB\" 12.11 0x6080C0DE operational Rockwell "
                  "Automation/Allen-Bradley");
    EXPECT_EQ(result.exitCode, 0);
    // It was asked twice and answered twice, and no connection was made.
    ASSERT_EQ(controller->log().size(), 2);
    for (const QJsonObject& request : controller->log()) {
        EXPECT_EQ(request.value("command").toString(), QString("ListIdentity"));
        EXPECT_EQ(request.value("peer").toString(), QString("udp"));
    }
}

TEST_F(CliDiscover, ABroadcastReachesADevice) {
    startController({"--udp", "--address", "0.0.0.0"});
    const CliResult result = discover({"--broadcast", "127.255.255.255", "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.err.constData();
    const QJsonObject device = QJsonDocument::fromJson(result.out).object();
    EXPECT_EQ(device.value("addresses").toArray(),
              QJsonArray({QString("127.0.0.1:%1").arg(controller->port())}));
    EXPECT_EQ(device.value("product_name").toString(), QString("2080-LC50-48QWB"));
}

TEST_F(CliDiscover, TheAddressIsTheSenders) {
    startController({"--udp", "--address", "127.0.0.20"});
    const CliResult result = discover({"--broadcast", "127.0.0.20", "--json"});
    EXPECT_EQ(QJsonDocument::fromJson(result.out).object().value("addresses").toArray(),
              QJsonArray({QString("127.0.0.20:%1").arg(controller->port())}));
}

TEST_F(CliDiscover, NobodyAnswers) {
    startController({});  // without a UDP port
    const CliResult result = discover({"--broadcast", "127.0.0.1"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, QByteArray());
    EXPECT_TRUE(result.err.startsWith("micro800: no device answers within 300 ms; "))
        << result.err.constData();
}

/// Run in a network of the test's own: two cables, and one device at both of them. The port of the
/// standard is free there.
const char kTwoNetworks[] = R"sh(
ip link add one type veth peer name two &&
    ip address add 10.9.8.1/24 broadcast + dev one &&
    ip address add 10.9.9.1/24 broadcast + dev two &&
    ip link set lo up && ip link set one up && ip link set two up || exit 77
"$1" --address 0.0.0.0 --udp >"$3/started" &
device=$!
tries=0
until [ -s "$3/started" ] || [ $tries -ge 600 ]; do sleep 0.1; tries=$((tries + 1)); done
"$2" discover --timeout 500 && "$2" discover --timeout 500 --interface two
kill $device
)sh";

TEST_F(CliDiscover, OnEveryInterfaceAndADeviceOnce) {
    if (environment.contains("MICRO800_EMULATOR")) {
        GTEST_SKIP() << "the shell of this machine starts no program of another";
    }
    QTemporaryDir dir;
    QProcess networks;
    networks.setProcessEnvironment(environment);
    networks.setStandardInputFile(QProcess::nullDevice());
    networks.start("unshare",
                   QStringList{"--map-root-user", "--net", "sh", "-c", kTwoNetworks, "sh",
                               SimulatorProcess::program(), program(), dir.path()});
    ASSERT_TRUE(networks.waitForFinished(kCliWaitMs));
    const QByteArray errors = networks.readAllStandardError();
    if (networks.exitCode() == 77 || errors.startsWith("unshare: ")) {
        GTEST_SKIP() << "no network of its own for this test: " << errors.constData();
    }
    const QStringList lines =
        QString::fromUtf8(networks.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 4) << errors.constData();
    QStringList both = lines.at(1).section(' ', 0, 0).split(',');
    both.sort();
    EXPECT_EQ(both, QStringList({"10.9.8.1:44818", "10.9.9.1:44818"}));
    EXPECT_EQ(lines.at(3).section(' ', 0, 0), QString("10.9.9.1:44818"));
}

TEST_F(CliDiscover, WhatCannotBeSentTo) {
    const CliResult unknown = run({"discover", "--interface", "no-such-interface"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_TRUE(unknown.err.startsWith("micro800: interface no-such-interface: "))
        << unknown.err.constData();
    const CliResult wrong = run({"discover", "--broadcast", "10.0.0"});
    EXPECT_EQ(wrong.exitCode, 1);
    EXPECT_EQ(wrong.err, QByteArray("micro800: 10.0.0: not an IPv4 address\n"));
}

TEST_F(CliDiscover, WrongUsage) {
    EXPECT_EQ(run({"discover", "127.0.0.1"}).exitCode, 2);
    EXPECT_EQ(run({"discover", "--timeout", "1"}).exitCode, 2);
    EXPECT_EQ(run({"discover", "--port", "0"}).exitCode, 2);
}

TEST_F(CliDiscover, VerboseShowsTheDatagrams) {
    startController({"--udp"});
    const CliResult result = discover({"--broadcast", "127.0.0.1", "--verbose"});
    const QString to = QString(
                           "> to 127.0.0.1 port %1\n"
                           "> ListIdentity request, 24 bytes\n"
                           "  0000  command                  63 00                    "
                           "ListIdentity\n")
                           .arg(controller->port());
    EXPECT_TRUE(result.err.startsWith(to.toUtf8())) << result.err.constData();
    EXPECT_TRUE(result.err.contains("< ListIdentity reply, 79 bytes\n"));
    EXPECT_TRUE(result.err.contains("  003f  product name             32 30 38 30"));
}

}  // namespace
