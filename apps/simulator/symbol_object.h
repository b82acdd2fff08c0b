#ifndef APPS_SIMULATOR_SYMBOL_OBJECT_H
#define APPS_SIMULATOR_SYMBOL_OBJECT_H

#include "apps/simulator/cip.h"
#include "apps/simulator/tag_table.h"

namespace sim {

/// As many as an unconnected reply holds.
const size_t kMostListedInstances = 120;

/// Appends the instances of the symbol class, 32 bits each: one a tag, numbered from 1 in the order
/// in which the tags were declared. kPartialTransfer when there are more than one reply holds.
CipStatus listSymbolInstances(const TagTable& table, ByteView request, Bytes& data);

}  // namespace sim

#endif
