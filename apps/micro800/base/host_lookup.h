#ifndef APPS_MICRO800_BASE_HOST_LOOKUP_H
#define APPS_MICRO800_BASE_HOST_LOOKUP_H

#include <QString>

/// A controller as the user names it: HOST, or HOST:PORT as "identify" prints it.
struct Endpoint {
    QString host;
    int port = 0;  ///< 1 to 65535; 0: none was named
};

/// Takes the text apart; it is not looked up. False when there is no host in it, or when what is
/// after the colon is no port: `problem` begins with the text.
bool parseEndpoint(const QString& text, Endpoint* endpoint, QString* problem);

/// The first IPv4 address of a host (dotted text or a name), as text. It takes as long as the
/// system takes. False when there is none: the driver and the transport do not distinguish
/// an unknown host from one that is out of reach.
bool lookUpHost(const QString& host, QString* address, QString* problem);

#endif
