#ifndef EIP_CIP_MR_VIEW_H
#define EIP_CIP_MR_VIEW_H

#include "eip/cip/common_packet.h"
#include "eip/cip/cpf_view.h"
#include "eip/cip/message_router.h"

// A message-router reply found inside a data item and measured. Internal to eip/cip.

namespace cip {

/// `reply` is null when the bytes do not contain a head with all its additional status words.
struct MRView {
    const _MR_Reply* reply;
    int size;  ///< bytes, head included
};

/// Measures the `size` bytes at `bytes`, of which none is read before it is known to be there.
MRView viewMR(const unsigned char* bytes, int size);

/// The reply inside a data item that contains 4 + its length field bytes: after the head (0x00B2),
/// the sequence count (0x00B1) or the socket address (0x8000). Null is allowed.
MRView viewMRItem(const _Eip_Item* item);

/// Bytes of head and additional status: where the reply data begin.
inline int mrHeadSize(const _MR_Reply* reply) {
    return kMRReplyHeadSize + 2 * reply->additionalStatusSize;
}

/// Records (3, general status, extended status).
void recordMRStatus(const _MR_Reply* reply);

/// Whether an unconnected or connected reply, of which `items` is the view, is one to `command` of
/// this session and has a data item; a target that sends one with an encapsulation status other
/// than 0 has answered all the same. Records when not: (2, status, 0) for a reply without a data
/// item, (0, -7, 0) for one to another command or session, (0, -20, 0) for a data item that is
/// announced but not there.
bool answersCommand(const _Encap_Header* reply, const CpfView& items, const _Eip_Session* session,
                    uint16_t command);

/// _SendMRRequest for a service whose reply may come from a request embedded in it: accepted are
/// replies of the service `answering`, and refusals by `service` itself.
_MR_Reply* sendMRRequest(_Eip_Session* session, uint8_t service, const void* path, int pathLength,
                         const void* data, int dataLength, uint8_t answering, int* replySize);

}  // namespace cip

#endif
