#include "eip/cip/session.h"

#include <algorithm>
#include <cstdlib>

#include "eip/cip/cip_error.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/session_header.h"
#include "eip/cip/wire.h"

namespace {

const uint16_t kProtocolVersion = 1;
const uint16_t kNoOptionFlags = 0;

/// RegisterSession, whole (Vol. 2, 2-4.4).
struct RegisterRequest {
    _Encap_Header header;
    unsigned char protocolVersion[2];
    unsigned char optionFlags[2];
};
static_assert(sizeof(RegisterRequest) == kEncapHeaderSize + 4, "no padding on the wire");

_Eip_Session* allocateSession(unsigned long timeoutMs) {
    cip::MallocPtr<_Eip_Session> session = cip::allocateZeroed<_Eip_Session>(sizeof(_Eip_Session));
    if (session) {
        session->timeoutMs = static_cast<uint32_t>(std::min<unsigned long>(timeoutMs, UINT32_MAX));
    }
    return session.release();
}

}  // namespace

void cip::initSessionHeader(_Encap_Header* header, uint16_t command, const _Eip_Session* session) {
    _InitHeader(header, session->sessionHandle, getUInt32(session->senderContext),
                getUInt32(session->senderContext + 4));
    _SetEncapCommand(header, command);
}

bool cip::isUsable(const void* argument) {
    if (!argument) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_ERROR, 0);
    }
    return argument != nullptr;
}

_Eip_Session* NewSession(unsigned long timeoutMs, CipCallback* transport) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    _Eip_Session* session = allocateSession(timeoutMs);
    if (session) {
        session->transport = transport;
    }
    return session;
}

_Eip_Session* _OpenSession(const char*, int, unsigned long timeoutMs) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    return allocateSession(timeoutMs);
}

void DeleteSession(_Eip_Session* session) {
    free(session);
}

void CloseSession(_Eip_Session* session) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    DeleteSession(session);
}

//  0  24  header: command 0x0065, length 4, handle 0
// 24   2  protocol version (1)
// 26   2  option flags (0)
int _RegisterSession(_Eip_Session* session) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    if (!cip::isUsable(session)) {
        return -1;
    }
    session->sessionHandle = 0;
    RegisterRequest request;
    cip::initSessionHeader(&request.header, ENCAP_REGISTER_SESSION, session);
    _AddINT2Header(&request.header, kProtocolVersion);
    _AddINT2Header(&request.header, kNoOptionFlags);
    const int sent = CipSendData(session->transport, &request.header);
    if (sent < 0) {
        return sent;
    }
    const cip::MallocPtr<_Encap_Header> reply = cip::receiveReply(session, ENCAP_REGISTER_SESSION);
    if (!reply) {
        return -1;
    }
    const int32_t status = _GetEipStatus(reply.get());
    CIPERROR(CIP_ERR_EIP, status, 0);
    if (status == 0) {
        session->sessionHandle = _GetEncapSessionHandle(reply.get());
    }
    return status;
}

int _UnRegisterSession(_Eip_Session* session) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    if (!cip::isUsable(session)) {
        return -1;
    }
    _Encap_Header request;
    cip::initSessionHeader(&request, ENCAP_UNREGISTER_SESSION, session);
    return CipSendData(session->transport, &request);
}

cip::MallocPtr<_Encap_Header> cip::receiveReply(_Eip_Session* session, uint16_t command) {
    MallocPtr<_Encap_Header> reply(CipRecvData(session->transport, session->timeoutMs));
    if (!reply) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_TIMEOUT, 0);
    } else if (_GetEncapCommand(reply.get()) != command) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_UNSOLICITED, 0);
        reply.reset();
    }
    return reply;
}
