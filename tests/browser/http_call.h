#ifndef TESTS_BROWSER_HTTP_CALL_H
#define TESTS_BROWSER_HTTP_CALL_H

#include <QByteArray>

/// An answer over HTTP.
struct HttpAnswer {
    int status = 0;  ///< 0: there was none
    QByteArray body;
};

/// One request to a port of this machine. Blocks until the answer is there, at most `timeoutMs`.
/// A body is sent as JSON.
HttpAnswer httpCall(const QByteArray& method, quint16 port, const QByteArray& target,
                    const QByteArray& body, int timeoutMs);

#endif
