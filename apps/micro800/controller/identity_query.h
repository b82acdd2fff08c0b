#ifndef APPS_MICRO800_CONTROLLER_IDENTITY_QUERY_H
#define APPS_MICRO800_CONTROLLER_IDENTITY_QUERY_H

#include <QString>

#include "apps/micro800/base/connection.h"
#include "apps/micro800/controller/trace/traced_transport.h"
#include "eip/cip/identity.h"

/// Asks the device at an endpoint what it is: one ListIdentity over TCP, without a session. Waits
/// up to the connection's time-out each for the connection and for the reply. False with a sentence
/// in `problem` that names host and port, what went wrong and what to do: the host is unknown,
/// nothing answers there, there is no answer, it is refused, broken off or no identity. `trace`
/// gets the messages.
bool queryIdentity(const Connection& connection, const TraceSink& trace, CipIdentity* identity,
                   QString* problem);

#endif
