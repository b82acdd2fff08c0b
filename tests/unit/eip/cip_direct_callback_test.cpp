#include "eip/cip_direct_callback.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "eip/byte_stream_device.h"
#include "eip/cip/cip_error.h"
#include "eip/cip/encap_header.h"
#include "unit/eip/failing_malloc.h"

namespace {

/// A device that plays its reads from a list and notes what is asked of it.
class FakeDevice : public ByteStreamDevice {
 public:
    FakeDevice() : writeResult(-99), destroyed(nullptr) {}
    ~FakeDevice() {
        if (destroyed) {
            *destroyed = true;
        }
    }
    int read(char* buffer, int length) {
        calls.push_back("read " + std::to_string(length));
        if (reads.empty()) {
            return 0;
        }
        const Read next = reads.front();
        reads.pop_front();
        next.bytes.copy(buffer, static_cast<size_t>(length));
        errno = next.error;
        return next.result;
    }
    int write(const char* buffer, int length) {
        calls.push_back("write " + std::to_string(length));
        written.append(buffer, static_cast<size_t>(length));
        return writeResult == -99 ? length : writeResult;
    }
    void control(int code, const QVariant& value) {
        calls.push_back("control " + std::to_string(code) + (value.isValid() ? " value" : ""));
    }

    void willRead(const std::string& bytes) {
        reads.push_back({bytes, static_cast<int>(bytes.size()), 0});
    }
    void willFail(int result, int error) { reads.push_back({std::string(), result, error}); }

    struct Read {
        std::string bytes;
        int result;
        int error;
    };
    std::deque<Read> reads;
    std::vector<std::string> calls;
    std::string written;
    int writeResult;
    bool* destroyed;
};

std::string header(int length) {
    std::string bytes(24, '\x11');
    bytes[2] = static_cast<char>(length & 0xFF);
    bytes[3] = static_cast<char>(length >> 8);
    return bytes;
}

const _Encap_Header* asHeader(const std::string& bytes) {
    return reinterpret_cast<const _Encap_Header*>(bytes.data());
}

typedef std::vector<std::string> Calls;

class Direct : public ::testing::Test {
 protected:
    Direct() : transport(&device) { CIPERROR(CIP_ERR_AB, 0x77, 0x88); }

    /// The received message as text, empty without one.
    std::string receive() {
        const std::unique_ptr<_Encap_Header, void (*)(void*)> reply(transport.recvData(5), free);
        return reply ? std::string(reinterpret_cast<const char*>(reply.get()),
                                   24u + _GetEncapLength(reply.get()))
                     : std::string();
    }
    void expectError(int type, int number, int extended) {
        EXPECT_EQ(type, cip_err_type());
        EXPECT_EQ(number, cip_errno());
        EXPECT_EQ(extended, cip_ext_errno());
    }

    FakeDevice device;
    CipDirectCallback transport;
};

TEST_F(Direct, HeaderThatDoesNotComeIsATimeout) {
    device.willFail(0, EIO);
    EXPECT_EQ("", receive());
    expectError(CIP_ERR_INTERNAL, CIP_INTERNAL_RECEIVE_TIMEOUT, 0);
    EXPECT_STREQ("Internal: receive timeout", cip_err_msg());
    EXPECT_EQ(Calls({"read 24"}), device.calls);
}

TEST_F(Direct, ShortOrFailedHeaderIsTheDevicesError) {
    for (int result : {1, 23, 25, -1}) {
        device.willFail(result, EIO);
        EXPECT_EQ("", receive()) << result;
        expectError(CIP_ERR_SYSTEM, EIO, 0);
        EXPECT_STREQ("Input/output error", cip_err_msg());
    }
    EXPECT_EQ(Calls(4, "read 24"), device.calls);
}

TEST_F(Direct, BodyThatDoesNotComeIsATimeout) {
    device.willRead(header(5));
    device.willFail(0, EIO);
    EXPECT_EQ("", receive());
    expectError(CIP_ERR_INTERNAL, CIP_INTERNAL_RECEIVE_TIMEOUT, 0);
    EXPECT_EQ(Calls({"read 24", "read 5"}), device.calls);
}

TEST_F(Direct, ShortBodyFailsTheReplyWithoutASecondRead) {
    for (int result : {1, 4, 6, -1}) {
        device.calls.clear();
        device.willRead(header(5));
        device.willFail(result, EPIPE);
        device.willRead("abcde");
        EXPECT_EQ("", receive()) << result;
        expectError(CIP_ERR_SYSTEM, EPIPE, 0);
        EXPECT_EQ(Calls({"read 24", "read 5"}), device.calls);
        device.reads.clear();
    }
}

TEST_F(Direct, ReplyWithoutMemoryForItIsAFailure) {
    const FailingMalloc noMemory;
    device.willRead(header(5));
    device.willRead("abcde");
    EXPECT_EQ("", receive());
    EXPECT_TRUE(noMemory.hasFailed());
    expectError(CIP_ERR_SYSTEM, ENOMEM, 0);
    EXPECT_EQ(Calls({"read 24"}), device.calls);
}

TEST_F(Direct, ReceivesWholeMessages) {
    for (size_t length : {size_t(1), size_t(500), size_t(0xFFFF)}) {
        const std::string body(length, 'b');
        device.willRead(header(static_cast<int>(length)));
        device.willRead(body);
        EXPECT_EQ(header(static_cast<int>(length)) + body, receive());
    }
    expectError(CIP_ERR_AB, 0x77, 0x88);
}

TEST_F(Direct, BodyOfNoBytesIsNotAskedFor) {
    device.willRead(header(0));
    EXPECT_EQ(header(0), receive());
    EXPECT_EQ(Calls({"read 24"}), device.calls);
    expectError(CIP_ERR_AB, 0x77, 0x88);
}

TEST_F(Direct, SendsTheWholeRequestAfterAnnouncingIt) {
    const std::string request = header(3) + "abc";
    EXPECT_EQ(27, transport.sendData(asHeader(request)));
    EXPECT_EQ(Calls({"control 12", "write 27"}), device.calls);
    EXPECT_EQ(request, device.written);
    expectError(CIP_ERR_AB, 0x77, 0x88);
}

TEST_F(Direct, PassesTheDevicesWriteResultOn) {
    const std::string request = header(0xFFFF) + std::string(0xFFFF, 'x');
    for (int result : {0, -1, 7}) {
        device.writeResult = result;
        EXPECT_EQ(result, transport.sendData(asHeader(request)));
    }
    EXPECT_EQ("write 65559", device.calls.back());
    expectError(CIP_ERR_AB, 0x77, 0x88);
}

TEST_F(Direct, ExchangeAnnouncesTwice) {
    const std::string request = header(0);
    device.willRead(header(2));
    device.willRead("ok");
    device.writeResult = -1;  // a failed send is not looked at
    _Encap_Header* reply = transport.sendDataWaitReply(asHeader(request), 99, 1000);
    ASSERT_NE(nullptr, reply);
    EXPECT_EQ(2, _GetEncapLength(reply));
    free(reply);
    EXPECT_EQ(Calls({"control 12", "control 12", "write 24", "read 24", "read 2"}), device.calls);
}

/// Notes which of its operations are called.
class Overridden : public CipDirectCallback {
 public:
    explicit Overridden(ByteStreamDevice* device) : CipDirectCallback(device), lastTimeout(0) {}
    virtual int sendData(const _Encap_Header*) {
        calls += 's';
        return 0;
    }
    virtual _Encap_Header* recvData(int timeoutMs) {
        calls += 'r';
        lastTimeout = timeoutMs;
        return nullptr;
    }
    std::string calls;
    int lastTimeout;
};

TEST(DirectExchange, GoesThroughTheVirtualOperations) {
    FakeDevice device;
    Overridden transport(&device);
    CipCallback& callback = transport;
    EXPECT_EQ(nullptr, callback.sendDataWaitReply(asHeader(header(0)), 0, 1234));
    EXPECT_EQ("sr", transport.calls);
    EXPECT_EQ(1234, transport.lastTimeout);
    EXPECT_EQ(Calls({"control 12"}), device.calls);
}

TEST(DirectTransport, DoesNotOwnTheDevice) {
    bool destroyed = false;
    FakeDevice device;
    device.destroyed = &destroyed;
    { CipDirectCallback transport(&device); }
    EXPECT_FALSE(destroyed);
    device.destroyed = nullptr;
}

}  // namespace
