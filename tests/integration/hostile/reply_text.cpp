#include "integration/hostile/reply_text.h"

#include <cstdlib>

namespace {

/// `@FROM+SIZE`
Echo echoFrom(const QByteArray& word, int at) {
    const int plus = word.indexOf('+');
    return Echo{at, word.mid(1, plus - 1).toInt(), word.mid(plus + 1).toInt(), 0};
}

ReplyField fieldFrom(QByteArray word, int at) {
    word.chop(1);
    const bool saysHowMuch = word.endsWith('#');
    if (saysHowMuch) {
        word.chop(1);
    }
    return ReplyField{word, at, 0, saysHowMuch};
}

}  // namespace

ReplyText ReplyText::from(const QByteArray& text) {
    ReplyText reply;
    for (const QByteArray& word : text.simplified().split(' ')) {
        if (word.endsWith(':')) {
            reply.fields << fieldFrom(word, reply.bytes.size());
            continue;
        }
        if (word.startsWith('@')) {
            reply.echoes << echoFrom(word, reply.bytes.size());
            reply.bytes.append(reply.echoes.last().size, '\0');
        } else {
            reply.bytes += QByteArray::fromHex(word);
        }
        reply.fields.last().size = reply.bytes.size() - reply.fields.last().at;
    }
    return reply;
}

bool ReplyText::hasField(const QByteArray& name) const {
    for (const ReplyField& field : fields) {
        if (field.name == name) {
            return true;
        }
    }
    return false;
}

const ReplyField& ReplyText::field(const QByteArray& name) const {
    for (const ReplyField& field : fields) {
        if (field.name == name) {
            return field;
        }
    }
    abort();  // a table names a field that its reply does not have
}

quint32 numberAt(const QByteArray& bytes, int at, int size) {
    quint32 number = 0;
    for (int i = size - 1; i >= 0; --i) {
        number = number << 8 | static_cast<unsigned char>(bytes.at(at + i));
    }
    return number;
}

QByteArray withNumber(QByteArray bytes, int at, int size, quint32 number) {
    for (int i = 0; i < size; ++i) {
        bytes[at + i] = static_cast<char>(quint64(number) >> 8 * i);
    }
    return bytes;
}

QByteArray replyTo(const QByteArray& request, QByteArray reply, const QList<Echo>& echoes) {
    for (const Echo& echo : echoes) {
        for (int i = 0; i < echo.size && echo.at + i < reply.size(); ++i) {
            reply[echo.at + i] = request.at(echo.from + i);
        }
        if (echo.plus != 0 && echo.at + echo.size <= reply.size()) {
            const quint32 number = numberAt(reply, echo.at, echo.size);
            reply = withNumber(reply, echo.at, echo.size, number + quint32(echo.plus));
        }
    }
    return reply;
}
