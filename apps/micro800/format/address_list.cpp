#include "apps/micro800/format/address_list.h"

#include <QRegularExpression>
#include <QStringList>

#include "apps/micro800/base/problem.h"

namespace {

/// What some editors put before UTF-8.
const char kByteOrderMark[] = "\xEF\xBB\xBF";

QString withoutComment(const QString& line) {
    static const QRegularExpression comment(QStringLiteral(R"((^|\s)#.*$)"));
    return QString(line).remove(comment).trimmed();
}

QString elementAddress(const QString& arrayText, const QStringList& indexes) {
    return QStringLiteral("%1[%2]").arg(arrayText.section(QLatin1Char('['), 0, 0),
                                        indexes.join(QLatin1Char(',')));
}

}  // namespace

QString ListedWord::problemHere(const QString& problem) const {
    return place.isEmpty() ? problem : place + QLatin1String(": ") + problem;
}

void appendListedWords(const QByteArray& content, const QString& name, QVector<ListedWord>* words) {
    const bool marked = content.startsWith(kByteOrderMark);
    const QString text =
        QString::fromUtf8(marked ? content.mid(int(sizeof kByteOrderMark) - 1) : content);
    int number = 0;
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        ++number;
        const QString word = withoutComment(line);
        if (!word.isEmpty()) {
            words->append({word, QStringLiteral("%1:%2").arg(name, QString::number(number))});
        }
    }
}

int ListedAddress::count() const {
    int elements = 1;
    for (const ArrayDeclaration::Range& range : ranges) {
        elements *= range.upper - range.lower + 1;
    }
    return elements;
}

QString ListedAddress::elementText(int element) const {
    if (!isRange()) {
        return text;
    }
    QStringList indexes;
    for (int i = ranges.size() - 1; i >= 0; --i) {
        const int width = ranges.at(i).upper - ranges.at(i).lower + 1;
        indexes.prepend(QString::number(ranges.at(i).lower + element % width));
        element /= width;
    }
    return elementAddress(text, indexes);
}

bool parseListedAddress(const ListedWord& word, ListedAddress* address, QString* problem) {
    ListedAddress result;
    result.text = word.text;
    result.place = word.place;
    QString why;
    if (word.text.contains(QLatin1String(".."))) {
        ArrayDeclaration declaration;
        if (!parseArrayDeclaration(word.text, &declaration, &why)) {
            return fail(problem, word.problemHere(why));
        }
        result.ranges = declaration.ranges;
    }
    if (!parseTagAddress(result.elementText(0), &result.first, &why)) {
        return fail(problem, word.problemHere(why));
    }
    *address = result;
    return true;
}

ListedAddress asRange(const ListedAddress& address) {
    ListedAddress range = address;
    if (address.isRange() || !address.first.isElement) {
        return range;
    }
    QString indexes = address.text.section(QLatin1Char('['), 1);
    indexes.chop(1);
    QStringList bounds;
    for (const QString& index : indexes.split(QLatin1Char(','))) {
        const int number = index.toInt();
        range.ranges.append({number, number});
        bounds << QStringLiteral("%1..%2").arg(index, index);
    }
    range.text = elementAddress(address.text, bounds);
    return range;
}
