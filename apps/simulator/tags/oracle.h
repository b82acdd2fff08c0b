#ifndef APPS_SIMULATOR_TAGS_ORACLE_H
#define APPS_SIMULATOR_TAGS_ORACLE_H

#include "apps/simulator/tags/tag_table.h"

// Values that show their origin and their age.
//
// Every element of a numeric tag has a number, its ordinal (elements of all tags counted through in
// the order of the table), and a counter. A read answers
//
//     DINT, UDINT, DWORD   ordinal << 20 | counter (20 bits)
//     LREAL                the same number, exactly
//     REAL                 ordinal << 12 | counter (12 bits), exactly for ordinals below 4096
//     INT, UINT            ordinal << 8 | counter (8 bits)
//     SINT, USINT          ordinal << 4 | counter (4 bits)
//
// and then adds 1 to the counter, which begins at 1. A write sets the counter to the lowest bits of
// the value written. So two reads of an element never give the same value, and a later one gives
// the larger (until the counter wraps).

namespace sim {

/// Ordinals that the twelve bits of a 4-byte value can contain.
const size_t kMaxOracleElements = 1 << 12;

/// Appends the value of the next read of the element and moves its counter on. BOOL and STRING have
/// no oracle values: false, and nothing is appended.
bool putOracleValue(Tag& tag, size_t element, Bytes* out);

/// Takes over what was written to the element: the value that its bytes contain now.
void noteOracleWrite(Tag& tag, size_t element);

}  // namespace sim

#endif
