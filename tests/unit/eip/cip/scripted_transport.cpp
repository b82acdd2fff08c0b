#include "unit/eip/cip/scripted_transport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

namespace {

void* exactCopy(const Bytes& reply) {
    void* memory = malloc(reply.size());
    if (!reply.empty()) {
        memcpy(memory, reply.data(), reply.size());
    }
    return memory;
}

}  // namespace

_Encap_Header* ScriptedTransport::recvData(int timeoutMs) {
    timeouts.push_back(timeoutMs);
    if (steps.empty()) {
        return nullptr;
    }
    const Step step = steps.front();
    steps.pop_front();
    if (step.record) {
        step.record();
    }
    return step.lost ? nullptr : static_cast<_Encap_Header*>(exactCopy(step.reply));
}

int ScriptedTransport::sendData(const _Encap_Header* request) {
    const unsigned char* at = reinterpret_cast<const unsigned char*>(request);
    const int size = 24 + (at[2] | at[3] << 8);
    requests.push_back(Bytes(at, at + size));
    recordsAtSend.push_back(lastError());
    return sendResult == kAsSent ? size : sendResult;
}

_Encap_Header* ScriptedTransport::sendDataWaitReply(const _Encap_Header* request, int,
                                                    int timeoutMs) {
    sendData(request);
    return recvData(timeoutMs);
}

void ScriptedTransport::play(const Bytes& reply) {
    ASSERT_GE(reply.size(), 24u);
    ASSERT_EQ(reply.size() - 24, size_t(reply[2] | reply[3] << 8)) << "length field of the script";
    steps.push_back(Step{false, reply, std::function<void()>()});
}

void ScriptedTransport::lose(std::function<void()> record) {
    steps.push_back(Step{true, Bytes(), record});
}

ReplyBuffer::ReplyBuffer(const Bytes& reply) : memory(exactCopy(reply)) {}

ReplyBuffer::~ReplyBuffer() {
    free(memory);
}
