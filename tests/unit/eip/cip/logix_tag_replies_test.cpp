#include "eip/cip/logix_tag_replies.h"

#include <gtest/gtest.h>

#include "unit/eip/cip/scripted_transport.h"

namespace {

const CipError kInvalid{0, -20, 0};

TEST(LogixTagReplies, SingleReply) {
    const ReplyBuffer item("B1 00 08 00 01 00 CC 00 00 00 C1 00");
    const cip::MRView view = cip::singleReply(item.as<_Eip_Item>());
    EXPECT_EQ(item.as<unsigned char>() + 6, reinterpret_cast<const unsigned char*>(view.reply));
    EXPECT_EQ(6, view.size);
    const ReplyBuffer multiple("B1 00 10 00 01 00 8A 00 00 00 01 00 04 00 CC 00 00 00 C1 00");
    EXPECT_FALSE(cip::singleReply(multiple.as<_Eip_Item>()).reply);
    EXPECT_EQ(kInvalid, lastError());
    const ReplyBuffer fragment("B1 00 08 00 01 00 D2 00 00 00 C1 00");
    EXPECT_FALSE(cip::singleReply(fragment.as<_Eip_Item>()).reply);
    EXPECT_EQ((CipError{0, -22, 0}), lastError());
    EXPECT_FALSE(cip::singleReply(nullptr).reply);
    EXPECT_EQ(kInvalid, lastError());
}

TEST(LogixTagReplies, FragmentReply) {
    const ReplyBuffer item("B1 00 08 00 01 00 D2 00 06 00 C1 00");
    const cip::MRView view = cip::fragmentReply(item.as<_Eip_Item>(), 0x52);
    EXPECT_EQ(item.as<unsigned char>() + 6, reinterpret_cast<const unsigned char*>(view.reply));
    EXPECT_EQ(6, view.size);
    EXPECT_FALSE(cip::fragmentReply(item.as<_Eip_Item>(), 0x53).reply);
    EXPECT_EQ(kInvalid, lastError());
    for (const char* bad : {"B1 00 02 00 01 00", "B1 00 05 00 01 00 D2 00 06", "A1 00 00 00",
                            "B1 00 06 00 01 00 D2 00 06 01", "B1 00 06 00 01 00 52 00 00 00"}) {
        CIPERROR(0, 0, 0);
        const ReplyBuffer buffer(bad);
        EXPECT_FALSE(cip::fragmentReply(buffer.as<_Eip_Item>(), 0x52).reply) << bad;
        EXPECT_EQ(kInvalid, lastError()) << bad;
    }
    CIPERROR(0, 0, 0);
    EXPECT_FALSE(cip::fragmentReply(nullptr, 0x52).reply);
    EXPECT_EQ(kInvalid, lastError());
}

TEST(LogixTagReplies, Data) {
    const struct {
        const char* reply;
        int type;
        const char* data;
    } rows[] = {
        {"CC 00 06 00 C4 00 01 02 03 04", 0xC4, "01 02 03 04"},
        {"CC 00 FF 01 05 21 C3 00 01", 0xC3, "01"},
        {"D2 00 00 00 34 92", -28108, ""},
        {"CC 00 06 00 C4", 0, ""},
        {"CC 00 06 00", 0, ""},
    };
    for (const auto& row : rows) {
        const Bytes reply = bytes(row.reply);
        const ReplyBuffer buffer(reply);
        const cip::TagData data = cip::viewTagData(
            cip::viewMR(buffer.as<unsigned char>(), static_cast<int>(reply.size())));
        EXPECT_EQ(row.type, data.type) << row.reply;
        EXPECT_EQ(row.data, hexOf(bytesAt(data.data, static_cast<size_t>(data.size))));
    }
}

}  // namespace
