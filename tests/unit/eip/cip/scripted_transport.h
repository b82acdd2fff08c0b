#ifndef TESTS_UNIT_EIP_CIP_SCRIPTED_TRANSPORT_H
#define TESTS_UNIT_EIP_CIP_SCRIPTED_TRANSPORT_H

#include <deque>
#include <functional>
#include <vector>

#include "eip/cip/cip_callback.h"
#include "eip/cip/encap_header.h"
#include "unit/eip/cip/wire_bytes.h"

/// A transport that keeps every request and plays replies in order, each from an allocation of
/// exactly its size so that a byte read too far is seen by the address sanitizer.
class ScriptedTransport : public CipCallback {
 public:
    _Encap_Header* recvData(int timeoutMs) override;
    int sendData(const _Encap_Header* request) override;
    _Encap_Header* sendDataWaitReply(const _Encap_Header* request, int unused,
                                     int timeoutMs) override;

    /// Queues a reply. Its length field must count what follows the header.
    void play(const Bytes& reply);
    void play(const char* hex) { play(bytes(hex)); }
    /// Queues a lost reply; `record` plays what a transport leaves in the error record.
    void lose(std::function<void()> record = std::function<void()>());

    std::vector<Bytes> requests;
    /// The error record as each request was sent.
    std::vector<CipError> recordsAtSend;
    std::vector<int> timeouts;
    /// What sendData returns instead of the number of bytes, unless it is kAsSent.
    int sendResult = kAsSent;
    static const int kAsSent = 12345;

 private:
    struct Step {
        bool lost;
        Bytes reply;
        std::function<void()> record;
    };
    std::deque<Step> steps;
};

/// A reply in an allocation of exactly its size, as a transport hands it out.
class ReplyBuffer {
 public:
    explicit ReplyBuffer(const Bytes& reply);
    explicit ReplyBuffer(const char* hex) : ReplyBuffer(bytes(hex)) {}
    ~ReplyBuffer();
    ReplyBuffer(const ReplyBuffer&) = delete;
    ReplyBuffer& operator=(const ReplyBuffer&) = delete;

    const _Encap_Header* header() const { return static_cast<const _Encap_Header*>(memory); }
    /// For buffers that contain an item or a message-router reply.
    template <typename T>
    const T* as() const {
        return static_cast<const T*>(memory);
    }

 private:
    void* memory;
};

#endif
