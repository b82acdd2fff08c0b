// The pipe side of the transport: two socket pairs between the driver's thread and the worker's.

#include <errno.h>
#include <sched.h>
#include <string.h>
#include <sys/socket.h>

#include <algorithm>

#include "eip/cip_tcp_callback.h"
#include "eip/cip_tcp_callback_impl.h"
#include "eip/socket_tools.h"

namespace {

const unsigned long kFirstClientTimeoutMs = 1000;
const unsigned int kFirstTxTimeoutMs = 1000;
const unsigned long kMicros = 1000;  // of a millisecond

/// The largest line is read, and discarded, in one piece.
const size_t kDiscardPiece = 4096;

/// Length of the text up to and including its first line feed, 0 without one.
int lineLength(const char* text, ssize_t length) {
    const void* end = memchr(text, '\n', static_cast<size_t>(length));
    return end ? static_cast<int>(static_cast<const char*>(end) - text) + 1 : 0;
}

bool nothingYet(ssize_t got) {
    return got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR);
}

/// Whether a later read may give more than this one. A lack of resources passes, and after a
/// reset the end of the stream is read.
bool mayBeReadAgain(ssize_t got) {
    return nothingYet(got) ||
           (got < 0 && (errno == ENOMEM || errno == ENOBUFS || errno == ECONNRESET));
}

/// Whether the calling thread has more than one processor to share with the worker.
bool severalProcessors() {
    cpu_set_t processors;
    CPU_ZERO(&processors);
    if (sched_getaffinity(0, sizeof processors, &processors) != 0) {
        return false;
    }
    // The macro that counts them calls a function that C libraries before 2.6 do not have.
    int found = 0;
    for (size_t processor = 0; processor < CPU_SETSIZE && found < 2; ++processor) {
        found += CPU_ISSET(processor, &processors) ? 1 : 0;
    }
    return found > 1;
}

/// One read that does not sleep.
ssize_t recvAwake(int fd, char* buf, size_t len, QuickAnswer::Clock::time_point until) {
    ssize_t got = 0;
    do {
        got = recv(fd, buf, len, MSG_DONTWAIT);
    } while (nothingYet(got) && QuickAnswer::Clock::now() < until);
    return got;
}

/// One blocking read that a signal does not cut short; it may make the wait, which began at
/// `start`, twice as long.
ssize_t recvDespiteSignals(int fd, char* buf, size_t len, unsigned long timeoutMs,
                           QuickAnswer::Clock::time_point start) {
    const auto waited = [start] {
        return std::chrono::duration_cast<std::chrono::milliseconds>(QuickAnswer::Clock::now() -
                                                                     start);
    };
    ssize_t got = 0;
    do {
        got = recv(fd, buf, len, 0);
    } while (got < 0 && errno == EINTR &&
             (timeoutMs == 0 || static_cast<quint64>(waited().count()) < timeoutMs));
    return got;
}

}  // namespace

CipTcpCallback::Impl::Impl(CipTcpCallback* callbackOwner)
    : owner(callbackOwner),
      sock(-1),
      recorder(nullptr),
      maxFd(-1),
      txTimeout(kFirstTxTimeoutMs),
      lastErrno(0) {
    FD_ZERO(&readFds);
    FD_ZERO(&writeFds);
    const bool opened = openPipe(&pipe0);
    if (!openPipe(&pipe1) || !opened) {
        closePipes();
        return;
    }
    FD_SET(pipe0.server, &readFds);
    FD_SET(pipe1.server, &readFds);
    maxFd = std::max(pipe0.server, pipe1.server);
}

void CipTcpCallback::Impl::closePipes() {
    closePipe(&pipe0);
    closePipe(&pipe1);
    FD_ZERO(&readFds);
}

bool CipTcpCallback::Impl::openPipe(Pipe* pipe) {
    int fds[2] = {-1, -1};
    const int result = KCreateSocketPair(fds);
    const int reason = errno;
    pipe->client = fds[0];
    pipe->server = fds[1];
    pipe->clientRxTimeout = kFirstClientTimeoutMs;
    pipe->pace = QuickAnswer(severalProcessors());
    if (result != 0) {
        lastErrno = reason;
        return false;
    }
    if (pipe->server >= FD_SETSIZE) {
        lastErrno = EMFILE;
        return false;
    }
    if (!KSetNonBlockingMode(pipe->server, true) ||
        !KSocketSetRxTimeout(pipe->client, kFirstClientTimeoutMs) ||
        !KSocketSetTxTimeout(pipe->client, kFirstClientTimeoutMs)) {
        lastErrno = errno;
        return false;
    }
    return true;
}

void CipTcpCallback::Impl::closePipe(Pipe* pipe) {
    if (pipe->client >= 0) {
        KCloseSocket(pipe->client);
        KCloseSocket(pipe->server);
    }
    pipe->client = -1;
    pipe->server = -1;
}

void CipTcpCallback::Impl::servePipes(const fd_set& readable) {
    if (pipe0.server >= 0 && FD_ISSET(pipe0.server, &readable)) {
        owner->serverPipeOnReceive(0);
    }
    if (pipe1.server >= 0 && FD_ISSET(pipe1.server, &readable)) {
        owner->serverPipeOnReceive(1);
    }
}

void CipTcpCallback::Impl::noteServerRead(int fd, ssize_t result) {
    if (fd >= 0 && !mayBeReadAgain(result)) {
        FD_CLR(fd, &readFds);
    }
}

CipTcpCallback::CipTcpCallback() : d(new Impl(this)) {}

CipTcpCallback::~CipTcpCallback() {
    d->closePipes();
    disconnect();
}

void CipTcpCallback::serverPipeOnReceive(int pipeIndex) {
    (void)pipeIndex;
}

bool CipTcpCallback::pipesOpened() const {
    return d->pipe0.server >= 0 && d->pipe1.server >= 0;
}

/// One wait for the pipes; true when a command ended it.
bool CipTcpCallback::Impl::pauseOnce(timeval time) {
    fd_set readable = readFds;
    if (sock >= 0) {
        FD_CLR(sock, &readable);
    }
    const int ready = select(maxFd + 1, &readable, 0, 0, &time);
    if (ready > 0) {
        servePipes(readable);
    }
    return ready != 0;
}

/// As long as `micros` on average.
void CipTcpCallback::Impl::pauseShortly(long micros) {
    const QuickAnswer::Clock::time_point start = QuickAnswer::Clock::now();
    timeval time = timeval();
    time.tv_usec = shortPause.toAskFor(micros);
    if (!pauseOnce(time)) {
        const auto took = QuickAnswer::Clock::now() - start;
        shortPause.note(micros,
                        std::chrono::duration_cast<std::chrono::microseconds>(took).count());
    }
}

void CipTcpCallback::sleep(unsigned long ms) {
    if (ms == 0) {
        return;
    }
    if (ms <= ShortPause::kLongest / kMicros) {
        d->pauseShortly(static_cast<long>(ms * kMicros));
    } else {
        d->pauseOnce(KTimevalFrom(ms));
    }
}

int CipTcpCallback::sendServerPipe(int pipeIndex, const char* data, int len) {
    return static_cast<int>(
        send(d->pipe(pipeIndex).server, data, static_cast<size_t>(std::max(len, 0)), MSG_NOSIGNAL));
}

int CipTcpCallback::recvServerPipe(int pipeIndex, char* buf, int len) {
    const int fd = d->pipe(pipeIndex).server;
    int count = 0;
    while (count < len) {
        const ssize_t got = recv(fd, buf + count, static_cast<size_t>(len - count), 0);
        if (got < 1) {
            d->noteServerRead(fd, got);
            break;
        }
        count += static_cast<int>(got);
    }
    return count;
}

int CipTcpCallback::recvServerPipeUntilLF(int pipeIndex, char* buf, int len, bool* gotLF) {
    const int fd = d->pipe(pipeIndex).server;
    int count = 0;
    bool ended = false;
    while (!ended && count < len) {
        const ssize_t got = recv(fd, buf + count, static_cast<size_t>(len - count), 0);
        if (got < 1) {
            d->noteServerRead(fd, got);
            break;
        }
        count += static_cast<int>(got);
        ended = buf[count - 1] == '\n';
    }
    if (gotLF) {
        *gotLF = ended;
    }
    return count;
}

int CipTcpCallback::recvServerPipeLine(int pipeIndex, char* buf, int len) {
    const int fd = d->pipe(pipeIndex).server;
    int count = 0;
    bool tooLong = false;
    while (len > 0) {
        // A look first, so that no byte of a later line is taken.
        const ssize_t seen = recv(fd, buf + count, static_cast<size_t>(len - count), MSG_PEEK);
        if (seen < 1) {
            d->noteServerRead(fd, seen);
            break;
        }
        const int rest = lineLength(buf + count, seen);
        const int wanted = rest > 0 ? rest : static_cast<int>(seen);
        if (recvServerPipe(pipeIndex, buf + count, wanted) != wanted) {
            break;
        }
        count += wanted;
        if (rest > 0) {
            return tooLong ? 0 : count;
        }
        if (count == len) {
            tooLong = true;
            count = 0;
        }
    }
    return 0;
}

int CipTcpCallback::sendClientPipe(int pipeIndex, const char* data, int len) {
    return static_cast<int>(
        send(d->pipe(pipeIndex).client, data, static_cast<size_t>(std::max(len, 0)), MSG_NOSIGNAL));
}

int CipTcpCallback::recvClientPipeUntilLF(int pipeIndex, char* buf, int len, bool* gotLF) {
    Impl::Pipe& pipe = d->pipe(pipeIndex);
    const QuickAnswer::Clock::time_point start = QuickAnswer::Clock::now();
    bool awake = pipe.pace.staysAwake();
    int count = 0;
    bool ended = false;
    while (!ended && count < len) {
        char* const at = buf + count;
        const size_t room = static_cast<size_t>(len - count);
        ssize_t got = awake ? recvAwake(pipe.client, at, room, start + QuickAnswer::awake()) : -1;
        awake = false;
        if (got < 0) {
            const auto begin = count == 0 ? start : QuickAnswer::Clock::now();
            got = recvDespiteSignals(pipe.client, at, room, pipe.clientRxTimeout, begin);
        }
        if (got < 1) {
            break;
        }
        count += static_cast<int>(got);
        ended = buf[count - 1] == '\n';
    }
    pipe.pace.note(ended, QuickAnswer::Clock::now() - start);
    if (gotLF) {
        *gotLF = ended;
    }
    return count;
}

void CipTcpCallback::discardClientPipe(int pipeIndex) {
    char scratch[kDiscardPiece];
    const int fd = d->pipe(pipeIndex).client;
    ssize_t got = 0;
    do {
        got = recv(fd, scratch, sizeof scratch, MSG_DONTWAIT);
    } while (got == static_cast<ssize_t>(sizeof scratch));
}

int CipTcpCallback::setClientPipeRxTimeout(int pipeIndex, unsigned long ms) {
    Impl::Pipe& pipe = d->pipe(pipeIndex);
    if (!KSocketSetRxTimeout(pipe.client, ms)) {
        return 0;
    }
    pipe.clientRxTimeout = ms;
    return 1;
}

int CipTcpCallback::setClientPipeTxTimeout(int pipeIndex, unsigned long ms) {
    return KSocketSetTxTimeout(d->pipe(pipeIndex).client, ms);
}
