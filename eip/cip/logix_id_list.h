#ifndef EIP_CIP_LOGIX_ID_LIST_H
#define EIP_CIP_LOGIX_ID_LIST_H

#include <cstdint>

#include "eip/cip/session.h"

/// The reply data of _GetIdList: one allocation of this head and `length` bytes.
struct _Id_List {
    int32_t length;
};

/// The `length` bytes after the head.
const unsigned char* _GetIdListData(const _Id_List* list);

/// Asks the controller at the end of `path` (port segments) for the instances of its symbol class:
/// service 0x4B to class 0x6B, instance 0, in an Unconnected Send. Returns the reply data, to be
/// freed with free(). Null: a general status other than 0 or 6 (6: the list exceeds one reply),
/// recorded as (3, general status, extended status), or as _UnconnectedSend says.
_Id_List* _GetIdList(_Eip_Session* session, const unsigned char* path, int pathLength);

#endif
