#ifndef APPS_SIMULATOR_PCCC_TYPE_PARAMETER_H
#define APPS_SIMULATOR_PCCC_TYPE_PARAMETER_H

#include "apps/simulator/wire/bytes.h"

namespace sim {

/// The type/data parameter before the data of typed commands (DF1 Protocol and Command Set,
/// 1770-6.5.16): a flag byte, then what does not fit into it. The flag's high half is the type, or
/// 8 + the number of its bytes; the low half is the size, or 8 + the number of bytes that
/// contain that.
struct TypeParameter {
    uint32_t type = 0;
    uint32_t size = 0;  ///< bytes of an element; of an array, all that follows
};

/// Takes a parameter whose numbers have at most four bytes each. False, with any part of it taken,
/// for anything else.
bool takeTypeParameter(ByteReader& reader, TypeParameter* parameter);

/// Appends a parameter, its numbers in the flag byte where they fit.
void putTypeParameter(Bytes& out, const TypeParameter& parameter);
/// Appends the parameter of an array of `size` bytes, parameter of its elements included. Type and
/// size follow the flag byte in any case, as in a PLC-5's replies.
void putArrayParameter(Bytes& out, uint32_t size);

}  // namespace sim

#endif
