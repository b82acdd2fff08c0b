#include "integration/client/client_rig.h"

namespace {

const int kReplyMs = 10000;

// Port 1 (the backplane), slot 0.
const unsigned char kRoute[] = {0x01, 0x00};

const QStringList kPaths = {"--accept-path", "0100",         "--accept-path", "010020022401",
                            "--accept-path", "20A624012C01", "--accept-path", "010020A624022C01"};

const QStringList kDataTable = {
    "--pccc-file", "N7[301]=42,-2,32767,-32768",
    "--pccc-file", "F8[4]=1.5,-0.25,16777216",
    "--pccc-file", "B3[4]=0,0,0x0020,0xFFFF",
    "--pccc-file", "T4[2]=0x2000,1000,250,0x8000,2000,7",
    "--pccc-file", "C5[1]=0,-5,9",
    "--pccc-file", "S2[4]=0,0x1234",
    "--pccc-file", "L9[2]=-100000,100000",
};

_Eip_Connection* openCnet(_Eip_Session* session, const unsigned char* route, unsigned char length) {
    return _ConnectPLCOverCNET(session, PLC_KIND_PLC5, 5, 247, 0x80FE0001, 2, 20507, 0x11223344, 2,
                               2000, _Transport, route, length);
}

_Eip_Connection* openDhp(_Eip_Session* session, char channel, const unsigned char* route,
                         unsigned char length) {
    return _ConnectPLCOverDHP(session, PLC_KIND_SLC500, 5, 247, 0x80FE0001, 2, 20507, 0x11223344, 2,
                              2000, _Transport, channel, route, length);
}

}  // namespace

void ClientTest::startClient(const QStringList& options) {
    simulator = std::make_unique<SimulatorProcess>(kPaths + options);
    ASSERT_TRUE(simulator->start()) << simulator->error();
    ASSERT_EQ(1, transport.connect("127.0.0.1", simulator->port(), kReplyMs));
    session = NewSession(kReplyMs, &transport);
    ASSERT_TRUE(session);
    ASSERT_EQ(0, _RegisterSession(session));
}

void ClientTest::TearDown() {
    if (session) {
        _UnRegisterSession(session);
    }
    DeleteSession(session);
}

std::string ClientTest::stored(const char* address) {
    const std::string answer = simulator->command(QString("get ") + address);
    return answer.substr(0, 3) == "ok " ? answer.substr(3) : answer;
}

std::ostream& operator<<(std::ostream& out, Way way) {
    const char* const names[] = {"unconnected", "routed", "connected", "cnet", "dhpA", "dhpB"};
    return out << names[static_cast<int>(way)];
}

void PcccTest::startPccc(Way way) {
    ASSERT_NO_FATAL_FAILURE(startClient(kDataTable));
    target.session = session;
    isDhp = way == Way::dhpA || way == Way::dhpB;
    target.dhp = isDhp ? &node : nullptr;
    switch (way) {
        case Way::unconnected:
            return;
        case Way::routed:
            target.routePath = kRoute;
            target.routePathLength = sizeof kRoute;
            return;
        case Way::connected:
            target.connection = openCnet(session, nullptr, 0);
            break;
        case Way::cnet:
            target.connection = openCnet(session, kRoute, sizeof kRoute);
            break;
        case Way::dhpA:
            target.connection = openDhp(session, 'A', nullptr, 0);
            break;
        case Way::dhpB:
            target.connection = openDhp(session, 'b', kRoute, sizeof kRoute);
            break;
    }
    ASSERT_TRUE(target.connection) << cip_err_msg();
}

void PcccTest::TearDown() {
    if (target.connection) {
        EXPECT_EQ(0, _Forward_Close(target.connection)) << cip_err_msg();
    }
    ClientTest::TearDown();
}
