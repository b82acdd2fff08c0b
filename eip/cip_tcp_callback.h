#ifndef EIP_CIP_TCP_CALLBACK_H
#define EIP_CIP_TCP_CALLBACK_H

#include <QString>
#include <memory>

#include "eip/cip/cip_callback.h"

class FlightRecorder;

/// The transport of the worker: a TCP connection to the controller, and two local socket pairs
/// ("pipes" 0 and 1; any index but 0 is pipe 1) by which the driver sends its commands.
///
/// Every wait (connect, send, receive, sleep) also watches the worker's ends of the pipes and
/// calls serverPipeOnReceive() for a readable one, so that commands get in while the controller
/// is slow.
///
/// Threads: the socket and the server ends belong to the worker thread. The client ends belong to
/// the driver's thread, each to one caller at a time. Nothing throws, nothing raises SIGPIPE; all
/// descriptors are close-on-exec. Waiting is done with select(), so a descriptor of FD_SETSIZE or
/// above is refused: connect() then fails with EMFILE, pipesOpened() is false.
class CipTcpCallback : public CipCallback {
 public:
    CipTcpCallback();
    /// No other thread may use the object any more.
    virtual ~CipTcpCallback();

    // ---- worker thread: encapsulated messages (slots as CipCallback has them) ----------------

    /// Waits up to `timeoutMs` for a reply to begin and as long again for its body. Returns a
    /// malloc()ed buffer of 24 bytes + the header's length field, which the caller frees. Null on
    /// failure, with the thread's error record set: (1, errno, 0) for a failed wait or allocation,
    /// (0, -41, 0) when time is up or the body does not come, (0, -43, 0) when the first piece is
    /// shorter than a header or the peer has closed. Only when commands kept arriving until time
    /// was up does the record stay as it was.
    virtual _Encap_Header* recvData(int timeoutMs);
    /// Throws away what came unasked, then sends 24 bytes + the header's length field within
    /// setTxTimeout(). Returns that number, 0 on failure; no error record.
    virtual int sendData(const _Encap_Header* request);
    /// sendData(), whose failure then shows as a missing reply, and recvData(). `unused` is
    /// ignored.
    virtual _Encap_Header* sendDataWaitReply(const _Encap_Header* request, int unused,
                                             int timeoutMs);

    /// Called from within any wait, on the worker thread, when the server end of pipe
    /// `pipeIndex` (0 or 1) is readable. Does nothing here.
    virtual void serverPipeOnReceive(int pipeIndex);

    // ---- worker thread: the connection -------------------------------------------------------

    /// Connects to `host` (dotted IPv4 text or a name; null counts as empty) within `timeoutMs`.
    /// Returns 1, at once when already connected; 0 on failure, the reason in lastError(). A name
    /// is looked up by the system, which takes its own time.
    int connect(const char* host, unsigned short port, unsigned long timeoutMs);
    /// Closes the connection; harmless without one.
    void disconnect();
    /// True while there is a socket without a pending error. A peer that closed shows only in a
    /// failing request.
    bool isConnected();
    /// The last system error of the socket, e.g. "Connection refused(111)".
    QString lastError() const;
    /// Time that one request has to leave; 1000 ms at first.
    void setTxTimeout(unsigned long ms);
    /// Discards the bytes of the controller that are unread; serves the pipes.
    void emptyRxBuffer();
    /// Waits up to `ms` and serves the pipes; a command ends the wait. 0 returns at once.
    void sleep(unsigned long ms);
    /// Waits until the controller has sent something, serving the pipes; false when it has not in
    /// time, with the error record as recvData() leaves it.
    bool awaitData(int timeoutMs);
    /// The recorder of the traffic; null, as at first, for none. Not owned. Only while the
    /// worker thread does not run.
    void setRecorder(FlightRecorder* recorder);

    // ---- worker thread: server ends (non-blocking) -------------------------------------------

    /// One send of the whole buffer; returns its result: the number of bytes, or -1.
    int sendServerPipe(int pipeIndex, const char* data, int len);
    /// Reads until `len` bytes are in or nothing more is there. Returns the number of bytes.
    int recvServerPipe(int pipeIndex, char* buf, int len);
    /// Reads until the bytes end with a line feed, `len` bytes are in or nothing more is there.
    /// Returns the number of bytes, possibly several lines; the text is not terminated. `gotLF`
    /// (may be null) shows whether the last byte is a line feed.
    int recvServerPipeUntilLF(int pipeIndex, char* buf, int len, bool* gotLF);
    /// Like recvServerPipeUntilLF() but takes no byte after the first line feed: later lines
    /// stay in the pipe. What has no line feed yet is taken out and lost, and so is a line longer
    /// than `len`, to its end. Returns the number of bytes, 0 when there was no such line; `buf`
    /// after them is undefined.
    int recvServerPipeLine(int pipeIndex, char* buf, int len);

    // ---- any thread --------------------------------------------------------------------------

    /// True when both pipes exist. Without them every operation on them fails; the connection
    /// still works.
    bool pipesOpened() const;

    // ---- driver thread: client ends (blocking, time-outs of 1000 ms at first) ----------------

    /// One send of the whole buffer; returns its result: the number of bytes, or -1.
    int sendClientPipe(int pipeIndex, const char* data, int len);
    /// As recvServerPipeUntilLF(); each read waits for the receive time-out at most.
    int recvClientPipeUntilLF(int pipeIndex, char* buf, int len, bool* gotLF);
    /// Throws away what lies unread in the client end; never waits.
    void discardClientPipe(int pipeIndex);
    /// Time-outs of the client end in milliseconds, 0 without limit. 1 on success, 0 on failure.
    int setClientPipeRxTimeout(int pipeIndex, unsigned long ms);
    int setClientPipeTxTimeout(int pipeIndex, unsigned long ms);

 private:
    CipTcpCallback(const CipTcpCallback&) = delete;
    CipTcpCallback& operator=(const CipTcpCallback&) = delete;

    class Impl;
    std::unique_ptr<Impl> d;
};

#endif
