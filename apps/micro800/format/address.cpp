#include "apps/micro800/format/address.h"

#include <QRegularExpression>
#include <QStringList>

#include "apps/micro800/base/problem.h"
#include "common/index_list.h"

namespace {

/// The text that the driver takes for an array element, anywhere in the address.
const QRegularExpression& elementPattern() {
    static const QRegularExpression pattern(
        QStringLiteral(R"(\b([a-z]+0):((\w+)\[(\d+(?:,\d+){0,2})\]))"),
        QRegularExpression::CaseInsensitiveOption);
    return pattern;
}

bool isPrintableAscii(const QString& text) {
    for (const QChar character : text) {
        if (character.unicode() < 0x20 || character.unicode() > 0x7E) {
            return false;
        }
    }
    return true;
}

/// The text in quotes, with what a terminal would not show written as code points.
QString quotedForMessage(const QString& text) {
    QString shown;
    for (const QChar character : text) {
        if (character.isPrint()) {
            shown += character;
        } else {
            shown += QStringLiteral("\\u%1").arg(int(character.unicode()), 4, 16, QLatin1Char('0'));
        }
    }
    return QLatin1Char('"') + shown + QLatin1Char('"');
}

QString unknownPrefix(const QString& text, const QString& prefix) {
    if (tagTypeByPrefix(prefix.toUpper())) {
        return QStringLiteral("%1: the type prefix is written in upper case: %2:%3")
            .arg(text, prefix.toUpper(), text.mid(prefix.size() + 1));
    }
    return QStringLiteral("%1: unknown type prefix %2 (known: %3)")
        .arg(text, prefix, tagPrefixes().join(QLatin1String(", ")));
}

/// Brackets that contain indexes, at any place. The driver sends other brackets on as they are,
/// and the path would name an element that nobody meant: 0 for a word, 255 for -1.
bool bracketsHoldIndexes(const QString& name) {
    static const QRegularExpression pattern(
        QStringLiteral(R"(^[^\[\]]*(?:\[ *\d+ *(?:, *\d+ *)*\][^\[\]]*)*$)"));
    return pattern.match(name).hasMatch();
}

UnitKind unitKindFor(const TagType& type, int count) {
    if (type.kind == ValueKind::kBool && count == 1) {
        return kUnitBit;
    }
    switch (type.size) {
        case 1:
            return kUnitByte;
        case 2:
            return kUnitWord;
        case 4:
            return kUnitDoubleWord;
        case 8:
            return kUnitQuadWord;
        default:
            return kUnitBlock;
    }
}

}  // namespace

bool parseTagAddress(const QString& text, TagAddress* address, QString* problem) {
    if (!isPrintableAscii(text)) {
        return fail(problem,
                    QStringLiteral("%1: an address contains printable ASCII characters only")
                        .arg(quotedForMessage(text)));
    }
    const int colon = text.indexOf(QLatin1String("0:")) + 1;
    if (colon < 1) {
        return fail(problem, QStringLiteral("%1: no type prefix; an address reads PREFIX:NAME, "
                                            "for example DINT0:COUNTER")
                                 .arg(quotedForMessage(text)));
    }
    const QString prefix = text.left(colon);
    const TagType* type = tagTypeByPrefix(prefix);
    if (!type) {
        return fail(problem, unknownPrefix(text, prefix));
    }
    const QString name = text.mid(colon + 1);
    if (name.trimmed().isEmpty()) {
        return fail(problem, QStringLiteral("%1: no tag name after the prefix").arg(text));
    }

    if (!bracketsHoldIndexes(name)) {
        return fail(problem,
                    QStringLiteral("%1: brackets contain one to three indexes, whole numbers "
                                   "from 0 on with commas between, as in GRID[2,3]")
                        .arg(text));
    }
    const QRegularExpressionMatch element = elementPattern().match(text);
    if (element.hasMatch() && element.captured(0) != text) {
        return fail(problem, QStringLiteral("%1: the driver would access %2 and ignore the rest")
                                 .arg(text, element.captured(2)));
    }
    if (element.hasMatch() && !indexesFit(element.captured(4))) {
        return fail(problem, QStringLiteral("%1: an index is at most 2147483647").arg(text));
    }

    address->text = text;
    address->type = type;
    address->name = name;
    address->isElement = element.hasMatch();
    return true;
}

bool commandFor(const TagAddress& address, int count, CommunicatorCommand* command,
                QString* problem) {
    const bool isString = address.type->kind == ValueKind::kString;
    if (count > 1 && isString) {
        return fail(problem, QStringLiteral("%1: STRING elements are accessed one at a time; "
                                            "name each of them")
                                 .arg(address.text));
    }
    if (count > 1 && !address.isElement) {
        return fail(problem,
                    QStringLiteral("%1: a plain tag is always one element; for %2 elements of an "
                                   "array write its first one, as in '%1[0]'")
                        .arg(address.text, QString::number(count)));
    }
    const quint32 units = isString ? quint32(kLongestString) : quint32(count);
    *command = CommunicatorCommand(unitKindFor(*address.type, count), units, address.text);
    return true;
}

QString tooLarge(const CommunicatorCommand& command, int blockSize) {
    return QStringLiteral("%1: %2 bytes asked for, the driver takes at most %3 at a time")
        .arg(command.address, QString::number(command.getDataSize()), QString::number(blockSize));
}
