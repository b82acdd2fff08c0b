#include "browser/http_call.h"

#include <QElapsedTimer>
#include <QTcpSocket>

namespace {

/// The value of a header; empty when the head has none.
QByteArray headerOf(const QByteArray& head, const QByteArray& name) {
    for (const QByteArray& line : head.split('\n')) {
        const int colon = line.indexOf(':');
        if (colon > 0 && line.left(colon).trimmed().toLower() == name) {
            return line.mid(colon + 1).trimmed();
        }
    }
    return QByteArray();
}

/// Whether the bytes are a whole answer; `answer` is then filled.
bool isWhole(const QByteArray& bytes, HttpAnswer* answer) {
    const int end = bytes.indexOf("\r\n\r\n");
    if (end < 0) {
        return false;
    }
    const QByteArray head = bytes.left(end);
    const int length = headerOf(head, "content-length").toInt();
    if (bytes.size() - (end + 4) < length) {
        return false;
    }
    answer->status = head.mid(head.indexOf(' ') + 1, 3).toInt();
    answer->body = bytes.mid(end + 4, length);
    return true;
}

}  // namespace

HttpAnswer httpCall(const QByteArray& method, quint16 port, const QByteArray& target,
                    const QByteArray& body, int timeoutMs) {
    QElapsedTimer clock;
    clock.start();
    HttpAnswer answer;
    QTcpSocket socket;
    socket.connectToHost("127.0.0.1", port);
    if (!socket.waitForConnected(timeoutMs)) {
        return answer;
    }
    socket.write(method + " " + target +
                 " HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(port) +
                 "\r\nConnection: close\r\nContent-Type: application/json\r\nContent-Length: " +
                 QByteArray::number(body.size()) + "\r\n\r\n" + body);
    QByteArray bytes;
    while (!isWhole(bytes, &answer) && clock.elapsed() < timeoutMs) {
        if (!socket.waitForReadyRead(int(timeoutMs - clock.elapsed()))) {
            bytes += socket.readAll();
            isWhole(bytes, &answer);
            break;
        }
        bytes += socket.readAll();
    }
    return answer;
}
