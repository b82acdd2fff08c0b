#include "apps/micro800/serve/live/event_list.h"

#include <QMap>

#include "apps/micro800/serve/help/help_links.h"

namespace {

/// So many entries of one reason are told one by one.
const int kMostAlike = 3;

const char* kindName(EntryKind kind) {
    static const char* const names[] = {"failure", "recovery", "write", "connection"};
    return names[static_cast<int>(kind)];
}

using Alike = QPair<int, QString>;

Alike alikeOf(const Entry& entry) {
    return {static_cast<int>(entry.kind), reasonOf(entry.address, entry.text)};
}

/// Each write has its own entry, regardless of the results of others.
bool mayBeMany(const Entry& entry) {
    return entry.kind != EntryKind::kWrite;
}

/// One entry in place of many.
Entry summary(const Entry& first, int count) {
    Entry entry = first;
    entry.address.clear();
    entry.text = QStringLiteral("%1 (%2 tags)")
                     .arg(reasonOf(first.address, first.text), QString::number(count));
    return entry;
}

}  // namespace

QJsonObject entryJson(const Entry& entry) {
    return {{QStringLiteral("time"), entry.time},
            {QStringLiteral("kind"), QLatin1String(kindName(entry.kind))},
            {QStringLiteral("address"), entry.address},
            {QStringLiteral("text"), entry.text},
            {QStringLiteral("help"), entry.help}};
}

void EventList::endPeriod(quint64 period) {
    QMap<Alike, int> counts;
    for (const Entry& entry : waiting) {
        ++counts[alikeOf(entry)];
    }
    for (const Entry& entry : waiting) {
        int& count = counts[alikeOf(entry)];
        if (count > kMostAlike && mayBeMany(entry)) {
            kept.push_back({period, summary(entry, count)});
            count = 0;
        } else if (count > 0) {
            kept.push_back({period, entry});
        }
    }
    waiting.clear();
    while (kept.size() > kMost) {
        lastDropped = kept.front().period;
        kept.pop_front();
    }
}

QJsonArray EventList::all() const {
    QJsonArray entries;
    for (const Kept& one : kept) {
        entries.append(entryJson(one.entry));
    }
    return entries;
}

bool EventList::since(quint64 period, QVector<Entry>* found) const {
    for (const Kept& one : kept) {
        if (one.period > period) {
            found->append(one.entry);
        }
    }
    return period >= lastDropped;
}
