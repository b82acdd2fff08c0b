#include "eip/cip/cip_trace.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <thread>

namespace {

class CipTrace : public testing::Test {
 protected:
    ~CipTrace() override { _cip_debuglevel = 0; }

    std::string printed() {
        fflush(stdout);
        return testing::internal::GetCapturedStdout();
    }
};

TEST_F(CipTrace, SilentByDefault) {
    testing::internal::CaptureStdout();
    LogCip(2, "->Entering %s \n", "BuildRequest");
    LogCip(1, "one\n");
    FlushCipBuffer(3, "abc", 3);
    EXPECT_EQ("", printed());
    EXPECT_EQ(0, _cip_debuglevel);
}

TEST_F(CipTrace, LevelsUpToTheThresholdArePrinted) {
    _cip_debuglevel = 2;
    testing::internal::CaptureStdout();
    LogCip(0, "zero ");
    LogCip(2, "%d:%s ", 2, "two");
    LogCip(3, "three ");
    FlushCipBuffer(3, "abc", 3);
    EXPECT_EQ("zero 2:two ", printed());
}

TEST_F(CipTrace, NothingGoesToStandardError) {
    _cip_debuglevel = 3;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    LogCip(2, "text\n");
    FlushCipBuffer(3, "abc", 3);
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_NE("", printed());
}

TEST_F(CipTrace, EachThreadHasItsOwnThreshold) {
    _cip_debuglevel = 3;
    int32_t other = -1;
    std::thread([&] { other = _cip_debuglevel; }).join();
    EXPECT_EQ(0, other);
}

std::string lineHead(const unsigned char* at, int index) {
    char head[64];
    snprintf(head, sizeof(head), "%p (%04d) :\t", static_cast<const void*>(at), index);
    return head;
}

TEST_F(CipTrace, DumpHasTenBytesALine) {
    unsigned char data[25];
    for (int i = 0; i < 25; ++i) {
        data[i] = static_cast<unsigned char>(0xF0 + i);
    }
    _cip_debuglevel = 3;
    testing::internal::CaptureStdout();
    FlushCipBuffer(3, data, 25);
    EXPECT_EQ(lineHead(data, 0) + "F0 F1 F2 F3 F4 F5 F6 F7 F8 F9 \n" + lineHead(data + 10, 10) +
                  "FA FB FC FD FE FF 00 01 02 03 \n" + lineHead(data + 20, 20) +
                  "04 05 06 07 08 \n",
              printed());
}

TEST_F(CipTrace, DumpOfAFullLineHasNoEmptyOne) {
    const unsigned char data[10] = {0};
    _cip_debuglevel = 3;
    testing::internal::CaptureStdout();
    FlushCipBuffer(3, data, 10);
    EXPECT_EQ(lineHead(data, 0) + "00 00 00 00 00 00 00 00 00 00 \n", printed());
}

TEST_F(CipTrace, DumpOfNothing) {
    _cip_debuglevel = 3;
    testing::internal::CaptureStdout();
    FlushCipBuffer(3, "abc", 0);
    FlushCipBuffer(3, "abc", -5);
    EXPECT_EQ("\n\n", printed());
    testing::internal::CaptureStdout();
    FlushCipBuffer(3, nullptr, 3);
    FlushCipBuffer(3, nullptr, 0);
    EXPECT_EQ("", printed());
}

}  // namespace
