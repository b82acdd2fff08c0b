#ifndef APPS_SIMULATOR_TAG_SERVICES_H
#define APPS_SIMULATOR_TAG_SERVICES_H

#include "apps/simulator/cip.h"
#include "apps/simulator/request_path.h"
#include "apps/simulator/tag_table.h"

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
};

/// Services a Read Tag request: `data` is the element count (16 bits). Appends to `reply` the type
/// (16 bits) and the elements from the one that the path names on; nothing when the status is not
/// kSuccess.
CipStatus readTag(const TagTable& table, const TagBehaviour& behaviour, const RequestPath& path,
                  ByteView data, Bytes& reply, TagAccess& access);

/// Services a Write Tag request: `data` is the type (16 bits), the element count (16 bits) and the
/// elements. Type, count and length have to fit exactly, or else nothing is stored.
CipStatus writeTag(const TagTable& table, const TagBehaviour& behaviour, const RequestPath& path,
                   ByteView data, TagAccess& access);

}  // namespace sim

#endif
