#include "apps/simulator/exchange.h"

namespace sim {

void Exchange::begin(ByteView frame) {
    request = frame;
    command = 0;
    service = -1;
    path.name.clear();
    path.indices.clear();
    access = TagAccess();
    written = ByteView();
    encapStatus = kEncapSuccess;
    status = CipStatus();
    note = nullptr;
    faults.clear();
    reply.clear();
    dataItemAt = 0;
    cipAt = 0;
    connected = false;
    closeTcp = false;
}

const Fault* Exchange::fault(FaultKind kind) const {
    for (const Fault* one : faults) {
        if (one->kind == kind) {
            return one;
        }
    }
    return nullptr;
}

}  // namespace sim
