#ifndef APPS_SIMULATOR_WIRE_REQUEST_PATH_H
#define APPS_SIMULATOR_WIRE_REQUEST_PATH_H

#include <string>
#include <vector>

#include "apps/simulator/wire/bytes.h"

namespace sim {

/// What a request is addressed to: a tag by name, or an object by class and instance.
struct RequestPath {
    /// Upper-case tag name, empty in a path of class and instance. Names of several segments are
    /// joined by '.', with the indices of all but the last in brackets: "A[1].B".
    std::string name;
    /// Element numbers after the last name segment.
    std::vector<uint32_t> indices;
    uint32_t classId = 0;
    uint32_t instanceId = 0;
    uint32_t attributeId = 0;

    void clear();
    bool isSymbolic() const { return !name.empty(); }
    /// The name with its indices, as an operator would write it.
    std::string text() const;
};

/// Reads a padded path (CIP Networks Library Vol. 1, appendix C): ANSI extended symbol segments
/// (0x91) with element segments (0x28, 0x29, 0x2A), or a class segment (0x20, 0x21) with an
/// instance segment (0x24, 0x25, 0x26) and an attribute segment (0x30, 0x31). False for anything
/// else.
bool parseRequestPath(ByteView bytes, RequestPath* path);

}  // namespace sim

#endif
