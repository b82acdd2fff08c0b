#include "eip/reply_buffer.h"

#include <gtest/gtest.h>

namespace {

TEST(ReplyBuffer, HoldsTheHeaderAndWhatItAnnounces) {
    for (const int length : {0, 1, 0x0102, 0xFFFF}) {
        _Encap_Header header = {};
        header.command[0] = 0x70;
        header.length[0] = static_cast<unsigned char>(length & 0xFF);
        header.length[1] = static_cast<unsigned char>(length >> 8);
        header.options[3] = 0x23;
        const cip::MallocPtr<unsigned char> buffer = replyBuffer(header);
        ASSERT_TRUE(buffer);
        EXPECT_EQ(0, memcmp(&header, buffer.get(), 24)) << length;
        memset(buffer.get() + 24, 0xEE, static_cast<size_t>(length));  // all of it is there
    }
}

}  // namespace
