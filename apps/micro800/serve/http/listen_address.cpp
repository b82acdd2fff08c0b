#include "apps/micro800/serve/http/listen_address.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "apps/micro800/base/problem.h"

namespace {

const int kBacklog = 128;
const int kLargestPort = 65535;

/// Takes the last colon of the text and, for version 6, the brackets before it.
bool splitHostAndPort(const QString& text, QString* host, QString* port) {
    const int colon = text.lastIndexOf(QLatin1Char(':'));
    if (colon < 1) {
        return false;
    }
    *host = text.left(colon);
    *port = text.mid(colon + 1);
    const bool isBracketed = host->startsWith(QLatin1Char('[')) && host->endsWith(QLatin1Char(']'));
    if (isBracketed) {
        *host = host->mid(1, host->size() - 2);
    }
    return isBracketed == host->contains(QLatin1Char(':'));
}

sockaddr_storage socketAddress(const ListenAddress& address, socklen_t* size) {
    sockaddr_storage storage = {};
    const QByteArray host = address.host.toLatin1();
    if (address.isVersion6) {
        auto* six = reinterpret_cast<sockaddr_in6*>(&storage);
        six->sin6_family = AF_INET6;
        six->sin6_port = htons(static_cast<quint16>(address.port));
        inet_pton(AF_INET6, host.constData(), &six->sin6_addr);
        *size = sizeof *six;
    } else {
        auto* four = reinterpret_cast<sockaddr_in*>(&storage);
        four->sin_family = AF_INET;
        four->sin_port = htons(static_cast<quint16>(address.port));
        inet_pton(AF_INET, host.constData(), &four->sin_addr);
        *size = sizeof *four;
    }
    return storage;
}

QString hostAndPort(const QString& host, int port) {
    return (host.contains(QLatin1Char(':')) ? QStringLiteral("[%1]:%2") : QStringLiteral("%1:%2"))
        .arg(host, QString::number(port));
}

/// The first address of version 4 that others can reach; empty without one.
QString outsideAddress() {
    ifaddrs* all = nullptr;
    if (getifaddrs(&all) != 0) {
        return QString();
    }
    QString found;
    for (const ifaddrs* one = all; one && found.isEmpty(); one = one->ifa_next) {
        if (one->ifa_addr && one->ifa_addr->sa_family == AF_INET) {
            const QString end = endText(one->ifa_addr);
            found = end.startsWith(QLatin1String("127.")) ? QString()
                                                          : end.section(QLatin1Char(':'), 0, 0);
        }
    }
    freeifaddrs(all);
    return found;
}

}  // namespace

bool ListenAddress::isLoopback() const {
    return isVersion6 ? host == QLatin1String("::1") : host.startsWith(QLatin1String("127."));
}

bool parseListenAddress(const QString& text, ListenAddress* address, QString* problem) {
    QString host;
    QString port;
    if (!splitHostAndPort(text, &host, &port)) {
        return fail(problem, QStringLiteral("%1 is not HOST:PORT").arg(text));
    }
    if (host == QLatin1String("localhost")) {
        host = QStringLiteral("127.0.0.1");
    }
    unsigned char bytes[sizeof(in6_addr)];
    address->isVersion6 = host.contains(QLatin1Char(':'));
    const int family = address->isVersion6 ? AF_INET6 : AF_INET;
    if (inet_pton(family, host.toUtf8().constData(), bytes) != 1) {
        return fail(problem, QStringLiteral("%1 has no numeric address before the port").arg(text));
    }
    char canonical[INET6_ADDRSTRLEN] = "";
    inet_ntop(family, bytes, canonical, sizeof canonical);
    address->host = QLatin1String(canonical);
    bool isNumber = false;
    address->port = port.toInt(&isNumber);
    if (!isNumber || address->port < 0 || address->port > kLargestPort) {
        return fail(problem, QStringLiteral("%1 has no port from 0 to 65535").arg(text));
    }
    return true;
}

int listenOn(const ListenAddress& address, QString* problem) {
    const int descriptor =
        socket(address.isVersion6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int yes = 1;
    socklen_t size = 0;
    const sockaddr_storage where = socketAddress(address, &size);
    // Connections of a page that was served here a moment ago must not be in the way.
    if (descriptor >= 0 &&
        setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) == 0 &&
        bind(descriptor, reinterpret_cast<const sockaddr*>(&where), size) == 0 &&
        listen(descriptor, kBacklog) == 0) {
        return descriptor;
    }
    *problem = QStringLiteral("cannot listen on %1: %2")
                   .arg(hostAndPort(address.host, address.port),
                        QString::fromLocal8Bit(std::strerror(errno)));
    if (descriptor >= 0) {
        close(descriptor);
    }
    return -1;
}

QString endText(const sockaddr* address) {
    char text[INET6_ADDRSTRLEN] = "";
    if (address->sa_family == AF_INET) {
        const auto* four = reinterpret_cast<const sockaddr_in*>(address);
        inet_ntop(AF_INET, &four->sin_addr, text, sizeof text);
        return hostAndPort(QLatin1String(text), ntohs(four->sin_port));
    }
    if (address->sa_family != AF_INET6) {
        return QString();
    }
    const auto* six = reinterpret_cast<const sockaddr_in6*>(address);
    if (IN6_IS_ADDR_V4MAPPED(&six->sin6_addr)) {
        inet_ntop(AF_INET, six->sin6_addr.s6_addr + 12, text, sizeof text);
    } else {
        inet_ntop(AF_INET6, &six->sin6_addr, text, sizeof text);
    }
    return hostAndPort(QLatin1String(text), ntohs(six->sin6_port));
}

QString localEndOf(int descriptor) {
    sockaddr_storage address = {};
    socklen_t size = sizeof address;
    if (getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        return QString();
    }
    return endText(reinterpret_cast<const sockaddr*>(&address));
}

QString pageAddress(int descriptor) {
    const QString local = localEndOf(descriptor);
    const int colon = local.lastIndexOf(QLatin1Char(':'));
    const QString host = local.left(colon);
    const bool isEvery = host == QLatin1String("0.0.0.0") || host == QLatin1String("[::]");
    const QString outside = isEvery ? outsideAddress() : QString();
    return QStringLiteral("http://%1%2/").arg(outside.isEmpty() ? host : outside, local.mid(colon));
}
