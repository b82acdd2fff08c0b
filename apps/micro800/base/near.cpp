#include "apps/micro800/base/near.h"

#include <QVector>
#include <algorithm>

namespace {

/// Of so many characters typed, or fewer, one may be wrong.
const int kCharactersAMistake = 3;

/// So many typed characters are enough to recognise a word by its beginning.
const int kShortestBeginning = 3;

}  // namespace

int typingDistance(const QString& one, const QString& other) {
    const int width = other.size() + 1;
    // Rows of the table of distances between beginnings: the one in work and the two before.
    QVector<int> beforeLast(width);
    QVector<int> last(width);
    QVector<int> row(width);
    for (int column = 0; column < width; ++column) {
        row[column] = column;
    }
    for (int i = 1; i <= one.size(); ++i) {
        beforeLast.swap(last);
        last.swap(row);
        row[0] = i;
        for (int j = 1; j < width; ++j) {
            const bool same = one.at(i - 1) == other.at(j - 1);
            row[j] = std::min({last.at(j) + 1, row.at(j - 1) + 1, last.at(j - 1) + (same ? 0 : 1)});
            const bool swapped = i > 1 && j > 1 && one.at(i - 1) == other.at(j - 2) &&
                                 one.at(i - 2) == other.at(j - 1);
            if (swapped) {
                row[j] = std::min(row.at(j), beforeLast.at(j - 2) + 1);
            }
        }
    }
    return row.last();
}

QString nearestOf(const QString& word, const QStringList& known) {
    const QString typed = word.toLower();
    QString nearest;
    int mistakes = (typed.size() + kCharactersAMistake - 1) / kCharactersAMistake + 1;
    for (const QString& candidate : known) {
        const int distance = typingDistance(typed, candidate);
        // A word of one or two characters is near to everything.
        if (distance < mistakes && distance < candidate.size()) {
            mistakes = distance;
            nearest = candidate;
        }
    }
    for (const QString& candidate : known) {
        if (nearest.isEmpty() && typed.size() >= kShortestBeginning &&
            candidate.startsWith(typed)) {
            nearest = candidate;
        }
    }
    return nearest;
}

QString suggestionFor(const QString& word, const QStringList& known, const QString& before) {
    const QString nearest = nearestOf(word, known);
    return nearest.isEmpty() ? QString()
                             : QStringLiteral("; did you mean %1?").arg(before + nearest);
}
