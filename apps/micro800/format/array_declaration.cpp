#include "apps/micro800/format/array_declaration.h"

#include <QRegularExpression>
#include <QStringList>

#include "apps/micro800/base/problem.h"
#include "apps/micro800/format/tag_type.h"
#include "common/packet_sizes.h"

namespace {

/// "0..9"; the text has that form already.
bool parseRange(const QString& text, ArrayDeclaration::Range* range) {
    const QStringList bounds = text.split(QLatin1String(".."));
    bool lowerOk = false;
    bool upperOk = false;
    range->lower = bounds.value(0).toInt(&lowerOk);
    range->upper = bounds.value(1).toInt(&upperOk);
    return lowerOk && upperOk;
}

}  // namespace

int ArrayDeclaration::size() const {
    qint64 elements = 1;
    for (const Range& range : ranges) {
        elements *= qint64(range.upper) - range.lower + 1;
    }
    return static_cast<int>(elements);
}

int ArrayDeclaration::requests() const {
    const int bytes = size() * elementSize;
    return qMax(1, (bytes + kReplyValueBytes - 1) / kReplyValueBytes);
}

bool parseArrayDeclaration(const QString& text, ArrayDeclaration* declaration, QString* problem) {
    static const QRegularExpression pattern(QStringLiteral(
        R"(^([A-Za-z]+0):([A-Za-z0-9_]+)\[([0-9]+\.\.[0-9]+(?:,[0-9]+\.\.[0-9]+){0,2})\]$)"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch() || text.endsWith(QLatin1Char('\n'))) {
        return fail(problem, QStringLiteral("%1: an array is declared as PREFIX:NAME[LOWER..UPPER] "
                                            "with one to three ranges and no blanks, for example "
                                            "DINT0:RECIPE[0..9,0..4]")
                                 .arg(text));
    }
    if (!tagTypeByPrefix(match.captured(1))) {
        return fail(problem,
                    QStringLiteral("%1: unknown type prefix %2 (known: %3)")
                        .arg(text, match.captured(1), tagPrefixes().join(QLatin1String(", "))));
    }
    ArrayDeclaration result;
    result.text = text;
    result.name = match.captured(2).toUpper();
    result.elementSize = tagTypeByPrefix(match.captured(1))->size;
    qint64 elements = 1;
    for (const QString& part : match.captured(3).split(QLatin1Char(','))) {
        ArrayDeclaration::Range range;
        if (!parseRange(part, &range)) {
            return fail(problem, QStringLiteral("%1: a bound is at most 2147483647").arg(text));
        }
        if (range.upper < range.lower) {
            return fail(
                problem,
                QStringLiteral("%1: the range %2 ends below its beginning").arg(text, part));
        }
        elements *= qint64(range.upper) - range.lower + 1;
        if (elements > kLargestArray) {
            return fail(problem, QStringLiteral("%1: more than %2 elements")
                                     .arg(text, QString::number(kLargestArray)));
        }
        result.ranges.append(range);
    }
    *declaration = result;
    return true;
}

QString declaredArrayName(const QString& row) {
    static const QRegularExpression pattern(
        QStringLiteral(R"(\b([a-z]+0):(\w+)\[(\d+\.\.\d+(?:,\d+\.\.\d+){0,2})\])"),
        QRegularExpression::CaseInsensitiveOption);
    return pattern.match(row).captured(2).toUpper();
}
