#ifndef TESTS_INTEGRATION_HOSTILE_REPLY_TEXT_H
#define TESTS_INTEGRATION_HOSTILE_REPLY_TEXT_H

#include <QByteArray>
#include <QList>

/// A field of a message, little-endian.
struct ReplyField {
    QByteArray name;
    int at;
    int size;
    bool saysHowMuch;  ///< a length, a count or a size of what follows
};

/// Bytes that a reply takes over from the request which it answers; `plus` makes a number of theirs
/// another one.
struct Echo {
    int at;
    int from;
    int size;
    int plus;
};

/// A reply with the places of its fields.
struct ReplyText {
    /// From words between blanks: `name:` begins a field, `name#:` one that says how much follows;
    /// `70` is a byte; `@44+2` two bytes that repeat those at 44 of the request.
    static ReplyText from(const QByteArray& text);

    /// The field of that name; there has to be one.
    const ReplyField& field(const QByteArray& name) const;
    bool hasField(const QByteArray& name) const;

    QByteArray bytes;
    QList<ReplyField> fields;
    QList<Echo> echoes;
};

/// The number in a field of up to four bytes, and how one is written into a field of up to eight.
quint32 numberAt(const QByteArray& bytes, int at, int size);
QByteArray withNumber(QByteArray bytes, int at, int size, quint32 number);

/// The reply to this request. Echoes after the end of a cut reply do not count.
QByteArray replyTo(const QByteArray& request, QByteArray reply, const QList<Echo>& echoes);

#endif
