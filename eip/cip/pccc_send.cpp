#include "eip/cip/pccc_send.h"

#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/cip_trace.h"
#include "eip/cip/cpf_view.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/mr_view.h"
#include "eip/cip/pccc_requests.h"
#include "eip/cip/session_header.h"
#include "eip/cip/unconnected_send.h"
#include "eip/cip/wire.h"

const unsigned char _PCCC_RequestorID[7] = {0x07, 0x06, 0x04, 0x89, 0x67, 0x45, 0x23};

namespace {

const int kTraceCalls = 2;

/// Service code of Execute PCCC.
const uint8_t kServiceExecutePCCC = 0x4B;

const int kRequestorIdSize = sizeof(_PCCC_RequestorID);
const int kDhpHeaderSize = 2 + 2 + 2 + 2;

/// Command, status, transaction number: what a reply is compared with.
const int kComparedHead = 1 + 1 + 2;

/// A message being put together, and its size; its head comes first.
struct Message {
    unsigned char bytes[kEncapMaxRequestBody];
    int size;
};

/// `front` and the PCCC request after it; false with an error when they do not fit.
bool compose(Message* message, const void* front, int frontSize, const void* request,
             int requestLength) {
    if (requestLength > kEncapMaxRequestBody - frontSize) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_BUFFER_TOO_SMALL, 0);
        return false;
    }
    memcpy(message->bytes, front, static_cast<size_t>(frontSize));
    memcpy(message->bytes + frontSize, request, static_cast<size_t>(requestLength));
    message->size = frontSize + requestLength;
    return true;
}

bool isSendable(const _PCCC_Target* target, const void* request, int requestLength) {
    if (!request || requestLength < kComparedHead) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_NOTHING_TO_SEND, 0);
        return false;
    }
    return cip::isUsable(target);
}

/// A copy of the PCCC reply at `bytes` when it answers the request; null with the error recorded.
cip::MallocPtr<_PCCC_Reply> copyPccc(const unsigned char* bytes, int size, const void* request,
                                     int* replySize) {
    const unsigned char* asked = static_cast<const unsigned char*>(request);
    if (size < kPcccReplyHead) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return nullptr;
    }
    if (bytes[0] != (asked[0] | kPcccReplyBit) || memcmp(bytes + 2, asked + 2, 2) != 0) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_UNSOLICITED, 0);
        return nullptr;
    }
    cip::MallocPtr<_PCCC_Reply> copy = cip::allocateZeroed<_PCCC_Reply>(static_cast<size_t>(size));
    if (copy) {
        memcpy(static_cast<void*>(copy.get()), bytes, static_cast<size_t>(size));
        *replySize = size;
    }
    return copy;
}

// Reply to Execute PCCC:
// 0  4  message-router head, service 0xCB
// 4  7  requestor id
// 11  n  PCCC reply
cip::MallocPtr<_PCCC_Reply> takeExecuted(const _MR_Reply* reply, int size, const void* request,
                                         int* replySize) {
    if (reply->generalStatus != 0) {
        cip::recordMRStatus(reply);
        return nullptr;
    }
    const int dataSize = size - cip::mrHeadSize(reply);
    if (reply->service != (kServiceExecutePCCC | kReplyServiceBit) || dataSize < kRequestorIdSize) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return nullptr;
    }
    const unsigned char* data = _GetMRData(reply);
    if (memcmp(data, _PCCC_RequestorID, kRequestorIdSize) != 0) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_UNSOLICITED, 0);
        return nullptr;
    }
    return copyPccc(data + kRequestorIdSize, dataSize - kRequestorIdSize, request, replySize);
}

/// Requestor id and PCCC request, sent to the PCCC object at the end of the route.
cip::MallocPtr<_MR_Reply> executeUnconnected(const _PCCC_Target* target, const Message& message,
                                             int* size) {
    if (!target->routePath || target->routePathLength == 0) {
        return cip::MallocPtr<_MR_Reply>(_SendMRRequest(target->session, kServiceExecutePCCC,
                                                        PCCC_PATH, sizeof(PCCC_PATH), message.bytes,
                                                        message.size, size));
    }
    int embeddedSize = 0;
    const cip::MallocPtr<unsigned char> embedded(_BuildMRRequest(kServiceExecutePCCC, PCCC_PATH,
                                                                 sizeof(PCCC_PATH), message.bytes,
                                                                 message.size, &embeddedSize));
    if (!embedded) {
        return nullptr;
    }
    return cip::MallocPtr<_MR_Reply>(
        _UnconnectedSend(target->session, _Priority, _TimeOut_Ticks, embedded.get(), embeddedSize,
                         target->routePath, target->routePathLength, size));
}

cip::MallocPtr<_PCCC_Reply> sendUnconnected(const _PCCC_Target* target, const void* request,
                                            int requestLength, int* replySize) {
    if (!isSendable(target, request, requestLength)) {
        return nullptr;
    }
    if (target->dhp) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_UNSUPPORTED_SERVICE, 0);
        return nullptr;
    }
    Message message;
    if (!compose(&message, _PCCC_RequestorID, kRequestorIdSize, request, requestLength)) {
        return nullptr;
    }
    int size = 0;
    const cip::MallocPtr<_MR_Reply> reply = executeUnconnected(target, message, &size);
    return reply ? takeExecuted(reply.get(), size, request, replySize) : nullptr;
}

/// Execute PCCC over a connection to a message router.
cip::MallocPtr<_PCCC_Reply> sendRouted(const _PCCC_Target* target, const void* request,
                                       int requestLength, int* replySize) {
    Message message;
    int size = 0;
    if (!compose(&message, _PCCC_RequestorID, kRequestorIdSize, request, requestLength)) {
        return nullptr;
    }
    const cip::MallocPtr<unsigned char> mrRequest(_BuildMRRequest(
        kServiceExecutePCCC, PCCC_PATH, sizeof(PCCC_PATH), message.bytes, message.size, &size));
    if (!mrRequest) {
        return nullptr;
    }
    const cip::MallocPtr<_Eip_Item> item(
        _ConnectedSend(target->session, target->connection, mrRequest.get(), size));
    if (!item) {
        return nullptr;
    }
    const cip::MRView reply = cip::viewMRItem(item.get());
    if (!reply.reply) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return nullptr;
    }
    return takeExecuted(reply.reply, reply.size, request, replySize);
}

/// A PCCC request over a connection to a DH+ proxy. Request and reply:
// 0  2  destination link
// 2  2  destination node
// 4  2  source link
// 6  2  source node
// 8  n  PCCC request or reply
cip::MallocPtr<_PCCC_Reply> sendOverDhp(const _PCCC_Target* target, const void* request,
                                        int requestLength, int* replySize) {
    unsigned char header[kDhpHeaderSize];
    cip::putUInt16(header, target->dhp->destinationLink);
    cip::putUInt16(header + 2, target->dhp->destinationNode);
    cip::putUInt16(header + 4, target->dhp->sourceLink);
    cip::putUInt16(header + 6, target->dhp->sourceNode);
    Message message;
    if (!compose(&message, header, kDhpHeaderSize, request, requestLength)) {
        return nullptr;
    }
    const cip::MallocPtr<_Eip_Item> item(
        _ConnectedSend(target->session, target->connection, message.bytes, message.size));
    if (!item) {
        return nullptr;
    }
    const int front = kSequenceCountSize + kDhpHeaderSize;
    const int size = _GetItemLength(item.get()) - front;
    return copyPccc(size > 0 ? cip::itemData(item.get()) + front : nullptr, size, request,
                    replySize);
}

/// Traces the end of an exchange and returns the reply.
_PCCC_Reply* finish(cip::MallocPtr<_PCCC_Reply> reply, int size, const char* name) {
    if (!reply) {
        LogCip(kTraceCalls, "!Exiting %s with error : %s\n", name, cip_err_msg());
        return nullptr;
    }
    LogCip(kTraceCalls, "->Exiting SendUnConnectedPCCCRequest : size=%d (%p)\n", size,
           static_cast<void*>(reply.get()));
    return reply.release();
}

}  // namespace

_PCCC_Reply* _SendUnConnectedPCCCRequest(const _PCCC_Target* target, const void* request,
                                         int requestLength, int* replySize) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    int unwanted = 0;
    int* size = replySize ? replySize : &unwanted;
    *size = 0;
    LogCip(kTraceCalls, "->Entering SendUnConnectedPCCCRequest \n");
    cip::MallocPtr<_PCCC_Reply> reply = sendUnconnected(target, request, requestLength, size);
    return finish(std::move(reply), *size, "SendUnConnectedPCCCRequest");
}

_PCCC_Reply* _SendConnectedPCCCRequest(const _PCCC_Target* target, const void* request,
                                       int requestLength, int* replySize) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    int unwanted = 0;
    int* size = replySize ? replySize : &unwanted;
    *size = 0;
    const bool isDhp = target && target->dhp;
    LogCip(kTraceCalls, isDhp ? "->Entering SendConnectedPCCCRequest method is DH+\n"
                              : "->Entering SendConnectedPCCCRequest method is NOT DH+\n");
    cip::MallocPtr<_PCCC_Reply> reply;
    if (isSendable(target, request, requestLength)) {
        reply = isDhp ? sendOverDhp(target, request, requestLength, size)
                      : sendRouted(target, request, requestLength, size);
    }
    return finish(std::move(reply), *size, "SendConnectedPCCCRequest");
}
