// Requests with any bytes: for all of them, the controller answers with a whole frame or not at
// all. The address sanitizer shows whether it read past their end.

#include <random>

#include "apps/simulator/server/request_log.h"

#include "unit/apps/simulator/controller_fixture.h"

namespace {

class HostileRequests : public ControllerTest {
 protected:
    HostileRequests() {
        addTag("NAME:STRING=x");
        addTag("GRID:INT[2..3,0..2]");
        openConnection();
    }

    std::vector<sim::Bytes> validRequests() const {
        return {
            frame(kRegister),
            frame(kOpen),
            frame(kReadA),
            frame(kWriteA),
            frame("6300 0000 00000000 00000000 0000000000000000 00000000"),
            frame("7000 2C00 SSSSSSSS 00000000 0000000000000000 00000000 00000000 0000 0200"
                  "A100 0400 CCCCCCCC B100 1600 0300 4D 03 9104 4E414D45 DA00 0100 05 48656C6C6F"),
            frame("7000 2800 SSSSSSSS 00000000 0000000000000000 00000000 00000000 0000 0200"
                  "A100 0400 CCCCCCCC B100 1200 0300 4C 06 9104 47524944 2802 29000100 0200"),
            connected("52 06 9104 47524944 2802 29000100 0500 04000000"),
            connected("53 05 9104 47524944 2802 2800 C300 0600 04000000 01000200"),
            connected("53 03 9104 4E414D45 DA00 0100 00000000 05 48656C6C6F"),
            connected("01 02 20012401"),
            connected("0E 03 20012401 3007"),
            connected("03 02 20012401 0200 0100 0700"),
            connected("55 04 206B 26000100 0000 0300 0100 0200 0800"),
            execute("0F 00 3412 68 0000 0200 06 07 00 0200"),
            execute("0F 00 3412 68 0000 0100 0F 00 04 FF 0100 02 0100"),
            execute("0F 00 3412 67 0000 0200 06 07 00 99 09 05 42 0100 0200"),
            execute("0F 00 3412 A2 04 07 89 FF 2C01 00"),
            execute("0F 00 3412 AA 04 FF 0700 89 00 FF 0000 01000200"),
            execute("0F 00 3412 AB 04 03 85 00 00 FF00 01000200"),
            wrapped("4C 02 91014100 0100"),
            wrapped("4B 02 206B2400"),
            frame(kClose),  // nothing on the connection is served after it
        };
    }

    static std::string sized(const std::string& text) {
        sim::Bytes length;
        sim::put16(length, uint16_t(hex(text).size()));
        return hexOf(length) + hexText(text);
    }

    /// A connected request.
    sim::Bytes connected(const std::string& cip) const {
        return frame(
            "7000 0000 SSSSSSSS 00000000 0000000000000000 00000000 00000000 0000 0200"
            "A100 0400 CCCCCCCC B100 " +
            sized("0300" + cip));
    }

    /// A connected PCCC command.
    sim::Bytes execute(const std::string& command) const {
        return connected("4B 02 20672401 07 0604 89674523" + command);
    }

    /// A request of even size inside an Unconnected Send.
    sim::Bytes wrapped(const std::string& cip) const {
        return frame(
            "6F00 0000 SSSSSSSS 00000000 0000000000000000 00000000 00000000 0000 0200"
            "0000 0000 B200 " +
            sized("52 02 20062401 07 9A" + sized(cip) + "00 00"));
    }

    /// Serves an exact copy of the bytes, so that a read past their end is a read past a heap
    /// block.
    void serveAndCheck(const sim::Bytes& bytes) {
        sim::Bytes exact(bytes.begin(), bytes.end());
        if (isConnectedMessage(exact)) {
            countUp(&exact);
        }
        serveBytes(exact);
        const sim::Bytes& reply = exchange.reply;
        if (!reply.empty()) {
            ++answered;
            ASSERT_LE(24u, reply.size()) << hexOf(bytes);
            ASSERT_EQ(reply.size() - 24, sim::get16(reply, 2)) << hexOf(bytes);
            ASSERT_EQ(sim::get16(bytes, 0), sim::get16(reply, 0)) << hexOf(bytes);
        }
        requestLogLine(0, "", exchange, nullptr);
    }

    int answered = 0;  ///< requests that got a reply
};

TEST_F(HostileRequests, AreServedAsLongAsTheyAreNotHostile) {
    for (const sim::Bytes& request : validRequests()) {
        serveAndCheck(request);
        EXPECT_TRUE(exchange.status.ok() || exchange.service == sim::kForwardOpen);
        EXPECT_TRUE(exchange.pccc.status.ok()) << hexOf(request);
        EXPECT_FALSE(exchange.note) << hexOf(request);
    }
    EXPECT_GT(answered, 20);
}

TEST_F(HostileRequests, CutAnywhere) {
    for (const sim::Bytes& request : validRequests()) {
        for (size_t size = 0; size <= request.size(); ++size) {
            serveAndCheck(sim::Bytes(request.begin(), request.begin() + long(size)));
        }
    }
    EXPECT_GT(answered, 500);
}

TEST_F(HostileRequests, EveryByteWithEveryValue) {
    for (const sim::Bytes& request : validRequests()) {
        for (size_t at = 0; at < request.size(); ++at) {
            sim::Bytes changed = request;
            for (int value = 0; value < 256; ++value) {
                changed[at] = uint8_t(value);
                serveAndCheck(changed);
            }
        }
    }
    EXPECT_GT(answered, 200000);
}

TEST_F(HostileRequests, RandomChanges) {
    std::mt19937 random(1);
    std::vector<sim::Bytes> requests = validRequests();
    requests.pop_back();
    for (int i = 0; i < 20000; ++i) {
        sim::Bytes changed = requests[random() % requests.size()];
        for (int changes = int(random() % 4); changes >= 0; --changes) {
            changed[random() % changed.size()] = uint8_t(random());
        }
        if (random() % 4 == 0) {
            changed.resize(random() % (changed.size() + 8));
        }
        serveAndCheck(changed);
    }
    EXPECT_GT(answered, 5000);
}

TEST_F(HostileRequests, OnAConnectionToADhpProxy) {
    settings.connections.paths.push_back(hex("20A624012C01"));
    makeController();
    session.handle = 0;
    registerSession();
    serve(
        "6F00 4000 SSSSSSSS 00000000 0000000000000000 00000000"
        "00000000 0000 0200 0000 0000 B200 3000"
        "54 02 20062401 05 F7 00000000 0100FE80 0200 1B50 44332211 02 000000"
        "80841E00 F843 80841E00 F843 A3 03 20A624012C01");
    ASSERT_TRUE(exchange.status.ok());
    connection = sim::get32(exchange.reply, 44);
    const sim::Bytes request = frame(
        "7000 0000 SSSSSSSS 00000000 0000000000000000 00000000 00000000 0000 0200"
        "A100 0400 CCCCCCCC B100 " +
        sized("0900 0000 0300 0700 0800 0F 00 3412 68 0000 0200 06 07 00 0200"));
    serveAndCheck(request);
    ASSERT_TRUE(exchange.hasPccc && exchange.pccc.status.ok());
    for (size_t size = 0; size <= request.size(); ++size) {
        serveAndCheck(sim::Bytes(request.begin(), request.begin() + long(size)));
    }
    for (size_t at = 0; at < request.size(); ++at) {
        sim::Bytes changed = request;
        for (int value = 0; value < 256; ++value) {
            changed[at] = uint8_t(value);
            serveAndCheck(changed);
        }
    }
    EXPECT_GT(answered, 10000);
}

}  // namespace
