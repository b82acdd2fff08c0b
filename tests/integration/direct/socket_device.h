#ifndef TESTS_INTEGRATION_DIRECT_SOCKET_DEVICE_H
#define TESTS_INTEGRATION_DIRECT_SOCKET_DEVICE_H

#include "eip/byte_stream_device.h"

/// A byte stream of the host: a TCP connection to loopback, with a time limit for each read.
class SocketDevice : public ByteStreamDevice {
 public:
    explicit SocketDevice(unsigned short port);
    ~SocketDevice() override;
    SocketDevice(const SocketDevice&) = delete;
    SocketDevice& operator=(const SocketDevice&) = delete;

    bool isConnected() const { return descriptor >= 0; }
    void setReadTimeout(int ms) { readTimeoutMs = ms; }

    /// Waits for all of it. Fewer bytes, or 0, when time is up (ETIMEDOUT) or the peer has closed
    /// (ECONNRESET; -1 when nothing came before).
    int read(char* buffer, int length) override;
    int write(const char* buffer, int length) override;
    /// Before a request: throws away what came and nobody read.
    void control(int code, const QVariant& value) override;

    /// Waits until there is something to read.
    bool isReadable(int ms) const;

 private:
    int descriptor;
    int readTimeoutMs;
};

#endif
