#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "eip/cip/logix_messages.h"
#include "unit/eip/cip/scripted_transport.h"

namespace {

const CipError kSuccess{0, 0, 0};
const CipError kInvalid{0, -20, 0};
const CipError kRange{0, -21, 0};
const CipError kService{0, -22, 0};
const CipError kType{0, -24, 0};

/// A connected data item around a message-router reply.
Bytes itemOf(const std::string& reply) {
    const Bytes mr = bytes(reply);
    const size_t length = mr.size() + 2;
    return bytes("B1 00") +
           Bytes{static_cast<unsigned char>(length), static_cast<unsigned char>(length >> 8)} +
           bytes("01 00") + mr;
}

/// The service reply at an index as text, "null" without one.
std::string serviceAt(const Bytes& item, int index) {
    const ReplyBuffer buffer(item);
    CIPERROR(0, 0, 0);
    const _MR_Reply* reply = _GetService_Reply(buffer.as<_Eip_Item>(), index);
    const int size = _GetService_ReplySize(buffer.as<_Eip_Item>(), index);
    return reply ? hexOf(bytesAt(reply, static_cast<size_t>(size))) : "null";
}

int numberOf(const Bytes& item) {
    const ReplyBuffer buffer(item);
    CIPERROR(0, 0, 0);
    return _GetService_ReplyNumber(buffer.as<_Eip_Item>());
}

TEST(ServiceReplies, SingleServices) {
    for (const char* reply : {"CC 00 00 00 C1 00 01", "CD 00 00 00", "CB 00 00 00 01",
                              "CC 00 05 00", "CC 00 FF 01 05 21"}) {
        EXPECT_EQ(reply, serviceAt(itemOf(reply), 0));
        EXPECT_EQ(1, numberOf(itemOf(reply)));
        for (int index : {1, 2, -1, INT32_MAX, INT32_MIN}) {
            EXPECT_EQ("null", serviceAt(itemOf(reply), index));
            EXPECT_EQ(kRange, lastError());
        }
    }
}

TEST(ServiceReplies, UnconnectedItem) {
    const Bytes item = bytes("B2 00 07 00 CC 00 00 00 C1 00 01");
    EXPECT_EQ("CC 00 00 00 C1 00 01", serviceAt(item, 0));
    EXPECT_EQ(1, numberOf(item));
}

TEST(ServiceReplies, OtherItems) {
    for (const char* item : {"A1 00 04 00 CC 00 00 00", "00 00 00 00", "00 80 04 00 CC 00 00 00",
                             "FF FF 04 00 CC 00 00 00"}) {
        EXPECT_EQ("null", serviceAt(bytes(item), 0));
        EXPECT_EQ((CipError{0, -10, 0}), lastError()) << item;
        EXPECT_EQ(0, numberOf(bytes(item)));
        EXPECT_EQ((CipError{0, -10, 0}), lastError()) << item;
    }
    CIPERROR(0, 0, 0);
    EXPECT_EQ(nullptr, _GetService_Reply(nullptr, 0));
    EXPECT_EQ(kInvalid, lastError());
    CIPERROR(0, 0, 0);
    EXPECT_EQ(0, _GetService_ReplyNumber(nullptr));
    EXPECT_EQ(kInvalid, lastError());
}

TEST(ServiceReplies, OtherServices) {
    for (int service = 0; service <= 0xFF; ++service) {
        if (service == 0x8A || (service >= 0xCB && service <= 0xCD)) {
            continue;
        }
        const Bytes item =
            itemOf(hexOf(Bytes{static_cast<unsigned char>(service)}) + " 00 00 00 C1 00 01");
        EXPECT_EQ("null", serviceAt(item, 0));
        EXPECT_EQ(kService, lastError());
        EXPECT_EQ(0, numberOf(item));
        EXPECT_EQ(kService, lastError());
    }
}

TEST(ServiceReplies, RepliesThatAreNotWhole) {
    for (const char* item : {
             "B1 00 00 00", "B1 00 01 00 01", "B1 00 02 00 01 00", "B1 00 05 00 01 00 CC 00 00",
             "B2 00 00 00", "B2 00 03 00 CC 00 00",
             "B1 00 06 00 01 00 CC 00 00 01",        // additional status not there
             "B1 00 08 00 01 00 CC 00 00 FF 01 02",  // not all of it
             "B1 00 06 00 01 00 CC 00 00 00",        // a value without a type
             "B1 00 07 00 01 00 CC 00 00 00 C1",     // half a type
         }) {
        EXPECT_EQ("null", serviceAt(bytes(item), 0)) << item;
        EXPECT_EQ(kInvalid, lastError()) << item;
    }
}

// Two replies: count, offsets 6 and 13 from the count field.
const char kMultiple[] =
    "8A 00 00 00 | 02 00 06 00 0D 00 | CC 00 00 00 C1 00 01 | CC 00 00 00 C3 00 34 12";

TEST(ServiceReplies, MultipleService) {
    const Bytes item = itemOf(kMultiple);
    EXPECT_EQ(2, numberOf(item));
    EXPECT_EQ("CC 00 00 00 C1 00 01", serviceAt(item, 0));
    EXPECT_EQ("CC 00 00 00 C3 00 34 12", serviceAt(item, 1));
    for (int index : {2, 3, -1, INT32_MAX}) {
        EXPECT_EQ("null", serviceAt(item, index));
        EXPECT_EQ(kRange, lastError());
    }
}

TEST(ServiceReplies, MultipleServiceBehindAdditionalStatus) {
    const Bytes item = itemOf("8A 00 1E 01 00 00 | 01 00 04 00 | CC 00 00 00 C1 00 01");
    EXPECT_EQ("CC 00 00 00 C1 00 01", serviceAt(item, 0));
}

TEST(ServiceReplies, MultipleServiceWithoutAny) {
    EXPECT_EQ(0, numberOf(itemOf("8A 00 00 00 00 00")));
    EXPECT_EQ("null", serviceAt(itemOf("8A 00 00 00 00 00"), 0));
    EXPECT_EQ(kRange, lastError());
    EXPECT_EQ(0, numberOf(itemOf("8A 00 00 00 00")));
    EXPECT_EQ(kInvalid, lastError());
    EXPECT_EQ("null", serviceAt(itemOf("8A 00 00 00"), 0));
    EXPECT_EQ(kInvalid, lastError());
}

TEST(ServiceReplies, OffsetsAnywhere) {
    for (const char* reply : {
             "8A 00 00 00 | FF FF",                                     // no table
             "8A 00 00 00 | FF FF 06 00 | CC 00 00 00 C1 00 01",        // table past the end
             "8A 00 00 00 | 02 00 06",                                  // half an offset
             "8A 00 00 00 | 01 00 00 00 | CC 00 00 00 C1 00 01",        // into the count
             "8A 00 00 00 | 01 00 02 00 | CC 00 00 00 C1 00 01",        // into the table
             "8A 00 00 00 | 01 00 0B 00 | CC 00 00 00 C1 00 01",        // to the end
             "8A 00 00 00 | 01 00 0A 00 | CC 00 00 00 C1 00 01",        // one byte left
             "8A 00 00 00 | 01 00 0C 00 | CC 00 00 00 C1 00 01",        // past the end
             "8A 00 00 00 | 01 00 FF FF | CC 00 00 00 C1 00 01",        // far past
             "8A 00 00 00 | 02 00 06 00 06 00 | CC 00 00 00 C1 00 01",  // no byte of its own
             "8A 00 00 00 | 02 00 0D 00 06 00 | CC 00 00 00 C1 00 01",  // backwards
             "8A 00 00 00 | 02 00 06 00 FF FF | CC 00 00 00 C1 00 01",  // the next far past
             "8A 00 00 00 | 02 00 06 00 08 00 | CC 00 00 00 C1 00 01",  // cut by the next
         }) {
        EXPECT_EQ("null", serviceAt(itemOf(reply), 0)) << reply;
        EXPECT_EQ(kInvalid, lastError()) << reply;
    }
}

TEST(ServiceReplies, StatusWord) {
    const struct {
        const char* reply;
        int32_t word;
        int32_t extended;
    } rows[] = {
        {"CC 00 00 00 C1 00", 0, 0},
        {"CC 00 05 00", 0x0005, 0},
        {"CC 00 FF 01 05 21", 0x01FF, 0x2105},
        {"CC 00 FF 01 07 A1", 0x01FF, -24313},
        {"CC 00 05 01 05 21", 0x0105, 0},
        {"CC 00 FF 00", 0x00FF, 0},
        {"CC 00 FF 02 05 21 00 00", 0x02FF, 0},
        {"CC 00 00 01 05 21", 0x0100, 0},
    };
    for (const auto& row : rows) {
        const ReplyBuffer reply(bytes(row.reply));
        EXPECT_EQ(row.word, _GetLGXStatusWord(reply.as<_MR_Reply>())) << row.reply;
        EXPECT_EQ(row.extended, _GetExtendedStatus(reply.as<_MR_Reply>())) << row.reply;
    }
    EXPECT_EQ(-1, _GetLGXStatusWord(nullptr));
    EXPECT_EQ(0, _GetExtendedStatus(nullptr));
}

TEST(ServiceReplies, DataType) {
    const struct {
        const char* reply;
        int32_t type;
        CipError error;
    } rows[] = {
        {"CC 00 00 00 C4 00", 0xC4, kSuccess},
        {"CC 00 00 00 34 12", 0x1234, kSuccess},
        {"CC 00 00 00 C4 FF", -60, kSuccess},
        {"CC 00 05 00", 0, {5, 5, 0}},
        {"CC 00 FF 01 05 21", 0, {5, 0x1FF, 0x2105}},
        {"CD 00 00 00 C4 00", 0, kType},
        {"CB 00 00 00", 0, kType},
    };
    for (const auto& row : rows) {
        const ReplyBuffer reply(bytes(row.reply));
        CIPERROR(0, 0, 0);
        EXPECT_EQ(row.type, _GetLGXDataType(reply.as<_MR_Reply>())) << row.reply;
        EXPECT_EQ(row.error, lastError()) << row.reply;
    }
    EXPECT_EQ(0, _GetLGXDataType(nullptr));
    EXPECT_EQ(kInvalid, lastError());
}

TEST(ServiceReplies, DataStart) {
    for (int type : {0xC1, 0xC2, 0xC3, 0xC4, 0xC6, 0xC7, 0xC8, 0xCA, 0xCB, 0xD3, 0xDA}) {
        const ReplyBuffer reply(bytes("CC 00 00 00") +
                                Bytes{static_cast<unsigned char>(type), 0, 1, 2});
        CIPERROR(3, 4, 5);
        EXPECT_EQ(reply.as<unsigned char>() + 6, _GetData(reply.as<_MR_Reply>()));
        EXPECT_EQ(kSuccess, lastError());
    }
    const struct {
        const char* reply;
        CipError error;
    } rows[] = {
        {"CC 00 05 00", {5, 5, 0}},      {"CC 00 FF 01 07 21", {5, 0x1FF, 0x2107}},
        {"CC 00 00 00 C5 00 01", kType}, {"CC 00 00 00 A0 02 01", kType},
        {"CD 00 00 00 C4 00 01", kType},
    };
    for (const auto& row : rows) {
        const ReplyBuffer reply(bytes(row.reply));
        EXPECT_EQ(nullptr, _GetData(reply.as<_MR_Reply>())) << row.reply;
        EXPECT_EQ(row.error, lastError()) << row.reply;
    }
    EXPECT_EQ(nullptr, _GetData(nullptr));
    EXPECT_EQ(kInvalid, lastError());
}

// ---- decoding -------------------------------------------------------------------------------

struct Free {
    void operator()(_LGX_Read* read) const { _FreeLGXRead(read); }
};
typedef std::unique_ptr<_LGX_Read, Free> ReadPtr;

ReadPtr decode(const std::string& reply) {
    const Bytes whole = bytes(reply);
    const ReplyBuffer buffer(whole);
    CIPERROR(3, 4, 5);
    return ReadPtr(_DecodeLGX(buffer.as<_MR_Reply>(), static_cast<int>(whole.size())));
}

struct Good {
    const char* reply;
    int type;
    int count;
    int size;
    int elementSize;
    const char* data;
};

const Good kGood[] = {
    {"CC 00 00 00 C1 00 01", 0xC1, 1, 1, 1, "01"},
    {"CC 00 00 00 C2 00 FF FE FD", 0xC2, 3, 3, 1, "FF FE FD"},
    {"CC 00 00 00 C3 00 01 00 02 00", 0xC3, 2, 4, 2, "01 00 02 00"},
    {"CC 00 00 00 C4 00 2A 00 00 00", 0xC4, 1, 4, 4, "2A 00 00 00"},
    {"CC 00 00 00 C6 00 07", 0xC6, 1, 1, 1, "07"},
    {"CC 00 00 00 C7 00 07 00", 0xC7, 1, 2, 2, "07 00"},
    {"CC 00 00 00 C8 00 07 00 00 00", 0xC8, 1, 4, 4, "07 00 00 00"},
    {"CC 00 00 00 CA 00 00 00 80 3F 00 00 00 40", 0xCA, 2, 8, 4, "00 00 80 3F 00 00 00 40"},
    {"CC 00 00 00 CB 00 00 00 00 00 00 00 F0 3F", 0xCB, 1, 8, 8, "00 00 00 00 00 00 F0 3F"},
    {"CC 00 00 00 D3 00 01 02 03 04", 0xD3, 1, 4, 4, "01 02 03 04"},
    {"CC 00 00 00 DA 00 05 48 65 6C 6C 6F", 0xDA, 1, 5, 5, "48 65 6C 6C 6F"},
    {"CC 00 00 00 DA 00 02 48 65 6C 6C 6F", 0xDA, 2, 5, 2, "48 65 6C 6C 6F"},
    {"CC 00 00 00 DA 00 00", 0xDA, 1, 0, 0, ""},
    {"CC 00 00 00 DA 00 00 41 42", 0xDA, 1, 2, 0, "41 42"},
    // bytes left over after the last whole element
    {"CC 00 00 00 C3 00 01 00 02", 0xC3, 1, 3, 2, "01 00 02"},
    {"CC 00 00 00 C4 00 01 00 00 00 02", 0xC4, 1, 5, 4, "01 00 00 00 02"},
    {"CC 00 00 00 C4 00 01 00 00 00 02 00 00 00 03 00 00", 0xC4, 2, 11, 4,
     "01 00 00 00 02 00 00 00 03 00 00"},
    {"CC 00 00 00 CB 00 01 02 03 04 05 06 07 08 09", 0xCB, 1, 9, 8, "01 02 03 04 05 06 07 08 09"},
};

TEST(DecodeLGX, EveryType) {
    for (const Good& row : kGood) {
        const ReadPtr read = decode(row.reply);
        ASSERT_TRUE(read) << row.reply;
        EXPECT_EQ(row.type, read->type) << row.reply;
        EXPECT_EQ(row.count, read->count) << row.reply;
        EXPECT_EQ(row.size, read->size) << row.reply;
        EXPECT_EQ(row.elementSize, read->elementSize) << row.reply;
        EXPECT_EQ(0u, read->mask);
        const size_t size = static_cast<size_t>(row.size);
        EXPECT_EQ(row.data, hexOf(bytesAt(_GetLGXReadData(read.get()), size)));
        EXPECT_EQ(filled(8, 0), bytesAt(_GetLGXReadData(read.get()) + size, 8)) << "slack";
        EXPECT_EQ(kSuccess, lastError());
    }
}

TEST(DecodeLGX, Refused) {
    const struct {
        const char* reply;
        CipError error;
    } rows[] = {
        // no type of its own, a refusal, another service
        {"CC 00 00 00 C5 00 01 02 03 04", {0, -102, 236}},
        {"CC 00 00 00 A0 02 01 02 03 04", {0, -102, 236}},
        {"CC 00 00 00 C4 FF 01 02 03 04", {0, -102, 236}},
        {"CC 00 00 00 00 00", {0, -102, 236}},
        {"CC 00 05 00", {0, -102, 236}},
        {"CC 00 06 00 C4 00 01 00 00 00", {0, -102, 236}},
        {"CD 00 00 00 C4 00 01 02 03 04", {0, -102, 236}},
        // no element
        {"CC 00 00 00 C4 00", {0, -102, 248}},
        {"CC 00 00 00 C4 00 01 02 03", {0, -102, 248}},
        {"CC 00 00 00 CB 00 01 02 03 04 05 06 07", {0, -102, 248}},
        // string longer than its data, without its length
        {"CC 00 00 00 DA 00 05 48 65 6C 6C", {0, -102, 248}},
        {"CC 00 00 00 DA 00 FF", {0, -102, 248}},
        {"CC 00 00 00 DA 00", kInvalid},
        // cut short
        {"CC 00 00 00 C4", kInvalid},
        {"CC 00 00 00", kInvalid},
        {"CC 00 00", kInvalid},
        {"CC", kInvalid},
        {"", kInvalid},
        {"CC 00 00 01", kInvalid},
        {"CC 00 00 FF C4 00 01 00 00 00", kInvalid},
    };
    for (const auto& row : rows) {
        EXPECT_FALSE(decode(row.reply)) << row.reply;
        EXPECT_EQ(row.error, lastError()) << row.reply;
    }
    for (int length : {100, 0, -1}) {
        CIPERROR(0, 0, 0);
        EXPECT_EQ(nullptr, _DecodeLGX(nullptr, length));
        EXPECT_EQ((CipError{0, -102, 236}), lastError());
    }
}

TEST(DecodeLGX, WildLengths) {
    const ReplyBuffer reply("CC 00 00 00 C4 00 2A 00 00 00");
    for (int length : {-1, INT32_MIN, 0, 3}) {
        EXPECT_EQ(nullptr, _DecodeLGX(reply.as<_MR_Reply>(), length)) << length;
        EXPECT_EQ(kInvalid, lastError());
    }
}

TEST(DecodeLGX, UnknownErrorHasItsText) {
    EXPECT_FALSE(decode("CC 00 00 00 C5 00 01"));
    EXPECT_STREQ("Internal: unknown error", cip_err_msg());
}

}  // namespace
