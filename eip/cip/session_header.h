#ifndef EIP_CIP_SESSION_HEADER_H
#define EIP_CIP_SESSION_HEADER_H

#include "eip/cip/malloc_ptr.h"
#include "eip/cip/session.h"

// What the session's request functions share. Internal to eip/cip.

namespace cip {

/// Fills the 24-byte header of a request: command, length 0, the session's handle and context.
void initSessionHeader(_Encap_Header* header, uint16_t command, const _Eip_Session* session);

/// Receives a reply to a command that carries no items. Null with (0, -5, 0) without one, with
/// (0, -7, 0) for a reply to another command.
MallocPtr<_Encap_Header> receiveReply(_Eip_Session* session, uint16_t command);

/// Whether a pointer that must not be null is set; records (0, -1, 0) when not.
bool isUsable(const void* argument);

}  // namespace cip

#endif
