#include "eip/cip/cip_error.h"
#include "eip/cip/session.h"
#include "eip/cip/session_header.h"

namespace {

/// Sends a request that is nothing but its header and returns the whole reply.
_Encap_Header* listRequest(_Eip_Session* session, uint16_t command) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    if (!cip::isUsable(session)) {
        return nullptr;
    }
    _Encap_Header request;
    cip::initSessionHeader(&request, command, session);
    if (CipSendData(session->transport, &request) < 0) {
        return nullptr;
    }
    cip::MallocPtr<_Encap_Header> reply = cip::receiveReply(session, command);
    if (!reply) {
        return nullptr;
    }
    const int32_t status = _GetEipStatus(reply.get());
    CIPERROR(CIP_ERR_EIP, status, 0);
    return status == 0 ? reply.release() : nullptr;
}

}  // namespace

_Encap_Header* _ListServices(_Eip_Session* session) {
    return listRequest(session, ENCAP_LIST_SERVICES);
}

_Encap_Header* _ListIdentity(_Eip_Session* session) {
    return listRequest(session, ENCAP_LIST_IDENTITY);
}

_Encap_Header* _ListInterfaces(_Eip_Session* session) {
    return listRequest(session, ENCAP_LIST_INTERFACES);
}
