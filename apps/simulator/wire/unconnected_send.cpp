#include "apps/simulator/wire/unconnected_send.h"

namespace sim {

CipStatus decodeUnconnectedSend(ByteView data, UnconnectedSend* request) {
    ByteReader reader(data);
    uint16_t size = 0;
    uint8_t words = 0;
    if (!reader.skip(1 + 1) || !reader.take16(&size) || !reader.take(size, &request->message) ||
        !reader.skip(size % 2) || !reader.take8(&words) || !reader.skip(1) ||
        !reader.take(size_t(words) * 2, &request->route)) {
        return kNotEnoughData;
    }
    return reader.left() == 0 ? kSuccess : kTooMuchData;
}

}  // namespace sim
