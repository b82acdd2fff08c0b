#ifndef EIP_CIP_LOGIX_TAG_REPLIES_H
#define EIP_CIP_LOGIX_TAG_REPLIES_H

#include "eip/cip/mr_view.h"

// The replies to the tag services, found in a connected data item and measured. Internal to
// eip/cip.

namespace cip {

/// The one reply to Read Tag or Write Tag. No reply for what _GetService_Reply refuses, and with
/// (0, -20, 0) for one inside a Multiple Service Packet, which the client did not request.
MRView singleReply(const _Eip_Item* item);

/// The reply to a fragmented service; none with (0, -20, 0) when the item contains no whole reply
/// to exactly that service.
MRView fragmentReply(const _Eip_Item* item, uint8_t service);

/// Records (5, status word, extended status) when the status word is not 0; true when it is not.
bool isTagRefusal(const _MR_Reply* reply);

/// What a read reply carries, with any status.
struct TagData {
    int type;
    const unsigned char* data;
    int size;  ///< 0 when the reply ends before its data begin
};

/// Records nothing.
TagData viewTagData(const MRView& view);

}  // namespace cip

#endif
