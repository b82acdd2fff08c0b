// Text of a controller on its way to every place that shows it: one character a byte, and UTF-8.

#include <QJsonDocument>
#include <cstdint>

#include "apps/micro800/format/escape.h"

namespace {

void demand(bool holds) {
    if (!holds) {
        __builtin_trap();
    }
}

/// Nothing that ends a line, that a terminal obeys, or that is half a character.
bool isHarmless(const QString& text) {
    const QChar* const units = text.constData();
    for (int i = 0; i < text.size(); ++i) {
        const ushort unit = units[i].unicode();
        if (unit < ' ' || (unit >= 0x7F && unit <= 0x9F)) {
            return false;
        }
        if (QChar::isSurrogate(unit)) {
            // The terminating zero is no second half.
            if (!QChar::isHighSurrogate(unit) || !units[i + 1].isLowSurrogate()) {
                return false;
            }
            ++i;
        }
    }
    return true;
}

/// Whether every quote and backslash is half of one of the pairs \" \\ or begins another escape.
bool staysInItsQuotes(const QChar* inside, int size) {
    for (int i = 0; i < size; ++i) {
        const ushort unit = inside[i].unicode();
        if (unit == '"' || (unit == '\\' && ++i == size)) {
            return false;
        }
    }
    return true;
}

void checkQuoted(const QString& quoted) {
    demand(quoted.size() >= 2 && quoted.startsWith(QLatin1Char('"')) &&
           quoted.endsWith(QLatin1Char('"')));
    demand(isHarmless(quoted) && staysInItsQuotes(quoted.constData() + 1, quoted.size() - 2));
}

void checkJson(const QString& text, bool isWhole) {
    const QByteArray json = jsonText({{QStringLiteral("value"), text}});
    demand(isHarmless(QString::fromUtf8(json)));
    const QJsonDocument document = QJsonDocument::fromJson(json);
    demand(document.isObject());
    demand(!isWhole || document.object().value(QStringLiteral("value")).toString() == text);
}

void checkCsv(const QString& field) {
    demand(isHarmless(field));
    QString inside = field;
    if (field.startsWith(QLatin1Char('"'))) {
        demand(field.size() >= 2 && field.endsWith(QLatin1Char('"')));
        inside = field.mid(1, field.size() - 2).replace(QLatin1String("\"\""), QLatin1String("q"));
    } else {
        demand(!field.contains(QLatin1Char(',')));
    }
    demand(!inside.contains(QLatin1Char('"')));
    demand(inside.isEmpty() || !QStringLiteral("=+-@").contains(inside.at(0)));
}

void checkHtml(QString html) {
    demand(isHarmless(html));
    for (const char* entity : {"&lt;", "&gt;", "&amp;", "&quot;", "&#39;"}) {
        html.remove(QLatin1String(entity));
    }
    for (const char character : {'<', '>', '&', '"', '\''}) {
        demand(!html.contains(QLatin1Char(character)));
    }
}

void checkAll(const QString& text, bool isWhole) {
    const QString shown = terminalText(text);
    demand(isHarmless(shown) && terminalText(shown) == shown);
    checkQuoted(quotedText(text));
    checkJson(text, isWhole);
    checkCsv(csvField(text));
    checkHtml(htmlText(text));
    checkQuoted(QLatin1Char('"') + prometheusText(text) + QLatin1Char('"'));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const char* bytes = reinterpret_cast<const char*>(data);
    const QString latin1 = QString::fromLatin1(bytes, int(size));
    const QString utf8 = QString::fromUtf8(bytes, int(size));
    checkAll(latin1, true);
    if (utf8 != latin1) {
        checkAll(utf8, true);
    }
    // Halves of surrogate pairs included, which no document can contain.
    checkAll(QString(reinterpret_cast<const QChar*>(
                         QByteArray(bytes, int(size & ~size_t(1))).constData()),
                     int(size / 2)),
             false);
    return 0;
}
