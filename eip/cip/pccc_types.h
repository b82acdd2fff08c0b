#ifndef EIP_CIP_PCCC_TYPES_H
#define EIP_CIP_PCCC_TYPES_H

// Data types of typed reads and writes, and their type/data parameter on the wire (DF1 Protocol and
// Command Set, 1770-6.5.16, chapter 13). The parameter is a flag byte, then what it announces: its
// high half contains the type, or with bit 7 the number of bytes that contain it; its low half the
// size in bytes, or with bit 3 the number of bytes that contain it. 42 is integer of 2 bytes, 94 08
// is floating point of 4 bytes.

enum _PLC_Data_Type : int {
    PLC_TYPE_BIT = 1,
    PLC_TYPE_BIT_STRING = 2,
    PLC_TYPE_BYTE_STRING = 3,
    PLC_TYPE_INTEGER = 4,
    PLC_TYPE_TIMER = 5,
    PLC_TYPE_COUNTER = 6,
    PLC_TYPE_CONTROL = 7,
    PLC_TYPE_FLOAT = 8,
    PLC_TYPE_ARRAY = 9,  ///< its size counts the parameter of the elements and the elements
    PLC_TYPE_ADDRESS = 15,
    PLC_TYPE_BCD = 16
};

/// The longest parameter that _EncodePLCDataType writes, in bytes.
const int kMaxPLCDataType = 1 + 4 + 4;

/// Writes the parameter and returns its number of bytes; with a null buffer it only counts. 0 with
/// (0, -24, 0) for a negative type or size.
int _EncodePLCDataType(unsigned char* buffer, int type, int size);

/// Reads the parameter at the start of `length` bytes and returns its number of bytes. 0 with
/// (0, -20, 0) when it is not whole, or a value in it does not fit an int.
int _DecodePLCDataType(const unsigned char* data, int length, int* type, int* size);

#endif
