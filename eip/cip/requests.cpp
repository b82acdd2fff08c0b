// Building, sending and awaiting SendRRData and SendUnitData requests.

#include <algorithm>
#include <climits>

#include "eip/cip/cip_error.h"
#include "eip/cip/cip_trace.h"
#include "eip/cip/cpf_view.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/session.h"
#include "eip/cip/session_header.h"
#include "eip/cip/wire.h"

namespace {

const int kTraceCalls = 2;
const int kTraceBuffers = 3;
const uint32_t kInterfaceCIP = 0;
const uint32_t kMsPerSecond = 1000;

/// The time-out field contains whole seconds in 16 bits.
uint16_t timeoutSeconds(uint32_t ms) {
    return static_cast<uint16_t>(std::min<uint32_t>(ms / kMsPerSecond, UINT16_MAX));
}

int asTransportTimeout(uint32_t ms) {
    return static_cast<int>(std::min<uint32_t>(ms, INT_MAX));
}

/// Bytes of the whole request, or 0 with an error when the items are unknown or do not fit.
int requestSize(const _Eip_Item* addressItem, const _Eip_Item* dataItem) {
    const int addressSize = _GetItemSize(addressItem);
    const int dataSize = addressSize ? _GetItemSize(dataItem) : 0;
    if (dataSize == 0) {
        return 0;
    }
    const int body = cip::kCommandPrefixSize + cip::kItemCountSize + addressSize +
                     _GetItemLength(addressItem) + dataSize + _GetItemLength(dataItem);
    if (body > kEncapMaxRequestBody) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_BUFFER_TOO_SMALL, 0);
        return 0;
    }
    return kEncapHeaderSize + body;
}

cip::MallocPtr<_Encap_Header> buildRequest(_Eip_Session* session, _Eip_Item* addressItem,
                                           const void* addressData, _Eip_Item* dataItem,
                                           const void* data, uint32_t timeoutMs, int* size) {
    *size = 0;
    if (!cip::isUsable(session) || !cip::isUsable(addressItem) || !cip::isUsable(dataItem)) {
        return nullptr;
    }
    *size = requestSize(addressItem, dataItem);
    if (*size == 0) {
        return nullptr;
    }
    cip::MallocPtr<_Encap_Header> request =
        cip::allocateZeroed<_Encap_Header>(static_cast<size_t>(*size));
    if (request) {
        cip::initSessionHeader(request.get(), ENCAP_NOP, session);
        _AddRR(request.get(), kInterfaceCIP, timeoutSeconds(timeoutMs));
        _AddCPF(request.get(), addressItem, addressData, dataItem, data);
    }
    return request;
}

/// A request that is ready to be sent; null with the error traced as _SendData has it.
cip::MallocPtr<_Encap_Header> buildCommand(_Eip_Session* session, uint16_t command,
                                           _Eip_Item* addressItem, const void* addressData,
                                           _Eip_Item* dataItem, const void* data) {
    cip::MallocPtr<_Encap_Header> request(_BuildRequest(session, addressItem, addressData, dataItem,
                                                        data, session ? session->timeoutMs : 0));
    if (request) {
        _SetEncapCommand(request.get(), command);
    } else {
        LogCip(kTraceCalls, "!Exiting SendData with error : %s\n", cip_err_msg());
    }
    return request;
}

}  // namespace

//  0  24  header
// 24   4  interface handle (0)
// 28   2  time-out, seconds
// 30   n  common packet format
_Encap_Header* _BuildRequest(_Eip_Session* session, _Eip_Item* addressItem, const void* addressData,
                             _Eip_Item* dataItem, const void* data, uint32_t timeoutMs) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    LogCip(kTraceCalls, "->Entering BuildRequest \n");
    int size = 0;
    cip::MallocPtr<_Encap_Header> request =
        buildRequest(session, addressItem, addressData, dataItem, data, timeoutMs, &size);
    if (!request) {
        LogCip(kTraceCalls, "!Exiting BuildRequest with error : %s\n", cip_err_msg());
        return nullptr;
    }
    FlushCipBuffer(kTraceBuffers, request.get(), size);
    LogCip(kTraceCalls, "<-Exiting BuildRequest : size=%d (%p)\n", size,
           static_cast<void*>(request.get()));
    return request.release();
}

_Encap_Header* _SendData_WaitReply(_Eip_Session* session, uint16_t command, _Eip_Item* addressItem,
                                   const void* addressData, _Eip_Item* dataItem, const void* data) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    LogCip(kTraceCalls, "->Entering SendData_WaitReply\n");
    const cip::MallocPtr<_Encap_Header> request =
        buildCommand(session, command, addressItem, addressData, dataItem, data);
    if (!request) {
        return nullptr;
    }
    _Encap_Header* reply = CipSendData_WaitReply(session->transport, request.get(),
                                                 session->timeoutMs, session->timeoutMs);
    if (!reply && cip_err_type() == CIP_ERR_INTERNAL && cip_errno() == CIP_INTERNAL_SUCCESS) {
        // Not every way to lose a reply is recorded by a transport; "success" would be a lie.
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_TIMEOUT, 0);
    }
    LogCip(kTraceCalls, "<-Exiting SendData_WaitReply : %p\n", static_cast<void*>(reply));
    return reply;
}

_Encap_Header* _SendRRData(_Eip_Session* session, _Eip_Item* addressItem, const void* addressData,
                           _Eip_Item* dataItem, const void* data) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    return _SendData_WaitReply(session, ENCAP_SEND_RR_DATA, addressItem, addressData, dataItem,
                               data);
}

_Encap_Header* _SendUnitData(_Eip_Session* session, _Eip_Item* addressItem, const void* addressData,
                             _Eip_Item* dataItem, const void* data) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    return _SendData_WaitReply(session, ENCAP_SEND_UNIT_DATA, addressItem, addressData, dataItem,
                               data);
}

int _SendData(_Eip_Session* session, uint16_t command, _Eip_Item* addressItem,
              const void* addressData, _Eip_Item* dataItem, const void* data) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    LogCip(kTraceCalls, "->Entering SendData \n");
    const cip::MallocPtr<_Encap_Header> request =
        buildCommand(session, command, addressItem, addressData, dataItem, data);
    if (!request) {
        return -1;
    }
    const int sent = CipSendData(session->transport, request.get());
    LogCip(kTraceCalls, "<-Exiting SendData\n");
    return sent;
}

int CipSendData(CipCallback* transport, const _Encap_Header* request) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    if (!transport) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_CONNECTION_FAILED, 0);
        return -1;
    }
    if (!cip::isUsable(request)) {
        return -1;
    }
    return transport->sendData(request);
}

_Encap_Header* CipRecvData(CipCallback* transport, uint32_t timeoutMs) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    if (!transport) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_CONNECTION_FAILED, 0);
        return nullptr;
    }
    return transport->recvData(asTransportTimeout(timeoutMs));
}

_Encap_Header* CipSendData_WaitReply(CipCallback* transport, const _Encap_Header* request,
                                     uint32_t unused, uint32_t timeoutMs) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    if (!transport) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_CONNECTION_FAILED, 0);
        return nullptr;
    }
    if (!cip::isUsable(request)) {
        return nullptr;
    }
    return transport->sendDataWaitReply(request, asTransportTimeout(unused),
                                        asTransportTimeout(timeoutMs));
}

int _CipOpenSock() {
    return 0;
}
