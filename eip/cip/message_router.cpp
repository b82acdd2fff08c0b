#include "eip/cip/message_router.h"

#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/cpf_view.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/mr_view.h"
#include "eip/cip/session_header.h"
#include "eip/cip/wire.h"

unsigned char CM_PATH[4] = {0x20, 0x06, 0x24, 0x01};
unsigned char ROUTER_PATH[4] = {0x20, 0x02, 0x24, 0x01};
unsigned char BACKPLANE_DATA_PATH[4] = {0x20, 0x66, 0x24, 0x01};
unsigned char PCCC_PATH[4] = {0x20, 0x67, 0x24, 0x01};
unsigned char DHPA_PROXY_PATH[6] = {0x20, 0xA6, 0x24, 0x01, 0x2C, 0x01};
unsigned char DHPB_PROXY_PATH[6] = {0x20, 0xA6, 0x24, 0x02, 0x2C, 0x01};

namespace {

/// Service, path size.
const int kMRRequestHeadSize = 1 + 1;
const int kMaxPathBytes = 255 * 2;

/// A socket address item's bytes before the message-router reply, all of which its length counts.
const int kSockaddrSkip = 28;

/// The checks of _BuildMRRequest; records the error.
bool fitsRequest(const void* path, int pathLength, const void* data, int dataLength) {
    if (pathLength < 0 || dataLength < 0 || (pathLength > 0 && !path) ||
        (dataLength > 0 && !data)) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_ERROR, 0);
        return false;
    }
    if (pathLength > kMaxPathBytes ||
        dataLength > kEncapMaxRequestBody - kMRRequestHeadSize - pathLength) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_BUFFER_TOO_SMALL, 0);
        return false;
    }
    return true;
}

/// Whether the reply is one to the request: of the service that answers it, or a refusal by the
/// service that carries it.
bool answers(const _MR_Reply* reply, uint8_t service, uint8_t answering) {
    if (reply->service == (answering | kReplyServiceBit)) {
        return true;
    }
    return reply->service == (service | kReplyServiceBit) && reply->generalStatus != 0;
}

/// A copy of the message-router reply inside the data item of a reply that passed answersCommand.
cip::MallocPtr<_MR_Reply> copyMRReply(const _Eip_Item* data, uint8_t service, uint8_t answering,
                                      int* size) {
    const cip::MRView found = cip::viewMRItem(data);
    if (!found.reply || !answers(found.reply, service, answering)) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return nullptr;
    }
    cip::MallocPtr<_MR_Reply> copy =
        cip::allocateZeroed<_MR_Reply>(static_cast<size_t>(found.size));
    if (copy) {
        memcpy(static_cast<void*>(copy.get()), found.reply, static_cast<size_t>(found.size));
        cip::recordMRStatus(copy.get());
        *size = found.size;
    }
    return copy;
}

}  // namespace

cip::MRView cip::viewMR(const unsigned char* bytes, int size) {
    MRView view = {nullptr, 0};
    if (size < kMRReplyHeadSize) {
        return view;
    }
    const _MR_Reply* reply = reinterpret_cast<const _MR_Reply*>(bytes);
    if (mrHeadSize(reply) > size) {
        return view;
    }
    view.reply = reply;
    view.size = size;
    return view;
}

cip::MRView cip::viewMRItem(const _Eip_Item* item) {
    if (!item) {
        return viewMR(nullptr, 0);
    }
    int before = 0;   // bytes of the item before the reply
    int counted = 0;  // how many of them its length field counts
    switch (_GetItemType(item)) {
        case CPF_UNCONNECTED_DATA:
            before = kItemHeadSize;
            break;
        case CPF_CONNECTED_DATA:
            before = kItemHeadSize + kSequenceCountSize;
            counted = kSequenceCountSize;
            break;
        case CPF_SOCKADDR_O_TO_T:
            before = kSockaddrSkip;
            counted = kSockaddrSkip;
            break;
        default:
            return viewMR(nullptr, 0);
    }
    const int size = _GetItemLength(item) - counted;
    if (size < kMRReplyHeadSize) {
        return viewMR(nullptr, 0);
    }
    return viewMR(reinterpret_cast<const unsigned char*>(item) + before, size);
}

void cip::recordMRStatus(const _MR_Reply* reply) {
    CIPERROR(CIP_ERR_MR, reply->generalStatus, _GetMRExtendedStatus(reply));
}

bool cip::answersCommand(const _Encap_Header* reply, const CpfView& items,
                         const _Eip_Session* session, uint16_t command) {
    const int32_t status = _GetEipStatus(reply);
    if (!items.data && status != 0) {
        CIPERROR(CIP_ERR_EIP, status, 0);
        return false;
    }
    if (_GetEncapCommand(reply) != command ||
        _GetEncapSessionHandle(reply) != session->sessionHandle) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_UNSOLICITED, 0);
        return false;
    }
    if (items.broken) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
    } else if (!items.data) {
        CIPERROR(CIP_ERR_EIP, status, 0);
    }
    return items.data != nullptr;
}

// 0  1  service
// 1  1  path size, words
// 2  n  path
//    n  data
unsigned char* _BuildMRRequest(uint8_t service, const void* path, int pathLength, const void* data,
                               int dataLength, int* size) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    *size = 0;
    if (!fitsRequest(path, pathLength, data, dataLength)) {
        return nullptr;
    }
    const int total = kMRRequestHeadSize + pathLength + dataLength;
    cip::MallocPtr<unsigned char> request =
        cip::allocateZeroed<unsigned char>(static_cast<size_t>(total));
    if (!request) {
        return nullptr;
    }
    unsigned char* at = request.get();
    *at++ = service;
    *at++ = static_cast<unsigned char>(pathLength / 2);
    if (pathLength > 0) {
        memcpy(at, path, static_cast<size_t>(pathLength));
    }
    if (dataLength > 0) {
        memcpy(at + pathLength, data, static_cast<size_t>(dataLength));
    }
    *size = total;
    return request.release();
}

_Encap_Header* _ExSendMRRequest(_Eip_Session* session, const void* request, int requestLength) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    if (!cip::isUsable(request) || !fitsRequest(nullptr, 0, request, requestLength)) {
        return nullptr;
    }
    _Eip_Item address;
    _Eip_Item data;
    _SetItem(&address, CPF_NULL_ADDRESS, 0);
    _SetItem(&data, CPF_UNCONNECTED_DATA, static_cast<uint16_t>(requestLength));
    return _SendRRData(session, &address, nullptr, &data, request);
}

_MR_Reply* cip::sendMRRequest(_Eip_Session* session, uint8_t service, const void* path,
                              int pathLength, const void* data, int dataLength, uint8_t answering,
                              int* replySize) {
    int unwanted = 0;
    int* size = replySize ? replySize : &unwanted;
    *size = 0;
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    int requestSize = 0;
    const MallocPtr<unsigned char> request(
        _BuildMRRequest(service, path, pathLength, data, dataLength, &requestSize));
    if (!request) {
        return nullptr;
    }
    const MallocPtr<_Encap_Header> reply(_ExSendMRRequest(session, request.get(), requestSize));
    if (!reply) {
        return nullptr;
    }
    const CpfView items = viewItems(reply.get());
    if (!answersCommand(reply.get(), items, session, ENCAP_SEND_RR_DATA)) {
        return nullptr;
    }
    return copyMRReply(items.data, service, answering, size).release();
}

_MR_Reply* _SendMRRequest(_Eip_Session* session, uint8_t service, const void* path, int pathLength,
                          const void* data, int dataLength, int* replySize) {
    return cip::sendMRRequest(session, service, path, pathLength, data, dataLength, service,
                              replySize);
}

const _MR_Reply* _GetMRReply(const _Encap_Header* reply) {
    const _MR_Reply* found = cip::viewMRItem(cip::viewItems(reply).data).reply;
    if (!found) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
    }
    return found;
}

const _MR_Reply* _GetCMReply(const _Encap_Header* reply) {
    return _GetMRReply(reply);
}

int _GetMRReplySize(const _Encap_Header* reply) {
    return cip::viewMRItem(cip::viewItems(reply).data).size;
}

int _GetMRDataSize(const _Encap_Header* reply) {
    const cip::MRView found = cip::viewMRItem(cip::viewItems(reply).data);
    return found.reply ? found.size - cip::mrHeadSize(found.reply) : 0;
}

const unsigned char* _GetMRData(const _MR_Reply* reply) {
    return reply ? reinterpret_cast<const unsigned char*>(reply) + cip::mrHeadSize(reply) : nullptr;
}

int32_t _GetMRExtendedStatus(const _MR_Reply* reply) {
    if (!reply) {
        return -1;
    }
    const unsigned char* additional = reinterpret_cast<const unsigned char*>(reply + 1);
    switch (reply->additionalStatusSize) {
        case 1:
            return static_cast<int16_t>(cip::getUInt16(additional));
        case 2:
            return static_cast<int32_t>(cip::getUInt32(additional));
        default:
            return 0;
    }
}
