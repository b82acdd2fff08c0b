#ifndef APPS_MICRO800_SERVE_ACCESS_TOKEN_H
#define APPS_MICRO800_SERVE_ACCESS_TOKEN_H

#include <QByteArray>
#include <QString>

/// The name under which a browser keeps the token.
const char kTokenCookie[] = "micro800_token";

/// A new token of 32 hexadecimal digits, from the system's random source.
QByteArray newAccessToken();

/// Whether a token that the user gave can be one: 8 to 128 letters, digits, and - . _ ~, which
/// need no escape in an address. False with a problem that does not show it.
bool isAccessToken(const QString& text, QString* problem);

/// Whether both are the same. How long it takes depends on the length of `given` alone.
bool isSameToken(const QByteArray& given, const QByteArray& token);

/// The value of the token's cookie in a Cookie header (RFC 6265); empty when it is not there, or
/// there twice.
QByteArray tokenFromCookies(const QByteArray& header);
/// The token of an Authorization header, "Bearer TOKEN" (RFC 6750); empty for any other.
QByteArray tokenFromAuthorization(const QByteArray& header);

#endif
