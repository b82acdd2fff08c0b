// "micro800 info" with the real plugin file.

#include <QFileInfo>
#include <QJsonDocument>

#include "integration/cli/cli_program.h"

namespace {

class CliInfo : public CliTest {};

TEST_F(CliInfo, TellsWhatThePluginIs) {
    const CliResult result = run({"info"});
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_EQ(result.exitCode, 0);
    const QString expected =
        "Plugin               %1\n"
        "Interface            com.tarvelon.drivers.DriverInterface/1.1\n"
        "Name                 Micro800 Ethernet\n"
        "Vendor               Allen Bradley\n"
        "Version              1.0.0\n"
        "Driver setting       time-out 3000 ms, retry 3, station 0, delay 0 ms\n"
        "Setting text         44818\n"
        "Serial setting       COM2 (type 32), 9600 baud, 8 data bits, stop bits code 0, parity "
        "code 0\n"
        "Communication flags  256 (0x100)\n"
        "Total size           1024\n"
        "Block access         1024\n"
        "Bit block access     1024\n"
        "Session commands     supported\n";
    EXPECT_EQ(result.out, expected.arg(MICRO800_PLUGIN_FILE).toUtf8());
}

TEST_F(CliInfo, Json) {
    const CliResult result = run({"info", "--json", "--plugin", MICRO800_PLUGIN_FILE});
    const QJsonObject object = QJsonDocument::fromJson(result.out).object();
    EXPECT_EQ(object.value("name").toString(), QString("Micro800 Ethernet"));
    EXPECT_EQ(object.value("vendor").toString(), QString("Allen Bradley"));
    EXPECT_EQ(object.value("communication_flags").toInt(), 256);
    EXPECT_EQ(object.value("session_commands").toBool(), true);
    EXPECT_EQ(object.value("driver_setting").toObject().value("timeout").toInt(), 3000);
    EXPECT_EQ(object.value("serial_setting").toObject().value("name").toString(), QString("COM2"));
    EXPECT_EQ(result.out.count('\n'), 1);
}

TEST_F(CliInfo, ThePluginsPlaces) {
    environment.insert("MICRO800_PLUGIN", "/no/such.so");
    CliResult result = run({"info"});
    EXPECT_EQ(result.err, QByteArray("micro800: plugin /no/such.so: no such file\n"));
    EXPECT_EQ(result.exitCode, 1);
    result = run({"info", "--plugin", MICRO800_PLUGIN_FILE});
    EXPECT_EQ(result.exitCode, 0);
}

}  // namespace
