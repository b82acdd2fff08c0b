// What the worker does when memory runs out where it waits.

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <cstring>
#include <new>

#include "eip/cip_plc_driver_callback.h"
#include "eip/worker.h"
#include "integration/driver_rig.h"

namespace {

/// A receiver without memory for a line. The line stays in the pipe.
class NarrowReceiver : public CipPlcDriverCallback {
 public:
    void serverPipeOnReceive(int pipe) override {
        if (lacking > 0) {
            --lacking;
            throw std::bad_alloc();
        }
        if (stopped) {
            EipWorker* const worker = stopped;
            stopped = nullptr;
            lacking = INT_MAX;
            worker->stop();
            return;
        }
        CipPlcDriverCallback::serverPipeOnReceive(pipe);
    }

    std::atomic<int> lacking{0};               ///< so many lines
    std::atomic<EipWorker*> stopped{nullptr};  ///< by the next line, and no memory after it
};

class WorkerMemory : public ::testing::Test {
 protected:
    WorkerMemory()
        : simulator({"--tag", "D:DINT=42"}),
          worker(&receiver, "127.0.0.1", simulator.port(), 3000) {
        receiver.setClientPipeRxTimeout(0, 10000);
        worker.start();
    }
    ~WorkerMemory() override {
        worker.stop();
        worker.wait(ULONG_MAX);
    }
    void send(const char* line) { worker.sendCmd(0, line, static_cast<int>(std::strlen(line))); }
    QByteArray answer() {
        char line[64];
        int received = 0;
        const bool whole = worker.recvRsp(0, line, sizeof line, &received);
        return whole ? QByteArray(line, received) : QByteArray();
    }

    Controller simulator;
    NarrowReceiver receiver;
    EipWorker worker;
};

/// In the round, in the closing that follows, and in the pause after that.
TEST_F(WorkerMemory, RunsOutAgainWhileTheConnectionIsClosed) {
    for (int lacking = 1; lacking <= 3; ++lacking) {
        send("02\t0001\tD\t1\n");
        EXPECT_EQ(QByteArray("02\t0001\t2a000000\n"), answer()) << lacking;
        const int opened = simulator.connectionsOpened();
        receiver.lacking = lacking;
        send("02\t0002\tD\t1\n");
        EXPECT_EQ(QByteArray("02\t0002\t2a000000\n"), answer()) << lacking;
        EXPECT_EQ(opened + 1, simulator.connectionsOpened()) << lacking;
    }
}

TEST_F(WorkerMemory, RunsOutInTheFarewell) {
    send("02\t0001\tD\t1\n");
    EXPECT_EQ(QByteArray("02\t0001\t2a000000\n"), answer());
    // Its answer from the cache ends the pause after the read: the next line comes to an idle
    // worker.
    receiver.cacheInsert("C_1", QByteArray("x"));
    send("02\t0002\tC\t1\n");
    EXPECT_EQ(QByteArray("02\t0002\t78\n"), answer());
    receiver.stopped = &worker;
    send("02\t0003\tD\t1\n");
    EXPECT_TRUE(worker.wait(10000));
    EXPECT_EQ(INT_MAX - 1, receiver.lacking);
}

}  // namespace
