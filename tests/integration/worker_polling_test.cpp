// The worker's polling pass against a controller, one pass at a time on the test's thread.

#include <gtest/gtest.h>

#include "integration/worker_rig.h"

namespace {

class WorkerPolling : public WorkerSteps {};

/// A read with another count answers the driver and refreshes nothing: the entry is still due.
TEST_F(WorkerPolling, ATagThatIsReadWithAnotherCountIsPolledInTheSamePass) {
    start({"--tag", "A:DINT[0..4]=1,2,3,4,5"});
    poll("01\t0001\tA[1]\t1\n");
    for (int pass = 0; pass < 3; ++pass) {
        worker->receiver()->cacheClear();
        take("02\t0002\tA[1]\t2\n");
        worker->pollSession();
        EXPECT_EQ(QByteArray("02\t0002\t0200000003000000\n"), answer());
        EXPECT_EQ(QByteArray("02000000"), cached("A[1]_1"));
        EXPECT_EQ(2 * (pass + 1), simulator->countRequests("A[1]"));
    }
}

/// What a driver's read has put into the cache in the middle of a pass is not read twice in it.
TEST_F(WorkerPolling, ATagThatADriversReadRefreshedIsSkippedInTheSamePass) {
    start({"--tag", "D:DINT=42"});
    poll("01\t0001\tD\t1\n");
    take("02\t0002\tD\t1\n");
    worker->pollSession();
    EXPECT_EQ(QByteArray("02\t0002\t2a000000\n"), answer());
    EXPECT_EQ(QByteArray("2a000000"), cached("D_1"));
    EXPECT_EQ(1, simulator->countRequests("D"));
}

/// Other requests are held back until the polling has the connection again.
TEST_F(WorkerPolling, AnAnswerThatIsLostRaisesTheFlagUntilTheNextOpening) {
    struct Loss {
        const char* fault;
        const char* text;
    };
    for (const Loss& loss : {Loss{"resetx1@tag=D", "Internal: receive error"},
                             Loss{"silencex1@tag=D", "Internal: receive timeout"}}) {
        start({"--tag", "D:DINT=42", "--fault", loss.fault});
        poll("01\t0001\tD\t1\n");
        worker->pollSession();
        EXPECT_TRUE(worker->hasErr()) << loss.fault;
        EXPECT_EQ(QString(loss.text), worker->errStr());
        EXPECT_FALSE(open());
        EXPECT_EQ(QByteArray("none"), cached("D_1"));
        worker->pollSession();
        EXPECT_FALSE(worker->hasErr()) << loss.fault;
        EXPECT_EQ(QByteArray("2a000000"), cached("D_1"));
    }
}

/// A refusal is that tag's trouble alone.
TEST_F(WorkerPolling, ARefusedTagRaisesNoFlag) {
    start({"--tag", "D:DINT=42", "--fault", "status:05x1@tag=D"});
    poll("01\t0001\tD\t1\n");
    worker->pollSession();
    EXPECT_FALSE(worker->hasErr());
    EXPECT_EQ(QString("AB error: 0005H"), worker->errStr());
    EXPECT_TRUE(open());
}

}  // namespace
