#ifndef TESTS_INTEGRATION_WORKER_RIG_H
#define TESTS_INTEGRATION_WORKER_RIG_H

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "drivers/ab_micro800_ethernet/micro800_worker.h"
#include "eip/cip_plc_driver_callback.h"
#include "integration/driver_rig.h"

/// The worker, its steps open to the test; the thread is never started.
class OpenWorker : public Micro800Worker {
 public:
    explicit OpenWorker(quint16 port) : Micro800Worker("127.0.0.1", port, 400) {}
    using EipWorker::pollSession;
    using EipWorker::processDriverIpSettingChangedCmd;
    using EipWorker::processDriverReadArrayElementCmd;
    using EipWorker::processDriverReadCmd;
    using EipWorker::readFromPLC;
    using EipWorker::receiver;
    using EipWorker::takeSessionList;
    using EipWorker::updateCache;
    using EipWorker::writeToPLC;
    using Micro800Worker::processDriverWriteCmd;
};

/// What a handler reported, and the line that it answered with.
struct Outcome {
    bool served;
    bool broken;
    QString name;
    QByteArray answer;
};

/// A worker against a controller, one step at a time on the test's thread.
class WorkerSteps : public ::testing::Test {
 protected:
    void start(const QStringList& options) {
        simulator.reset(new Controller(options));
        worker.reset(new OpenWorker(simulator->port()));
    }

    /// Puts the line into a pipe and lets the transport take it in.
    void take(const char* line, int pipe = 0) {
        worker->sendCmd(pipe, line, int(std::strlen(line)));
        worker->receiver()->sleep(1000);
        // What is not there when the handler has run never comes.
        worker->receiver()->setClientPipeRxTimeout(pipe, 20);
    }
    QByteArray answer(int pipe = 0) {
        char line[4096];
        int received = 0;
        const bool whole = worker->recvRsp(pipe, line, sizeof line, &received);
        return whole ? QByteArray(line, received) : QByteArray();
    }
    /// Makes the line's tags the session list.
    void poll(const char* line) {
        take(line, 1);
        EXPECT_TRUE(worker->takeSessionList()) << line;
    }
    Outcome read(const char* line) {
        take(line);
        // Wrong on purpose: the handler has to set both.
        Outcome outcome = {false, true, "stale", QByteArray()};
        outcome.served = worker->processDriverReadCmd(&outcome.broken, &outcome.name);
        outcome.answer = answer();
        return outcome;
    }
    Outcome readElements(const char* line) {
        take(line);
        Outcome outcome = {false, true, "stale", QByteArray()};
        outcome.served = worker->processDriverReadArrayElementCmd(&outcome.broken, &outcome.name);
        outcome.answer = answer();
        return outcome;
    }
    Outcome write(const char* line) {
        take(line);
        Outcome outcome = {false, true, "stale", QByteArray()};
        outcome.served = worker->processDriverWriteCmd(&outcome.name, &outcome.broken);
        outcome.answer = answer();
        return outcome;
    }
    bool open() const { return worker->connectionIsOpened(); }
    /// The bytes under the key in hexadecimal, "none" without an entry.
    QByteArray cached(const char* key) {
        QByteArray value;
        return worker->cacheValue(QLatin1String(key), value) ? value.toHex() : QByteArray("none");
    }

    std::unique_ptr<Controller> simulator;
    std::unique_ptr<OpenWorker> worker;
};

#endif
