#ifndef APPS_MICRO800_SERVE_HTTP_MESSAGE_H
#define APPS_MICRO800_SERVE_HTTP_MESSAGE_H

#include <QByteArray>
#include <QString>
#include <QVector>

/// One field of a request's or a reply's head.
struct HttpHeader {
    QByteArray name;  ///< of a request: in lower case
    QByteArray value;
};

/// A request as it came, before anything of it was believed. Any byte may be in every field.
struct HttpRequest {
    QByteArray method;
    QByteArray target;  ///< path and query, not decoded
    QVector<HttpHeader> headers;
    QByteArray body;
    QString local;  ///< this end of the connection, "127.0.0.1:8800" or "[::1]:8800"
    QString peer;   ///< the other end, in the same form

    /// The value of the only header of this name (lower case); null when there is none, or more
    /// than one.
    const QByteArray* header(const char* name) const;
    int count(const char* name) const;
};

struct HttpReply {
    int status = 200;
    QByteArray type;
    QByteArray body;
    QVector<HttpHeader> headers;  ///< beside the type and those that every reply has

    void add(const char* name, const QByteArray& value) { headers.append(HttpHeader{name, value}); }
};

inline int HttpRequest::count(const char* name) const {
    int found = 0;
    for (const HttpHeader& header : headers) {
        found += header.name == name;
    }
    return found;
}

inline const QByteArray* HttpRequest::header(const char* name) const {
    const QByteArray* value = nullptr;
    for (const HttpHeader& header : headers) {
        if (header.name == name) {
            if (value) {
                return nullptr;
            }
            value = &header.value;
        }
    }
    return value;
}

#endif
