#include "apps/micro800/serve/http/request_target.h"

#include <QList>

namespace {

/// The value of a hexadecimal digit; -1 for any other character.
int digit(char character) {
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Appends the byte of the escape at `at` and moves `at` to its last character.
bool takeEscape(const QByteArray& text, int* at, QByteArray* bytes) {
    if (text.size() - *at < 3) {
        return false;
    }
    const int high = digit(text.at(*at + 1));
    const int low = digit(text.at(*at + 2));
    if (high < 0 || low < 0) {
        return false;
    }
    bytes->append(static_cast<char>(high << 4 | low));
    *at += 2;
    return true;
}

bool decode(const QByteArray& text, bool plusIsBlank, QString* decoded) {
    QByteArray bytes;
    for (int i = 0; i < text.size(); ++i) {
        const char character = text.at(i);
        if (character != '%') {
            bytes.append(plusIsBlank && character == '+' ? ' ' : character);
        } else if (!takeEscape(text, &i, &bytes)) {
            return false;
        }
    }
    *decoded = QString::fromUtf8(bytes.constData(), bytes.size());
    return decoded->toUtf8() == bytes;
}

bool takeParameter(const QByteArray& text, QHash<QString, QString>* query) {
    const int equals = text.indexOf('=');
    QString name;
    QString value;
    if (!decode(equals < 0 ? text : text.left(equals), true, &name) ||
        (equals >= 0 && !decode(text.mid(equals + 1), true, &value)) || query->contains(name)) {
        return false;
    }
    query->insert(name, value);
    return true;
}

}  // namespace

bool parseRequestTarget(const QByteArray& text, RequestTarget* target) {
    const int mark = text.indexOf('?');
    const QByteArray path = mark < 0 ? text : text.left(mark);
    if (!path.startsWith('/') || !decode(path, false, &target->path)) {
        return false;
    }
    if (mark < 0) {
        return true;
    }
    for (const QByteArray& part : text.mid(mark + 1).split('&')) {
        if (!part.isEmpty() && !takeParameter(part, &target->query)) {
            return false;
        }
    }
    return true;
}
