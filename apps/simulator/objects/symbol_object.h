#ifndef APPS_SIMULATOR_OBJECTS_SYMBOL_OBJECT_H
#define APPS_SIMULATOR_OBJECTS_SYMBOL_OBJECT_H

#include "apps/simulator/tags/tag_table.h"
#include "apps/simulator/wire/cip.h"

// The symbol class: one instance a tag, numbered from 1 in the order in which the tags were
// declared (Logix 5000 Controllers Data Access, 1756-PM020).

namespace sim {

/// Which tags have an instance.
enum class SymbolList {
    all,
    /// Without what real controllers are reported to leave out: arrays of BOOL, arrays that do not
    /// begin at 0, and members of structures. The numbers of the others stay.
    partial,
    none,  ///< there is no symbol class
};

/// As many as fit an unconnected reply.
const size_t kMostListedInstances = 120;

/// Appends the instances of the symbol class, 32 bits each. kPartialTransfer when there are more
/// than fit one reply.
CipStatus listSymbolInstances(TagTable& table, SymbolList listed, ByteView request, Bytes* data);

/// Services Get_Instance_Attribute_List: `request` is a number of attributes and their numbers, 16
/// bits each. Appends of every instance from `first` on its number (32 bits) and those attributes,
/// as many whole instances as fit `room` bytes; kPartialTransfer when that is not all.
///
///   1 name (16 bits of length, characters)   6 software control (32 bits)
///   2 type (16 bits)                         7 bytes an element (16 bits)
///   3 symbol address (32 bits, 0)            8 elements of three dimensions (32 bits each)
///   5 object address (32 bits, 0)            10 external access (8 bits, 0: read and write)
///
/// kAttributeNotSupported for any other attribute; kReplyDataTooLarge when not even one instance
/// fits.
CipStatus getInstanceAttributeList(TagTable& table, SymbolList listed, uint32_t first,
                                   ByteView request, size_t room, Bytes* data);

}  // namespace sim

#endif
