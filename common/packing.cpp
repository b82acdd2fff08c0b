#include "common/packing.h"

#include <QtGlobal>
#include <cstring>

#include "common/digits.h"

namespace {

const qint64 kLargestRecord = 0x7FFFFFFF;
const qint64 kLargestArray = 0x40000000;

enum ByteOrder { kLittleEndian, kBigEndian, kAsInMemory };

/// The meaning of one letter.
struct Letter {
    char letter;
    int width;               ///< bytes of one item
    ByteOrder order;         ///< of an item without a count
    bool countable;          ///< may have a count before it
    ByteOrder countedOrder;  ///< of the items after a count
};

const Letter kLetters[] = {
    {'c', 1, kLittleEndian, true, kAsInMemory},  {'C', 1, kLittleEndian, true, kAsInMemory},
    {'s', 2, kLittleEndian, false, kAsInMemory}, {'S', 2, kLittleEndian, false, kAsInMemory},
    {'v', 2, kLittleEndian, true, kAsInMemory},  {'n', 2, kBigEndian, true, kBigEndian},
    {'i', 4, kLittleEndian, false, kAsInMemory}, {'l', 4, kLittleEndian, false, kAsInMemory},
    {'I', 4, kLittleEndian, false, kAsInMemory}, {'L', 4, kLittleEndian, false, kAsInMemory},
    {'V', 4, kLittleEndian, true, kAsInMemory},  {'N', 4, kBigEndian, true, kBigEndian},
    {'x', 1, kAsInMemory, true, kAsInMemory},    {'X', 1, kAsInMemory, true, kAsInMemory},
};

const Letter* findLetter(char c) {
    for (const Letter& candidate : kLetters) {
        if (candidate.letter == c) {
            return &candidate;
        }
    }
    return nullptr;
}

/// One step of a format.
struct Item {
    const Letter* letter;  ///< null when the table has no such letter
    bool counted;
    qint64 count;  ///< 1 without a count; larger counts than any record stay just above that

    qint64 bytes() const { return count * letter->width; }
    ByteOrder order() const { return counted ? letter->countedOrder : letter->order; }
    bool isFiller() const { return letter->letter == 'x' || letter->letter == 'X'; }
    bool countsItems() const { return counted && !isFiller(); }
    bool countIsRight() const {
        return !counted || (count >= 1 && letter != nullptr && letter->countable);
    }
};

/// Reads the next item and moves the format after it; false at the format's end. A count at the
/// very end has no letter.
bool nextItem(const char** format, Item* item) {
    if (*format == nullptr || **format == '\0') {
        return false;
    }
    item->counted = isDigit(**format);
    item->count = item->counted ? 0 : 1;
    for (; isDigit(**format); ++*format) {
        item->count = qMin<qint64>(item->count * 10 + (**format - '0'), kLargestRecord + 1);
    }
    item->letter = **format == '\0' ? nullptr : findLetter(**format);
    if (**format != '\0') {
        ++*format;
    }
    return true;
}

/// A va_list in a record can be passed on by reference on every machine.
struct Arguments {
    explicit Arguments(va_list from) { va_copy(list, from); }
    ~Arguments() { va_end(list); }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

    unsigned int integer() { return static_cast<unsigned int>(va_arg(list, int)); }
    void* pointer() { return va_arg(list, void*); }

    va_list list;
};

/// Bytes that the caller owns, walked from front to back.
template <typename Byte>
class Walk {
 public:
    Walk(Byte* first, qint64 count) : bytes(first), size(first == nullptr ? 0 : count), at(0) {}

    /// The next `count` bytes, or null when there are not that many.
    Byte* next(qint64 count) {
        if (count > size - at) {
            return nullptr;
        }
        Byte* here = bytes + at;
        at += count;
        return here;
    }
    int passed() const { return static_cast<int>(at); }

 private:
    Byte* bytes;
    qint64 size;
    qint64 at;
};

/// An array that grows by zeros.
class GrowingArray {
 public:
    unsigned char* next(qint64 count) {
        if (count > kLargestArray - grown.size()) {
            return nullptr;
        }
        const int at = grown.size();
        grown.append(QByteArray(static_cast<int>(count), '\0'));
        return reinterpret_cast<unsigned char*>(grown.data()) + at;
    }
    int passed() const { return grown.size(); }
    QByteArray array() const { return grown; }

 private:
    QByteArray grown;
};

/// One item of `width` bytes in its wire order, at any alignment.
void storeValue(unsigned int value, int width, ByteOrder order, unsigned char* out) {
    const bool big = order == kBigEndian;
    for (int i = 0; i < width; ++i) {
        out[i] = static_cast<unsigned char>(value >> 8 * (big ? width - 1 - i : i));
    }
}

/// Items between memory and the wire. With the machine's order on the other side the way there
/// and the way back are the same.
void copyItems(const unsigned char* from, unsigned char* to, const Item& item) {
    const int width = item.letter->width;
    const bool swap = (item.order() == kBigEndian && Q_BYTE_ORDER == Q_LITTLE_ENDIAN) ||
                      (item.order() == kLittleEndian && Q_BYTE_ORDER == Q_BIG_ENDIAN);
    if (!swap) {
        std::memcpy(to, from, static_cast<size_t>(item.bytes()));
        return;
    }
    for (qint64 k = 0; k < item.count; ++k, from += width, to += width) {
        for (int i = 0; i < width; ++i) {
            to[i] = from[width - 1 - i];
        }
    }
}

/// Writes one item without a pointer argument to `out`, which has room for it.
void packValue(const Item& item, Arguments& arguments, unsigned char* out) {
    if (item.letter->letter == 'X') {
        return;
    }
    if (item.letter->letter == 'x') {
        std::memset(out, 0, static_cast<size_t>(item.bytes()));
    } else {
        storeValue(arguments.integer(), item.letter->width, item.order(), out);
    }
}

template <typename Output>
int pack(Output& output, const char* format, va_list list) {
    Arguments arguments(list);
    Item item;
    while (nextItem(&format, &item)) {
        if (!item.countIsRight()) {
            return -1;
        }
        if (item.letter == nullptr) {
            return 0;
        }
        const void* items = item.countsItems() ? arguments.pointer() : nullptr;
        if (item.countsItems() && items == nullptr) {
            return -1;
        }
        unsigned char* out = output.next(item.bytes());
        if (out == nullptr) {
            return -1;
        }
        if (item.countsItems()) {
            copyItems(static_cast<const unsigned char*>(items), out, item);
        } else {
            packValue(item, arguments, out);
        }
    }
    return output.passed();
}

/// Stores one item from `in`, which contains it whole. False for a null pointer.
bool unpackItem(const Item& item, Arguments& arguments, const unsigned char* in) {
    if (item.isFiller()) {
        return true;
    }
    void* objects = arguments.pointer();
    if (objects == nullptr) {
        return false;
    }
    copyItems(in, static_cast<unsigned char*>(objects), item);
    return true;
}

int unpack(Walk<const unsigned char> input, const char* format, va_list list) {
    Arguments arguments(list);
    Item item;
    while (nextItem(&format, &item)) {
        if (!item.countIsRight() || item.letter == nullptr) {
            return -1;
        }
        const unsigned char* in = input.next(item.bytes());
        if (in == nullptr || !unpackItem(item, arguments, in)) {
            return -1;
        }
    }
    return input.passed();
}

}  // namespace

int DataPack(void* buffer, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int packed = VDataPack(buffer, format, arguments);
    va_end(arguments);
    return packed;
}

int VDataPack(void* buffer, const char* format, va_list arguments) {
    Walk<unsigned char> output(static_cast<unsigned char*>(buffer), kLargestRecord);
    return pack(output, format, arguments);
}

int BoundedDataPack(void* buffer, int size, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int packed = VBoundedDataPack(buffer, size, format, arguments);
    va_end(arguments);
    return packed;
}

int VBoundedDataPack(void* buffer, int size, const char* format, va_list arguments) {
    Walk<unsigned char> output(static_cast<unsigned char*>(buffer), size);
    return pack(output, format, arguments);
}

QByteArray ByteArrayPack(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const QByteArray packed = VByteArrayPack(format, arguments);
    va_end(arguments);
    return packed;
}

QByteArray VByteArrayPack(const char* format, va_list arguments) {
    GrowingArray output;
    pack(output, format, arguments);
    return output.array();
}

int DataUnpack(const void* data, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int taken = VDataUnpack(data, format, arguments);
    va_end(arguments);
    return taken;
}

int VDataUnpack(const void* data, const char* format, va_list arguments) {
    return unpack(
        Walk<const unsigned char>(static_cast<const unsigned char*>(data), kLargestRecord), format,
        arguments);
}

int BoundedDataUnpack(const void* data, int size, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int taken = VBoundedDataUnpack(data, size, format, arguments);
    va_end(arguments);
    return taken;
}

int VBoundedDataUnpack(const void* data, int size, const char* format, va_list arguments) {
    return unpack(Walk<const unsigned char>(static_cast<const unsigned char*>(data), size), format,
                  arguments);
}
