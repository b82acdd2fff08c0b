#ifndef APPS_MICRO800_BASE_CONNECTION_H
#define APPS_MICRO800_BASE_CONNECTION_H

#include <QString>

/// Where the controller is and how to talk to it.
struct Connection {
    QString host;
    unsigned short port = 44818;
    int timeoutMs = 3000;
    int retry = 3;  ///< further attempts after a reported failure of a read
    int link = 1;   ///< link number of the port: array declarations of this number apply
};

#endif
