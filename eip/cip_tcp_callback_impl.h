#ifndef EIP_CIP_TCP_CALLBACK_IMPL_H
#define EIP_CIP_TCP_CALLBACK_IMPL_H

#include <sys/select.h>
#include <sys/types.h>

#include <QString>

#include "eip/cip_tcp_callback.h"
#include "eip/quick_answer.h"
#include "eip/read_ahead.h"
#include "eip/short_pause.h"

class Countdown;
class FlightRecorder;

/// State of CipTcpCallback. The client ends, their time-outs and pace belong to the driver's thread
/// once the object is constructed, everything else to the worker's; the descriptors of the pipes
/// are constant until the end.
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
    bool pauseOnce(timeval time);
    void pauseShortly(long micros);

    /// Makes a TCP socket on its way to the host; the reason of a failure in lastErrno.
    bool beginConnect(const char* host, unsigned short port, bool* established);
    /// Waits for that connection to be there.
    bool awaitConnected(unsigned long timeoutMs);
    /// Whether the connection leads from the socket to itself.
    bool isItsOwnPeer() const;
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
    /// What a failed receive came to.
    struct Part {
        size_t bytes;  ///< that came
        bool ended;    ///< the connection ended, the time was not up
    };
    /// Receives exactly `length` bytes; on failure the error record and `part` are set.
    bool recvBody(unsigned char* at, size_t length, int timeoutMs, Part* part);
    int sendWhole(const _Encap_Header* request);
    void drainSocket();
    /// Throws away what was read ahead.
    void dropAhead();

    // The events for the recorder, if there is one.
    void noteConnecting(const char* host, unsigned short port);
    void noteConnected(bool connected);
    QString errnoText() const;
    void noteSent(const _Encap_Header* request, bool whole);
    void noteReply(const _Encap_Header* reply);
    void noteNoReply(const void* bytes, const Part& part);
    void noteThrownAway(const void* bytes, size_t size);
    void noteClosed();

    CipTcpCallback* owner;
    int sock;                  ///< -1 when closed
    FlightRecorder* recorder;  ///< not owned; constant while the worker runs
    int maxFd;                 ///< highest descriptor in the sets
    unsigned int txTimeout;    ///< milliseconds
    int lastErrno;
    Pipe pipe0;
    Pipe pipe1;
    ReadAhead ahead;  ///< of the socket; empty when closed
    ShortPause shortPause;
    fd_set readFds;   ///< server ends, and the socket while connected
    fd_set writeFds;  ///< the socket while connected

 private:
    bool openPipe(Pipe* pipe);
    void closePipe(Pipe* pipe);
};

#endif
