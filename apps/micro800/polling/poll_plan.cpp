#include "apps/micro800/polling/poll_plan.h"

#include <QHash>

namespace {

/// Code, tab, transaction id, line feed.
const int kLineFrame = 2 + 1 + 4 + 1;

/// A tab before the name, and one before the count.
const int kSeparators = 1 + 1;

QString arrayNameOf(const ListedAddress& address) {
    return address.first.name.section(QLatin1Char('['), 0, 0).toUpper();
}

/// Nothing can be cut out of a whole array of strings: the driver polls each of them.
bool canBeArray(const ListedAddress& address) {
    return address.first.isElement && address.first.type->kind != ValueKind::kString;
}

PollEntry arrayEntry(const QString& name, const ListedAddress& declaration) {
    return {PollEntry::Kind::kArray, declaration.first.type, name, declaration.text,
            declaration.count()};
}

PollEntry singleEntry(const TagAddress& address) {
    return {address.isElement ? PollEntry::Kind::kElement : PollEntry::Kind::kTag, address.type,
            address.name.toUpper(), address.text, 1};
}

QVector<PollEntry> elementEntries(const ListedAddress& range) {
    QVector<PollEntry> entries;
    for (int i = 0; i < range.count(); ++i) {
        TagAddress element;
        QString ignored;
        if (parseTagAddress(range.elementText(i), &element, &ignored)) {
            entries.append(singleEntry(element));
        }
    }
    return entries;
}

QHash<QString, ListedAddress> declarationsOf(const QVector<ListedAddress>& addresses,
                                             const QVector<ListedAddress>& declared) {
    QHash<QString, ListedAddress> declarations;
    for (const ListedAddress& address : addresses + declared) {
        if (address.isRange()) {
            declarations.insert(arrayNameOf(address), address);
        }
    }
    return declarations;
}

}  // namespace

int requestsFor(const TagType& type, int count) {
    if (type.kind == ValueKind::kString) {
        return count;
    }
    const int elements = kBytesARequest / type.size;
    return (count + elements - 1) / elements;
}

void PollCost::add(const PollCost& other) {
    entries += other.entries;
    requests += other.requests;
    listBytes += other.listBytes;
}

PollCost PollEntry::cost() const {
    return {1, requestsFor(*type, count),
            kSeparators + name.size() + QString::number(count).size()};
}

PollPlan::PollPlan(const QVector<ListedAddress>& addresses,
                   const QVector<ListedAddress>& declared) {
    const QHash<QString, ListedAddress> declarations = declarationsOf(addresses, declared);
    QHash<QString, int> places;  // by name: the worker reads one name once in a pass
    for (const ListedAddress& address : addresses) {
        const QString arrayName = arrayNameOf(address);
        QVector<PollEntry> entries;
        if (canBeArray(address) && declarations.contains(arrayName)) {
            entries.append(arrayEntry(arrayName, declarations.value(arrayName)));
        } else if (address.isRange()) {
            entries = elementEntries(address);
        } else {
            entries.append(singleEntry(address.first));
        }
        for (const PollEntry& entry : entries) {
            if (!places.contains(entry.name)) {
                places.insert(entry.name, list.size());
                list.append(entry);
            }
        }
    }
}

PollCost PollPlan::cost() const {
    PollCost sum;
    for (const PollEntry& entry : list) {
        sum.add(entry.cost());
    }
    return sum;
}

int PollPlan::lineBytes() const {
    return kLineFrame + cost().listBytes;
}
