#include "apps/micro800/serve/http/request_check.h"

#include "apps/micro800/serve/http/access_token.h"
#include "apps/micro800/serve/http/json_reply.h"

namespace {

bool refuse(HttpReply* refusal, int status, const QString& problem) {
    *refusal = problemReply(status, problem);
    return false;
}

int headSize(const HttpRequest& head) {
    int size = head.method.size() + head.target.size();
    for (const HttpHeader& header : head.headers) {
        size += header.name.size() + header.value.size() + 4;  // colon, blank, end of line
    }
    return size;
}

/// Whether a Host names this end of the connection. The port may be left out when it is HTTP's.
bool isOwnHost(const QByteArray& host, const QString& local) {
    const QString given = QString::fromLatin1(host.constData(), host.size()).toLower();
    const int colon = local.lastIndexOf(QLatin1Char(':'));
    const QString port = local.mid(colon);
    const QString address = local.left(colon);
    const bool isLoopback =
        address.startsWith(QLatin1String("127.")) || address == QLatin1String("[::1]");
    const bool mayOmitPort = port == QLatin1String(":80");
    return given == local || (mayOmitPort && given == address) ||
           (isLoopback && (given == QLatin1String("localhost") + port ||
                           (mayOmitPort && given == QLatin1String("localhost"))));
}

bool passesLengthCheck(const HttpRequest& head, HttpReply* refusal) {
    if (headSize(head) > kLargestHead) {
        return refuse(refusal, 431, QStringLiteral("the head of the request is above 8 KB"));
    }
    if (head.count("transfer-encoding") > 0) {
        return refuse(refusal, 411, QStringLiteral("a body needs its length"));
    }
    const QByteArray* length = head.header("content-length");
    if (!length) {
        return true;
    }
    bool isNumber = false;
    const qulonglong bytes = length->toULongLong(&isNumber);
    if (!isNumber) {
        return refuse(refusal, 400, QStringLiteral("the length of the body is no number"));
    }
    return bytes <= static_cast<qulonglong>(kLargestBody) ||
           refuse(refusal, 413, QStringLiteral("the body of the request is above 4 KB"));
}

}  // namespace

bool passesHeadCheck(const HttpRequest& head, HttpReply* refusal) {
    for (const char* name :
         {"host", "origin", "cookie", "authorization", "content-type", "content-length"}) {
        if (head.count(name) > 1) {
            return refuse(refusal, 400, QStringLiteral("two headers %1").arg(QLatin1String(name)));
        }
    }
    const QByteArray* host = head.header("host");
    if (!host) {
        return refuse(refusal, 400, QStringLiteral("no header host"));
    }
    if (!isOwnHost(*host, head.local)) {
        return refuse(refusal, 403,
                      QStringLiteral("this server has another name: use the address that it "
                                     "printed"));
    }
    const QByteArray* origin = head.header("origin");
    if (origin && origin->toLower() != "http://" + host->toLower()) {
        return refuse(refusal, 403, QStringLiteral("the request comes from another page"));
    }
    return passesLengthCheck(head, refusal);
}

bool hasToken(const HttpRequest& head, const QByteArray& token) {
    if (token.isEmpty()) {
        return true;
    }
    const QByteArray* authorization = head.header("authorization");
    const QByteArray* cookies = head.header("cookie");
    return (authorization && isSameToken(tokenFromAuthorization(*authorization), token)) ||
           (cookies && isSameToken(tokenFromCookies(*cookies), token));
}

QVector<HttpHeader> securityHeaders() {
    static const QVector<HttpHeader> headers = {
        {"Content-Security-Policy",
         "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
         "img-src 'self' data: blob:; frame-ancestors 'none'; base-uri 'none'; form-action 'none'"},
        {"X-Content-Type-Options", "nosniff"},
        {"Referrer-Policy", "no-referrer"},
        {"Cross-Origin-Resource-Policy", "same-origin"},
        {"Cross-Origin-Opener-Policy", "same-origin"},
    };
    return headers;
}
