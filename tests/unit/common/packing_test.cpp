#include "common/packing.h"

#include <gtest/gtest.h>

#include <QtGlobal>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

const unsigned char kUntouched = 0xEE;

/// A buffer of exactly `size` bytes on the heap: a byte too far shows under the sanitizer.
class Buffer {
 public:
    explicit Buffer(int wanted) : size(wanted), bytes(new unsigned char[wanted]) {
        std::memset(bytes.get(), kUntouched, static_cast<size_t>(size));
    }
    unsigned char* get() { return bytes.get(); }
    std::string hex() const {
        return QByteArray(reinterpret_cast<const char*>(bytes.get()), size).toHex().toStdString();
    }

 private:
    int size;
    std::unique_ptr<unsigned char[]> bytes;
};

int vpack(void* buffer, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int packed = VDataPack(buffer, format, arguments);
    va_end(arguments);
    return packed;
}

QByteArray varray(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const QByteArray packed = VByteArrayPack(format, arguments);
    va_end(arguments);
    return packed;
}

int vunpack(const void* data, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int taken = VDataUnpack(data, format, arguments);
    va_end(arguments);
    return taken;
}

// Items whose bytes in memory are 01 02 03 ... on every machine.
const unsigned char kMemory[] = {1, 2, 3, 4, 5, 6, 7, 8};

// --- failures of a format

TEST(DataPack, ACountThatIsWrong) {
    // A count below 1, a count before a letter that takes none, a count without a letter.
    for (const char* format : {"0C", "0x", "0X", "00v", "0", "3", "2s", "2S", "2i", "2I", "2l",
                               "2L", "2z", "1s", "0z", "2 c"}) {
        Buffer buffer(4);
        EXPECT_EQ(-1, DataPack(buffer.get(), format, kMemory)) << format;
        EXPECT_EQ("eeeeeeee", buffer.hex()) << format;
    }
}

TEST(DataPack, ALetterThatIsUnknown) {
    for (const char* format : {"z", "-1c", " ", "d", "u", "\x80"}) {
        Buffer buffer(2);
        EXPECT_EQ(0, DataPack(buffer.get(), format, 1)) << format;
        EXPECT_EQ("eeee", buffer.hex()) << format;
    }
    // The packing stops there; what stood before it is packed.
    Buffer buffer(2);
    EXPECT_EQ(0, DataPack(buffer.get(), "czc", 1, 2));
    EXPECT_EQ("01ee", buffer.hex());
}

TEST(DataPack, StopsAtAWrongCountAfterWhatWasPacked) {
    Buffer buffer(2);
    EXPECT_EQ(-1, DataPack(buffer.get(), "c0c", 1, kMemory));
    EXPECT_EQ("01ee", buffer.hex());
}

TEST(DataPack, CountsOfAnySizeAreRefusedBeforeAWrite) {
    // Each names more than 2^31-1 bytes, some more than any integer can express.
    for (const char* format : {"2147483648c", "1073741824v", "536870912N", "4294967296c",
                               "4294967297x", "18446744073709551617c", "18446744073709551616V",
                               "99999999999999999999999999999999X", "9223372036854775807n"}) {
        Buffer buffer(1);
        EXPECT_EQ(-1, DataPack(buffer.get(), format, kMemory)) << format;
        EXPECT_EQ("ee", buffer.hex()) << format;
    }
    // Right by itself, too much together with what is there.
    Buffer buffer(1);
    EXPECT_EQ(-1, DataPack(buffer.get(), "c2147483647c", 5, kMemory));
    EXPECT_EQ("05", buffer.hex());
}

TEST(DataPack, NullPointersAreRefused) {
    EXPECT_EQ(-1, DataPack(nullptr, "c", 1));
    EXPECT_EQ(0, DataPack(nullptr, ""));
    EXPECT_EQ(0, DataPack(nullptr, nullptr));
    Buffer buffer(4);
    EXPECT_EQ(-1, DataPack(buffer.get(), "4c", static_cast<void*>(nullptr)));
    EXPECT_EQ("eeeeeeee", buffer.hex());
}

// --- packing

TEST(DataPack, EachLetter) {
    const struct {
        const char* letter;
        const char* bytes;
    } rows[] = {
        {"c", "f4"},       {"C", "f4"},       {"s", "f4f3"},     {"S", "f4f3"},
        {"v", "f4f3"},     {"n", "f3f4"},     {"i", "f4f3f2f1"}, {"l", "f4f3f2f1"},
        {"I", "f4f3f2f1"}, {"L", "f4f3f2f1"}, {"V", "f4f3f2f1"}, {"N", "f1f2f3f4"},
        {"x", "00"},       {"X", "ee"},
    };
    for (const auto& row : rows) {
        const int size = static_cast<int>(std::strlen(row.bytes)) / 2;
        Buffer buffer(size);
        EXPECT_EQ(size, DataPack(buffer.get(), row.letter, 0xF1F2F3F4u)) << row.letter;
        EXPECT_EQ(row.bytes, buffer.hex()) << row.letter;
    }
}

TEST(DataPack, ARecordOfSeveralItems) {
    Buffer buffer(5);
    EXPECT_EQ(5, DataPack(buffer.get(), "Cnv", 1, 0x1234, 0x1234));
    EXPECT_EQ("0112343412", buffer.hex());
    Buffer again(5);
    EXPECT_EQ(5, vpack(again.get(), "Cnv", 1, 0x1234, 0x1234));
    EXPECT_EQ("0112343412", again.hex());
    EXPECT_EQ(0, DataPack(again.get(), ""));
}

TEST(DataPack, ThreeZeroBytes) {
    Buffer buffer(3);
    EXPECT_EQ(3, DataPack(buffer.get(), "3x"));
    EXPECT_EQ("000000", buffer.hex());
}

TEST(DataPack, EachCountedLetter) {
    if (Q_BYTE_ORDER != Q_LITTLE_ENDIAN) {
        GTEST_SKIP() << "the bytes of n and N are those of a little-endian machine";
    }
    const struct {
        const char* item;
        const char* bytes;
    } rows[] = {
        {"3c", "010203"},       {"8C", "0102030405060708"}, {"3v", "010203040506"},
        {"3n", "020104030605"}, {"2V", "0102030405060708"}, {"2N", "0403020108070605"},
        {"3x", "000000"},       {"3X", "eeeeee"},           {"1c", "01"},
        {"1n", "0201"},         {"001N", "04030201"},
    };
    for (const auto& row : rows) {
        const int size = static_cast<int>(std::strlen(row.bytes)) / 2;
        Buffer buffer(size);
        EXPECT_EQ(size, DataPack(buffer.get(), row.item, kMemory)) << row.item;
        EXPECT_EQ(row.bytes, buffer.hex()) << row.item;
    }
}

TEST(DataPack, CountedItemsAreTheMachinesNumbers) {
    const quint16 words[] = {0x0102, 0xFFFE};
    const quint32 doubles[] = {0x01020304, 0xFFFEFDFC};
    Buffer buffer(12);
    EXPECT_EQ(12, DataPack(buffer.get(), "2n2N", words, doubles));
    EXPECT_EQ("0102fffe01020304fffefdfc", buffer.hex());
}

TEST(DataPack, CountedItemsMayLieAnywhere) {
    const quint32 doubles[] = {0x01020304, 0xFFFEFDFC};
    unsigned char odd[1 + sizeof(doubles)];
    std::memcpy(odd + 1, doubles, sizeof(doubles));
    Buffer buffer(9);
    EXPECT_EQ(9, DataPack(buffer.get(), "x2N", odd + 1));
    EXPECT_EQ("0001020304fffefdfc", buffer.hex());
}

TEST(DataPack, SkippedBytesAreLeftAndCounted) {
    Buffer buffer(8);
    EXPECT_EQ(8, DataPack(buffer.get(), "cX2XcxXx", 1, 2));
    EXPECT_EQ("01eeeeee0200ee00", buffer.hex());
}

// --- the bounded form

TEST(BoundedDataPack, NeverWritesBehindTheBuffer) {
    const struct {
        int size;
        int packed;
        const char* bytes;
    } rows[] = {
        {0, -1, ""},       {1, -1, "01"},           {2, -1, "01ee"},
        {3, -1, "01f4f3"}, {6, -1, "01f4f3eeeeee"}, {7, 7, "01f4f3f4f3f2f1"},
    };
    for (const auto& row : rows) {
        Buffer buffer(row.size);
        EXPECT_EQ(row.packed,
                  BoundedDataPack(buffer.get(), row.size, "cvV", 1, 0xF1F2F3F4u, 0xF1F2F3F4u))
            << row.size;
        EXPECT_EQ(row.bytes, buffer.hex()) << row.size;
    }
    Buffer buffer(8);
    EXPECT_EQ(-1, BoundedDataPack(buffer.get(), 7, "2V", kMemory));
    EXPECT_EQ(-1, BoundedDataPack(buffer.get(), 7, "8x"));
    EXPECT_EQ(-1, BoundedDataPack(buffer.get(), -1, "c", 1));
    EXPECT_EQ(-1, BoundedDataPack(buffer.get(), 8, "99999999999999999999x"));
    EXPECT_EQ("eeeeeeeeeeeeeeee", buffer.hex());
    EXPECT_EQ(8, BoundedDataPack(buffer.get(), 8, "2V", kMemory));
}

// --- into an array

TEST(ByteArrayPack, SameBytesAsIntoABuffer) {
    EXPECT_EQ("0112343412", ByteArrayPack("Cnv", 1, 0x1234, 0x1234).toHex().toStdString());
    EXPECT_EQ("0112343412", varray("Cnv", 1, 0x1234, 0x1234).toHex().toStdString());
    const quint32 value = 0xF1F2F3F4u;
    EXPECT_EQ(
        "f4f3f2f1"
        "f1f2f3f4"
        "f4f3"
        "f4f3f2f1",
        ByteArrayPack("lNsI", value, value, value, value).toHex().toStdString());
    EXPECT_EQ("01000002000000", ByteArrayPack("cxXc2x1X", 1, 2).toHex().toStdString());
    const quint16 words[] = {0x0102, 0x0304};
    EXPECT_EQ("01020304010203", ByteArrayPack("2n3c", words, kMemory).toHex().toStdString());
    EXPECT_TRUE(ByteArrayPack("").isEmpty());
}

TEST(ByteArrayPack, AWrongFormatGivesWhatWasPacked) {
    for (const char* format : {"cz", "c0c", "c3s", "c5", "c18446744073709551617x", "c2147483647x",
                               "c2000000000x", "c4294967297X"}) {
        EXPECT_EQ("07", ByteArrayPack(format, 7, kMemory).toHex().toStdString()) << format;
    }
    EXPECT_EQ("07", ByteArrayPack("c2v", 7, static_cast<void*>(nullptr)).toHex().toStdString());
    EXPECT_TRUE(ByteArrayPack("z").isEmpty());
}

// --- unpacking

TEST(DataUnpack, AWrongFormat) {
    const QByteArray data = QByteArray::fromHex("0102030405060708");
    for (const char* format : {"z", "cz", "0c", "c0c", "2s", "2l", "3", "2z", " ", "2147483648x",
                               "18446744073709551617X", "1073741824N"}) {
        unsigned char objects[16] = {};
        EXPECT_EQ(-1, DataUnpack(data.constData(), format, objects, objects)) << format;
    }
    EXPECT_EQ(-1, DataUnpack(nullptr, "x"));
    EXPECT_EQ(-1, DataUnpack(data.constData(), "c", static_cast<void*>(nullptr)));
    EXPECT_EQ(0, DataUnpack(data.constData(), ""));
}

TEST(DataUnpack, ItemsBeforeTheFailureAreStored) {
    const QByteArray data = QByteArray::fromHex("0102");
    unsigned char first = 0;
    EXPECT_EQ(-1, DataUnpack(data.constData(), "cz", &first));
    EXPECT_EQ(1, first);
}

TEST(DataUnpack, EachLetter) {
    const QByteArray data = QByteArray::fromHex("f1f2f3f4");
    for (const char* format : {"c", "C"}) {
        quint8 value = 0;
        EXPECT_EQ(1, DataUnpack(data.constData(), format, &value)) << format;
        EXPECT_EQ(0xF1, value) << format;
    }
    for (const char* format : {"s", "S", "v", "n"}) {
        quint16 value = 0;
        EXPECT_EQ(2, DataUnpack(data.constData(), format, &value)) << format;
        EXPECT_EQ(*format == 'n' ? 0xF1F2 : 0xF2F1, value) << format;
    }
    for (const char* format : {"i", "l", "I", "L", "V", "N"}) {
        quint32 value = 0;
        EXPECT_EQ(4, DataUnpack(data.constData(), format, &value)) << format;
        EXPECT_EQ(*format == 'N' ? 0xF1F2F3F4u : 0xF4F3F2F1u, value) << format;
    }
    EXPECT_EQ(1, DataUnpack(data.constData(), "x"));
    EXPECT_EQ(1, DataUnpack(data.constData(), "X"));
    quint8 value = 0;
    EXPECT_EQ(3, DataUnpack(data.constData(), "xXc", &value));
    EXPECT_EQ(0xF3, value);
    EXPECT_EQ(4, DataUnpack(data.constData(), "3xC", &value));
    EXPECT_EQ(0xF4, value);
    EXPECT_EQ(4, DataUnpack(data.constData(), "2X2x"));
}

TEST(DataUnpack, CountedLetters) {
    const QByteArray data = QByteArray::fromHex("0102030405060708");
    unsigned char bytes[3] = {};
    EXPECT_EQ(3, DataUnpack(data.constData(), "3c", bytes));
    EXPECT_EQ(3, bytes[2]);
    quint16 words[3] = {};
    EXPECT_EQ(6, DataUnpack(data.constData(), "3n", words));
    EXPECT_EQ(0x0102, words[0]);
    EXPECT_EQ(0x0506, words[2]);
    EXPECT_EQ(6, DataUnpack(data.constData(), "3v", words));
    EXPECT_EQ(0, std::memcmp(words, data.constData(), 6));
    quint32 doubles[2] = {};
    EXPECT_EQ(8, DataUnpack(data.constData(), "2N", doubles));
    EXPECT_EQ(0x05060708u, doubles[1]);
    EXPECT_EQ(8, DataUnpack(data.constData(), "2V", doubles));
    EXPECT_EQ(0, std::memcmp(doubles, data.constData(), 8));
}

TEST(BoundedDataUnpack, NeverReadsBehindTheData) {
    for (int size = 0; size <= 7; ++size) {
        const std::unique_ptr<unsigned char[]> data(new unsigned char[size]);
        std::memset(data.get(), 0x11, static_cast<size_t>(size));
        quint8 c = 0;
        quint16 v = 0;
        quint32 n = 0;
        const int taken = BoundedDataUnpack(data.get(), size, "cvN", &c, &v, &n);
        EXPECT_EQ(size == 7 ? 7 : -1, taken) << size;
        EXPECT_EQ(size >= 1 ? 0x11 : 0, c) << size;
        EXPECT_EQ(size >= 3 ? 0x1111 : 0, v) << size;
        EXPECT_EQ(size == 7 ? 0x11111111u : 0u, n) << size;
    }
    const QByteArray data = QByteArray::fromHex("0102");
    quint16 words[2] = {};
    EXPECT_EQ(-1, BoundedDataUnpack(data.constData(), 2, "2v", words));
    EXPECT_EQ(-1, BoundedDataUnpack(data.constData(), 2, "3x"));
    EXPECT_EQ(-1, BoundedDataUnpack(data.constData(), 2, "18446744073709551618x"));
    EXPECT_EQ(-1, BoundedDataUnpack(data.constData(), -1, "x"));
    EXPECT_EQ(2, BoundedDataUnpack(data.constData(), 2, "1v", words));
}

// --- there and back

template <typename Object>
void expectBack(const char* letter, quint32 value) {
    Buffer buffer(static_cast<int>(sizeof(Object)));
    Object object = 0;
    EXPECT_EQ(int(sizeof(Object)), DataPack(buffer.get(), letter, value)) << letter;
    EXPECT_EQ(int(sizeof(Object)), vunpack(buffer.get(), letter, &object)) << letter;
    EXPECT_EQ(static_cast<Object>(value), object) << letter;
}

TEST(Packing, EveryLetterThereAndBack) {
    for (quint32 value : {0u, 1u, 0x80u, 0xFFu, 0x1234u, 0x8001u, 0x12345678u, 0xFFFFFFFFu}) {
        for (const char* letter : {"c", "C"}) {
            expectBack<quint8>(letter, value);
        }
        for (const char* letter : {"s", "S", "v", "n"}) {
            expectBack<quint16>(letter, value);
        }
        for (const char* letter : {"i", "l", "I", "L", "V", "N"}) {
            expectBack<quint32>(letter, value);
        }
    }
}

TEST(Packing, EveryCountedLetterThereAndBack) {
    const struct {
        const char* letter;
        int width;
    } rows[] = {{"c", 1}, {"C", 1}, {"v", 2}, {"n", 2}, {"V", 4}, {"N", 4}};
    for (const auto& row : rows) {
        for (int count : {1, 2, 7, 300}) {
            const std::string format = std::to_string(count) + row.letter;
            std::vector<unsigned char> items(static_cast<size_t>(count * row.width));
            for (size_t i = 0; i < items.size(); ++i) {
                items[i] = static_cast<unsigned char>(i * 37 + 11);
            }
            const QByteArray packed = ByteArrayPack(format.c_str(), items.data());
            ASSERT_EQ(count * row.width, packed.size()) << format;
            std::vector<unsigned char> back(items.size());
            EXPECT_EQ(packed.size(), DataUnpack(packed.constData(), format.c_str(), back.data()))
                << format;
            EXPECT_EQ(items, back) << format;
        }
    }
}

}  // namespace
