#ifndef EIP_CIP_PCCC_DATA_H
#define EIP_CIP_PCCC_DATA_H

#include <cstdint>

#include "eip/cip/pccc_types.h"

// PCCC replies and the values in them.

/// Head of a PCCC reply (DF1 Protocol and Command Set, chapter 7); the data follow it.
struct _PCCC_Reply {
    unsigned char command;  ///< of the request | 0x40
    unsigned char status;   ///< STS, 0 is success
    unsigned char transaction[2];
};

const int kPcccReplyHead = 1 + 1 + 2;

/// A decoded read reply: one allocation of this head and `size` data bytes. Freed with
/// _FreePLCRead.
struct _PLC_Read {
    int32_t type;         ///< _PLC_Data_Type of an element
    int32_t count;        ///< elements
    int32_t size;         ///< data bytes
    int32_t elementSize;  ///< bytes
    uint32_t mask;        ///< of the bit that the address names; 0 for none
};

/// The `size` data bytes, little-endian values as the controller sent them.
const unsigned char* _GetPLCReadData(const _PLC_Read* read);

/// Frees a record; null is allowed.
void _FreePLCRead(_PLC_Read* read);

/// Decodes the reply to a typed read: a type/data parameter, or one for an array and one for its
/// elements, then the data, which must fill the reply. The status byte is ignored. Null with
/// (0, -20, 0) when the `length` bytes are malformed, with (1, errno, 0) without memory.
_PLC_Read* _DecodePCCC(const _PCCC_Reply* reply, int length);

/// Decodes the reply to a read with three address fields, bare data of elements of a type and size
/// that the caller knows. Null with (0, -20, 0) when they make no whole number of elements (at
/// least one), with (1, errno, 0) without memory.
_PLC_Read* _DecodePCCCBytes(const _PCCC_Reply* reply, int length, int type, int elementSize);

// Getters. `index` counts elements from 0. No record or no element gives (0, -20, 0), an index that
// is not an element's (0, -21, 0), both with the value 0; a type that the getter does not have
// (0, -24, 0) and -1 (false). Otherwise the error record is cleared.

/// Whether the bit that the mask names is set, without a mask whether the element is not 0. For
/// elements that _PCCC_GetValueAsInteger reads.
bool _PCCC_GetValueAsBoolean(const _PLC_Read* read, int index);
/// Integers, sign-extended, and the bits of bits, bit strings, BCD and byte strings, of 1, 2 or 4
/// bytes. With a mask 1 or 0.
int32_t _PCCC_GetValueAsInteger(const _PLC_Read* read, int index);
/// Floating point of 4 bytes, and integers as the number they are.
float _PCCC_GetValueAsFloat(const _PLC_Read* read, int index);

#endif
