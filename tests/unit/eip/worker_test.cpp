// The worker thread, driven by lines on its pipes, without a controller.

#include "eip/worker.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>

#include "common/tools.h"
#include "eip/cip_plc_driver_callback.h"
#include "eip/lgx_data_cache.h"
#include "eip/pipe_protocol.h"

namespace {

/// Nothing listens there: port 1 of loopback refuses at once.
const unsigned short kDeadPort = 1;

class Worker : public ::testing::Test {
 protected:
    Worker() : worker(&receiver, "127.0.0.1", kDeadPort, 200) {}
    ~Worker() override {
        worker.stop();
        worker.wait(ULONG_MAX);
    }

    /// Sends one line on the pipe and gives the answer, empty when none came in time.
    QByteArray exchange(const char* line, int pipe = 0) {
        worker.sendCmd(pipe, line, int(std::strlen(line)));
        char answer[4096];
        int received = 0;
        const bool whole = worker.recvRsp(pipe, answer, sizeof answer, &received);
        return whole ? QByteArray(answer, received) : QByteArray();
    }

    CipPlcDriverCallback receiver;
    EipWorker worker;
};

TEST_F(Worker, ErrorTextOutlivesTheFlag) {
    EXPECT_FALSE(worker.hasErr());
    EXPECT_TRUE(worker.errStr().isEmpty());
    worker.setErrStr("lost");
    EXPECT_TRUE(worker.hasErr());
    EXPECT_EQ(QString("lost"), worker.errStr());
    worker.clearErr();
    EXPECT_FALSE(worker.hasErr());
    EXPECT_EQ(QString("lost"), worker.errStr());
}

TEST_F(Worker, WithoutAControllerNothingOpens) {
    EXPECT_FALSE(worker.connectionIsOpened());
    EXPECT_FALSE(worker.openConnection());
    EXPECT_FALSE(worker.connectionIsOpened());
    EXPECT_TRUE(worker.hasErr());
    EXPECT_EQ(QString("Connection refused(111)"), worker.errStr());
    worker.closeConnection();
    EXPECT_FALSE(worker.connectionIsOpened());
}

TEST_F(Worker, ReplacedReceiverIsTheOneUsed) {
    CipPlcDriverCallback other;
    other.cacheInsert("A_1", QByteArray("x"));
    QByteArray value;
    EXPECT_FALSE(worker.cacheValue("A_1", value));
    worker.setCPDC(&other);
    EXPECT_TRUE(worker.cacheValue("A_1", value));
    EXPECT_EQ(QByteArray("x"), value);
    worker.setCPDC(&receiver);
}

TEST_F(Worker, CachedValueIsAnsweredWithoutAConnection) {
    receiver.cacheInsert("A_1", QByteArray::fromHex("2a000000"));
    receiver.cacheInsert("E_1", QByteArray());
    worker.start();
    EXPECT_EQ(QByteArray("02\t0001\t2a000000\n"), exchange("02\t0001\tA\t1\n"));
    EXPECT_EQ(QByteArray("02\t0002\t00\n"), exchange("02\t0002\tE\t1\n"));
    EXPECT_FALSE(worker.hasErr());
}

TEST_F(Worker, ReadWithoutAControllerFailsWithTheTransportsText) {
    worker.start();
    EXPECT_EQ(QByteArray("82\t0001\tConnection refused(111)\n"), exchange("02\t0001\tA\t1\n"));
    EXPECT_EQ(QByteArray("84\t0002\tConnection refused(111)\n"),
              exchange("04\t0002\tARR\t[3]\tC4\t1\t10\t12\n"));
}

TEST_F(Worker, FlagIsClearedInAnIdleRound) {
    worker.start();
    exchange("02\t0001\tA\t1\n");
    const qint64 start = CurrentMSecsSinceBoot();
    while (worker.hasErr() && CurrentMSecsSinceBoot() - start < 5000) {
        QThread::yieldCurrentThread();
    }
    EXPECT_FALSE(worker.hasErr());
}

TEST_F(Worker, ArrayElementsComeOutOfTheCachedArray) {
    receiver.cacheInsert("ARR_3", QByteArray::fromHex("010000000200000003000000"));
    receiver.cacheInsert("OTHER[1]_1", QByteArray::fromHex("0900000000"));
    worker.start();
    EXPECT_EQ(QByteArray("04\t0001\t02000000\n"), exchange("04\t0001\tARR\t[1]\tC4\t1\t3\t4\n"));
    EXPECT_EQ(QByteArray("04\t0002\t0200000003000000\n"),
              exchange("04\t0002\tARR\t[1]\tC4\t2\t3\t4\n"));
    // The element's own entry, when the array is not there and the entry is long enough.
    EXPECT_EQ(QByteArray("04\t0003\t0900000000\n"),
              exchange("04\t0003\tOTHER\t[1]\tC4\t1\t9\t4\n"));
}

TEST_F(Worker, SliceOutsideTheArrayIsNotTakenFromIt) {
    receiver.cacheInsert("ARR_3", QByteArray::fromHex("010000000200000003000000"));
    worker.start();
    for (const char* line :
         {"04\t0001\tARR\t[3]\tC4\t1\t3\t12\n", "04\t0001\tARR\t[9]\tC4\t1\t3\t-4\n",
          "04\t0001\tARR\t[2]\tC4\t2\t3\t8\n", "04\t0001\tARR\t[2]\tC4\t1\t3\t2147483647\n",
          "04\t0001\tARR\t[2]\tC4\t-1\t3\t0\n", "04\t0001\tARR\t[2]\t00\t1\t3\t0\n"}) {
        EXPECT_EQ(QByteArray("84\t0001\tConnection refused(111)\n"), exchange(line)) << line;
    }
    EXPECT_EQ(QByteArray("84\t0001\tInternal: buffer too small\n"),
              exchange("04\t0001\tARR\t[2]\tC4\t2147483647\t3\t0\n"));
}

TEST_F(Worker, AddressChangeEmptiesTheCacheAndIsAlwaysConfirmed) {
    receiver.cacheInsert("A_1", QByteArray("x"));
    worker.start();
    EXPECT_EQ(QByteArray("05\t0001\n"), exchange("05\t0001\t127.0.0.1\t1\n"));
    EXPECT_FALSE(receiver.cacheContains("A_1"));
}

TEST_F(Worker, SessionListIsConfirmedAndEmptiesTheCache) {
    receiver.cacheInsert("A_1", QByteArray("x"));
    worker.start();
    EXPECT_EQ(QByteArray("01\t0001\n"), exchange("01\t0001\tA\t1\tB\t10\n", 1));
    const qint64 start = CurrentMSecsSinceBoot();
    while (receiver.cacheContains("A_1") && CurrentMSecsSinceBoot() - start < 5000) {
        QThread::yieldCurrentThread();
    }
    EXPECT_FALSE(receiver.cacheContains("A_1"));
    // Refused at once, over and over: commands and addresses still get in.
    EXPECT_EQ(QByteArray("05\t0002\n"), exchange("05\t0002\t127.0.0.1\t1\n"));
    EXPECT_EQ(QByteArray("82\t0003\tConnection refused(111)\n"), exchange("02\t0003\tA\t1\n"));
}

TEST_F(Worker, WriteSlotOfTheBaseWorkerIsEmpty) {
    worker.start();
    EXPECT_EQ(QByteArray(), exchange("03\t0001\tA\tC4\t01000000\n"));
    receiver.cacheInsert("A_1", QByteArray("x"));
    EXPECT_EQ(QByteArray("02\t0002\t78\n"), exchange("02\t0002\tA\t1\n"));
}

TEST_F(Worker, MalformedLinesGetNoAnswerAndDoNoHarm) {
    receiver.cacheInsert("A_1", QByteArray("x"));
    worker.start();
    const QByteArray endless(5000, 'A');
    for (const QByteArray& line :
         {QByteArray("\n"), QByteArray("\t\t \t\n"), QByteArray("07\t0001\n"),
          QByteArray("02\t0001\tA\n"), QByteArray("02\tXYZ\tA\t1\n"), QByteArray("04\t0001\tA\n"),
          QByteArray("01\t0001\tB\n"), endless + "\n"}) {
        worker.sendCmd(0, line.constData(), line.size());
    }
    EXPECT_EQ(QByteArray("02\t0009\t78\n"), exchange("02\t0009\tA\t1\n"));
}

TEST_F(Worker, AnAnswersLengthMayBeUnwanted) {
    ASSERT_EQ(5, receiver.sendServerPipe(0, "line\n", 5));
    char line[8] = {0};
    EXPECT_TRUE(worker.recvRsp(0, line, sizeof line, nullptr));
    EXPECT_STREQ("line\n", line);
}

/// The base worker, its write service open to the test.
class BaseWorker : public EipWorker {
 public:
    using EipWorker::EipWorker;
    using EipWorker::processDriverWriteCmd;
};

TEST_F(Worker, TheBaseWorkerWritesNothing) {
    BaseWorker base(&receiver, "127.0.0.1", kDeadPort, 200);
    QString name = "stale";
    bool broken = true;
    EXPECT_FALSE(base.processDriverWriteCmd(&name, &broken));
    EXPECT_TRUE(name.isEmpty());
    EXPECT_FALSE(broken);
}

TEST_F(Worker, StopBeforeTheStartEndsTheLoopAtOnce) {
    worker.stop();
    worker.start();
    EXPECT_TRUE(worker.wait(5000));
}

}  // namespace
