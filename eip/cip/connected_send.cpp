// Messages over an open connection.

#include <climits>
#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/cip_trace.h"
#include "eip/cip/connection_manager.h"
#include "eip/cip/cpf_view.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/mr_view.h"
#include "eip/cip/session_header.h"
#include "eip/cip/wire.h"

namespace {

const int kTraceCalls = 2;

const int kConnectionIdSize = 4;
/// Zero bytes after the copied item.
const int kItemCopySlack = 2;

/// Bytes of the body before the message-router request.
const int kConnectedHead = cip::kCommandPrefixSize + cip::kItemCountSize + kItemHeadSize +
                           kConnectionIdSize + kItemHeadSize + kSequenceCountSize;
const int kLargestRequest = kEncapMaxRequestBody - kConnectedHead;

/// Sends the request in a SendUnitData message and waits for the reply.
//  0  4  0x00A1, length 4
//  4  4  O->T connection id
//  8  4  0x00B1, length 2 + n
// 12  2  sequence count
// 14  n  message-router request
_Encap_Header* exchange(_Eip_Session* session, const _Eip_Connection* connection,
                        const void* request, int requestLength) {
    _Eip_FixedItem address = {};
    _Eip_FixedItem data = {};
    _SetItem(&address.head, CPF_CONNECTED_ADDRESS, 0);
    cip::putUInt32(address.fixed, connection->oToTConnectionId);
    _SetItem(&data.head, CPF_CONNECTED_DATA, static_cast<uint16_t>(requestLength));
    cip::putUInt16(data.fixed, connection->sequenceCount);
    return _SendUnitData(session, &address.head, nullptr, &data.head, request);
}

/// Address and data item have the type and the length that a connected reply has. The bytes after
/// them are ignored: targets append items of their own.
bool isConnectedPacket(const cip::CpfView& items) {
    return _GetItemType(items.address) == CPF_CONNECTED_ADDRESS &&
           _GetItemLength(items.address) == kConnectionIdSize &&
           _GetItemType(items.data) == CPF_CONNECTED_DATA &&
           _GetItemLength(items.data) >= kSequenceCountSize;
}

/// The data item of the reply to the request with this sequence count, or null with the error
/// recorded.
const _Eip_Item* connectedData(const _Encap_Header* reply, const _Eip_Session* session,
                               uint16_t sequenceCount) {
    const cip::CpfView items = cip::viewItems(reply);
    if (!cip::answersCommand(reply, items, session, ENCAP_SEND_UNIT_DATA)) {
        return nullptr;
    }
    if (!isConnectedPacket(items)) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return nullptr;
    }
    if (cip::getUInt16(cip::itemData(items.data)) != sequenceCount) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_UNSOLICITED, 0);
        return nullptr;
    }
    CIPERROR(CIP_ERR_EIP, _GetEipStatus(reply), 0);
    return items.data;
}

/// Whether a request can go out at all; records the error.
bool isSendable(const _Eip_Session* session, const _Eip_Connection* connection, const void* request,
                int requestLength) {
    if (!cip::isUsable(session) || !cip::isUsable(connection) || !cip::isUsable(request)) {
        return false;
    }
    // What a connection does not carry the target drops without a word.
    if (requestLength < 0 || requestLength > kLargestRequest ||
        requestLength > _GetConnectedRequestLimit(connection)) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_BUFFER_TOO_SMALL, 0);
        return false;
    }
    return true;
}

}  // namespace

int _GetConnectedRequestLimit(const _Eip_Connection* connection) {
    const bool isKnown = connection && connection->connectionSize != 0;
    return isKnown ? connection->connectionSize - kSequenceCountSize : INT_MAX;
}

_Eip_Item* _ConnectedSend(_Eip_Session* session, _Eip_Connection* connection, const void* request,
                          int requestLength) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    LogCip(kTraceCalls, "->Entering ConnectedSend \n");
    if (!isSendable(session, connection, request, requestLength)) {
        LogCip(kTraceCalls, "!Exiting ConnectedSend with error : %s\n", cip_err_msg());
        return nullptr;
    }
    ++connection->sequenceCount;
    const cip::MallocPtr<_Encap_Header> reply(
        exchange(session, connection, request, requestLength));
    if (!reply) {
        LogCip(kTraceCalls, "!Exiting ConnectedSend with no response\n");
        return nullptr;
    }
    const _Eip_Item* item = connectedData(reply.get(), session, connection->sequenceCount);
    const int size = item ? kItemHeadSize + _GetItemLength(item) + kItemCopySlack : 0;
    cip::MallocPtr<_Eip_Item> copy =
        item ? cip::allocateZeroed<_Eip_Item>(static_cast<size_t>(size)) : nullptr;
    if (!copy) {
        LogCip(kTraceCalls, "!Exiting ConnectedSend with error : %s\n", cip_err_msg());
        return nullptr;
    }
    memcpy(static_cast<void*>(copy.get()), item, static_cast<size_t>(size - kItemCopySlack));
    LogCip(kTraceCalls, "<-Exiting ConnectedSend : size=%d (%p)\n", size,
           static_cast<void*>(copy.get()));
    return copy.release();
}
