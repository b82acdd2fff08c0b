#include "eip/cip/logix_data.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "eip/cip/logix_messages.h"
#include "unit/eip/cip/scripted_transport.h"

namespace {

struct Free {
    void operator()(_LGX_Read* read) const { _FreeLGXRead(read); }
};
typedef std::unique_ptr<_LGX_Read, Free> ReadPtr;

/// A record decoded from a Read Tag reply with this type and data.
ReadPtr decoded(int type, const std::string& data) {
    const Bytes reply =
        bytes("CC 00 00 00") + Bytes{static_cast<unsigned char>(type), 0} + bytes(data);
    const ReplyBuffer buffer(reply);
    ReadPtr read(_DecodeLGX(buffer.as<_MR_Reply>(), static_cast<int>(reply.size())));
    CIPERROR(3, 4, 5);
    return read;
}

const int kTypes[] = {0xC1, 0xC2, 0xC3, 0xC4, 0xC6, 0xC7, 0xC8, 0xCA, 0xCB, 0xD3, 0xDA};

const CipError kSuccess{0, 0, 0};
const CipError kInvalid{0, -20, 0};
const CipError kRange{0, -21, 0};
const CipError kType{0, -24, 0};

TEST(LogixData, ElementSizes) {
    const struct {
        int type;
        int size;
    } rows[] = {{0xC1, 1}, {0xC2, 1}, {0xC3, 2}, {0xC4, 4}, {0xC6, 1},
                {0xC7, 2}, {0xC8, 4}, {0xCA, 4}, {0xCB, 8}, {0xD3, 4}};
    for (const auto& row : rows) {
        EXPECT_EQ(row.size, _GetLGXDataSize(row.type)) << row.type;
    }
}

TEST(LogixData, EveryOtherTypeHasNoSize) {
    int sized = 0;
    for (int type = -300; type <= 0x300; ++type) {
        CIPERROR(0, 0, 0);
        if (_GetLGXDataSize(type) > 0) {
            ++sized;
            EXPECT_EQ(kSuccess, lastError());
        } else {
            EXPECT_EQ(-1, _GetLGXDataSize(type));
            EXPECT_EQ(kType, lastError());
        }
    }
    EXPECT_EQ(10, sized);
    EXPECT_EQ(-1, _GetLGXDataSize(0xDA));
    EXPECT_STREQ("Internal: unsupported data type", cip_err_msg());
    EXPECT_EQ(-1, _GetLGXDataSize(INT32_MAX));
    EXPECT_EQ(-1, _GetLGXDataSize(INT32_MIN));
}

TEST(LogixData, SmallNumbers) {
    const int types[] = {-1, 0xC1, 0xC2, 0xC3, 0xC4, 0xCA, -1};
    for (int number = 0; number <= 6; ++number) {
        EXPECT_EQ(types[number], _LGXDataType(number));
    }
    EXPECT_EQ(-1, _LGXDataType(-1));
    EXPECT_EQ(-1, _LGXDataType(INT32_MAX));
}

TEST(LogixData, NothingToRead) {
    for (const _LGX_Read* read : {static_cast<const _LGX_Read*>(nullptr)}) {
        char text[4];
        EXPECT_EQ(0u, GetLGXValueAsUInt32(read, 0));
        EXPECT_EQ(kInvalid, lastError());
        EXPECT_EQ(0, _GetLGXValueAsInteger(read, 0));
        EXPECT_EQ(0.0f, _GetLGXValueAsFloat(read, 0));
        EXPECT_EQ(0.0, GetLGXValueAsDouble(read, 0));
        CIPERROR(0, 0, 0);
        EXPECT_EQ(0, GetLGXValueAsString(read, text, 4));
        EXPECT_EQ(kInvalid, lastError());
        EXPECT_TRUE(GetLGXValueAsByteArray(read).isEmpty());
    }
    _FreeLGXRead(nullptr);
}

TEST(LogixData, RecordsWithoutElements) {
    for (int type : kTypes) {
        ReadPtr read = decoded(0xC4, "01 02 03 04");
        read->type = type;
        read->count = 0;
        EXPECT_EQ(0u, GetLGXValueAsUInt32(read.get(), 0));
        EXPECT_EQ(kInvalid, lastError());
        read->count = 1;
        read->size = 0;
        CIPERROR(0, 0, 0);
        EXPECT_EQ(0.0f, _GetLGXValueAsFloat(read.get(), 0));
        EXPECT_EQ(kInvalid, lastError());
        CIPERROR(0, 0, 0);
        EXPECT_EQ(0.0, GetLGXValueAsDouble(read.get(), 0));
        EXPECT_EQ(kInvalid, lastError());
        CIPERROR(0, 0, 0);
        char text[4];
        EXPECT_EQ(0, GetLGXValueAsString(read.get(), text, 4));
        EXPECT_EQ(kInvalid, lastError());
    }
}

TEST(LogixData, IntegersOfEveryType) {
    const struct {
        int type;
        const char* data;
        uint32_t first;
        uint32_t second;
    } rows[] = {
        {0xC1, "01 FF", 1, 0xFF},
        {0xC2, "7F 80", 0x7F, 0xFFFFFF80},
        {0xC6, "7F 80", 0x7F, 0x80},
        {0xC3, "34 12 FE FF", 0x1234, 0xFFFFFFFE},
        {0xC7, "34 12 FE FF", 0x1234, 0xFFFE},
        {0xC4, "78 56 34 12 FF FF FF FF", 0x12345678, 0xFFFFFFFF},
        {0xC8, "78 56 34 12 FF FF FF FF", 0x12345678, 0xFFFFFFFF},
        {0xD3, "78 56 34 12 01 00 00 80", 0x12345678, 0x80000001},
        {0xCA, "00 00 80 3F 00 00 00 C0", 0x3F800000, 0xC0000000},
    };
    for (const auto& row : rows) {
        const ReadPtr read = decoded(row.type, row.data);
        ASSERT_TRUE(read) << row.type;
        EXPECT_EQ(row.first, GetLGXValueAsUInt32(read.get(), 0)) << row.type;
        EXPECT_EQ(kSuccess, lastError());
        EXPECT_EQ(row.second, GetLGXValueAsUInt32(read.get(), 1)) << row.type;
        EXPECT_EQ(static_cast<int32_t>(row.second), _GetLGXValueAsInteger(read.get(), 1));
        EXPECT_EQ(kSuccess, lastError());
    }
}

TEST(LogixData, GettersOfOtherTypes) {
    for (int type : kTypes) {
        const ReadPtr read = decoded(type, "04 41 42 43 44 45 46 47");
        ASSERT_TRUE(read) << type;
        char text[8];
        if (type == 0xCB || type == 0xDA) {
            EXPECT_EQ(UINT32_MAX, GetLGXValueAsUInt32(read.get(), 0)) << type;
            EXPECT_EQ(kType, lastError());
            EXPECT_EQ(-1, _GetLGXValueAsInteger(read.get(), 0));
        }
        if (type != 0xCA) {
            CIPERROR(0, 0, 0);
            EXPECT_EQ(-1.0f, _GetLGXValueAsFloat(read.get(), 0)) << type;
            EXPECT_EQ(kType, lastError());
        }
        if (type != 0xCB) {
            CIPERROR(0, 0, 0);
            EXPECT_EQ(-1.0, GetLGXValueAsDouble(read.get(), 0)) << type;
            EXPECT_EQ(kType, lastError());
        }
        if (type != 0xDA) {
            CIPERROR(0, 0, 0);
            EXPECT_EQ(-1, GetLGXValueAsString(read.get(), text, 8)) << type;
            EXPECT_EQ(kType, lastError());
        }
    }
}

TEST(LogixData, Floats) {
    const ReadPtr read = decoded(0xCA, "00 00 C0 3F 00 00 00 C0");
    EXPECT_EQ(1.5f, _GetLGXValueAsFloat(read.get(), 0));
    EXPECT_EQ(-2.0f, _GetLGXValueAsFloat(read.get(), 1));
    EXPECT_EQ(kSuccess, lastError());
    EXPECT_EQ(0.0f, _GetLGXValueAsFloat(read.get(), 2)) << "slack";
    EXPECT_EQ(kRange, lastError());
}

TEST(LogixData, Doubles) {
    const ReadPtr read = decoded(0xCB, "00 00 00 00 00 00 F8 3F 1F 85 EB 51 B8 1E 09 C0");
    EXPECT_EQ(1.5, GetLGXValueAsDouble(read.get(), 0));
    EXPECT_EQ(-3.14, GetLGXValueAsDouble(read.get(), 1));
    EXPECT_EQ(kSuccess, lastError());
    EXPECT_EQ(0.0, GetLGXValueAsDouble(read.get(), 2)) << "slack";
    EXPECT_EQ(kRange, lastError());
}

TEST(LogixData, Masks) {
    ReadPtr read = decoded(0xC4, "06 00 00 00");
    const struct {
        uint32_t mask;
        uint32_t value;
    } rows[] = {{0, 6}, {UINT32_MAX, 6}, {2, 1}, {4, 1}, {6, 1}, {1, 0}, {0x80000000, 0}};
    for (const auto& row : rows) {
        read->mask = row.mask;
        EXPECT_EQ(row.value, GetLGXValueAsUInt32(read.get(), 0)) << row.mask;
    }
    ReadPtr real = decoded(0xCA, "00 00 C0 3F");
    real->mask = 0x00800000;
    EXPECT_EQ(1.0f, _GetLGXValueAsFloat(real.get(), 0));
    real->mask = 1;
    EXPECT_EQ(0.0f, _GetLGXValueAsFloat(real.get(), 0));
    ReadPtr lreal = decoded(0xCB, "01 00 00 00 00 00 F8 3F");
    lreal->mask = 1;
    EXPECT_EQ(1.0, GetLGXValueAsDouble(lreal.get(), 0));
    lreal->mask = 2;
    EXPECT_EQ(0.0, GetLGXValueAsDouble(lreal.get(), 0));
}

TEST(LogixData, IndexEqualToTheCountReadsBehindTheLastElement) {
    const ReadPtr read = decoded(0xC4, "01 02 03 04 05 06 07 08");
    EXPECT_EQ(2, read->count);
    // Elements that the record does not count are still there.
    read->count = 1;
    EXPECT_EQ(0x08070605u, GetLGXValueAsUInt32(read.get(), 1));
    EXPECT_EQ(kRange, lastError());
    EXPECT_STREQ("Internal: out of range", cip_err_msg());
    EXPECT_EQ(0u, GetLGXValueAsUInt32(read.get(), 2)) << "slack";
    EXPECT_EQ(kRange, lastError());
}

TEST(LogixData, NoIndexLeavesTheAllocation) {
    for (int type : kTypes) {
        const ReadPtr read = decoded(type, "04 41 42 43 44 45 46 47");
        ASSERT_TRUE(read);
        for (int index : {-1, -2, -1000000000, INT32_MIN, 9, 10, 16, 17, 1000, 0x10000000,
                          0x20000000, 0x40000000, INT32_MAX}) {
            CIPERROR(0, 0, 0);
            const uint32_t value = GetLGXValueAsUInt32(read.get(), index);
            EXPECT_EQ(type == 0xCB || type == 0xDA ? UINT32_MAX : 0, value) << type << " " << index;
            EXPECT_NE(kSuccess, lastError());
            _GetLGXValueAsFloat(read.get(), index);
            EXPECT_NE(kSuccess, lastError());
            GetLGXValueAsDouble(read.get(), index);
            EXPECT_NE(kSuccess, lastError());
        }
    }
}

TEST(LogixData, HostileRecordFields) {
    for (int elementSize : {-1, 0, INT32_MIN, INT32_MAX, 1000}) {
        for (int count : {-1, 1, INT32_MIN, INT32_MAX}) {
            ReadPtr read = decoded(0xC4, "01 02 03 04 05 06 07 08");
            read->elementSize = elementSize;
            read->count = count;
            for (int index : {INT32_MIN, -1, 0, 1, 2, INT32_MAX}) {
                GetLGXValueAsUInt32(read.get(), index);
            }
            read->type = 0xDA;
            char text[8];
            GetLGXValueAsString(read.get(), text, 8);
            EXPECT_LE(GetLGXValueAsByteArray(read.get()).size(), 8);
        }
    }
}

TEST(LogixData, Strings) {
    const ReadPtr read = decoded(0xDA, "05 48 65 6C 6C 6F");
    EXPECT_EQ(5, read->elementSize);
    char text[9];
    memset(text, '#', sizeof(text));
    EXPECT_EQ(0, GetLGXValueAsString(read.get(), text, 8));
    EXPECT_EQ("Hello####", std::string(text, 9)) << "no terminator";
    memset(text, '#', sizeof(text));
    EXPECT_EQ(0, GetLGXValueAsString(read.get(), text, 3));
    EXPECT_EQ("Hel######", std::string(text, 9));
    memset(text, '#', sizeof(text));
    EXPECT_EQ(0, GetLGXValueAsString(read.get(), text, 0));
    EXPECT_EQ(0, GetLGXValueAsString(read.get(), text, -1));
    EXPECT_EQ("#########", std::string(text, 9));
}

TEST(LogixData, ByteArrays) {
    EXPECT_EQ(QByteArray("Hello"),
              GetLGXValueAsByteArray(decoded(0xDA, "05 48 65 6C 6C 6F").get()));
    EXPECT_EQ(QByteArray("He"), GetLGXValueAsByteArray(decoded(0xDA, "02 48 65 6C 6C").get()));
    EXPECT_EQ(QByteArray(), GetLGXValueAsByteArray(decoded(0xDA, "00").get()));
    EXPECT_EQ(QByteArray("\0\1\2\3\4\5\6\7", 8),
              GetLGXValueAsByteArray(decoded(0xC4, "00 01 02 03 04 05 06 07").get()));
    EXPECT_EQ(QByteArray("\0\1\2", 3), GetLGXValueAsByteArray(decoded(0xC1, "00 01 02").get()));
}

TEST(LogixData, ByteArrayOutlivesTheRecord) {
    ReadPtr read = decoded(0xC3, "34 12");
    const QByteArray value = GetLGXValueAsByteArray(read.get());
    read.reset();
    EXPECT_EQ(QByteArray("\x34\x12"), value);
}

}  // namespace
