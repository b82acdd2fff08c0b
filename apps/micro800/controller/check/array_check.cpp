#include "apps/micro800/controller/check/array_check.h"

#include <QStringList>
#include <limits>

namespace {

typedef QVector<ArrayDeclaration::Range> Ranges;

QVector<int> lowerCorner(const Ranges& ranges) {
    QVector<int> indexes;
    for (const ArrayDeclaration::Range& range : ranges) {
        indexes.append(range.lower);
    }
    return indexes;
}

QVector<int> upperCorner(const Ranges& ranges) {
    QVector<int> indexes;
    for (const ArrayDeclaration::Range& range : ranges) {
        indexes.append(range.upper);
    }
    return indexes;
}

/// The prefix, the name and these ranges: what to declare.
QString declarationText(const ListedAddress& array, const Ranges& ranges) {
    QStringList texts;
    for (const ArrayDeclaration::Range& range : ranges) {
        texts << QStringLiteral("%1..%2").arg(range.lower).arg(range.upper);
    }
    return QStringLiteral("%1[%2]").arg(array.text.section(QLatin1Char('['), 0, 0),
                                        texts.join(QLatin1Char(',')));
}

/// One array and the run of its check.
struct ArrayCheck {
    const ListedAddress& array;
    CheckRun& run;
    const QString name;

    TagReply element(const QVector<int>& indexes) {
        return run.read(elementName(name, indexes), 1);
    }
    TagReply elementAt(int dimension, int index) {
        QVector<int> indexes = lowerCorner(array.ranges);
        indexes[dimension] = index;
        return element(indexes);
    }

    int lastIndexOf(int dimension);
    bool checkLast();
    bool checkNeighbour(int dimension, int index);
    bool checkNeighbours();
    bool checkWhole();
};

/// The last index of a dimension within the declared ones that the controller has, by halves.
int ArrayCheck::lastIndexOf(int dimension) {
    int good = array.ranges.at(dimension).lower;  // has been read
    int bad = array.ranges.at(dimension).upper + 1;
    while (bad - good > 1) {
        const int middle = good + (bad - good) / 2;
        const bool there = elementAt(dimension, middle).kind == TagReply::Kind::kValue;
        (there ? good : bad) = middle;
    }
    return good;
}

bool ArrayCheck::checkLast() {
    const QVector<int> last = upperCorner(array.ranges);
    if (last == lowerCorner(array.ranges)) {
        return true;
    }
    const TagReply reply = element(last);
    if (reply.kind == TagReply::Kind::kValue) {
        return true;
    }
    if (!isBeyondEnd(reply)) {
        return run.failWith(reply);
    }
    Ranges fitting = array.ranges;
    for (int i = 0; i < fitting.size(); ++i) {
        fitting[i].upper = lastIndexOf(i);
    }
    return run.set(Verdict::kTooLong,
                   QStringLiteral("the controller's array ends at [%1]; declare %2")
                       .arg(elementName(QString(), upperCorner(fitting)).mid(1).chopped(1),
                            declarationText(array, fitting)));
}

/// The element beside a bound must not be there.
bool ArrayCheck::checkNeighbour(int dimension, int index) {
    const TagReply reply = elementAt(dimension, index);
    if (reply.kind == TagReply::Kind::kNone) {
        return run.failWith(reply);
    }
    if (reply.kind == TagReply::Kind::kRefused) {
        return true;
    }
    QVector<int> indexes = lowerCorner(array.ranges);
    indexes[dimension] = index;
    const bool harmless = dimension == 0 && index > array.ranges.at(0).upper;
    return run.set(
        Verdict::kTooShort,
        QStringLiteral("the controller has %1 as well; declare the bounds that it has%2")
            .arg(elementName(name, indexes),
                 harmless ? QString() : QStringLiteral(", or the panel shows other elements")));
}

bool ArrayCheck::checkNeighbours() {
    for (int i = 0; i < array.ranges.size(); ++i) {
        const ArrayDeclaration::Range range = array.ranges.at(i);
        const bool hasNext = range.upper < std::numeric_limits<int>::max();
        if ((range.lower > 0 && !checkNeighbour(i, range.lower - 1)) ||
            (hasNext && !checkNeighbour(i, range.upper + 1))) {
            return false;
        }
    }
    return true;
}

/// What a panel does once a pass.
bool ArrayCheck::checkWhole() {
    const int size = array.first.type->size;
    if (size == 0) {
        run.result.readRequests = array.count();  // strings go one by one
        return true;
    }
    const TagReply whole = run.read(name, array.count());
    if (whole.kind == TagReply::Kind::kNone) {
        return run.failWith(whole);
    }
    if (whole.kind == TagReply::Kind::kRefused) {
        return run.set(
            Verdict::kTooLarge,
            QStringLiteral("the controller refuses its %1 bytes as a whole (%2), which is how a "
                           "panel polls a declared array; do not declare it, and its elements are "
                           "read one by one")
                .arg(QString::number(size * array.count()), whole.error));
    }
    run.result.readRequests = whole.requests;
    run.result.readMs = whole.microseconds / 1000;
    return true;
}

}  // namespace

void checkArray(const ListedAddress& array, CheckRun& run) {
    ArrayCheck check = {array, run, arrayNameOf(array.first.name)};
    const TagReply first = check.element(lowerCorner(array.ranges));
    TagAddress declared = array.first;
    declared.name = array.text.section(QLatin1Char(':'), 1);  // what to write in its place
    if (!run.takeFirst(declared, first)) {
        return;
    }
    run.result.readMs = first.microseconds / 1000;
    if (!check.checkLast()) {
        return;
    }
    // Whatever else, it is there and can be read: a shorter declaration says so last.
    if (!check.checkWhole()) {
        return;
    }
    check.checkNeighbours();
}
