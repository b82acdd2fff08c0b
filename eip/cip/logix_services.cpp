#include "eip/cip/logix_services.h"

#include "eip/cip/cip_error.h"
#include "eip/cip/cpf_view.h"
#include "eip/cip/malloc_ptr.h"

namespace {

/// A connected data item's sequence count, which its length includes.
const int kSequenceSize = 2;

/// Bytes that the elements of a write take in `data`, or -1 with the error recorded.
int writeBytes(_LGX_Data_Type dataType, uint16_t elementCount) {
    if (dataType == LGX_TYPE_SHORT_STRING) {
        return elementCount;
    }
    const int elementSize = _GetLGXDataSize(dataType);
    return elementSize < 0 ? -1 : elementSize * elementCount;
}

/// The one service reply of a reply item when it answers `service` and does not refuse it; null
/// with the error recorded otherwise. A reply to another service, also inside a Multiple Service
/// Packet that nobody asked for, is no answer.
const _MR_Reply* acceptedReply(const _Eip_Item* item, uint8_t service) {
    const _MR_Reply* reply = _GetService_Reply(item, 0);
    if (!reply) {
        return nullptr;
    }
    const unsigned char* only = cip::itemData(item) + kSequenceSize;
    if (reinterpret_cast<const unsigned char*>(reply) != only ||
        reply->service != (service | kReplyServiceBit)) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return nullptr;
    }
    const int32_t status = _GetLGXStatusWord(reply);
    if (status != 0) {
        CIPERROR(CIP_ERR_AB, status, _GetExtendedStatus(reply));
        return nullptr;
    }
    return reply;
}

struct LgxReadDeleter {
    void operator()(_LGX_Read* read) const { _FreeLGXRead(read); }
};

}  // namespace

_LGX_Read* _ReadLgxData(_Eip_Session* session, _Eip_Connection* connection, const char* tagName,
                        uint16_t elementCount) {
    int size = 0;
    const cip::MallocPtr<unsigned char> request(
        _BuildLgxReadDataRequest(tagName, elementCount, &size));
    if (!request) {
        return nullptr;
    }
    const cip::MallocPtr<_Eip_Item> item(_ConnectedSend(session, connection, request.get(), size));
    const _MR_Reply* reply = item ? acceptedReply(item.get(), LGX_SERVICE_READ_TAG) : nullptr;
    if (!reply) {
        return nullptr;
    }
    std::unique_ptr<_LGX_Read, LgxReadDeleter> read(
        _DecodeLGX(reply, _GetItemLength(item.get()) - kSequenceSize));
    if (read && read->type != LGX_TYPE_SHORT_STRING && read->count != elementCount) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return nullptr;
    }
    return read.release();
}

int _WriteLgxData(_Eip_Session* session, _Eip_Connection* connection, const char* tagName,
                  _LGX_Data_Type dataType, const void* data, uint16_t elementCount) {
    const int dataBytes = writeBytes(dataType, elementCount);
    if (dataBytes < 0) {
        return -1;
    }
    int size = 0;
    const cip::MallocPtr<unsigned char> request(
        _BuildLgxWriteDataRequest(tagName, dataType, data, dataBytes, elementCount, &size));
    if (!request) {
        return -1;
    }
    const cip::MallocPtr<_Eip_Item> item(_ConnectedSend(session, connection, request.get(), size));
    if (!item || !acceptedReply(item.get(), LGX_SERVICE_WRITE_TAG)) {
        return -1;
    }
    return _GetService_ReplyNumber(item.get());
}
