#ifndef TESTS_UNIT_APPS_SIMULATOR_WIRE_CLIENT_H
#define TESTS_UNIT_APPS_SIMULATOR_WIRE_CLIENT_H

#include <cstdint>
#include <string>

#include "apps/simulator/wire/bytes.h"

/// A bare socket that sends bytes written out by hand. Every wait has a limit.
class WireClient {
 public:
    /// Connects to loopback; isOpen() shows whether it did.
    explicit WireClient(uint16_t port);
    ~WireClient() { close(); }
    WireClient(const WireClient&) = delete;
    WireClient& operator=(const WireClient&) = delete;

    bool isOpen() const { return descriptor >= 0; }
    void close();

    /// Registers a session and opens a connection, whose originator has this serial number. False
    /// when either is refused.
    bool open(uint32_t originator = 0x11223344);
    /// Opens another connection in the session.
    bool openConnection(uint32_t originator);

    /// Sends the bytes of hexadecimal digits; SSSSSSSS is the session, CCCCCCCC the connection.
    bool send(const std::string& text);
    /// Sends them one after the other.
    bool sendByteByByte(const std::string& text);
    /// The next whole frame in hexadecimal. "" when none arrives in time, "closed" or "reset" when
    /// the TCP connection ends before it; what came of the frame is in partial().
    std::string receive(int timeoutMs = 10000);
    /// Both.
    std::string exchange(const std::string& text);
    std::string partial() const;
    /// The bytes with session and connection put in, in hexadecimal.
    std::string expected(const std::string& text) const;

    uint32_t session() const { return handle; }

 private:
    sim::Bytes fill(const std::string& text) const;

    int descriptor;
    uint32_t handle = 0;
    uint32_t connection = 0;
    sim::Bytes received;
};

#endif
