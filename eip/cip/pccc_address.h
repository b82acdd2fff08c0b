#ifndef EIP_CIP_PCCC_ADDRESS_H
#define EIP_CIP_PCCC_ADDRESS_H

#include <cstdint>

// Data-table addresses of PLC-5, SLC 500 and MicroLogix controllers, as text and as the fields of
// PCCC commands (DF1 Protocol and Command Set, 1770-6.5.16, chapter 13).
//
// The text is a file type, a file number, ':' and an element; then '.' and a sub-element, '/' and a
// bit, as far as wanted: N7:0, F8:1, B3:2/5, T4:0.ACC, R6:0/DN, S:1, I:1.2/3. All numbers are
// decimal; letters of either case. File types are O, I, S, B, T, C, R, N, F, A, D, L and ST; O, I
// and S mean the files 0, 1 and 2 when no number follows, every other type needs one. A
// sub-element is PRE, ACC (timer, counter), LEN, POS (control) or a word number (0 to 2 in these
// three, any in O and I). A bit is a number below the element's width, or in the first word of a
// timer, counter or control one of its names (EN TT DN; CU CD DN OV UN UA; EN EU DN EM ER UL IN
// FD), which may also follow '.'. B3/37 is bit 37 of the file: B3:2/5.

/// File types of the three-address commands.
enum PlcFileType : uint8_t {
    PLC_FILE_STATUS = 0x84,
    PLC_FILE_BIT = 0x85,
    PLC_FILE_TIMER = 0x86,
    PLC_FILE_COUNTER = 0x87,
    PLC_FILE_CONTROL = 0x88,
    PLC_FILE_INTEGER = 0x89,
    PLC_FILE_FLOAT = 0x8A,
    PLC_FILE_OUTPUT = 0x8B,
    PLC_FILE_INPUT = 0x8C,
    PLC_FILE_STRING = 0x8D,
    PLC_FILE_ASCII = 0x8E,
    PLC_FILE_BCD = 0x8F,
    PLC_FILE_LONG = 0x91
};

/// An address taken apart. A bit of a structure is one of its sub-element 0 if none is named.
struct _PLC_Address {
    PlcFileType fileType;
    uint16_t fileNumber;
    uint16_t element;
    int32_t subElement;  ///< word in the element; -1 when the text names none
    int32_t bit;  ///< in the word (in the element of a long file); -1 when the text names none
};

/// Takes an address text apart. False with error (0, -1, 0) when it is none; null likewise.
bool _ParsePLCAddress(const char* text, _PLC_Address* address);

/// Bytes of one element of a file: 6 in timer, counter and control files, 4 in float and long
/// files, 84 in string files, else 2.
int _GetPLCElementSize(PlcFileType fileType);

/// The logical binary address after a length byte that counts it: mask of the levels (file number
/// and element, sub-element if named), then each level, one byte below 255, else 0xFF and 16 bits.
/// Returns the number of bytes written (length byte included), or 0 with (0, -1, 0) for a text that
/// is no address. With a null buffer only the number is returned. At most 11 bytes.
int _BuildLogicalBinaryAddress(unsigned char* buffer, const char* address);

/// File number, file type, element (one byte below 255, else 0xFF and 16 bits) and sub-element (one
/// byte; 0 when none is named). Returns the number of bytes, at most 6, or 0 with (0, -1, 0) for a
/// text that is no address, with (0, -21, 0) for a file number or a sub-element above 254, for
/// which there is one byte. With a null buffer only the number is returned.
int _BuildThreeAddressField(unsigned char* buffer, const char* address);

#endif
