#ifndef TESTS_UNIT_EIP_CIP_REQUEST_BUFFER_H
#define TESTS_UNIT_EIP_CIP_REQUEST_BUFFER_H

#include <cstring>

#include "eip/cip/encap_header.h"
#include "unit/eip/cip/wire_bytes.h"

/// Room for the largest request there is, zeroed.
struct RequestBuffer {
    RequestBuffer() { memset(memory, 0, sizeof(memory)); }
    _Encap_Header* header() { return reinterpret_cast<_Encap_Header*>(memory); }
    Bytes all() const { return bytesAt(memory, sizeof(memory)); }
    Bytes body() { return bytesAt(memory + 24, _GetEncapLength(header())); }
    unsigned char memory[24 + 1000];
};

#endif
