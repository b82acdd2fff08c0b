// Requests with any bytes: whatever arrives, the controller answers with a whole frame or not at
// all. The address sanitizer tells whether it read past their end.

#include <random>

#include "apps/simulator/request_log.h"

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
            frame(kClose),
            frame(kReadA),
            frame(kWriteA),
            frame("6300 0000 00000000 00000000 0000000000000000 00000000"),
            frame("7000 2C00 SSSSSSSS 00000000 0000000000000000 00000000 00000000 0000 0200"
                  "A100 0400 CCCCCCCC B100 1600 0300 4D 03 9104 4E414D45 DA00 0100 05 48656C6C6F"),
            frame("7000 2800 SSSSSSSS 00000000 0000000000000000 00000000 00000000 0000 0200"
                  "A100 0400 CCCCCCCC B100 1200 0300 4C 06 9104 47524944 2802 29000100 0200"),
        };
    }

    /// Serves an exact copy of the bytes, so that a read past their end is a read past a heap
    /// block.
    void serveAndCheck(const sim::Bytes& bytes) {
        const sim::Bytes exact(bytes.begin(), bytes.end());
        serveBytes(exact);
        const sim::Bytes& reply = m_exchange.reply;
        if (!reply.empty()) {
            ASSERT_LE(24u, reply.size()) << hexOf(bytes);
            ASSERT_EQ(reply.size() - 24, sim::get16(reply, 2)) << hexOf(bytes);
            ASSERT_EQ(sim::get16(bytes, 0), sim::get16(reply, 0)) << hexOf(bytes);
        }
        requestLogLine(0, "", m_exchange, nullptr);
    }
};

TEST_F(HostileRequests, CutAnywhere) {
    for (const sim::Bytes& request : validRequests()) {
        for (size_t size = 0; size <= request.size(); ++size) {
            serveAndCheck(sim::Bytes(request.begin(), request.begin() + long(size)));
        }
    }
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
}

TEST_F(HostileRequests, RandomChanges) {
    std::mt19937 random(1);
    const std::vector<sim::Bytes> requests = validRequests();
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
}

}  // namespace
