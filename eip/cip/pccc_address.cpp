#include "eip/cip/pccc_address.h"

#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/wire.h"

namespace {

/// A level value from here on is escaped.
const int kEscape = 0xFF;

/// Levels in the mask of a logical binary address (level 1, the area, is left at its default).
const unsigned char kLevelFile = 1 << 1;
const unsigned char kLevelElement = 1 << 2;
const unsigned char kLevelSubElement = 1 << 3;

const int kNoDefault = -1;
const int kBitsPerWord = 16;

struct FileKind {
    const char* letters;
    PlcFileType type;
    int defaultNumber;
    int elementSize;
};

/// Longer letters first: ST is not S.
const FileKind kFileKinds[] = {
    {"ST", PLC_FILE_STRING, kNoDefault, 84},
    {"S", PLC_FILE_STATUS, 2, 2},
    {"O", PLC_FILE_OUTPUT, 0, 2},
    {"I", PLC_FILE_INPUT, 1, 2},
    {"B", PLC_FILE_BIT, kNoDefault, 2},
    {"T", PLC_FILE_TIMER, kNoDefault, 6},
    {"C", PLC_FILE_COUNTER, kNoDefault, 6},
    {"R", PLC_FILE_CONTROL, kNoDefault, 6},
    {"N", PLC_FILE_INTEGER, kNoDefault, 2},
    {"F", PLC_FILE_FLOAT, kNoDefault, 4},
    {"A", PLC_FILE_ASCII, kNoDefault, 2},
    {"D", PLC_FILE_BCD, kNoDefault, 2},
    {"L", PLC_FILE_LONG, kNoDefault, 4},
};

/// A named word or bit of a structure. Bits are those of its first word.
struct Member {
    PlcFileType type;
    const char* name;
    int number;
};

const Member kWords[] = {
    {PLC_FILE_TIMER, "PRE", 1},   {PLC_FILE_TIMER, "ACC", 2},   {PLC_FILE_COUNTER, "PRE", 1},
    {PLC_FILE_COUNTER, "ACC", 2}, {PLC_FILE_CONTROL, "LEN", 1}, {PLC_FILE_CONTROL, "POS", 2},
};

const Member kBits[] = {
    {PLC_FILE_TIMER, "EN", 15},   {PLC_FILE_TIMER, "TT", 14},   {PLC_FILE_TIMER, "DN", 13},
    {PLC_FILE_COUNTER, "CU", 15}, {PLC_FILE_COUNTER, "CD", 14}, {PLC_FILE_COUNTER, "DN", 13},
    {PLC_FILE_COUNTER, "OV", 12}, {PLC_FILE_COUNTER, "UN", 11}, {PLC_FILE_COUNTER, "UA", 10},
    {PLC_FILE_CONTROL, "EN", 15}, {PLC_FILE_CONTROL, "EU", 14}, {PLC_FILE_CONTROL, "DN", 13},
    {PLC_FILE_CONTROL, "EM", 12}, {PLC_FILE_CONTROL, "ER", 11}, {PLC_FILE_CONTROL, "UL", 10},
    {PLC_FILE_CONTROL, "IN", 9},  {PLC_FILE_CONTROL, "FD", 8},
};

bool isStructure(PlcFileType type) {
    return type == PLC_FILE_TIMER || type == PLC_FILE_COUNTER || type == PLC_FILE_CONTROL;
}

bool isInputOutput(PlcFileType type) {
    return type == PLC_FILE_OUTPUT || type == PLC_FILE_INPUT;
}

/// Bits that an address of this file type can name; 0 for none.
int bitsPerElement(PlcFileType type) {
    switch (type) {
        case PLC_FILE_FLOAT:
        case PLC_FILE_STRING:
            return 0;
        case PLC_FILE_LONG:
            return 2 * kBitsPerWord;
        default:
            return kBitsPerWord;
    }
}

char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// What is left of the text. Every take moves on only when it succeeds.
class Scanner {
 public:
    explicit Scanner(const char* text) : at(text) {}

    bool atEnd() const { return *at == 0; }

    bool takeChar(char wanted) {
        if (*at != wanted) {
            return false;
        }
        ++at;
        return true;
    }

    bool takeWord(const char* word) {
        const size_t length = strlen(word);
        for (size_t i = 0; i < length; ++i) {
            if (upper(at[i]) != word[i]) {
                return false;
            }
        }
        at += length;
        return true;
    }

    /// A decimal number of at most `limit`.
    bool takeNumber(int32_t limit, int32_t* number) {
        const char* digit = at;
        int32_t value = 0;
        for (; *digit >= '0' && *digit <= '9'; ++digit) {
            value = value * 10 + (*digit - '0');
            if (value > limit) {
                return false;
            }
        }
        if (digit == at) {
            return false;
        }
        at = digit;
        *number = value;
        return true;
    }

    /// The number of the member whose name comes next.
    template <size_t N>
    bool takeMember(const Member (&members)[N], PlcFileType type, int32_t* number) {
        for (const Member& member : members) {
            if (member.type == type && takeWord(member.name)) {
                *number = member.number;
                return true;
            }
        }
        return false;
    }

 private:
    const char* at;
};

/// "N7": file type and number.
bool takeFile(Scanner* scanner, _PLC_Address* address) {
    for (const FileKind& kind : kFileKinds) {
        if (!scanner->takeWord(kind.letters)) {
            continue;
        }
        int32_t number = kind.defaultNumber;
        if (!scanner->takeNumber(UINT16_MAX, &number) && kind.defaultNumber == kNoDefault) {
            return false;
        }
        address->fileType = kind.type;
        address->fileNumber = static_cast<uint16_t>(number);
        return true;
    }
    return false;
}

/// ".ACC", ".2", and a bit by its name: ".DN".
bool takeSubElement(Scanner* scanner, _PLC_Address* address) {
    const PlcFileType type = address->fileType;
    if (isStructure(type)) {
        return scanner->takeMember(kWords, type, &address->subElement) ||
               scanner->takeMember(kBits, type, &address->bit) ||
               scanner->takeNumber(_GetPLCElementSize(type) / 2 - 1, &address->subElement);
    }
    return isInputOutput(type) && scanner->takeNumber(UINT8_MAX, &address->subElement);
}

/// "/5", "/DN".
bool takeBit(Scanner* scanner, _PLC_Address* address) {
    if (address->bit >= 0) {
        return false;
    }
    if (address->subElement < 0 && scanner->takeMember(kBits, address->fileType, &address->bit)) {
        return true;
    }
    return scanner->takeNumber(bitsPerElement(address->fileType) - 1, &address->bit);
}

/// ":2/5", or "/37" in a bit file.
bool takeElement(Scanner* scanner, _PLC_Address* address) {
    int32_t number = 0;
    if (address->fileType == PLC_FILE_BIT && scanner->takeChar('/')) {
        if (!scanner->takeNumber(UINT16_MAX * kBitsPerWord, &number)) {
            return false;
        }
        address->element = static_cast<uint16_t>(number / kBitsPerWord);
        address->bit = number % kBitsPerWord;
        return true;
    }
    if (!scanner->takeChar(':') || !scanner->takeNumber(UINT16_MAX, &number)) {
        return false;
    }
    address->element = static_cast<uint16_t>(number);
    if (scanner->takeChar('.') && !takeSubElement(scanner, address)) {
        return false;
    }
    return !scanner->takeChar('/') || takeBit(scanner, address);
}

/// A level or element: one byte, or the escape and 16 bits. Returns its size.
int putLevel(unsigned char* at, int value) {
    if (value < kEscape) {
        at[0] = static_cast<unsigned char>(value);
        return 1;
    }
    at[0] = static_cast<unsigned char>(kEscape);
    cip::putUInt16(at + 1, static_cast<uint16_t>(value));
    return 1 + 2;
}

int copyOut(unsigned char* buffer, const unsigned char* bytes, int size) {
    if (buffer) {
        memcpy(buffer, bytes, static_cast<size_t>(size));
    }
    return size;
}

}  // namespace

bool _ParsePLCAddress(const char* text, _PLC_Address* address) {
    _PLC_Address parsed = {PLC_FILE_INTEGER, 0, 0, -1, -1};
    Scanner scanner(text ? text : "");
    if (!takeFile(&scanner, &parsed) || !takeElement(&scanner, &parsed) || !scanner.atEnd()) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_ERROR, 0);
        return false;
    }
    if (isStructure(parsed.fileType) && parsed.bit >= 0 && parsed.subElement < 0) {
        parsed.subElement = 0;
    }
    *address = parsed;
    return true;
}

int _GetPLCElementSize(PlcFileType fileType) {
    for (const FileKind& kind : kFileKinds) {
        if (kind.type == fileType) {
            return kind.elementSize;
        }
    }
    return 2;
}

// 0  1    number of the bytes that follow
// 1  1    mask of the levels
// 2  1,3  file number
//    1,3  element
//   [1,3  sub-element]
int _BuildLogicalBinaryAddress(unsigned char* buffer, const char* address) {
    _PLC_Address parsed;
    if (!_ParsePLCAddress(address, &parsed)) {
        return 0;
    }
    unsigned char bytes[1 + 1 + 3 * 3];
    unsigned char mask = kLevelFile | kLevelElement;
    int size = 2;
    size += putLevel(bytes + size, parsed.fileNumber);
    size += putLevel(bytes + size, parsed.element);
    if (parsed.subElement >= 0) {
        mask |= kLevelSubElement;
        size += putLevel(bytes + size, parsed.subElement);
    }
    bytes[0] = static_cast<unsigned char>(size - 1);
    bytes[1] = mask;
    return copyOut(buffer, bytes, size);
}

// 0  1    file number
// 1  1    file type
// 2  1,3  element
//    1    sub-element
int _BuildThreeAddressField(unsigned char* buffer, const char* address) {
    _PLC_Address parsed;
    if (!_ParsePLCAddress(address, &parsed)) {
        return 0;
    }
    if (parsed.fileNumber >= kEscape || parsed.subElement >= kEscape) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_OUT_OF_RANGE, 0);
        return 0;
    }
    unsigned char bytes[1 + 1 + 3 + 1];
    bytes[0] = static_cast<unsigned char>(parsed.fileNumber);
    bytes[1] = parsed.fileType;
    int size = 2;
    size += putLevel(bytes + size, parsed.element);
    bytes[size++] = static_cast<unsigned char>(parsed.subElement < 0 ? 0 : parsed.subElement);
    return copyOut(buffer, bytes, size);
}
