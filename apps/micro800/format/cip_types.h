#ifndef APPS_MICRO800_FORMAT_CIP_TYPES_H
#define APPS_MICRO800_FORMAT_CIP_TYPES_H

#include <QString>

#include "apps/micro800/format/tag_type.h"

// The controller's data types: elementary type codes (CIP Networks Library Vol. 1, C-6.1) and what
// the driver's prefixes say of them.

/// The name of a type code, "DINT". A short string is STRING, as the prefixes have it; a structure
/// is "a structure", and a code without a name "type 0xNN".
QString cipTypeName(int code);

/// The prefix type that has exactly this code; null when no prefix names it.
const TagType* tagTypeForCode(int code);

#endif
