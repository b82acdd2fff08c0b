#include "apps/micro800/format/escape.h"

#include <QJsonDocument>

namespace {

const uint kLastOfTwoDigits = 0xFF;
const uint kLastOfFourDigits = 0xFFFF;

/// Whether no place can show the character as it is.
bool isHidden(uint code) {
    switch (QChar::category(code)) {
        case QChar::Other_Control:
        case QChar::Other_Format:
        case QChar::Other_Surrogate:
        case QChar::Separator_Line:
        case QChar::Separator_Paragraph:
            return true;
        default:
            return false;
    }
}

QString digits(const char* introducer, uint number, int count) {
    return QLatin1String(introducer) +
           QStringLiteral("%1").arg(number, count, 16, QLatin1Char('0'));
}

QString hiddenText(uint code) {
    switch (code) {
        case '\n':
            return QStringLiteral("\\n");
        case '\r':
            return QStringLiteral("\\r");
        case '\t':
            return QStringLiteral("\\t");
        default:
            break;
    }
    if (code <= kLastOfTwoDigits) {
        return digits("\\x", code, 2);
    }
    return code <= kLastOfFourDigits ? digits("\\u", code, 4) : digits("\\U", code, 8);
}

/// JSON knows four digits only: what is beyond them is a pair of surrogates.
QString hiddenJson(uint code) {
    if (code <= kLastOfFourDigits) {
        return digits("\\u", code, 4);
    }
    return digits("\\u", QChar::highSurrogate(code), 4) +
           digits("\\u", QChar::lowSurrogate(code), 4);
}

/// The text with every hidden character replaced.
QString withoutHidden(const QString& text, QString (*replacement)(uint code)) {
    QString result;
    result.reserve(text.size());
    for (int i = 0; i < text.size(); ++i) {
        const QChar unit = text.at(i);
        const bool isPair =
            unit.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        const uint code = isPair ? QChar::surrogateToUcs4(unit, text.at(i + 1)) : unit.unicode();
        if (isHidden(code)) {
            result += replacement(code);
        } else {
            result += text.midRef(i, isPair ? 2 : 1);
        }
        i += isPair ? 1 : 0;
    }
    return result;
}

QString withDoubledBackslashes(const QString& text) {
    return QString(text).replace(QLatin1Char('\\'), QLatin1String("\\\\"));
}

bool beginsWithOneOf(const QString& text, const char* characters) {
    return !text.isEmpty() && QLatin1String(characters).contains(text.at(0));
}

}  // namespace

QString terminalText(const QString& text) {
    return withoutHidden(text, hiddenText);
}

QString quotedText(const QString& text) {
    QString inside = withDoubledBackslashes(text).replace(QLatin1Char('"'), QLatin1String("\\\""));
    return QLatin1Char('"') + terminalText(inside) + QLatin1Char('"');
}

QByteArray jsonText(const QJsonObject& object) {
    // Outside its strings a compact document is printable ASCII.
    const QByteArray document = QJsonDocument(object).toJson(QJsonDocument::Compact);
    return withoutHidden(QString::fromUtf8(document), hiddenJson).toUtf8();
}

QString csvField(const QString& text) {
    QString field = terminalText(withDoubledBackslashes(text));
    if (beginsWithOneOf(field, "=+-@'")) {
        field.prepend(QLatin1Char('\''));
    }
    const bool plain = !field.contains(QLatin1Char(',')) && !field.contains(QLatin1Char('"')) &&
                       !field.contains(QLatin1Char(';')) && field == field.trimmed();
    if (plain) {
        return field;
    }
    return QLatin1Char('"') + field.replace(QLatin1Char('"'), QLatin1String("\"\"")) +
           QLatin1Char('"');
}

QString htmlText(const QString& text) {
    // toHtmlEscaped() leaves the apostrophe, which ends an attribute in single quotes.
    return terminalText(text).toHtmlEscaped().replace(QLatin1Char('\''), QLatin1String("&#39;"));
}

QString prometheusText(const QString& text) {
    return withDoubledBackslashes(terminalText(text))
        .replace(QLatin1Char('"'), QLatin1String("\\\""));
}
