#ifndef TESTS_INTEGRATION_HOSTILE_HOSTILE_CASE_H
#define TESTS_INTEGRATION_HOSTILE_HOSTILE_CASE_H

#include <QByteArray>
#include <QList>

#include "integration/hostile/exchange.h"
#include "integration/hostile/variants.h"
#include "integration/scripted_controller.h"

/// How a reply arrives.
enum class Delivery {
    kWhole,
    kByteByByte,
    kTwoPieces,
    kWithNext  ///< in one segment with the good reply to the same request
};

/// One reply, delivered one way.
struct HostileCase {
    Variant variant;
    Delivery delivery;

    /// What HOSTILE_CASE names: the variant and the delivery.
    QByteArray name() const;
};

/// All replies of an exchange in all deliveries; of them every Nth with HOSTILE_EVERY=N in the
/// environment and under the thread sanitizer, or the one that HOSTILE_CASE names.
QList<HostileCase> casesOf(const Exchange& exchange);

/// What is sent for a request, and what of it the client can know.
struct Outgoing {
    ScriptedController::Answer answer;
    QByteArray stream;
    /// The header may arrive in more than one piece, which no client of this kind takes.
    bool mayCutHeader;
    /// The next request may meet bytes that are left over, or the end of the connection.
    bool mayDisturb;
};

/// `next` is the good reply to the same request.
Outgoing outgoing(const HostileCase& hostile, const QByteArray& request, const QByteArray& next);

#endif
