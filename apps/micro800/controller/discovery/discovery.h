#ifndef APPS_MICRO800_CONTROLLER_DISCOVERY_DISCOVERY_H
#define APPS_MICRO800_CONTROLLER_DISCOVERY_DISCOVERY_H

#include <QString>
#include <QStringList>
#include <QVector>
#include <functional>

#include "apps/micro800/controller/trace/traced_transport.h"
#include "eip/cip/identity.h"

/// Whom to ask, and how long to wait.
struct DiscoveryPlan {
    QStringList interfaces;  ///< names; empty for every one that is up and can broadcast
    QStringList broadcasts;  ///< further IPv4 addresses to send to; with them and no names no
                             ///< interface is asked of its own accord
    unsigned short port = 44818;
    int timeoutMs = 1000;
};

/// Takes one answer and the IPv4 address that it came from.
typedef std::function<void(const QString& sender, const CipIdentity& identity)> AnswerSink;

/// Asks all devices what they are: ListIdentity by UDP (CIP Networks Library Vol. 2, 2-4.4) to the
/// broadcast address of every interface, twice in the time-out, since a datagram may be lost. A
/// device that answers twice is handed on twice. What is no ListIdentity reply is ignored. False
/// when nothing could be sent anywhere; `problem` says why.
bool discover(const DiscoveryPlan& plan, const TraceSink& trace, const AnswerSink& answer,
              QString* problem);

#endif
