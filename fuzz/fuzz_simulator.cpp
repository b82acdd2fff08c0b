// Hostile requests to the simulator: for all bytes on a connection, each request has one
// answer or none, and every answer is one whole message.
//
// Input: a byte that chooses the controller, then the stream of one TCP connection, with the
// encapsulation headers' lengths as they come.

#include <cstdint>

#include "apps/simulator/objects/controller.h"
#include "apps/simulator/options.h"

namespace {

const size_t kHeader = 24;
/// Requests of one input; a connection of a client lives longer, but teaches no more.
const int kMostRequests = 12;

/// Tags of every type, arrays, strings and data files: made once, their values change.
struct Plant {
    Plant() {
        sim::Options options;
        for (const char* tag :
             {"B:BOOL", "S:SINT", "I:INT", "D:DINT", "US:USINT", "UI:UINT", "UD:UDINT", "R:REAL",
              "LR:LREAL", "T:STRING=text", "A:DINT[300]", "G:INT[3,4]", "TS:STRING[2]"}) {
            options.tags << QString::fromLatin1(tag);
        }
        QString problem;
        if (!loadTags(options, tags, &problem)) {
            __builtin_trap();
        }
        files.putDefaultFiles();
    }

    sim::TagTable tags;
    sim::DataTable files;
    sim::FaultPlan faults;
};

sim::ControllerSettings settingsFrom(uint8_t choice) {
    sim::ControllerSettings settings;
    settings.servesTags = (choice & 1) == 0;
    settings.connections.limit = (choice & 2) ? 1 : 16;
    settings.connections.largestSize = (choice & 4) ? 64 : sim::kLargestConnectionSize;
    settings.connections.keep = (choice & 8) != 0;
    return settings;
}

void demandWhole(const sim::Bytes& reply) {
    if (reply.empty()) {
        return;
    }
    if (reply.size() < kHeader || reply.size() != kHeader + (reply[2] | reply[3] << 8)) {
        __builtin_trap();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Plant plant;
    if (size < 1) {
        return 0;
    }
    int64_t now = 0;
    sim::Controller controller(settingsFrom(data[0]), plant.tags, plant.files, plant.faults,
                               [&now] { return now; });
    sim::EncapSession session;
    session.owner = 1;
    sim::Exchange exchange;
    ++data;
    --size;
    for (int i = 0; i < kMostRequests && size >= kHeader && !exchange.closeTcp; ++i) {
        const size_t frame = kHeader + (data[2] | data[3] << 8);
        if (frame > size) {
            break;
        }
        // An allocation of exactly the request's size: one byte too far is seen.
        const sim::Bytes request(data, data + frame);
        controller.serve(session, sim::ByteView(request), exchange);
        demandWhole(exchange.reply);
        data += frame;
        size -= frame;
        now += 100;
    }
    controller.disconnected(session);
    return 0;
}
