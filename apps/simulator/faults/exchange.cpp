#include "apps/simulator/faults/exchange.h"

namespace sim {

void Exchange::begin(ByteView frame) {
    request = frame;
    command = 0;
    service = -1;
    path.clear();
    room = 0;
    access = TagAccess();
    written = ByteView();
    unconnectedSend = false;
    route = ByteView();
    requestor = ByteView();
    if (hasPccc) {
        hasPccc = false;
        pccc = PcccCommand();
    }
    encapStatus = kEncapSuccess;
    status = CipStatus();
    note = nullptr;
    faultsSelected = false;
    faults.clear();
    reply.clear();
    dataItemAt = 0;
    cipAt = 0;
    requestorAt = 0;
    pcccAt = 0;
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
