#ifndef APPS_SIMULATOR_FAULTS_EXCHANGE_H
#define APPS_SIMULATOR_FAULTS_EXCHANGE_H

#include <vector>

#include "apps/simulator/faults/fault.h"
#include "apps/simulator/pccc/pccc_command.h"
#include "apps/simulator/tags/tag_services.h"
#include "apps/simulator/wire/cip.h"
#include "apps/simulator/wire/encapsulation.h"
#include "apps/simulator/wire/request_path.h"

namespace sim {

/// One request and its answer: what was understood of the request, which faults it meets, and the
/// reply with the places in it that faults change. Used again for every request, so that its
/// buffers need not be allocated anew.
struct Exchange {
    ByteView request;  ///< the whole frame
    uint16_t command = 0;
    int service = -1;  ///< of CIP, -1 without one
    RequestPath path;
    size_t room = 0;  ///< bytes that the reply may have after its head
    TagAccess access;
    ByteView written;              ///< element bytes of a write request
    bool unconnectedSend = false;  ///< the request was wrapped in an Unconnected Send
    ByteView route;                ///< and this was its route path
    ByteView requestor;            ///< requestor id of Execute PCCC
    bool hasPccc = false;          ///< there is a PCCC command in it
    PcccCommand pccc;
    uint32_t encapStatus = kEncapSuccess;
    CipStatus status;
    const char* note = nullptr;  ///< why there is no answer, or one that was given before

    bool faultsSelected = false;
    std::vector<const Fault*> faults;

    Bytes reply;             ///< empty when nothing is answered
    size_t dataItemAt = 0;   ///< head of the data item in the reply, 0 without one
    size_t cipAt = 0;        ///< message-router reply in the reply, 0 without one
    size_t requestorAt = 0;  ///< requestor id in the reply, 0 without one
    size_t pcccAt = 0;       ///< PCCC reply in the reply, 0 without one
    bool connected = false;
    bool closeTcp = false;

    void begin(ByteView frame);
    /// The fault of this kind that strikes the request; null when there is none.
    const Fault* fault(FaultKind kind) const;
};

}  // namespace sim

#endif
