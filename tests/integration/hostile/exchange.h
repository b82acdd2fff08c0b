#ifndef TESTS_INTEGRATION_HOSTILE_EXCHANGE_H
#define TESTS_INTEGRATION_HOSTILE_EXCHANGE_H

#include <QByteArray>
#include <QList>
#include <QString>
#include <ostream>

#include "integration/hostile/reply_text.h"
#include "runtime/communicator_command.h"

/// What the driver asks for in one message, and the controller's good answer.
struct Exchange {
    enum Kind {
        kRegister,   ///< RegisterSession
        kOpen,       ///< Forward Open
        kClose,      ///< Forward Close
        kRead,       ///< Read Tag, answered whole
        kFirstPart,  ///< Read Tag, answered in part
        kPiece,      ///< Read Tag Fragmented
        kWrite,      ///< Write Tag
        kWritePiece  ///< Write Tag Fragmented
    };

    QByteArray name;
    Kind kind;
    CommunicatorCommand access;  ///< of the driver; the tag is V
    QByteArray toWrite;          ///< empty: the access is a read
    int offset;                  ///< of a piece, in bytes
    QByteArray reply;            ///< the controller's answer, as ReplyText takes it
    int type;                    ///< of V, and the bytes that it has at all other times
    QByteArray value;
    int asked;             ///< elements of V that one read of the access asks for
    int sliceAt;           ///< where in what was asked for the access begins, bytes
    QString declaration;   ///< of V as an array, empty without one
    bool isPolled;         ///< V is on the session list
    bool hasEveryStatus;   ///< all 256 of them; else a few
    bool hasEveryService;  ///< likewise service codes and data types

    /// Whether the access sends further messages when it has the answer.
    bool goesOn() const;
};

/// For messages of a test.
void PrintTo(const Exchange& exchange, std::ostream* out);

/// Bytes of a part: what a controller gives of V at once when it does not give all.
const int kPartBytes = 8;

/// Every exchange.
QList<Exchange> allExchanges();

/// The tag that is not V, a DINT, and its value.
extern const char kOtherTag[];
QByteArray otherValue();
/// The good answer to a read of it.
QByteArray otherReply();

/// Element size of a type; 0 for one without.
int elementSizeOf(int type);

#endif
