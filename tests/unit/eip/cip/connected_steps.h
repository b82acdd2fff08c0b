#ifndef TESTS_UNIT_EIP_CIP_CONNECTED_STEPS_H
#define TESTS_UNIT_EIP_CIP_CONNECTED_STEPS_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "eip/cip/connection_manager.h"
#include "eip/cip/session.h"
#include "unit/eip/cip/reply_sweeps.h"
#include "unit/eip/cip/scripted_transport.h"

/// An open connection, of unknown size, over which a tag is read or written in as many requests as
/// it takes.
class ConnectedSteps : public testing::Test {
 protected:
    ConnectedSteps() : session(NewSession(1000, &transport)), connection() {
        session->sessionHandle = kHandle;
        connection.session = session;
    }
    ~ConnectedSteps() override { DeleteSession(session); }

    /// Queues the message-router replies to the next requests, in order.
    void answer(const std::vector<std::string>& replies) {
        connection.sequenceCount = 0;
        unsigned char sequence = 0;
        for (const std::string& reply : replies) {
            transport.play(connectedReply(kHandle, ++sequence, reply));
        }
    }

    /// The message-router requests that were sent since the transport's were cleared.
    std::vector<std::string> requests() const {
        std::vector<std::string> all;
        for (const Bytes& whole : transport.requests) {
            all.push_back(hexOf(Bytes(whole.begin() + 46, whole.end())));
        }
        return all;
    }

    static const uint32_t kHandle = 0x77;

    ScriptedTransport transport;
    _Eip_Session* session;
    _Eip_Connection connection;
};

#endif
