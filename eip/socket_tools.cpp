#include "eip/socket_tools.h"

#include <errno.h>
#include <fcntl.h>
#include <netdb.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#ifndef SOCK_CLOEXEC
// Linux's number, for C libraries before 2.9.
#define SOCK_CLOEXEC 02000000
#endif
#ifndef F_DUPFD_CLOEXEC
// Linux's number since 2.6.24, for C libraries before 2.7.
#define F_DUPFD_CLOEXEC 1030
#endif

namespace {

/// A socket on the number of a closed standard output or error would get what the host prints
/// there, and one on that of standard input what the host reads. False with EMFILE, and all closed,
/// when there are no further descriptors.
bool moveAboveStandardError(int* fds, int count) {
    bool moved = true;
    for (int i = 0; i < count; ++i) {
        if (fds[i] <= STDERR_FILENO) {
            const int higher = fcntl(fds[i], F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
            close(fds[i]);
            fds[i] = higher;
            moved = moved && higher >= 0;
        }
    }
    for (int i = 0; !moved && i < count; ++i) {
        close(fds[i]);
        fds[i] = -1;
    }
    if (!moved) {
        errno = EMFILE;  // which the system reports as EINVAL where the limit is three
    }
    return moved;
}

/// What opens the descriptors, given its type with or without SOCK_CLOEXEC: 0, or -1 with errno.
template <class Open>
int openCloseOnExec(const Open& open, int* fds, int count) {
    if (open(SOCK_STREAM | SOCK_CLOEXEC) == 0) {
        return moveAboveStandardError(fds, count) ? 0 : -1;
    }
    // Linux before 2.6.27 does not know the flag. There a program that another thread starts
    // between the two calls still inherits the descriptor: that kernel has no way to prevent it.
    if (errno != EINVAL || open(SOCK_STREAM) != 0) {
        return -1;
    }
    for (int i = 0; i < count; ++i) {
        fcntl(fds[i], F_SETFD, FD_CLOEXEC);
    }
    return moveAboveStandardError(fds, count) ? 0 : -1;
}

}  // namespace

timeval KTimevalFrom(unsigned long ms) {
    timeval time;
    time.tv_sec = static_cast<time_t>(ms / 1000);
    time.tv_usec = static_cast<suseconds_t>(ms % 1000 * 1000);
    return time;
}

int KSocketSetTimeout(int fd, unsigned long ms, bool rx) {
    const timeval time = KTimevalFrom(ms);
    return setsockopt(fd, SOL_SOCKET, rx ? SO_RCVTIMEO : SO_SNDTIMEO, &time, sizeof time) == 0;
}

int KSocketSetRxTimeout(int fd, unsigned long ms) {
    return KSocketSetTimeout(fd, ms, true);
}

int KSocketSetTxTimeout(int fd, unsigned long ms) {
    return KSocketSetTimeout(fd, ms, false);
}

int KCreateTcpSocket(int protocol) {
    int fd = -1;
    const auto open = [&fd, protocol](int type) {
        fd = socket(AF_INET, type, protocol);
        return fd < 0 ? -1 : 0;
    };
    openCloseOnExec(open, &fd, 1);
    return fd;
}

int KCreateSocketPair(int* fds) {
    return openCloseOnExec([fds](int type) { return socketpair(AF_UNIX, type, 0, fds); }, fds, 2);
}

int KSetNonBlockingMode(int fd, bool on) {
    const int flags = fcntl(fd, F_GETFL);
    if (flags < 0) {
        return 0;
    }
    const int wanted = on ? flags | O_NONBLOCK : flags & ~O_NONBLOCK;
    return wanted == flags || fcntl(fd, F_SETFL, wanted) == 0;
}

int KLookUpHost(const char* host, in_addr* address) {
    struct addrinfo hints = addrinfo();
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    struct addrinfo* found = 0;
    const int failure = getaddrinfo(host, 0, &hints, &found);
    if (failure == 0) {
        struct sockaddr_in first;
        memcpy(&first, found->ai_addr, sizeof first);
        *address = first.sin_addr;
        freeaddrinfo(found);
    }
    return failure;
}

void KCloseSocket(int fd) {
    close(fd);
}

int KReceiveLine(int fd, char* buf, int len) {
    int count = 0;
    while (count < len) {
        const ssize_t got = read(fd, buf + count, static_cast<size_t>(len - count));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 1) {
            break;
        }
        count += static_cast<int>(got);
        if (buf[count - 1] == '\n') {
            break;
        }
    }
    return count;
}
