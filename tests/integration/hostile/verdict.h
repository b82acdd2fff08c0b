#ifndef TESTS_INTEGRATION_HOSTILE_VERDICT_H
#define TESTS_INTEGRATION_HOSTILE_VERDICT_H

#include <QByteArray>

#include "integration/hostile/exchange.h"

/// What has to come of an access when the controller answers one of its messages with certain
/// bytes, worked out from the standard's layouts without any of the client's code.
struct Verdict {
    bool isGood;
    QByteArray value;  ///< of a read, exactly as long as the access asks
    /// The reason that the operator reads when it is no good; empty: any documented one.
    QByteArray reason;
};

/// `stream` is all that follows the request on the connection, `request` the message it answers.
Verdict verdictOf(const Exchange& exchange, const QByteArray& request, const QByteArray& stream);

/// Bytes of the encapsulated message that a stream begins with; -1 when it does not contain all.
int firstMessageSize(const QByteArray& stream);

/// Whether a text is one of those that the documents list for an answer that is refused.
bool isDocumentedReason(const QByteArray& reason);

#endif
