#ifndef EIP_CIP_LOGIX_SERVICES_H
#define EIP_CIP_LOGIX_SERVICES_H

#include <cstdint>

#include "eip/cip/connection_manager.h"
#include "eip/cip/logix_data.h"
#include "eip/cip/logix_messages.h"

// Reading and writing controller tags by name over an open connection.

/// Reads `elementCount` elements of a tag. Returns the decoded reply, to be freed with
/// _FreeLGXRead, or null: (5, status word, extended status) when the controller refuses; (0, -20,
/// 0) for a reply that is no Read Tag reply, does not hold together or has another number of
/// elements than asked for; otherwise as _ConnectedSend and _DecodeLGX say.
_LGX_Read* _ReadLgxData(_Eip_Session* session, _Eip_Connection* connection, const char* tagName,
                        uint16_t elementCount);

/// Writes a tag. `data` must hold `elementCount` times the type's size bytes; for a short string
/// `elementCount` is its length and `data` its characters. Returns the number of service replies
/// (1), or -1: (0, -24, 0) for a type without size, (0, -31, 0) when the request does not fit (a
/// string above 255 characters, a path above 255 words, a body above 1000 bytes; nothing was sent),
/// (5, status word, extended status) when the controller refuses, (0, -20, 0) for a reply that is
/// no Write Tag reply, otherwise as _ConnectedSend says.
int _WriteLgxData(_Eip_Session* session, _Eip_Connection* connection, const char* tagName,
                  _LGX_Data_Type dataType, const void* data, uint16_t elementCount);

#endif
