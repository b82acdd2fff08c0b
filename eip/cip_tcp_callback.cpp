// The TCP side of the transport: connecting, and whole messages out and in.

#include "eip/cip_tcp_callback.h"

#include <arpa/inet.h>
#include <errno.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>

#include <algorithm>
#include <limits>

#include "common/clock.h"
#include "eip/cip/cip_error.h"
#include "eip/cip/encap_header.h"
#include "eip/cip_tcp_callback_impl.h"
#include "eip/socket_tools.h"

namespace {

// How much a drain takes at most: a peer that never stops sending must not hold the worker.
const size_t kDrainPiece = 1400;
const int kDrainPieces = 1000;

struct Free {
    void operator()(void* buffer) const { free(buffer); }
};
typedef std::unique_ptr<unsigned char, Free> Buffer;

/// What is left of a time-out over the rounds of a waiting loop.
class Countdown {
 public:
    explicit Countdown(unsigned long ms)
        : remaining(static_cast<qint64>(
              std::min<quint64>(ms, std::numeric_limits<qint64>::max() / 1000))),
          roundStart(0) {}

    /// Starts a round; returns the time that it may wait.
    timeval beginRound() {
        roundStart = CurrentMSecsSinceBoot();
        return KTimevalFrom(static_cast<unsigned long>(remaining));
    }

    /// Ends a round; true when time is up. A round of no time counts as a millisecond, so that
    /// a loop of such rounds ends.
    bool expired() {
        const qint64 elapsed = CurrentMSecsSinceBoot() - roundStart;
        if (elapsed >= remaining) {
            return true;
        }
        remaining -= std::max<qint64>(elapsed, 1);
        return false;
    }

 private:
    qint64 remaining;
    qint64 roundStart;
};

unsigned long positive(int ms) {
    return ms > 0 ? static_cast<unsigned long>(ms) : 0;
}

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
    struct addrinfo hints = addrinfo();
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    struct addrinfo* found = 0;
    errno = 0;
    if (getaddrinfo(host, 0, &hints, &found) == 0 && found) {
        struct sockaddr_in first;
        memcpy(&first, found->ai_addr, sizeof first);
        freeaddrinfo(found);
        *address = first.sin_addr;
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
        sock = -1;
        maxFd = std::max(pipe0.server, pipe1.server);
    }
}

bool CipTcpCallback::Impl::beginConnect(const char* host, unsigned short port, bool* established) {
    sock = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, tcpProtocol());
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

bool CipTcpCallback::Impl::awaitReply(int timeoutMs) {
    Countdown countdown(positive(timeoutMs));
    do {
        fd_set readable = readFds;
        timeval time = countdown.beginRound();
        const int ready = select(maxFd + 1, &readable, 0, 0, &time);
        if (ready < 0) {
            lastErrno = errno;
            CIPERROR(CIP_ERR_SYSTEM, lastErrno, 0);
            return false;
        }
        if (ready == 0) {
            CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_RECEIVE_TIMEOUT, 0);
            return false;
        }
        servePipes(readable);
        if (socketIn(readable)) {
            return true;
        }
    } while (!countdown.expired());
    return false;
}

bool CipTcpCallback::Impl::recvBody(unsigned char* at, size_t length, int timeoutMs) {
    const unsigned char* const end = at + length;
    // Mostly it came along with the header, and there is nothing to wait for.
    if (length > 0) {
        at += std::max<ssize_t>(recv(sock, at, length, 0), 0);
    }
    Countdown countdown(positive(timeoutMs));
    while (at != end) {
        fd_set readable = readFds;
        timeval time = countdown.beginRound();
        const int ready = select(maxFd + 1, &readable, 0, 0, &time);
        if (ready < 0) {
            lastErrno = errno;
            CIPERROR(CIP_ERR_SYSTEM, lastErrno, 0);
            return false;
        }
        if (ready == 0) {
            break;
        }
        if (socketIn(readable)) {
            const ssize_t got = recv(sock, at, static_cast<size_t>(end - at), 0);
            if (got < 1) {
                break;
            }
            at += got;
        }
        if (at == end) {
            break;
        }
        servePipes(readable);
        if (countdown.expired()) {
            break;
        }
    }
    if (at != end) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_RECEIVE_TIMEOUT, 0);
    }
    return at == end;
}

void CipTcpCallback::Impl::drainSocket() {
    char scratch[kDrainPiece];
    int pieces = 0;
    while (pieces < kDrainPieces && recv(sock, scratch, sizeof scratch, 0) > 0) {
        ++pieces;
    }
}

int CipTcpCallback::connect(const char* host, unsigned short port, unsigned long timeoutMs) {
    if (isConnected()) {
        return 1;
    }
    d->closeSocket();
    bool established = false;
    const bool connected = d->beginConnect(host ? host : "", port, &established) &&
                           (established ? d->checkSocket() : d->awaitConnected(timeoutMs));
    if (!connected) {
        d->closeSocket();
    }
    return connected;
}

void CipTcpCallback::disconnect() {
    if (d->sock >= 0) {
        shutdown(d->sock, SHUT_RDWR);
        d->closeSocket();
    }
}

bool CipTcpCallback::isConnected() {
    return d->checkSocket();
}

QString CipTcpCallback::lastError() const {
    char buffer[256];
    const char* text = strerror_r(d->lastErrno, buffer, sizeof buffer);
    return QString::fromLocal8Bit(text) + QLatin1Char('(') + QString::number(d->lastErrno) +
           QLatin1Char(')');
}

void CipTcpCallback::setTxTimeout(unsigned long ms) {
    d->txTimeout =
        static_cast<unsigned int>(std::min<quint64>(ms, std::numeric_limits<unsigned int>::max()));
}

void CipTcpCallback::emptyRxBuffer() {
    fd_set readable = d->readFds;
    timeval time = KTimevalFrom(0);
    if (select(d->maxFd + 1, &readable, 0, 0, &time) < 1) {
        return;
    }
    if (d->socketIn(readable)) {
        d->drainSocket();
    }
    d->servePipes(readable);
}

int CipTcpCallback::sendData(const _Encap_Header* request) {
    const unsigned char* const bytes = reinterpret_cast<const unsigned char*>(request);
    const size_t total = size_t(kEncapHeaderSize) + _GetEncapLength(request);
    size_t sent = 0;
    bool drained = false;
    Countdown countdown(d->txTimeout);
    do {
        fd_set readable = d->readFds;
        fd_set writable = d->writeFds;
        if (drained && d->sock >= 0) {
            FD_CLR(d->sock, &readable);
        }
        timeval time = countdown.beginRound();
        if (select(d->maxFd + 1, &readable, &writable, 0, &time) < 1) {
            return 0;
        }
        // Before the first byte leaves, all that came unasked goes.
        if (!drained && d->socketIn(readable)) {
            d->drainSocket();
        }
        d->servePipes(readable);
        if (d->socketIn(writable)) {
            const ssize_t count = send(d->sock, bytes + sent, total - sent, MSG_NOSIGNAL);
            if (count < 1) {
                return 0;
            }
            sent += static_cast<size_t>(count);
        }
        if (sent == total) {
            return static_cast<int>(total);
        }
        drained = sent > 0;
    } while (!countdown.expired());
    return 0;
}

_Encap_Header* CipTcpCallback::recvData(int timeoutMs) {
    if (!d->awaitReply(timeoutMs)) {
        return 0;
    }
    _Encap_Header header;
    if (recv(d->sock, &header, sizeof header, 0) != static_cast<ssize_t>(sizeof header)) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_RECEIVE_ERROR, 0);
        return 0;
    }
    const size_t length = _GetEncapLength(&header);
    Buffer reply(static_cast<unsigned char*>(malloc(sizeof header + length)));
    if (!reply) {
        CIPERROR(CIP_ERR_SYSTEM, errno, 0);
        return 0;
    }
    memcpy(reply.get(), &header, sizeof header);
    if (!d->recvBody(reply.get() + sizeof header, length, timeoutMs)) {
        return 0;
    }
    return reinterpret_cast<_Encap_Header*>(reply.release());
}

_Encap_Header* CipTcpCallback::sendDataWaitReply(const _Encap_Header* request, int unused,
                                                 int timeoutMs) {
    (void)unused;
    sendData(request);
    return recvData(timeoutMs);
}
