#include "eip/read_ahead.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

namespace {

class ReadAheadTest : public ::testing::Test {
 protected:
    ReadAheadTest() { EXPECT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends)); }
    ~ReadAheadTest() override {
        close(ends[0]);
        close(ends[1]);
    }
    void comes(const std::string& bytes) {
        ASSERT_EQ(ssize_t(bytes.size()), write(ends[1], bytes.data(), bytes.size()));
    }
    std::string taken(size_t length) {
        std::string bytes(length, '?');
        bytes.resize(ahead.take(&bytes[0], length));
        return bytes;
    }

    int ends[2];
    ReadAhead ahead;
};

TEST_F(ReadAheadTest, HasNothingAtFirst) {
    EXPECT_TRUE(ahead.isEmpty());
    EXPECT_EQ("", taken(4));
}

TEST_F(ReadAheadTest, NothingThereAddsNothing) {
    ahead.receive(ends[0]);
    EXPECT_TRUE(ahead.isEmpty());
    comes("ab");
    ahead.receive(ends[0]);
    ahead.receive(ends[0]);
    EXPECT_EQ("ab", taken(9));
}

TEST_F(ReadAheadTest, GivesWhatCameInOrder) {
    comes("abcdef");
    ahead.receive(ends[0]);
    EXPECT_EQ(6u, ahead.size());
    EXPECT_EQ("ab", taken(2));
    EXPECT_EQ("cdef", std::string(reinterpret_cast<const char*>(ahead.data()), ahead.size()));
    comes("gh");
    ahead.receive(ends[0]);
    EXPECT_EQ("cdefg", taken(5));
    EXPECT_EQ("h", taken(5));
    EXPECT_TRUE(ahead.isEmpty());
}

TEST_F(ReadAheadTest, LeavesInTheSocketWhatDoesNotFit) {
    std::string bytes;
    for (int i = 0; i < 1500; ++i) {
        bytes += static_cast<char>(i % 251);
    }
    comes(bytes);
    ahead.receive(ends[0]);
    EXPECT_EQ(1024u, ahead.size());
    std::string got = taken(1000);
    ahead.receive(ends[0]);  // the first of the rest goes after the 24 bytes that are left
    EXPECT_EQ(500u, ahead.size());
    got += taken(2000);
    EXPECT_EQ(bytes, got);
}

TEST_F(ReadAheadTest, ForgetsWhatWasLeft) {
    comes("abc");
    ahead.receive(ends[0]);
    ahead.clear();
    EXPECT_TRUE(ahead.isEmpty());
    comes("d");
    ahead.receive(ends[0]);
    EXPECT_EQ("d", taken(9));
}

}  // namespace
