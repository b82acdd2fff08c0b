#ifndef APPS_MICRO800_SERVE_LISTEN_ADDRESS_H
#define APPS_MICRO800_SERVE_LISTEN_ADDRESS_H

#include <sys/socket.h>

#include <QString>

/// Where the page is served: a numeric address and a port.
struct ListenAddress {
    QString host = QStringLiteral("127.0.0.1");  ///< without brackets
    int port = 8800;                             ///< 0: a free one
    bool isVersion6 = false;

    /// Only this machine reaches it.
    bool isLoopback() const;
};

/// Takes HOST:PORT apart: a numeric address, one of version 6 in brackets, or "localhost". False
/// with a problem that begins with the text.
bool parseListenAddress(const QString& text, ListenAddress* address, QString* problem);

/// A socket that listens there, not inherited by programs that are started; -1 with a problem. The
/// caller owns it.
int listenOn(const ListenAddress& address, QString* problem);

/// The local end of a socket as a host and port of a web address: "127.0.0.1:8800", "[::1]:8800";
/// empty when it has none. An address of version 4 shows as such also on a socket of version 6.
QString localEndOf(int descriptor);
/// The same of any address.
QString endText(const sockaddr* address);

/// The first part of the page's address for a browser, "http://192.168.1.7:8800/". For a socket
/// that listens on every address that is the first one of this machine that is not loopback.
QString pageAddress(int descriptor);

#endif
