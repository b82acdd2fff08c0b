#include "eip/cip/logix_tag_read.h"

#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/logix_messages.h"
#include "eip/cip/logix_tag_replies.h"
#include "eip/cip/status_masks.h"

namespace {

LgxProgress invalidReply() {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
    return LgxProgress::failed;
}

/// The first reply's refusal, for a value that cannot be had in pieces.
LgxProgress refusedPart() {
    CIPERROR(CIP_ERR_AB, cip::kPartialTransfer, 0);
    return LgxProgress::failed;
}

unsigned char* dataOf(_LGX_Read* read) {
    return reinterpret_cast<unsigned char*>(read + 1);
}

}  // namespace

LgxTagRead::LgxTagRead(const char* tagName, uint16_t elementCount)
    : name(tagName ? tagName : ""),
      count(elementCount),
      received(0),
      isInPieces(false),
      hasFragments(false),
      isWhole(false) {}

unsigned char* LgxTagRead::nextRequest(int* size) const {
    return isInPieces
               ? _BuildLgxReadFragmentRequest(name, count, static_cast<uint32_t>(received), size)
               : _BuildLgxReadDataRequest(name, count, size);
}

LgxProgress LgxTagRead::accept(const _Eip_Item* item) {
    const LgxProgress progress = isInPieces ? acceptFragment(item) : acceptFirst(item);
    isWhole = progress == LgxProgress::done;
    return progress;
}

_LGX_Read* LgxTagRead::release() {
    return isWhole ? value.release() : nullptr;
}

LgxProgress LgxTagRead::acceptFirst(const _Eip_Item* item) {
    const cip::MRView view = cip::singleReply(item);
    if (!view.reply) {
        return LgxProgress::failed;
    }
    if (view.reply->service == (LGX_SERVICE_READ_TAG | kReplyServiceBit) &&
        _GetLGXStatusWord(view.reply) == cip::kPartialTransfer) {
        const cip::TagData part = cip::viewTagData(view);
        return begin(part.type, part.data, part.size);
    }
    if (cip::isTagRefusal(view.reply)) {
        return LgxProgress::failed;
    }
    value.reset(_DecodeLGX(view.reply, view.size));
    if (!value) {
        return LgxProgress::failed;
    }
    // Fewer than asked for would be padded with zeros on their way to the operator.
    if (value->type != LGX_TYPE_SHORT_STRING && value->count < count) {
        return invalidReply();
    }
    return LgxProgress::done;
}

/// The first reply says that it contains only a part.
LgxProgress LgxTagRead::begin(int type, const unsigned char* data, int size) {
    const int elementSize = _GetLGXDataSize(type);
    if (size < 1 || elementSize < 1) {
        return refusedPart();
    }
    const int wanted = elementSize * count;
    if (size > wanted) {
        return invalidReply();
    }
    if (size == wanted) {
        return refusedPart();  // nothing is missing that could be asked for
    }
    value = cip::allocateZeroed<_LGX_Read>(sizeof(_LGX_Read) + static_cast<size_t>(wanted) +
                                           kLgxReadSlack);
    if (!value) {
        return LgxProgress::failed;
    }
    value->type = type;
    value->count = count;
    value->size = wanted;
    value->elementSize = elementSize;
    isInPieces = true;
    return append(data, size);
}

LgxProgress LgxTagRead::acceptFragment(const _Eip_Item* item) {
    const cip::MRView view = cip::fragmentReply(item, LGX_SERVICE_READ_TAG_FRAGMENTED);
    if (!view.reply) {
        return LgxProgress::failed;
    }
    const int32_t status = _GetLGXStatusWord(view.reply);
    if (status == cip::kServiceNotSupported && !hasFragments) {
        return refusedPart();
    }
    if (status != cip::kPartialTransfer && cip::isTagRefusal(view.reply)) {
        return LgxProgress::failed;
    }
    const cip::TagData part = cip::viewTagData(view);
    const int missing = value->size - received;
    const bool endsEarly = status == 0 && part.size < missing;
    if (part.type != value->type || part.size < 1 || part.size > missing || endsEarly) {
        return invalidReply();
    }
    hasFragments = true;
    return append(part.data, part.size);
}

LgxProgress LgxTagRead::append(const unsigned char* data, int size) {
    memcpy(dataOf(value.get()) + received, data, static_cast<size_t>(size));
    received += size;
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    return received == value->size ? LgxProgress::done : LgxProgress::more;
}
