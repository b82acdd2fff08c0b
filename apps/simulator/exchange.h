#ifndef APPS_SIMULATOR_EXCHANGE_H
#define APPS_SIMULATOR_EXCHANGE_H

#include <vector>

#include "apps/simulator/cip.h"
#include "apps/simulator/encapsulation.h"
#include "apps/simulator/fault.h"
#include "apps/simulator/request_path.h"
#include "apps/simulator/tag_services.h"

namespace sim {

/// One request and its answer: what was understood of the request, which faults it meets, and the
/// reply with the places in it that faults change. Used again for every request, so that its
/// buffers need not be allocated anew.
struct Exchange {
    ByteView request;  ///< the whole frame
    uint16_t command = 0;
    int service = -1;  ///< of CIP, -1 without one
    RequestPath path;
    TagAccess access;
    ByteView written;  ///< element bytes of a write request
    uint32_t encapStatus = kEncapSuccess;
    CipStatus status;
    const char* note = nullptr;  ///< why there is no answer

    std::vector<const Fault*> faults;

    Bytes reply;            ///< empty when nothing is answered
    size_t dataItemAt = 0;  ///< head of the data item in the reply, 0 without one
    size_t cipAt = 0;       ///< message-router reply in the reply, 0 without one
    bool connected = false;
    bool closeTcp = false;

    void begin(ByteView frame);
    /// The fault of this kind that strikes the request; null when there is none.
    const Fault* fault(FaultKind kind) const;
};

}  // namespace sim

#endif
