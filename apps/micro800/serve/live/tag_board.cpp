#include "apps/micro800/serve/live/tag_board.h"

#include <limits>

#include "apps/micro800/format/value_format.h"

namespace {

QJsonValue numberOf(const TagType& type, const QByteArray& bytes) {
    const QJsonValue value = valueJson(type, bytes, 1);
    if (value.isBool()) {
        return value.toBool() ? 1 : 0;
    }
    return value.isDouble() ? value : QJsonValue();
}

QJsonValue textOrNull(const QString& text) {
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

/// The least and the greatest whole number of a type; null for other types.
void appendBounds(const TagType& type, QJsonObject* object) {
    QString least;
    QString greatest;
    const int bits = 8 * type.size;
    if (type.kind == ValueKind::kSigned) {
        least = QString::number(-(qint64(1) << (bits - 1)));
        greatest = QString::number((qint64(1) << (bits - 1)) - 1);
    } else if (type.kind == ValueKind::kUnsigned) {
        least = QStringLiteral("0");
        greatest = QString::number((qint64(1) << bits) - 1);
    }
    object->insert(QStringLiteral("minimum"), textOrNull(least));
    object->insert(QStringLiteral("maximum"), textOrNull(greatest));
    object->insert(QStringLiteral("maximumLength"),
                   type.kind == ValueKind::kString ? QJsonValue(kLongestString) : QJsonValue());
}

QJsonObject changingPart(int index, const BoardTag& row) {
    return {
        {QStringLiteral("index"), index},
        {QStringLiteral("value"), row.value},
        {QStringLiteral("number"), row.number},
        {QStringLiteral("state"), QLatin1String(stateName(row.state))},
        {QStringLiteral("time"), row.readAt < 0 ? QJsonValue() : QJsonValue(row.readAt)},
        {QStringLiteral("problem"), row.problem},
        {QStringLiteral("help"), row.help},
    };
}

}  // namespace

QString groupOf(const TagAddress& address) {
    const QString& name = address.name;
    int end = 0;
    while (end < name.size() && name.at(end) == QLatin1Char('_')) {
        ++end;
    }
    while (end < name.size() && !QStringLiteral("_.[").contains(name.at(end))) {
        ++end;
    }
    return name.left(end);
}

const char* stateName(TagState state) {
    static const char* const names[] = {"waiting", "good", "stale", "failed"};
    return names[static_cast<int>(state)];
}

TagBoard::TagBoard(const QVector<TagAddress>& addresses, qint64 staleAfterMs, quint64 firstPeriod)
    : staleMs(staleAfterMs), open(firstPeriod) {
    for (const TagAddress& address : addresses) {
        indexes.insert(address.text, rows.size());
        BoardTag row;
        row.address = address;
        row.value = QStringLiteral("");
        row.problem = QStringLiteral("");
        row.help = QStringLiteral("");
        rows.append(row);
    }
}

int TagBoard::indexOf(const QString& address) const {
    return indexes.value(address, -1);
}

void TagBoard::good(int index, const QByteArray& bytes, bool isNew, qint64 now) {
    BoardTag& row = rows[index];
    if (isNew) {
        row.value = valueText(*row.address.type, bytes, 1);
        row.number = numberOf(*row.address.type, bytes);
    }
    if (isNew || row.state != TagState::kGood) {
        row.changed = open;
    }
    row.state = TagState::kGood;
    row.problem = QStringLiteral("");
    row.help = QStringLiteral("");
    row.readAt = now;
    row.seen = open;
}

void TagBoard::failed(int index, const QString& problem, const QString& help) {
    BoardTag& row = rows[index];
    if (row.state != TagState::kFailed || row.problem != problem) {
        row.changed = open;
    }
    row.state = TagState::kFailed;
    row.problem = problem;
    row.help = help;
}

quint64 TagBoard::endPeriod(qint64 now) {
    for (BoardTag& row : rows) {
        if (row.state == TagState::kGood && now - row.readAt > staleMs) {
            row.state = TagState::kStale;
            row.changed = open;
        }
    }
    return open++;
}

QJsonArray TagBoard::all() const {
    QJsonArray tags;
    for (int i = 0; i < rows.size(); ++i) {
        QJsonObject tag = changingPart(i, rows.at(i));
        const TagAddress& address = rows.at(i).address;
        tag.insert(QStringLiteral("address"), address.text);
        tag.insert(QStringLiteral("group"), groupOf(address));
        tag.insert(QStringLiteral("type"), QLatin1String(address.type->name));
        appendBounds(*address.type, &tag);
        tags.append(tag);
    }
    return tags;
}

QJsonObject TagBoard::since(quint64 period, qint64 now) const {
    QJsonArray tags;
    QJsonArray ranges;
    int first = -1;  // of the range that goes on
    for (int i = 0; i <= rows.size(); ++i) {
        const bool isSeen = i < rows.size() && rows.at(i).seen > period;
        if (isSeen && first < 0) {
            first = i;
        } else if (!isSeen && first >= 0) {
            ranges.append(QJsonArray{first, i - 1});
            first = -1;
        }
        if (i < rows.size() && rows.at(i).changed > period) {
            tags.append(changingPart(i, rows.at(i)));
        }
    }
    if (tags.isEmpty() && ranges.isEmpty()) {
        return QJsonObject();
    }
    return {{QStringLiteral("time"), now},
            {QStringLiteral("tags"), tags},
            {QStringLiteral("seen"), ranges}};
}

int TagBoard::count(TagState state) const {
    int found = 0;
    for (const BoardTag& row : rows) {
        found += row.state == state;
    }
    return found;
}
