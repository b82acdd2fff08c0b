#include "integration/direct/socket_device.h"

#include <arpa/inet.h>
#include <errno.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <algorithm>

SocketDevice::SocketDevice(unsigned short port)
    : descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), readTimeoutMs(10000) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        close(descriptor);
        descriptor = -1;
    }
}

SocketDevice::~SocketDevice() {
    if (descriptor >= 0) {
        close(descriptor);
    }
}

bool SocketDevice::isReadable(int ms) const {
    pollfd waited = {descriptor, POLLIN, 0};
    return poll(&waited, 1, ms) == 1;
}

int SocketDevice::read(char* buffer, int length) {
    QElapsedTimer clock;
    clock.start();
    int count = 0;
    while (count < length) {
        const int left = std::max(0, readTimeoutMs - static_cast<int>(clock.elapsed()));
        if (!isReadable(left)) {
            errno = ETIMEDOUT;
            return count;
        }
        const ssize_t got =
            recv(descriptor, buffer + count, static_cast<size_t>(length - count), 0);
        if (got < 1) {
            errno = got == 0 ? ECONNRESET : errno;
            return count > 0 ? count : -1;
        }
        count += static_cast<int>(got);
    }
    return count;
}

int SocketDevice::write(const char* buffer, int length) {
    return static_cast<int>(send(descriptor, buffer, static_cast<size_t>(length), MSG_NOSIGNAL));
}

void SocketDevice::control(int code, const QVariant&) {
    if (code != kByteStreamBeforeSend) {
        return;
    }
    char unread[4096];
    while (recv(descriptor, unread, sizeof unread, MSG_DONTWAIT) > 0) {
    }
}
