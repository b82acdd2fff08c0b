#ifndef TESTS_UNIT_EIP_PIPE_CLIENT_H
#define TESTS_UNIT_EIP_PIPE_CLIENT_H

#include <gtest/gtest.h>

#include <string>

#include "eip/cip_tcp_callback.h"

/// The driver's side of a transport's pipes, in the thread of the test: what is sent is there at
/// once, and so is an answer, or it never comes.
class PipeClient {
 public:
    explicit PipeClient(CipTcpCallback& pipes) : transport(pipes) {
        transport.setClientPipeRxTimeout(0, 1);
        transport.setClientPipeRxTimeout(1, 1);
    }

    void send(const std::string& line, int pipe = 0) {
        EXPECT_EQ(int(line.size()), transport.sendClientPipe(pipe, line.data(), int(line.size())));
    }

    /// The answer, empty when there is none.
    std::string answer(int pipe) {
        char line[8192];
        const int count = transport.recvClientPipeUntilLF(pipe, line, sizeof line, nullptr);
        return std::string(line, size_t(count));
    }

 private:
    CipTcpCallback& transport;
};

#endif
