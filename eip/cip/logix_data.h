#ifndef EIP_CIP_LOGIX_DATA_H
#define EIP_CIP_LOGIX_DATA_H

#include <QByteArray>
#include <cstdint>

// Tag values: elementary data types, the decoded read reply and the getters on it.

/// Elementary data type codes (CIP Networks Library Vol. 1, C-6.1). Any code that comes off the
/// wire or a pipe fits the type.
enum _LGX_Data_Type : int {
    LGX_TYPE_BOOL = 0xC1,
    LGX_TYPE_SINT = 0xC2,
    LGX_TYPE_INT = 0xC3,
    LGX_TYPE_DINT = 0xC4,
    LGX_TYPE_USINT = 0xC6,
    LGX_TYPE_UINT = 0xC7,
    LGX_TYPE_UDINT = 0xC8,
    LGX_TYPE_REAL = 0xCA,
    LGX_TYPE_LREAL = 0xCB,
    LGX_TYPE_DWORD = 0xD3,
    LGX_TYPE_SHORT_STRING = 0xDA  ///< one length byte, then the characters
};

/// A decoded read reply: one allocation of this head, `size` data bytes and 8 zero bytes of slack.
/// Made by _DecodeLGX and _ReadLgxData only; freed with _FreeLGXRead.
struct _LGX_Read {
    int32_t type;         ///< as the reply has it
    int32_t count;        ///< elements in the reply
    int32_t size;         ///< data bytes
    int32_t elementSize;  ///< bytes; for a short string its length
    uint32_t mask;        ///< for the numeric getters; 0 and all ones mean none. 0 from decoding
};

/// Zero bytes after the data, so that a getter just past the last element stays in the allocation.
const int kLgxReadSlack = 8;

/// The `size` data bytes of a record, little-endian values as the controller sent them.
const unsigned char* _GetLGXReadData(const _LGX_Read* read);

/// Frees a record; null is allowed.
void _FreeLGXRead(_LGX_Read* read);

/// Bytes of one element. -1 with (0, -24, 0) for a short string and for unknown codes.
int _GetLGXDataSize(int type);
/// 1 to 5 give BOOL, SINT, INT, DINT and REAL, anything else -1.
int _LGXDataType(int number);

/// The data: for a short string its characters, else all `size` bytes. Deep copy. Empty for null.
QByteArray GetLGXValueAsByteArray(const _LGX_Read* read);

// Numeric getters. `index` counts elements from 0. A record without elements (or null) gives
// (0, -20, 0) and 0. An index not below the count records (0, -21, 0) and still gives the bytes
// found there as long as they lie inside the record's slack, else 0: check the error record. With a
// mask set the result is 1 when value & mask is not 0, else 0.

/// BOOL, USINT, UINT as they are, SINT and INT sign-extended, DINT, UDINT, DWORD, and a REAL's
/// bits. Another type: (0, -24, 0) and all ones.
uint32_t GetLGXValueAsUInt32(const _LGX_Read* read, int index);
/// The same bits as a signed number; -1 for another type.
int32_t _GetLGXValueAsInteger(const _LGX_Read* read, int index);
/// A REAL. Another type: (0, -24, 0) and -1.0.
float _GetLGXValueAsFloat(const _LGX_Read* read, int index);
/// An LREAL. Another type: (0, -24, 0) and -1.0.
double GetLGXValueAsDouble(const _LGX_Read* read, int index);

/// Copies at most `bufferSize` characters of a short string, without a terminator. 0; for a record
/// without elements 0 with (0, -20, 0), for another type -1 with (0, -24, 0).
int GetLGXValueAsString(const _LGX_Read* read, char* buffer, int bufferSize);

#endif
