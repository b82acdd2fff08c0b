#ifndef TESTS_SUPPORT_HTTP_CLIENT_H
#define TESTS_SUPPORT_HTTP_CLIENT_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QByteArray>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>

/// How long a test waits for a server: enough for a sanitizer's build on a busy machine.
const int kHttpWaitMs = 30000;

/// One TCP connection to a server on loopback, which sends exactly the bytes that a test gives it.
class HttpClient {
 public:
    /// `receiveBytes` above 0 makes the system's buffer for what comes that small.
    explicit HttpClient(int port, int receiveBytes = 0)
        : socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        if (receiveBytes > 0) {
            setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &receiveBytes, sizeof receiveBytes);
        }
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<quint16>(port));
        connected =
            ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    ~HttpClient() { close(socket); }
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    bool isConnected() const { return connected; }

    /// False when the server has cut the connection.
    bool send(const QByteArray& bytes) {
        return ::send(socket, bytes.constData(), static_cast<size_t>(bytes.size()), MSG_NOSIGNAL) ==
               bytes.size();
    }

    /// Reads until `enough` is part of what came, and gives all of it; what there is at the end of
    /// the connection or of the patience.
    const QByteArray& readUntil(const QByteArray& enough, int from = 0) {
        QElapsedTimer clock;
        clock.start();
        while (received.indexOf(enough, from) < 0 && !ended && clock.elapsed() < kHttpWaitMs) {
            take(100);
        }
        return received;
    }
    /// Reads all bytes that arrive for so long.
    const QByteArray& readFor(int ms) {
        QElapsedTimer clock;
        clock.start();
        while (!ended && clock.elapsed() < ms) {
            take(static_cast<int>(ms - clock.elapsed()));
        }
        return received;
    }
    /// Reads to the end of the connection. False when it does not come.
    bool readToEnd() {
        QElapsedTimer clock;
        clock.start();
        while (!ended && clock.elapsed() < kHttpWaitMs) {
            take(100);
        }
        return ended;
    }
    const QByteArray& bytes() const { return received; }
    bool hasEnded() const { return ended; }

 private:
    void take(int ms) {
        pollfd wait = {socket, POLLIN, 0};
        if (poll(&wait, 1, ms) != 1) {
            return;
        }
        char piece[16384];
        const ssize_t got = recv(socket, piece, sizeof piece, 0);
        if (got > 0) {
            received.append(piece, static_cast<int>(got));
        } else {
            ended = true;
        }
    }

    const int socket;
    bool connected = false;
    bool ended = false;
    QByteArray received;
};

/// A whole reply.
struct HttpAnswer {
    int status = 0;
    QByteArray head;
    QByteArray body;

    bool has(const QByteArray& header) const {
        return head.toLower().contains("\r\n" + header.toLower());
    }
    QJsonObject json() const { return QJsonDocument::fromJson(body).object(); }
};

/// Sends one request on a connection of its own and reads the reply to its end.
inline HttpAnswer exchange(int port, const QByteArray& request) {
    HttpClient client(port);
    client.send(request);
    client.readToEnd();
    HttpAnswer answer;
    const int end = client.bytes().indexOf("\r\n\r\n");
    answer.head = client.bytes().left(end + 2);
    answer.body = end < 0 ? QByteArray() : client.bytes().mid(end + 4);
    answer.status = answer.head.mid(9, 3).toInt();
    return answer;
}

/// A GET as a browser sends it, which ends the connection; `headers` each with their line's end.
inline QByteArray getRequest(int port, const QByteArray& target, const QByteArray& headers = {}) {
    return "GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(port) +
           "\r\nConnection: close\r\n" + headers + "\r\n";
}

inline QByteArray postRequest(int port, const QByteArray& target, const QByteArray& headers,
                              const QByteArray& body) {
    return "POST " + target + " HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(port) +
           "\r\nConnection: close\r\nContent-Type: application/json\r\nContent-Length: " +
           QByteArray::number(body.size()) + "\r\n" + headers + "\r\n" + body;
}

#endif
