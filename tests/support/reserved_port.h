#ifndef TESTS_SUPPORT_RESERVED_PORT_H
#define TESTS_SUPPORT_RESERVED_PORT_H

#include <netinet/in.h>
#include <sys/socket.h>

#include "support/descriptor.h"

/// A TCP port that belongs to the test for the object's whole life, whether a program listens on it
/// or not.
///
/// The socket is bound and never listens. The system refuses a connection to the port until a
/// program listens there, and gives the port to nobody who asks for any free one. A program that
/// sets SO_REUSEADDR, as the simulator does, can listen on it, end, and listen on it again. A port
/// that was only taken and given back can belong to another test a moment later.
class ReservedPort {
 public:
    ReservedPort() {
        const int on = 1;
        sockaddr_in address = sockaddr_in();
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_ANY);
        socklen_t size = sizeof address;
        sockaddr* const generic = reinterpret_cast<sockaddr*>(&address);
        if (setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0 &&
            bind(descriptor, generic, size) == 0 && getsockname(descriptor, generic, &size) == 0) {
            tcpPort = ntohs(address.sin_port);
        }
    }
    ~ReservedPort() { closeIfOpen(&descriptor); }
    ReservedPort(const ReservedPort&) = delete;
    ReservedPort& operator=(const ReservedPort&) = delete;

    /// 0 when the system gave none.
    unsigned short port() const { return tcpPort; }

 private:
    int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    unsigned short tcpPort = 0;
};

#endif
