#ifndef APPS_SIMULATOR_TAGS_TAG_SERVICES_H
#define APPS_SIMULATOR_TAGS_TAG_SERVICES_H

#include "apps/simulator/tags/tag_table.h"
#include "apps/simulator/wire/cip.h"
#include "apps/simulator/wire/request_path.h"

namespace sim {

/// Where controllers of the family differ from each other.
struct TagBehaviour {
    uint8_t unknownTagStatus = kPathDestinationUnknown;
    uint8_t boolTrue = 0x01;
    /// Numeric reads answer oracle values, see oracle.h.
    bool oracle = false;
};

/// What a tag request asked for, as far as it could be read; -1 where it could not.
struct TagAccess {
    int type = -1;
    int count = -1;
    int64_t offset = -1;  ///< in bytes, of a piece
};

/// A request for a tag, whole or in pieces.
struct TagRequest {
    uint8_t service;
    const RequestPath& path;
    ByteView data;  ///< after the path
    size_t room;    ///< bytes that the reply may have after its head
};

/// Services Read Tag, whose data is the element count (16 bits), and Read Tag Fragmented, with a
/// byte offset (32 bits) after it (Logix 5000 Controllers Data Access, 1756-PM020). Appends to
/// `reply` the type (16 bits) and the elements from the one that the path names on, without the
/// first `offset` bytes of them. Of elements that do not all fit into the request's room it appends
/// as many whole ones as do, with kPartialTransfer. Nothing for any other status.
CipStatus readTag(const TagTable& table, const TagBehaviour& behaviour, const TagRequest& request,
                  Bytes* reply, TagAccess* access);

/// Services Write Tag, whose data is the type (16 bits), the element count (16 bits) and the
/// elements, and Write Tag Fragmented, whose data has a byte offset (32 bits) before the
/// elements and only some of them, whole ones. kNotEnoughData and kTooMuchData when they are not as
/// long as the count says; a STRING is not taken in pieces. Nothing is stored for any status but
/// kSuccess.
CipStatus writeTag(const TagTable& table, const TagBehaviour& behaviour, const TagRequest& request,
                   TagAccess* access);

}  // namespace sim

#endif
