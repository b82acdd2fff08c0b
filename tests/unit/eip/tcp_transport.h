#ifndef TESTS_UNIT_EIP_TCP_TRANSPORT_H
#define TESTS_UNIT_EIP_TCP_TRANSPORT_H

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "eip/cip/cip_error.h"
#include "eip/cip/encap_header.h"
#include "eip/cip_tcp_callback.h"
#include "support/loopback.h"

/// A transport whose pipe handler a test can choose; it reads nothing by itself.
class Transport : public CipTcpCallback {
 public:
    virtual void serverPipeOnReceive(int pipeIndex) {
        served.push_back(pipeIndex);
        if (onPipe) {
            onPipe(pipeIndex);
        }
    }

    /// Takes what lies in the pipe.
    std::string take(int pipeIndex) {
        char line[256];
        const int count = recvServerPipe(pipeIndex, line, sizeof line);
        return std::string(line, size_t(count));
    }

    std::vector<int> served;
    std::function<void(int)> onPipe;
};

/// Receives a message as text, empty when there is none.
inline std::string receive(CipTcpCallback& transport, int timeoutMs = kSoonMs) {
    const std::unique_ptr<_Encap_Header, void (*)(void*)> reply(transport.recvData(timeoutMs),
                                                                free);
    if (!reply) {
        return std::string();
    }
    return std::string(reinterpret_cast<const char*>(reply.get()),
                       size_t(kEncapHeaderSize) + _GetEncapLength(reply.get()));
}

/// A transport with a connection to a server.
class Connected : public ::testing::Test {
 protected:
    Connected() {
        EXPECT_EQ(1, transport.connect("127.0.0.1", server.port(), kSoonMs));
        EXPECT_TRUE(server.accept());
        CIPERROR(0, 0, 0);
    }

    LoopbackServer server;
    Transport transport;
};

/// Sends a signal over and over to the thread that makes it, until it is gone.
class SignalRain {
 public:
    SignalRain() : stop(false) {
        struct sigaction action = {};
        action.sa_handler = [](int) {};  // no SA_RESTART: waits return EINTR
        sigaction(SIGUSR1, &action, &old);
        const pthread_t target = pthread_self();
        sender = std::thread([this, target] {
            while (!stop) {
                pthread_kill(target, SIGUSR1);
                std::this_thread::sleep_for(std::chrono::microseconds(500));
            }
        });
    }
    ~SignalRain() {
        stop = true;
        sender.join();
        sigaction(SIGUSR1, &old, nullptr);
    }

 private:
    std::atomic<bool> stop;
    std::thread sender;
    struct sigaction old;
};

#endif
