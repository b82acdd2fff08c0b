#include "apps/simulator/symbol_object.h"

#include <algorithm>

namespace sim {

CipStatus listSymbolInstances(const TagTable& table, ByteView request, Bytes& data) {
    if (!request.empty()) {
        return kTooMuchData;
    }
    const size_t listed = std::min(table.size(), kMostListedInstances);
    for (size_t i = 1; i <= listed; ++i) {
        put32(data, uint32_t(i));
    }
    return listed < table.size() ? kPartialTransfer : kSuccess;
}

}  // namespace sim
