// The transport's connection: how it is made, checked and closed.

#include <arpa/inet.h>
#include <errno.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>

#include "eip/cip_tcp_callback.h"
#include "eip/cip_tcp_callback_impl.h"
#include "eip/countdown.h"
#include "eip/socket_tools.h"

namespace {

int tcpProtocol() {
    struct protoent entry;
    struct protoent* found = 0;
    char texts[1024];
    if (getprotobyname_r("tcp", &entry, texts, sizeof texts, &found) != 0 || !found) {
        return IPPROTO_TCP;  // a panel without /etc/protocols
    }
    return found->p_proto;
}

/// The first IPv4 address of a host; false with errno when there is none.
bool lookUp(const char* host, in_addr* address) {
    errno = 0;
    if (KLookUpHost(host, address) == 0) {
        return true;
    }
    address->s_addr = inet_addr(host);
    if (address->s_addr == INADDR_NONE && errno == 0) {
        errno = EHOSTUNREACH;  // the lookup gave no reason, and "Success" is none
    }
    return address->s_addr != INADDR_NONE;
}

}  // namespace

bool CipTcpCallback::Impl::checkSocket() {
    if (sock < 0) {
        return false;
    }
    int pending = 0;
    socklen_t size = sizeof pending;
    if (getsockopt(sock, SOL_SOCKET, SO_ERROR, &pending, &size) != 0) {
        pending = errno;
    }
    lastErrno = pending;
    return pending == 0 || pending == EISCONN;
}

void CipTcpCallback::Impl::watchSocket() {
    FD_SET(sock, &readFds);
    FD_SET(sock, &writeFds);
    maxFd = std::max(sock, std::max(pipe0.server, pipe1.server));
}

void CipTcpCallback::Impl::unwatchSocket() {
    FD_CLR(sock, &readFds);
    FD_CLR(sock, &writeFds);
}

void CipTcpCallback::Impl::closeSocket() {
    if (sock >= 0) {
        if (sock < FD_SETSIZE) {
            unwatchSocket();
        }
        KCloseSocket(sock);
        ahead.clear();
        sock = -1;
        maxFd = std::max(pipe0.server, pipe1.server);
    }
}

bool CipTcpCallback::Impl::beginConnect(const char* host, unsigned short port, bool* established) {
    sock = KCreateTcpSocket(tcpProtocol());
    if (sock < 0) {
        lastErrno = errno;
        return false;
    }
    if (sock >= FD_SETSIZE) {
        lastErrno = EMFILE;
        return false;
    }
    const int on = 1;
    struct sockaddr_in peer = sockaddr_in();
    peer.sin_family = AF_INET;
    peer.sin_port = htons(port);
    if (setsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) != 0 ||
        !lookUp(host, &peer.sin_addr) || !KSetNonBlockingMode(sock, true)) {
        lastErrno = errno;
        return false;
    }
    *established = ::connect(sock, reinterpret_cast<struct sockaddr*>(&peer), sizeof peer) == 0;
    if (!*established && errno != EAGAIN && errno != EINPROGRESS) {
        lastErrno = errno;
        return false;
    }
    watchSocket();
    return true;
}

bool CipTcpCallback::Impl::awaitConnected(unsigned long timeoutMs) {
    Countdown countdown(timeoutMs);
    do {
        fd_set readable = readFds;
        fd_set writable = writeFds;
        fd_set failed = readFds;
        timeval time = countdown.beginRound();
        const int ready = select(maxFd + 1, &readable, &writable, &failed, &time);
        if (ready == 0) {
            break;
        }
        if (ready < 0 && errno != EINTR) {
            lastErrno = errno;
            return false;
        }
        if (ready > 0) {
            servePipes(readable);
            if (socketIn(readable) || socketIn(writable) || socketIn(failed)) {
                return checkSocket();
            }
        }
    } while (!countdown.expired());
    lastErrno = ETIMEDOUT;
    return false;
}

/// TCP lets both ends of a connection open it. So a socket that asks for a port of this machine, on
/// which nobody listens, connects to itself when the system happens to give it that port. It would
/// take its own requests for replies, and keep the port from the program that is to listen there.
bool CipTcpCallback::Impl::isItsOwnPeer() const {
    sockaddr_in own = sockaddr_in();
    sockaddr_in peer = sockaddr_in();
    socklen_t ownSize = sizeof own;
    socklen_t peerSize = sizeof peer;
    return getsockname(sock, reinterpret_cast<sockaddr*>(&own), &ownSize) == 0 &&
           getpeername(sock, reinterpret_cast<sockaddr*>(&peer), &peerSize) == 0 &&
           own.sin_port == peer.sin_port && own.sin_addr.s_addr == peer.sin_addr.s_addr;
}

int CipTcpCallback::connect(const char* host, unsigned short port, unsigned long timeoutMs) {
    if (isConnected()) {
        return 1;
    }
    d->closeSocket();
    d->noteConnecting(host, port);
    bool established = false;
    bool connected = d->beginConnect(host ? host : "", port, &established) &&
                     (established ? d->checkSocket() : d->awaitConnected(timeoutMs));
    if (connected && d->isItsOwnPeer()) {
        // With a reset: no state of the connection keeps the port.
        const linger atOnce = {1, 0};
        setsockopt(d->sock, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        d->lastErrno = ECONNREFUSED;
        connected = false;
    }
    if (!connected) {
        d->closeSocket();
    }
    d->noteConnected(connected);
    return connected;
}

void CipTcpCallback::disconnect() {
    if (d->sock >= 0) {
        shutdown(d->sock, SHUT_RDWR);
        d->closeSocket();
        d->noteClosed();
    }
}

bool CipTcpCallback::isConnected() {
    return d->checkSocket();
}

QString CipTcpCallback::Impl::errnoText() const {
    char buffer[256];
    const char* text = strerror_r(lastErrno, buffer, sizeof buffer);
    return QString::fromLocal8Bit(text) + QLatin1Char('(') + QString::number(lastErrno) +
           QLatin1Char(')');
}

QString CipTcpCallback::lastError() const {
    return d->errnoText();
}
