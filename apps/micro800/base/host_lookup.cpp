#include "apps/micro800/base/host_lookup.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>

#include <cstring>

#include "apps/micro800/base/problem.h"

namespace {

const int kHighestPort = 65535;

bool isHostName(const QString& text) {
    for (const QChar character : text) {
        if (character.unicode() <= 0x20 || character.unicode() > 0x7E) {
            return false;
        }
    }
    return !text.isEmpty();
}

/// 0 when the text is none.
int portFrom(const QString& text) {
    int port = 0;
    for (const QChar digit : text) {
        if (digit < QLatin1Char('0') || digit > QLatin1Char('9') || port > kHighestPort) {
            return 0;
        }
        port = 10 * port + digit.digitValue();
    }
    return port <= kHighestPort ? port : 0;
}

}  // namespace

bool parseEndpoint(const QString& text, Endpoint* endpoint, QString* problem) {
    *endpoint = Endpoint();
    // More than one colon is no port after a host, and never a host that is found either.
    const bool hasPort = text.count(QLatin1Char(':')) == 1;
    endpoint->host = hasPort ? text.section(QLatin1Char(':'), 0, 0) : text;
    if (!isHostName(endpoint->host)) {
        return fail(problem, QStringLiteral("\"%1\": not a host name or IP address").arg(text));
    }
    if (!hasPort) {
        return true;
    }
    endpoint->port = portFrom(text.section(QLatin1Char(':'), 1));
    return endpoint->port > 0 ||
           fail(problem, QStringLiteral("\"%1\": what is behind the colon is no port from 1 to %2")
                             .arg(text, QString::number(kHighestPort)));
}

bool lookUpHost(const QString& host, QString* address, QString* problem) {
    addrinfo hints = {};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int failure = getaddrinfo(host.toLatin1().constData(), nullptr, &hints, &found);
    if (failure != 0) {
        return fail(problem, QStringLiteral("host %1 is unknown: %2; check the name, or give the "
                                            "controller's IP address")
                                 .arg(host, QString::fromLocal8Bit(gai_strerror(failure))));
    }
    sockaddr_in first;
    std::memcpy(&first, found->ai_addr, sizeof first);
    freeaddrinfo(found);
    char text[INET_ADDRSTRLEN];
    *address = QLatin1String(inet_ntop(AF_INET, &first.sin_addr, text, sizeof text));
    return true;
}
