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
    for (int i = 0; i < text.size(); ++i) {
        const QChar unit = text.at(i);
        const bool startsPair =
            unit.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        if (unit < QLatin1Char(' ') || (unit >= QChar(0x7F) && unit <= QChar(0x9F)) ||
            (unit.isSurrogate() && !startsPair)) {
            return false;
        }
        i += startsPair ? 1 : 0;
    }
    return true;
}

/// Whether every quote and backslash is half of one of the pairs \" \\ or begins another escape.
bool staysInItsQuotes(const QString& inside) {
    for (int i = 0; i < inside.size(); ++i) {
        if (inside.at(i) == QLatin1Char('"')) {
            return false;
        }
        if (inside.at(i) == QLatin1Char('\\') && ++i == inside.size()) {
            return false;
        }
    }
    return true;
}

void checkQuoted(const QString& quoted) {
    demand(quoted.size() >= 2 && quoted.startsWith(QLatin1Char('"')) &&
           quoted.endsWith(QLatin1Char('"')));
    demand(isHarmless(quoted) && staysInItsQuotes(quoted.mid(1, quoted.size() - 2)));
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
    demand(isHarmless(terminalText(text)));
    demand(terminalText(terminalText(text)) == terminalText(text));
    checkQuoted(quotedText(text));
    checkJson(text, isWhole);
    checkCsv(csvField(text));
    checkHtml(htmlText(text));
    checkQuoted(QLatin1Char('"') + prometheusText(text) + QLatin1Char('"'));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const char* bytes = reinterpret_cast<const char*>(data);
    checkAll(QString::fromLatin1(bytes, int(size)), true);
    checkAll(QString::fromUtf8(bytes, int(size)), true);
    // Halves of surrogate pairs included, which no document can contain.
    checkAll(QString(reinterpret_cast<const QChar*>(
                         QByteArray(bytes, int(size & ~size_t(1))).constData()),
                     int(size / 2)),
             false);
    return 0;
}
