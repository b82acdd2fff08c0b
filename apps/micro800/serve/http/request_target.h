#ifndef APPS_MICRO800_SERVE_REQUEST_TARGET_H
#define APPS_MICRO800_SERVE_REQUEST_TARGET_H

#include <QByteArray>
#include <QHash>
#include <QString>

/// What a request asks for: "/api/history?tag=DINT0%3ACOUNTER" taken apart.
struct RequestTarget {
    QString path;                   ///< decoded; begins with a slash
    QHash<QString, QString> query;  ///< decoded names and values
};

/// Takes the target apart (RFC 3986; a plus is a blank in the query, as forms send it). False when
/// it does not begin with a slash, when an escape is broken or gives no UTF-8, or when a name is
/// there twice.
bool parseRequestTarget(const QByteArray& text, RequestTarget* target);

#endif
