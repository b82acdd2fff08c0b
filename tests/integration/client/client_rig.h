#ifndef TESTS_INTEGRATION_CLIENT_CLIENT_RIG_H
#define TESTS_INTEGRATION_CLIENT_CLIENT_RIG_H

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>

#include "eip/cip/connection_manager.h"
#include "eip/cip/pccc_services.h"
#include "eip/cip/session.h"
#include "eip/cip_tcp_callback.h"
#include "support/simulator_process.h"
#include "unit/eip/cip/wire_bytes.h"

/// A simulator and a registered session with it over TCP. Reached through the port segments 01 00,
/// too.
class ClientTest : public testing::Test {
 protected:
    /// Starts the simulator with these options beside the paths that it accepts, and registers.
    void startClient(const QStringList& options = QStringList());
    void TearDown() override;

    /// Whether the simulator took the command.
    void command(const QString& line) {
        EXPECT_EQ("ok", simulator->command(line)) << line.toStdString();
    }
    /// The values at an address of the simulator's data table.
    std::string stored(const char* address);

    std::unique_ptr<SimulatorProcess> simulator;
    CipTcpCallback transport;
    _Eip_Session* session = nullptr;
};

/// How PCCC commands get to the controller.
enum class Way {
    unconnected,
    routed,     ///< in an Unconnected Send
    connected,  ///< over a connection to its message router
    cnet,       ///< the same through a route
    dhpA,       ///< over a connection to a DH+ proxy
    dhpB,       ///< the same through a route, channel B
};

std::ostream& operator<<(std::ostream& out, Way way);

/// A simulator with a data table of known values, and a target to send PCCC commands to.
class PcccTest : public ClientTest {
 protected:
    void startPccc(Way way);
    void TearDown() override;

    /// A number for the next command.
    uint16_t next() { return ++transaction; }

    _PCCC_Target target = {};
    bool isDhp = false;
    uint16_t transaction = 0x1233;

 private:
    _DHP_Header node = {1, 0x0203, 4, 5};
};

/// The same for every way.
class PcccWays : public PcccTest, public testing::WithParamInterface<Way> {
 protected:
    void SetUp() override { startPccc(GetParam()); }
};

const Way kWays[] = {Way::unconnected, Way::routed, Way::connected,
                     Way::cnet,        Way::dhpA,   Way::dhpB};

struct FreePlcRead {
    void operator()(_PLC_Read* read) const { _FreePLCRead(read); }
};
typedef std::unique_ptr<_PLC_Read, FreePlcRead> PlcRead;

/// The error record after success, and after a malformed reply.
const CipError kNoError = {0, 0, 0};
const CipError kPcccSuccess = {6, 0, 0};
const CipError kInvalidReply = {0, -20, 0};

#endif
