#ifndef APPS_MICRO800_RECORDING_MESSAGE_FACTS_H
#define APPS_MICRO800_RECORDING_MESSAGE_FACTS_H

#include <QByteArray>
#include <QString>

/// What a recorded message is about.
struct MessageFacts {
    QString name;       ///< of the service or the encapsulation command
    QString tag;        ///< what the request path names; empty in a reply and without a path
    int status = -1;    ///< CIP general status of a reply, -1 without one
    bool good = false;  ///< a whole reply without an error
};

/// Decodes a message, which may contain anything.
MessageFacts messageFacts(const QByteArray& message, bool isReply);

/// In one line: "Read Tag COUNTER", "Read Tag good", "Read Tag refused with status 05".
QString messageText(const QByteArray& message, bool isReply);

#endif
