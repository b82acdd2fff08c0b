#include "eip/cip/logix_tag_write.h"

#include <algorithm>

#include "eip/cip/cip_error.h"
#include "eip/cip/logix_messages.h"
#include "eip/cip/logix_tag_replies.h"
#include "eip/cip/request_path.h"

namespace {

int sizeOf(_LGX_Data_Type type) {
    return type == LGX_TYPE_SHORT_STRING ? 0 : _GetLGXDataSize(type);
}

/// Whole elements in each of the pieces when the elements do not fit one Write Tag; 0 when
/// they do, and when not even one fits a piece.
int elementsAPiece(const char* name, int elementSize, int count, int requestLimit) {
    const int path = _BuildIOI(nullptr, name);
    if (path < 0 || elementSize < 1 ||
        elementSize * count <= requestLimit - kWriteTagFixedSize - path) {
        return 0;
    }
    return std::max(0, (requestLimit - kWriteFragmentFixedSize - path) / elementSize);
}

}  // namespace

LgxTagWrite::LgxTagWrite(const char* tagName, _LGX_Data_Type dataType, const void* data,
                         uint16_t elementCount, int requestLimit)
    : name(tagName ? tagName : ""),
      type(dataType),
      bytes(static_cast<const unsigned char*>(data)),
      count(elementCount),
      elementSize(sizeOf(dataType)),
      pieceElements(data ? elementsAPiece(name, elementSize, count, requestLimit) : 0),
      written(0),
      confirmations(0) {}

const unsigned char* LgxTagWrite::nextData() const {
    return bytes + written * elementSize;
}

int LgxTagWrite::nextElements() const {
    return std::min(pieceElements, count - written);
}

unsigned char* LgxTagWrite::nextRequest(int* size) const {
    *size = 0;
    if (elementSize < 0) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_UNSUPPORTED_TYPE, 0);
        return nullptr;
    }
    const uint16_t wholeCount = static_cast<uint16_t>(count);
    if (pieceElements == 0) {
        const int dataBytes = type == LGX_TYPE_SHORT_STRING ? count : count * elementSize;
        return _BuildLgxWriteDataRequest(name, type, bytes, dataBytes, wholeCount, size);
    }
    return _BuildLgxWriteFragmentRequest(name, type, nextData(), nextElements() * elementSize,
                                         wholeCount, static_cast<uint32_t>(written * elementSize),
                                         size);
}

LgxProgress LgxTagWrite::accept(const _Eip_Item* item) {
    const bool isWhole = pieceElements == 0;
    const cip::MRView view = isWhole ? cip::singleReply(item)
                                     : cip::fragmentReply(item, LGX_SERVICE_WRITE_TAG_FRAGMENTED);
    if (!view.reply || cip::isTagRefusal(view.reply)) {
        return LgxProgress::failed;
    }
    if (isWhole && view.reply->service != (LGX_SERVICE_WRITE_TAG | kReplyServiceBit)) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return LgxProgress::failed;
    }
    written += isWhole ? count : nextElements();
    ++confirmations;
    return written == count ? LgxProgress::done : LgxProgress::more;
}
