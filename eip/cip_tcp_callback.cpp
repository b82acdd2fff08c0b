// Whole messages, out to the controller and in from it.

#include "eip/cip_tcp_callback.h"

#include <errno.h>
#include <sys/socket.h>

#include <algorithm>
#include <limits>

#include "eip/cip/cip_error.h"
#include "eip/cip/encap_header.h"
#include "eip/cip_tcp_callback_impl.h"
#include "eip/countdown.h"
#include "eip/reply_buffer.h"
#include "eip/socket_tools.h"

namespace {

// The most that a drain takes: a peer that never stops sending must not block the worker.
const size_t kDrainPiece = 1400;
const int kDrainPieces = 1000;

unsigned long positive(int ms) {
    return ms > 0 ? static_cast<unsigned long>(ms) : 0;
}

}  // namespace

/// One round of waiting for something to read, on the pipes or the socket; the result of select().
int CipTcpCallback::Impl::waitReadable(Countdown* countdown, fd_set* readable) {
    *readable = readFds;
    timeval time = countdown->beginRound();
    const int ready = select(maxFd + 1, readable, 0, 0, &time);
    if (ready < 0) {
        lastErrno = errno;
        CIPERROR(CIP_ERR_SYSTEM, lastErrno, 0);
    }
    return ready;
}

bool CipTcpCallback::Impl::awaitReply(int timeoutMs) {
    if (!ahead.isEmpty()) {
        return true;
    }
    Countdown countdown(positive(timeoutMs));
    do {
        fd_set readable;
        const int ready = waitReadable(&countdown, &readable);
        if (ready < 0) {
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

bool CipTcpCallback::Impl::recvBody(unsigned char* at, size_t length, int timeoutMs, Part* part) {
    const unsigned char* const begin = at;
    const unsigned char* const end = at + length;
    at += ahead.take(at, length);
    Countdown countdown(positive(timeoutMs));
    while (at != end) {
        fd_set readable;
        const int ready = waitReadable(&countdown, &readable);
        if (ready < 0) {
            return false;
        }
        if (ready == 0) {
            break;
        }
        if (socketIn(readable)) {
            const ssize_t got = recv(sock, at, static_cast<size_t>(end - at), 0);
            if (got < 1) {
                part->ended = true;
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
    part->bytes += static_cast<size_t>(at - begin);
    if (at != end) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_RECEIVE_TIMEOUT, 0);
    }
    return at == end;
}

void CipTcpCallback::Impl::dropAhead() {
    if (!ahead.isEmpty()) {
        noteThrownAway(ahead.data(), ahead.size());
        ahead.clear();
    }
}

void CipTcpCallback::Impl::drainSocket() {
    char scratch[kDrainPiece];
    for (int pieces = 0; pieces < kDrainPieces; ++pieces) {
        const ssize_t got = recv(sock, scratch, sizeof scratch, 0);
        if (got < 1) {
            break;
        }
        noteThrownAway(scratch, static_cast<size_t>(got));
    }
}

void CipTcpCallback::setTxTimeout(unsigned long ms) {
    d->txTimeout =
        static_cast<unsigned int>(std::min<quint64>(ms, std::numeric_limits<unsigned int>::max()));
}

void CipTcpCallback::emptyRxBuffer() {
    d->dropAhead();
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

int CipTcpCallback::Impl::sendWhole(const _Encap_Header* request) {
    const unsigned char* const bytes = reinterpret_cast<const unsigned char*>(request);
    const size_t total = size_t(kEncapHeaderSize) + _GetEncapLength(request);
    size_t sent = 0;
    bool drained = false;
    dropAhead();
    Countdown countdown(txTimeout);
    do {
        fd_set readable = readFds;
        fd_set writable = writeFds;
        if (drained && sock >= 0) {
            FD_CLR(sock, &readable);
        }
        timeval time = countdown.beginRound();
        if (select(maxFd + 1, &readable, &writable, 0, &time) < 1) {
            return 0;
        }
        // Before the first byte leaves, all that came unasked goes.
        if (!drained && socketIn(readable)) {
            drainSocket();
        }
        servePipes(readable);
        if (socketIn(writable)) {
            const ssize_t count = send(sock, bytes + sent, total - sent, MSG_NOSIGNAL);
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

bool CipTcpCallback::awaitData(int timeoutMs) {
    return d->awaitReply(timeoutMs);
}

int CipTcpCallback::sendData(const _Encap_Header* request) {
    const int sent = d->sendWhole(request);
    d->noteSent(request, sent > 0);
    return sent;
}

_Encap_Header* CipTcpCallback::recvData(int timeoutMs) {
    Impl::Part part = Impl::Part();
    _Encap_Header header;
    if (!d->awaitReply(timeoutMs)) {
        d->noteNoReply(&header, part);
        return 0;
    }
    if (d->ahead.size() < sizeof header) {
        d->ahead.receive(d->sock);
    }
    part.bytes = d->ahead.take(&header, sizeof header);
    if (part.bytes != sizeof header) {
        part.ended = true;
        d->noteNoReply(&header, part);
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_RECEIVE_ERROR, 0);
        return 0;
    }
    cip::MallocPtr<unsigned char> reply = replyBuffer(header);
    if (!reply) {
        return 0;
    }
    if (!d->recvBody(reply.get() + sizeof header, _GetEncapLength(&header), timeoutMs, &part)) {
        d->noteNoReply(reply.get(), part);
        return 0;
    }
    d->noteReply(reinterpret_cast<const _Encap_Header*>(reply.get()));
    return reinterpret_cast<_Encap_Header*>(reply.release());
}

_Encap_Header* CipTcpCallback::sendDataWaitReply(const _Encap_Header* request, int unused,
                                                 int timeoutMs) {
    (void)unused;
    sendData(request);
    return recvData(timeoutMs);
}
