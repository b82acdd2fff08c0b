#ifndef BENCH_RAW_CLIENT_H
#define BENCH_RAW_CLIENT_H

#include <QByteArray>

/// The floor under every direct read: a bare socket that sends the bytes of one Read Tag request
/// and waits for the reply. No library of the project is in it.
class RawClient {
 public:
    /// Connects, registers a session and opens a class 3 connection. `number` is the connection's
    /// serial number and sets it apart from the others. Ends the program on failure.
    explicit RawClient(quint16 port, quint16 number = 1);
    ~RawClient();
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    /// One Read Tag of a DINT tag; true when the reply is whole and its status is good.
    bool readTag(const char* name) { return sendRead(name) && receiveRead(); }
    /// The two halves of it.
    bool sendRead(const char* name);
    bool receiveRead();

    int socket() const { return descriptor; }

 private:
    bool send(const QByteArray& request);
    QByteArray receive();
    QByteArray exchange(const QByteArray& request);

    int descriptor;
    quint16 sequence;
    QByteArray session;     // 4 bytes as received
    QByteArray connection;  // O->T connection id, 4 bytes as received
};

#endif
