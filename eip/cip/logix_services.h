#ifndef EIP_CIP_LOGIX_SERVICES_H
#define EIP_CIP_LOGIX_SERVICES_H

#include <cstdint>

#include "eip/cip/connection_manager.h"
#include "eip/cip/logix_data.h"
#include "eip/cip/logix_messages.h"
#include "eip/cip/logix_tag_read.h"
#include "eip/cip/logix_tag_write.h"

// Reading and writing controller tags by name over an open connection.

/// Reads `elementCount` elements of a tag, in as many requests as it takes. Returns the decoded
/// reply, to be freed with _FreeLGXRead, which may contain more elements; a short string's
/// count is not compared. What comes in one reply is of one moment of the controller; what takes
/// several is not. Null: (0, -31, 0), nothing sent, when the request does not fit (a part of the
/// name above 255 bytes, a path above 255 words); (5, status word, extended status) when the
/// controller refuses; (0, -102, 236) for the reply of another tag service; (0, -20, 0) for a reply
/// that is malformed, has fewer elements than asked for or is that of several services;
/// otherwise as _ConnectedSend and _DecodeLGX say.
_LGX_Read* _ReadLgxData(_Eip_Session* session, _Eip_Connection* connection, const char* tagName,
                        uint16_t elementCount);

/// Writes a tag: in one request when that fits the connection, else in pieces of whole elements,
/// from the first to the last; a short string is never split. A failure after the first piece says
/// in cip_err_msg() which elements are written. `data` must contain `elementCount` times the type's
/// size bytes; for a short string `elementCount` is its length and `data` its characters. Returns
/// the number of service replies (1, or that of the pieces), or -1: (0, -24, 0) for a type without
/// size, (0, -31, 0) when the request does not fit (a string above 255 characters, a part of the
/// name above 255 bytes, a path above 255 words, a body above 1000 bytes; nothing was sent), (5,
/// status word, extended status) when the controller refuses, (0, -20, 0) for a reply that is no
/// Write Tag reply, otherwise as _ConnectedSend says.
int _WriteLgxData(_Eip_Session* session, _Eip_Connection* connection, const char* tagName,
                  _LGX_Data_Type dataType, const void* data, uint16_t elementCount);

/// The same step by step: sends the next request of a read or write and lets it take the answer.
/// Not after failed or done. Errors as LgxTagRead, LgxTagWrite and _ConnectedSend say; a write that
/// fails after its first piece says in cip_err_msg() which elements are written.
LgxProgress _AdvanceLgxRead(_Eip_Session* session, _Eip_Connection* connection, LgxTagRead* read);
LgxProgress _AdvanceLgxWrite(_Eip_Session* session, _Eip_Connection* connection,
                             LgxTagWrite* write);

#endif
