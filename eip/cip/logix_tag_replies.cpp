#include "eip/cip/logix_tag_replies.h"

#include "eip/cip/cip_error.h"
#include "eip/cip/cpf_view.h"
#include "eip/cip/logix_messages.h"
#include "eip/cip/wire.h"

namespace {

cip::MRView invalid() {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
    return cip::viewMR(nullptr, 0);
}

}  // namespace

cip::MRView cip::singleReply(const _Eip_Item* item) {
    const _MR_Reply* reply = _GetService_Reply(item, 0);
    if (!reply) {
        return viewMR(nullptr, 0);
    }
    const MRView outer = viewMRItem(item);
    return reply == outer.reply ? outer : invalid();
}

cip::MRView cip::fragmentReply(const _Eip_Item* item, uint8_t service) {
    const MRView view = viewMRItem(item);
    const bool answers = view.reply && view.reply->service == (service | kReplyServiceBit);
    return answers ? view : invalid();
}

bool cip::isTagRefusal(const _MR_Reply* reply) {
    const int32_t status = _GetLGXStatusWord(reply);
    if (status != 0) {
        CIPERROR(CIP_ERR_AB, status, _GetExtendedStatus(reply));
    }
    return status != 0;
}

// after head and additional status:
// 0  2  data type
// 2  n  data
cip::TagData cip::viewTagData(const MRView& view) {
    const unsigned char* at = _GetMRData(view.reply);
    const int size = view.size - mrHeadSize(view.reply);
    if (size < kLgxTypeSize) {
        return TagData{0, nullptr, 0};
    }
    return TagData{static_cast<int16_t>(getUInt16(at)), at + kLgxTypeSize, size - kLgxTypeSize};
}
