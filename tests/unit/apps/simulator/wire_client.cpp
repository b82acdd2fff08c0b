#include "unit/apps/simulator/wire_client.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

#include "unit/apps/simulator/hex.h"

namespace {

using Clock = std::chrono::steady_clock;

void replaceMark(std::string* text, const char* mark, uint32_t value) {
    sim::Bytes bytes;
    sim::put32(bytes, value);
    for (size_t at = text->find(mark); at != std::string::npos; at = text->find(mark)) {
        text->replace(at, 8, hexOf(bytes));
    }
}

}  // namespace

WireClient::WireClient(uint16_t port) : descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        close();
    }
}

void WireClient::close() {
    if (descriptor >= 0) {
        ::close(descriptor);
        descriptor = -1;
    }
}

bool WireClient::open(uint32_t originator) {
    received.clear();
    const sim::Bytes registered =
        hex(exchange("6500 0400 00000000 00000000 0000000000000000 00000000 0100 0000"));
    if (registered.size() != 28 || sim::get32(registered, 8) != 0) {
        return false;
    }
    handle = sim::get32(registered, 4);
    return openConnection(originator);
}

bool WireClient::openConnection(uint32_t originator) {
    sim::Bytes serial;
    sim::put32(serial, originator);
    const sim::Bytes opened =
        hex(exchange("6F00 3E00 SSSSSSSS 00000000 0000000000000000 00000000"
                     "00000000 0000 0200 0000 0000 B200 2E00"
                     "54 02 20062401 05 F7 02000080 0100FE80 0200 1B50" +
                     hexOf(serial) + "02 000000 80841E00 F843 80841E00 F843 A3 02 20022401"));
    if (opened.size() != 70 || sim::get8(opened, 42) != 0) {
        return false;
    }
    connection = sim::get32(opened, 44);
    return true;
}

sim::Bytes WireClient::fill(const std::string& text) const {
    std::string plain;
    for (const char c : text) {
        plain += c == ' ' ? "" : std::string(1, c);
    }
    replaceMark(&plain, "SSSSSSSS", handle);
    replaceMark(&plain, "CCCCCCCC", connection);
    return hex(plain);
}

std::string WireClient::expected(const std::string& text) const {
    return hexOf(fill(text));
}

bool WireClient::send(const std::string& text) {
    const sim::Bytes bytes = fill(text);
    return ::send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL) == ssize_t(bytes.size());
}

bool WireClient::sendByteByByte(const std::string& text) {
    for (const uint8_t byte : fill(text)) {
        if (::send(descriptor, &byte, 1, MSG_NOSIGNAL) != 1) {
            return false;
        }
    }
    return true;
}

std::string WireClient::receive(int timeoutMs) {
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        const size_t size = 24 + sim::get16(received, 2);
        if (received.size() >= 24 && received.size() >= size) {
            const std::string frame = hexOf(sim::ByteView(received.data(), size));
            received.erase(received.begin(), received.begin() + long(size));
            return frame;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd ready = {descriptor, POLLIN, 0};
        if (left < 0 || poll(&ready, 1, int(left)) <= 0) {
            return "";
        }
        uint8_t buffer[65536];
        const ssize_t got = recv(descriptor, buffer, sizeof buffer, 0);
        if (got <= 0) {
            return got < 0 && errno == ECONNRESET ? "reset" : "closed";
        }
        received.insert(received.end(), buffer, buffer + got);
    }
}

std::string WireClient::exchange(const std::string& text) {
    return send(text) ? receive() : "not sent";
}

std::string WireClient::partial() const {
    return hexOf(received);
}
