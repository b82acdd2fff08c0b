#ifndef EIP_CIP_TCP_CALLBACK_IMPL_H
#define EIP_CIP_TCP_CALLBACK_IMPL_H

#include <sys/select.h>
#include <sys/types.h>

#include "eip/cip_tcp_callback.h"
#include "eip/quick_answer.h"

class Countdown;

/// State of CipTcpCallback. The client ends, their time-outs and pace belong to the driver's thread
/// once the object is constructed, everything else to the worker's; the descriptors of the pipes are
/// constant until the end.
class CipTcpCallback::Impl {
 public:
    /// A socket pair; both -1 when it could not be made.
    struct Pipe {
        int client;
        int server;
        unsigned long clientRxTimeout;  ///< milliseconds, 0 without limit
        QuickAnswer pace;               ///< of the answers on this pipe; driver thread only
    };

    explicit Impl(CipTcpCallback* callbackOwner);
    void closePipes();

    Pipe& pipe(int index) { return index == 0 ? pipe0 : pipe1; }

    /// Hands every server end in the set to the owner.
    void servePipes(const fd_set& readable);
    /// Looks at the result of a read from a server end: one that can never be read again is
    /// watched no longer, since select() would report it for ever.
    void noteServerRead(int fd, ssize_t result);

    /// Makes a TCP socket on its way to the host; the reason of a failure in lastErrno.
    bool beginConnect(const char* host, unsigned short port, bool* established);
    /// Waits for that connection to be there.
    bool awaitConnected(unsigned long timeoutMs);
    /// Reads the socket's pending error; true when there is none.
    bool checkSocket();
    void watchSocket();
    void unwatchSocket();
    void closeSocket();
    /// Whether select() reported the socket.
    bool socketIn(const fd_set& set) const { return sock >= 0 && FD_ISSET(sock, &set); }

    int waitReadable(Countdown* countdown, fd_set* readable);
    /// Waits for a reply to begin; on failure the error record is set as recvData() has it.
    bool awaitReply(int timeoutMs);
    /// Receives exactly `length` bytes; on failure the error record is set.
    bool recvBody(unsigned char* at, size_t length, int timeoutMs);
    void drainSocket();

    CipTcpCallback* owner;
    int sock;                ///< -1 when closed
    int maxFd;               ///< highest descriptor in the sets
    unsigned int txTimeout;  ///< milliseconds
    int lastErrno;
    Pipe pipe0;
    Pipe pipe1;
    fd_set readFds;   ///< server ends, and the socket while connected
    fd_set writeFds;  ///< the socket while connected

 private:
    bool openPipe(Pipe* pipe);
    void closePipe(Pipe* pipe);
};

#endif
