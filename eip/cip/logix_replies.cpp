// Locating and decoding the replies of the Logix tag services.

#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/cpf_view.h"
#include "eip/cip/logix_messages.h"
#include "eip/cip/logix_tag_replies.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/mr_view.h"
#include "eip/cip/wire.h"

namespace {

const uint8_t kMultipleReply = LGX_SERVICE_MULTIPLE | kReplyServiceBit;
const uint8_t kPcccReply = LGX_SERVICE_PCCC | kReplyServiceBit;
const uint8_t kReadTagReply = LGX_SERVICE_READ_TAG | kReplyServiceBit;
const uint8_t kWriteTagReply = LGX_SERVICE_WRITE_TAG | kReplyServiceBit;

/// Head and data type of a good Read Tag reply.
const int kReadTagHeadSize = kMRReplyHeadSize + kLgxTypeSize;

/// General status FF with one word of extended status.
const int32_t kStatusWordExtended = 0x01FF;

/// Extended numbers that go with (0, -102): where decoding gave up.
const int32_t kNoElementSize = 236;
const int32_t kNoElement = 248;

bool isSingleReply(uint8_t service) {
    return service == kPcccReply || service == kReadTagReply || service == kWriteTagReply;
}

/// The message-router reply of a data item; records why there is none.
cip::MRView replyOf(const _Eip_Item* item) {
    if (item && _GetItemType(item) != CPF_CONNECTED_DATA &&
        _GetItemType(item) != CPF_UNCONNECTED_DATA) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_ITEM_TYPE, 0);
        return cip::viewMR(nullptr, 0);
    }
    const cip::MRView outer = cip::viewMRItem(item);
    if (!outer.reply) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
    }
    return outer;
}

/// The replies of a Multiple Service Packet reply (Logix: after the head a count, then as many
/// offsets, counted from the count field; the replies follow).
struct MultipleReplies {
    const unsigned char* count;  ///< the count field
    int size;                    ///< bytes from there to the end
    int replies;
};

/// Where the table begins; false with the error recorded when it is not whole.
bool findTable(const cip::MRView& outer, MultipleReplies* table) {
    table->count = _GetMRData(outer.reply);
    table->size = outer.size - cip::mrHeadSize(outer.reply);
    if (table->size < 2) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return false;
    }
    table->replies = cip::getUInt16(table->count);
    return true;
}

/// Distance of a reply from the count field.
int offsetOf(const MultipleReplies& table, int index) {
    return cip::getUInt16(table.count + 2 + 2 * index);
}

/// The bytes of one reply: they begin after the table and end where the next reply begins.
cip::MRView pickReply(const MultipleReplies& table, int index) {
    const int tableSize = 2 + 2 * table.replies;
    if (tableSize > table.size) {
        return cip::viewMR(nullptr, 0);
    }
    const int begin = offsetOf(table, index);
    const int end = index + 1 < table.replies ? offsetOf(table, index + 1) : table.size;
    if (begin < tableSize || begin > end || end > table.size) {
        return cip::viewMR(nullptr, 0);
    }
    return cip::viewMR(table.count + begin, end - begin);
}

/// A good Read Tag reply carries at least its data type.
bool isWhole(const cip::MRView& view) {
    return view.reply && (view.reply->service != kReadTagReply ||
                          _GetLGXStatusWord(view.reply) != 0 || view.size >= kReadTagHeadSize);
}

/// The service reply at `index` of a data item; records why there is none.
cip::MRView findService(const _Eip_Item* item, int index) {
    const cip::MRView none = cip::viewMR(nullptr, 0);
    const cip::MRView outer = replyOf(item);
    if (!outer.reply) {
        return none;
    }
    MultipleReplies table = {nullptr, 0, 1};
    const bool isMultiple = outer.reply->service == kMultipleReply;
    if (!isMultiple && !isSingleReply(outer.reply->service)) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_UNSUPPORTED_SERVICE, 0);
        return none;
    }
    if (isMultiple && !findTable(outer, &table)) {
        return none;
    }
    if (index < 0 || index >= table.replies) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_OUT_OF_RANGE, 0);
        return none;
    }
    const cip::MRView found = isMultiple ? pickReply(table, index) : outer;
    if (!isWhole(found)) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return none;
    }
    return found;
}

/// Layout of the data of a Read Tag reply.
struct DataLayout {
    int type;
    int elementSize;
    const unsigned char* data;
    int size;
    int count;
};

/// Type, element size and data start; false with the error recorded.
bool findData(const _MR_Reply* reply, int length, DataLayout* layout) {
    layout->type = _GetLGXDataType(reply);
    const bool isString = layout->type == LGX_TYPE_SHORT_STRING;
    const int lengthByte = isString ? 1 : 0;
    if (isString && length < kReadTagHeadSize + lengthByte) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return false;
    }
    const unsigned char* start = _GetData(reply);
    if (!start) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_BAD_DATA, kNoElementSize);
        return false;
    }
    layout->elementSize = isString ? start[0] : _GetLGXDataSize(layout->type);
    layout->data = start + lengthByte;
    layout->size = length - kReadTagHeadSize - lengthByte;
    return true;
}

/// The number of whole elements; false with the error recorded when there is none. Only an empty
/// string has an element of no size.
bool countElements(DataLayout* layout) {
    layout->count = layout->elementSize < 1 ? 1 : layout->size / layout->elementSize;
    if (layout->count < 1) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_BAD_DATA, kNoElement);
    }
    return layout->count >= 1;
}

}  // namespace

int _GetService_ReplyNumber(const _Eip_Item* item) {
    const cip::MRView outer = replyOf(item);
    if (!outer.reply) {
        return 0;
    }
    if (isSingleReply(outer.reply->service)) {
        return 1;
    }
    if (outer.reply->service != kMultipleReply) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_UNSUPPORTED_SERVICE, 0);
        return 0;
    }
    MultipleReplies table;
    return findTable(outer, &table) ? table.replies : 0;
}

const _MR_Reply* _GetService_Reply(const _Eip_Item* item, int index) {
    return findService(item, index).reply;
}

int _GetService_ReplySize(const _Eip_Item* item, int index) {
    return findService(item, index).size;
}

int32_t _GetLGXStatusWord(const _MR_Reply* reply) {
    return reply ? reply->generalStatus | (reply->additionalStatusSize << 8) : -1;
}

int32_t _GetExtendedStatus(const _MR_Reply* reply) {
    if (_GetLGXStatusWord(reply) != kStatusWordExtended) {
        return 0;
    }
    return static_cast<int16_t>(
        cip::getUInt16(reinterpret_cast<const unsigned char*>(reply) + kMRReplyHeadSize));
}

int32_t _GetLGXDataType(const _MR_Reply* reply) {
    if (!reply) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return 0;
    }
    if (cip::isTagRefusal(reply)) {
        return 0;
    }
    if (reply->service != kReadTagReply) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_UNSUPPORTED_TYPE, 0);
        return 0;
    }
    return static_cast<int16_t>(
        cip::getUInt16(reinterpret_cast<const unsigned char*>(reply) + kMRReplyHeadSize));
}

const unsigned char* _GetData(const _MR_Reply* reply) {
    if (!reply) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return nullptr;
    }
    if (cip::isTagRefusal(reply)) {
        return nullptr;
    }
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    const int32_t type = _GetLGXDataType(reply);
    if (type != LGX_TYPE_SHORT_STRING && _GetLGXDataSize(type) < 1) {
        return nullptr;
    }
    return reinterpret_cast<const unsigned char*>(reply) + kReadTagHeadSize;
}

// 0  1  0xCC
// 1  1  reserved
// 2  1  general status
// 3  1  additional status size, words
// 4  2  data type
// 6  n  elements, or one length byte and the characters
_LGX_Read* _DecodeLGX(const _MR_Reply* reply, int length) {
    if (!reply) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_BAD_DATA, kNoElementSize);
        return nullptr;
    }
    if (!isWhole(cip::viewMR(reinterpret_cast<const unsigned char*>(reply), length))) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return nullptr;
    }
    DataLayout layout = {0, 0, nullptr, 0, 0};
    if (!findData(reply, length, &layout) || !countElements(&layout)) {
        return nullptr;
    }
    cip::MallocPtr<_LGX_Read> read = cip::allocateZeroed<_LGX_Read>(
        sizeof(_LGX_Read) + static_cast<size_t>(layout.size) + kLgxReadSlack);
    if (!read) {
        return nullptr;
    }
    read->type = layout.type;
    read->count = layout.count;
    read->size = layout.size;
    read->elementSize = layout.elementSize;
    memcpy(static_cast<void*>(read.get() + 1), layout.data, static_cast<size_t>(layout.size));
    return read.release();
}
