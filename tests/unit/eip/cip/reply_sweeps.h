#ifndef TESTS_UNIT_EIP_CIP_REPLY_SWEEPS_H
#define TESTS_UNIT_EIP_CIP_REPLY_SWEEPS_H

#include <functional>
#include <string>

#include "unit/eip/cip/wire_bytes.h"

// What a hostile or broken sender could make of a valid reply. As a transport guarantees, each
// variant contains 24 bytes and as many more as its length field counts.

/// `at` is the offset of the first byte that differs (or the size the reply was cut to).
typedef std::function<void(const Bytes& variant, size_t at)> VariantUser;

/// The reply cut after every byte from the header on.
void forEachCut(const Bytes& whole, const VariantUser& use);

/// Every byte in turn set to each of some 12 values: ends of the ranges, neighbours, other bits.
void forEachChangedByte(const Bytes& whole, const VariantUser& use);

/// Every two neighbouring bytes in turn set to wild 16-bit values, every four to wild 32-bit ones.
void forEachWildField(const Bytes& whole, const VariantUser& use);

/// All three.
void forEachVariant(const Bytes& whole, const VariantUser& use);

#endif
