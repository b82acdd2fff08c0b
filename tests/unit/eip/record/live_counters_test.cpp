#include "eip/record/live_counters.h"

#include <gtest/gtest.h>

#include <thread>

#include "eip/cip/encap_header.h"
#include "support/hex_bytes.h"

namespace {

TEST(LiveCounters, NothingYet) {
    const LiveFigures figures = LiveCounters().figures();
    EXPECT_EQ(0u, figures.requests);
    EXPECT_EQ(0u, figures.passMean);
    EXPECT_EQ(0u, figures.passP99);
    EXPECT_EQ(256u, figures.byStatus.size());
}

TEST(LiveCounters, Answers) {
    LiveCounters counters;
    counters.noteRequest();
    for (const int status :
         {0, 0, 5, 0xFF, 0x100, LiveCounters::kNoStatus, LiveCounters::kEncapsulationError}) {
        counters.noteAnswer(status);
    }
    counters.noteTimeout();
    counters.noteConnect(true);
    counters.noteConnect(false);
    counters.noteConnect(false);
    counters.noteOpen();
    counters.noteLoss();
    counters.noteErrorText();
    const LiveFigures figures = counters.figures();
    EXPECT_EQ(1u, figures.requests);
    EXPECT_EQ(7u, figures.answers);
    EXPECT_EQ(2u, figures.byStatus[0]);
    EXPECT_EQ(1u, figures.byStatus[5]);
    EXPECT_EQ(1u, figures.byStatus[0xFF]);
    EXPECT_EQ(1u, figures.encapsulationErrors);
    EXPECT_EQ(1u, figures.timeouts);
    EXPECT_EQ(1u, figures.connects);
    EXPECT_EQ(2u, figures.connectFailures);
    EXPECT_EQ(1u, figures.opens);
    EXPECT_EQ(1u, figures.losses);
    EXPECT_EQ(1u, figures.errorTexts);
}

TEST(LiveCounters, HostWaits) {
    LiveCounters counters;
    for (const int micros : {5, 900, -3, 7}) {
        counters.noteHostWait(micros);
    }
    EXPECT_EQ(4u, counters.figures().hostCalls);
    EXPECT_EQ(900u, counters.figures().longestHostWait);
}

TEST(LiveCounters, Passes) {
    LiveCounters counters;
    for (int i = 1; i <= 100; ++i) {
        counters.notePass(i);
    }
    const LiveFigures figures = counters.figures();
    EXPECT_EQ(100u, figures.passes);
    EXPECT_EQ(100u, figures.passLast);
    EXPECT_EQ(50u, figures.passMean);
    EXPECT_EQ(99u, figures.passP99);
}

TEST(LiveCounters, OnlyTheLastPassesCount) {
    LiveCounters counters;
    counters.notePass(1000000);
    for (int i = 0; i < 256; ++i) {
        counters.notePass(10);
    }
    EXPECT_EQ(257u, counters.figures().passes);
    EXPECT_EQ(10u, counters.figures().passMean);
    EXPECT_EQ(10u, counters.figures().passP99);
}

TEST(LiveCounters, AnyThread) {
    LiveCounters counters;
    std::thread other([&] {
        for (int i = 0; i < 10000; ++i) {
            counters.noteRequest();
            counters.notePass(i);
        }
    });
    for (int i = 0; i < 1000; ++i) {
        counters.noteHostWait(i);
        counters.figures();
    }
    other.join();
    EXPECT_EQ(10000u, counters.figures().requests);
}

struct StatusRow {
    const char* what;
    const char* reply;  ///< hexadecimal, from the encapsulation header on
    int status;
};

void PrintTo(const StatusRow& row, std::ostream* out) {
    *out << row.what;
}

class StatusOfReply : public ::testing::TestWithParam<StatusRow> {};

TEST_P(StatusOfReply, IsFound) {
    const QByteArray reply = hex(GetParam().reply);
    EXPECT_EQ(GetParam().status,
              statusOfReply(reinterpret_cast<const _Encap_Header*>(reply.constData())));
}

// Header: command, length, session, status, context, options.
INSTANTIATE_TEST_SUITE_P(
    All, StatusOfReply,
    ::testing::Values(
        StatusRow{"register session",
                  "65000400 01000000 00000000 0000000000000000 00000000 01000000",
                  LiveCounters::kNoStatus},
        StatusRow{"encapsulation status 0064",
                  "70000000 01000000 64000000 0000000000000000 00000000",
                  LiveCounters::kEncapsulationError},
        StatusRow{"encapsulation status in the high byte",
                  "70000000 01000000 00000001 0000000000000000 00000000",
                  LiveCounters::kEncapsulationError},
        StatusRow{"connected, good",
                  "70002000 01000000 00000000 0000000000000000 00000000"
                  "00000000 0000 0200 a1000400 01020304 b1000c00 0100 cc000000 c400 2a000000",
                  0},
        StatusRow{"connected, refused with FF and one additional word",
                  "70001c00 01000000 00000000 0000000000000000 00000000"
                  "00000000 0000 0200 a1000400 01020304 b1000800 0100 cc00ff01 0521",
                  0xFF},
        StatusRow{"unconnected, refused with 01",
                  "6f001600 01000000 00000000 0000000000000000 00000000"
                  "00000000 0000 0200 00000000 b2000600 d4000101 0001",
                  1},
        StatusRow{"an additional status that is not there",
                  "6f001400 01000000 00000000 0000000000000000 00000000"
                  "00000000 0000 0200 00000000 b2000400 d4000101",
                  LiveCounters::kNoStatus},
        StatusRow{"no items at all", "70000000 01000000 00000000 0000000000000000 00000000",
                  LiveCounters::kNoStatus}));

}  // namespace
