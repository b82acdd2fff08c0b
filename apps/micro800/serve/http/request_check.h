#ifndef APPS_MICRO800_SERVE_REQUEST_CHECK_H
#define APPS_MICRO800_SERVE_REQUEST_CHECK_H

#include <QByteArray>

#include "apps/micro800/serve/http/http_message.h"

/// The most bytes of a request's body.
const int kLargestBody = 4 * 1024;
/// The most bytes of a request's head.
const int kLargestHead = 8 * 1024;

/// What every request has to pass before anything is done for it, by its head alone. True when it
/// passes; else `refusal` is the answer:
///   400  two Host, Origin, Cookie, Authorization, Content-Type or Content-Length headers, or no
///        Host
///   403  the Host is not this end of the connection (another name leads here: DNS rebinding), or
///        the Origin is that of another page
///   411  a body without a length
///   413  a body above kLargestBody
///   431  a head above kLargestHead
bool passesHeadCheck(const HttpRequest& head, HttpReply* refusal);

/// Whether the request has the token, as a cookie or as Authorization. One without a token to
/// compare with (`token` empty) passes.
bool hasToken(const HttpRequest& head, const QByteArray& token);

/// The headers that every reply has: a page of this server loads nothing from elsewhere, runs no
/// script of a text, and is shown in no frame.
QVector<HttpHeader> securityHeaders();

#endif
