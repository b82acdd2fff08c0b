// Every fault of the simulator leaves a recording of the exchange that failed.

#include "integration/record/record_rig.h"
#include "support/hex_bytes.h"

namespace {

/// What a recording says of one fault.
struct FaultRow {
    const char* fault;
    const char* why;  ///< of the recording that it leaves
    int lastCommand;  ///< encapsulation command of the last request in it
    bool distorted;   ///< the answers themselves are malformed, and are shown as they came
};

void PrintTo(const FaultRow& row, std::ostream* out) {
    *out << row.fault;
}

const int kRegister = 0x65;
const int kUnconnected = 0x6F;
const int kConnected = 0x70;

class RecordingOfFault : public RecordTest, public ::testing::WithParamInterface<FaultRow> {};

TEST_P(RecordingOfFault, EndsWithTheRequestThatFailed) {
    Controller simulator({"--tag", "D:DINT=42", "--fault", GetParam().fault});
    TestDevice device(simulator.port(), 400);
    {
        const std::unique_ptr<DriverInterface> driver = createDriver();
        driver->read(&device, dint("D"));
    }
    const QString name = waitForRecording(GetParam().why);
    const CaptureFile file = read(name);
    const QByteArray all = file.bytesToController();
    const QByteArray last = file.lastRequest(GetParam().lastCommand);
    ASSERT_FALSE(last.isEmpty());
    if (QByteArray(GetParam().why) != "end") {
        EXPECT_TRUE(all.endsWith(last)) << all.toHex().constData();
    }
    if (GetParam().lastCommand == kConnected) {
        // Read Tag (4C) of the path D (91 01 44 00), one element.
        EXPECT_TRUE(last.endsWith(hex("4c02910144000100"))) << last.toHex().constData();
    }
    for (const QString& recording : recordings()) {
        if (GetParam().distorted) {
            EXPECT_EQ(QStringList(), tshark(pathOf(recording), "tcp.analysis.flags || _ws.short",
                                            {"frame.number"}));
            EXPECT_EQ(QStringList(),
                      tshark(pathOf(recording), "_ws.malformed && tcp.dstport == 44818",
                             {"frame.number"}));
        } else {
            expectSound(recording);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, RecordingOfFault,
    ::testing::Values(FaultRow{"silence", "connection-lost", kConnected, false},
                      FaultRow{"cut", "connection-lost", kConnected, false},
                      FaultRow{"cut:10", "connection-lost", kConnected, false},
                      FaultRow{"reset", "connection-lost", kConnected, false},
                      FaultRow{"torn:24,5", "end", kConnected, false},
                      FaultRow{"torn", "connection-lost", kConnected, false},
                      FaultRow{"torn-header", "connection-lost", kConnected, false},
                      FaultRow{"late:100", "end", kConnected, false},
                      FaultRow{"late:900", "connection-lost", kConnected, false},
                      FaultRow{"repeat", "end", kConnected, false},
                      FaultRow{"truncate:30", "connection-lost", kConnected, true},
                      FaultRow{"wrong-command", "connection-lost", kConnected, false},
                      FaultRow{"wrong-session", "connection-lost", kConnected, false},
                      FaultRow{"wrong-connection", "end", kConnected, false},
                      FaultRow{"wrong-sequence", "connection-lost", kConnected, false},
                      FaultRow{"wrong-service", "connection-lost", kConnected, false},
                      FaultRow{"encap-status:1", "connection-lost", kConnected, false},
                      FaultRow{"encap-length-long", "connection-lost", kConnected, false},
                      FaultRow{"encap-length-short", "connection-lost", kConnected, true},
                      FaultRow{"item-count", "connection-lost", kConnected, false},
                      FaultRow{"item-length-long", "connection-lost", kConnected, true},
                      FaultRow{"status:1A", "error-text", kConnected, false},
                      FaultRow{"status:FF,2105", "error-text", kConnected, false},
                      FaultRow{"additional-status-size", "connection-lost", kConnected, true},
                      FaultRow{"unknown-type", "connection-lost", kConnected, false},
                      FaultRow{"short-reply", "connection-lost", kConnected, false},
                      FaultRow{"short-reply:4", "connection-lost", kConnected, false},
                      FaultRow{"refuse-register:65", "connect-failed", kRegister, false},
                      FaultRow{"refuse-open:113", "connect-failed", kUnconnected, false},
                      FaultRow{"short-open-reply", "connect-failed", kUnconnected, true}));

}  // namespace
