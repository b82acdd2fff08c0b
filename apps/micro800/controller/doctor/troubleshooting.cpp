#include "apps/micro800/controller/doctor/troubleshooting.h"

#include <QRegularExpression>
#include <limits>

// Made from docs/troubleshooting.md when the program is built.
extern const char kTroubleshootingPage[];

namespace {

const QChar kEllipsis(0x2026);
const int kColumns = 3;

/// The cells of a table's line; none when it is no such line.
QStringList cellsOf(const QString& line) {
    if (!line.startsWith(QLatin1Char('|'))) {
        return QStringList();
    }
    QStringList cells;
    for (const QString& cell : line.split(QLatin1Char('|')).mid(1, kColumns)) {
        cells << cell.trimmed();
    }
    return cells;
}

QStringList quotedTexts(const QString& cell) {
    QStringList texts;
    const QStringList parts = cell.split(QLatin1Char('`'));
    for (int i = 1; i < parts.size(); i += 2) {
        texts << parts.at(i);
    }
    return texts;
}

/// The number in brackets at the end, which a system's text has in every language; empty without.
QString systemNumber(const QString& text) {
    static const QRegularExpression pattern(QStringLiteral(R"(\([0-9]+\)$)"));
    return pattern.match(text).captured(0);
}

bool isSameSystemError(const QString& text, const QString& other) {
    const QString number = systemNumber(text);
    return !number.isEmpty() && number == systemNumber(other);
}

/// What is left for a terminal: links are their text, backquotes go.
QString withoutMarkup(const QString& cell) {
    static const QRegularExpression link(QStringLiteral(R"(\[([^\]]*)\]\([^)]*\))"));
    return QString(cell).replace(link, QStringLiteral("\\1")).remove(QLatin1Char('`'));
}

/// Whether a text with an ellipsis matches this one.
bool stands(const QString& pattern, const QString& text) {
    const QString any = QStringLiteral(".*");
    const QString expression =
        QRegularExpression::escape(pattern).replace(QRegularExpression::escape(kEllipsis), any);
    static const QRegularExpression::PatternOptions options =
        QRegularExpression::DotMatchesEverythingOption;
    return QRegularExpression(QRegularExpression::anchoredPattern(expression), options)
        .match(text)
        .hasMatch();
}

/// Whether the text lies between two of the same form; numbers there have the same length.
bool liesBetween(const QString& first, const QString& last, const QString& text) {
    return text.size() == first.size() && first <= text && (last.isEmpty() || text <= last) &&
           text.section(QLatin1Char(' '), 0, -2) == first.section(QLatin1Char(' '), 0, -2);
}

}  // namespace

Troubleshooting::Troubleshooting(const QString& page) {
    const QStringList heading = {QStringLiteral("text"), QStringLiteral("means"),
                                 QStringLiteral("check")};
    bool isWanted = false;
    for (const QString& line : page.split(QLatin1Char('\n'))) {
        const QStringList cells = cellsOf(line);
        if (cells.size() < kColumns) {
            isWanted = false;
        } else if (cells == heading) {
            isWanted = true;
        } else if (isWanted && !quotedTexts(cells.at(0)).isEmpty()) {
            rows.append({cells.at(0),
                         quotedTexts(cells.at(0)),
                         {withoutMarkup(cells.at(1)), withoutMarkup(cells.at(2)),
                          quotedTexts(cells.at(0)).first()}});
        }
    }
}

/// How well a row fits; 0 for not at all.
int Troubleshooting::likeness(const Row& row, const QString& text) {
    const int exact = std::numeric_limits<int>::max();
    if (row.texts.contains(text)) {
        return exact;
    }
    const bool isRange = row.texts.size() == 2 && row.cell.contains(QLatin1String("` to `"));
    const bool isOpen = row.cell.endsWith(QLatin1String("and above"));
    if ((isRange && liesBetween(row.texts.at(0), row.texts.at(1), text)) ||
        (isOpen && liesBetween(row.texts.at(0), QString(), text))) {
        return exact - 1;
    }
    int best = 0;
    for (const QString& pattern : row.texts) {
        if (isSameSystemError(pattern, text)) {
            return exact - 2;
        }
        if (pattern.contains(kEllipsis) && stands(pattern, text)) {
            best = qMax(best, pattern.size());
        }
    }
    return best;
}

Advice Troubleshooting::adviceFor(const QString& text) const {
    Advice advice;
    int best = 0;
    for (const Row& row : rows) {
        const int fits = likeness(row, text);
        if (fits > best) {
            best = fits;
            advice = row.advice;
        }
    }
    return advice;
}

const Troubleshooting& troubleshooting() {
    static const Troubleshooting page{QString::fromUtf8(kTroubleshootingPage)};
    return page;
}
