#include "apps/simulator/server/request_log.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include "unit/apps/simulator/hex.h"

namespace {

using sim::Exchange;

const std::string kPeer = "127.0.0.1:50000";

TEST(RequestLogLine, TellsAReadWhole) {
    Exchange exchange;
    exchange.request = sim::ByteView();
    exchange.begin(sim::ByteView());
    const sim::Bytes request = hex("7000 FF");
    exchange.request = request;
    exchange.command = 0x70;
    exchange.service = 0x4C;
    exchange.path.name = "GRID";
    exchange.path.indices = {2, 3};
    exchange.access.type = 0xC4;
    exchange.access.count = 2;
    exchange.reply = hex("0102");
    EXPECT_EQ(
        "{\"ms\":1700000000123.500,\"peer\":\"127.0.0.1:50000\",\"command\":\"SendUnitData\","
        "\"service\":\"ReadTag\",\"tag\":\"GRID[2,3]\",\"type\":\"DINT\",\"count\":2,"
        "\"encap_status\":\"0000\",\"status\":\"00\",\"request\":\"7000ff\",\"reply\":\"0102\"}",
        requestLogLine(1700000000123.5, kPeer, exchange, nullptr));
}

TEST(RequestLogLine, TellsAWriteThatWasRefused) {
    Exchange exchange;
    exchange.begin(sim::ByteView());
    exchange.command = 0x70;
    exchange.service = 0x4D;
    exchange.path.name = "A";
    exchange.access.type = 0x1234;
    const sim::Bytes written = hex("2A00");
    exchange.written = written;
    exchange.status = sim::CipStatus(0xFF, 0x2107);
    EXPECT_EQ(
        "{\"ms\":1.000,\"peer\":\"127.0.0.1:50000\",\"command\":\"SendUnitData\",\"service\":"
        "\"WriteTag\",\"tag\":\"A\",\"type\":\"0x1234\",\"data\":\"2a00\",\"encap_status\":"
        "\"0000\","
        "\"status\":\"FF/2107\",\"request\":\"\",\"reply\":\"\"}",
        requestLogLine(1, kPeer, exchange, nullptr));
}

TEST(RequestLogLine, TellsWhereAPieceBegins) {
    Exchange exchange;
    exchange.begin(sim::ByteView());
    exchange.command = 0x70;
    exchange.service = 0x52;
    exchange.path.name = "A";
    exchange.access.type = 0xC4;
    exchange.access.count = 200;
    exchange.access.offset = 480;
    exchange.status = sim::CipStatus(0x06);
    EXPECT_EQ(
        "{\"ms\":1.000,\"peer\":\"127.0.0.1:50000\",\"command\":\"SendUnitData\",\"service\":"
        "\"ReadTagFragmented\",\"tag\":\"A\",\"type\":\"DINT\",\"count\":200,\"offset\":480,"
        "\"encap_status\":\"0000\",\"status\":\"06\",\"request\":\"\",\"reply\":\"\"}",
        requestLogLine(1, kPeer, exchange, nullptr));
}

TEST(RequestLogLine, TellsUnknownCodesAndWhyThereIsNoAnswer) {
    Exchange exchange;
    exchange.begin(sim::ByteView());
    exchange.command = 0x99;
    exchange.service = 0x4B;
    exchange.encapStatus = 0x64;
    exchange.note = "no such connection";
    EXPECT_EQ(
        "{\"ms\":1.000,\"peer\":\"127.0.0.1:50000\",\"command\":\"0x0099\",\"service\":\"0x4B\","
        "\"encap_status\":\"0064\",\"status\":\"00\",\"note\":\"no such connection\","
        "\"request\":\"\",\"reply\":\"\"}",
        requestLogLine(1, kPeer, exchange, nullptr));
}

TEST(RequestLogLine, TellsAPcccCommand) {
    Exchange exchange;
    exchange.begin(sim::ByteView());
    exchange.command = 0x6F;
    exchange.service = 0x4B;
    exchange.path.classId = 0x67;
    exchange.unconnectedSend = true;
    const sim::Bytes route = hex("0100");
    exchange.route = route;
    exchange.hasPccc = true;
    exchange.pccc.function = 0xAA;
    exchange.pccc.address = "N7:0";
    exchange.pccc.count = 2;
    const sim::Bytes written = hex("2A00");
    exchange.pccc.written = written;
    EXPECT_EQ(
        "{\"ms\":1.000,\"peer\":\"127.0.0.1:50000\",\"command\":\"SendRRData\",\"route\":"
        "\"0100\",\"service\":\"ExecutePCCC\",\"function\":\"ThreeAddressWrite\","
        "\"address\":\"N7:0\",\"count\":2,\"data\":\"2a00\",\"sts\":\"00\","
        "\"encap_status\":\"0000\",\"status\":\"00\",\"request\":\"\",\"reply\":\"\"}",
        requestLogLine(1, kPeer, exchange, nullptr));
    exchange.pccc = sim::PcccCommand();
    exchange.pccc.function = 0x99;
    exchange.pccc.status = {0xF0, 0x0A};
    exchange.service = -1;
    exchange.unconnectedSend = false;
    EXPECT_EQ(
        "{\"ms\":1.000,\"peer\":\"127.0.0.1:50000\",\"command\":\"SendRRData\","
        "\"function\":\"0x99\",\"sts\":\"F0/0A\",\"encap_status\":\"0000\",\"request\":\"\","
        "\"reply\":\"\"}",
        requestLogLine(1, kPeer, exchange, nullptr));
}

TEST(RequestLogLine, TellsFaultsAndWhatGoesOut) {
    sim::Fault late;
    late.text = "late:5";
    sim::Fault torn;
    torn.text = "torn@tag=\"";
    Exchange exchange;
    exchange.begin(sim::ByteView());
    exchange.faults = {&late, &torn};
    exchange.reply = hex("FFFF");
    sim::Delivery delivery;
    delivery.segments.resize(2);
    delivery.segments[0].bytes = hex("01");
    delivery.segments[1].bytes = hex("02");
    const std::string line = requestLogLine(1, kPeer, exchange, &delivery);
    EXPECT_NE(std::string::npos, line.find("\"faults\":[\"late:5\",\"torn@tag=\\\"\"]")) << line;
    EXPECT_NE(std::string::npos, line.find("\"reply\":\"0102\"")) << line;
}

TEST(RequestLogLine, IsJsonWhateverTheNameHolds) {
    Exchange exchange;
    exchange.begin(sim::ByteView());
    exchange.service = 0x4C;
    for (int byte = 0; byte < 256; ++byte) {
        exchange.path.name += char(byte);
    }
    const std::string line = requestLogLine(1, kPeer, exchange, nullptr);
    const QJsonObject json = QJsonDocument::fromJson(QByteArray::fromStdString(line)).object();
    EXPECT_EQ(QString::fromLatin1(exchange.path.name.data(), 256), json["tag"].toString());
}

TEST(RequestLog, AppendsALineARequest) {
    QTemporaryDir dir;
    const QString path = dir.filePath("log");
    Exchange exchange;
    exchange.begin(sim::ByteView());
    QString problem;
    for (int i = 0; i < 2; ++i) {
        sim::RequestLog log;
        EXPECT_FALSE(log.isOpen());
        log.write(kPeer, exchange, nullptr);
        ASSERT_TRUE(log.open(path, &problem)) << problem.toStdString();
        log.write(kPeer, exchange, nullptr);
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(i + 1, file.readAll().count('\n'));
    }
    sim::RequestLog log;
    EXPECT_FALSE(log.open(dir.filePath("no/such/dir"), &problem));
    EXPECT_NE(std::string::npos, problem.toStdString().find("No such file or directory"));
}

}  // namespace
