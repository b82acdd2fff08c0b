#include "apps/micro800/polling/poll_advice.h"

#include <QMap>
#include <QStringList>
#include <algorithm>

namespace {

/// A name for an array that does not exist yet, as long as most.
const char kNewArray[] = "PANEL_DINT";

/// Entries that one piece of advice can be about: plain tags of a type, or elements of an array.
using Groups = QMap<QString, QVector<PollEntry>>;

Groups groupsOf(const PollPlan& plan, PollEntry::Kind kind) {
    Groups groups;
    for (const PollEntry& entry : plan.entries()) {
        if (entry.kind == kind) {
            const QString array = entry.label.section(QLatin1Char('['), 0, 0).toUpper();
            groups[kind == PollEntry::Kind::kElement ? array
                                                     : QString(QLatin1String(entry.type->name))]
                .append(entry);
        }
    }
    return groups;
}

PollCost costOf(const QVector<PollEntry>& entries) {
    PollCost sum;
    for (const PollEntry& entry : entries) {
        sum.add(entry.cost());
    }
    return sum;
}

/// "[0..9,0..4]": bounds that contain all elements; each ends at the largest index.
QString boundsOf(const QVector<PollEntry>& elements) {
    QVector<int> largest;
    for (const PollEntry& element : elements) {
        QString indexes = element.name.section(QLatin1Char('['), 1);
        indexes.chop(1);
        const QStringList list = indexes.split(QLatin1Char(','));
        for (int i = 0; i < list.size(); ++i) {
            if (i == largest.size()) {
                largest.append(0);
            }
            largest[i] = std::max(largest.at(i), list.at(i).toInt());
        }
    }
    QStringList ranges;
    for (const int last : largest) {
        ranges << QStringLiteral("0..%1").arg(last);
    }
    return QLatin1Char('[') + ranges.join(QLatin1Char(',')) + QLatin1Char(']');
}

bool declarationFor(const QString& array, const QVector<PollEntry>& elements, PollAdvice* advice) {
    ListedAddress declaration;
    QString ignored;
    if (!parseListedAddress({array + boundsOf(elements), QString()}, &declaration, &ignored)) {
        return false;  // too large to be one
    }
    const PollEntry whole = {PollEntry::Kind::kArray, declaration.first.type,
                             array.section(QLatin1Char(':'), 1), declaration.text,
                             declaration.count()};
    *advice = {QStringLiteral("declare %1 in the project: %2 of its elements are polled one by one")
                   .arg(declaration.text, QString::number(elements.size())),
               costOf(elements), whole.cost()};
    return true;
}

PollAdvice combinationOf(const QVector<PollEntry>& tags) {
    const TagType* type = tags.first().type;
    const PollEntry array = {PollEntry::Kind::kArray, type, QLatin1String(kNewArray), QString(),
                             tags.size()};
    return {QStringLiteral("move %1 %2 tags into one array of the controller and declare it")
                .arg(QString::number(tags.size()), QLatin1String(type->name)),
            costOf(tags), array.cost()};
}

bool isString(const QVector<PollEntry>& entries) {
    return entries.first().type->kind == ValueKind::kString;
}

}  // namespace

QVector<PollPart> partsOf(const PollPlan& plan) {
    QVector<PollPart> parts;
    const Groups tags = groupsOf(plan, PollEntry::Kind::kTag);
    for (auto group = tags.begin(); group != tags.end(); ++group) {
        parts.append({QStringLiteral("%1 %2 tags").arg(QString::number(group->size()), group.key()),
                      costOf(*group)});
    }
    const Groups elements = groupsOf(plan, PollEntry::Kind::kElement);
    for (auto group = elements.begin(); group != elements.end(); ++group) {
        parts.append(
            {QStringLiteral("%1 elements of %2").arg(QString::number(group->size()), group.key()),
             costOf(*group)});
    }
    for (const PollEntry& entry : plan.entries()) {
        if (entry.kind == PollEntry::Kind::kArray) {
            parts.append({entry.label, entry.cost()});
        }
    }
    std::stable_sort(parts.begin(), parts.end(), [](const PollPart& one, const PollPart& other) {
        return one.cost.ms(1) > other.cost.ms(1);
    });
    return parts;
}

QVector<PollAdvice> adviceFor(const PollPlan& plan, double readMs) {
    QVector<PollAdvice> all;
    const Groups elements = groupsOf(plan, PollEntry::Kind::kElement);
    for (auto group = elements.begin(); group != elements.end(); ++group) {
        PollAdvice advice;
        if (!isString(*group) && declarationFor(group.key(), *group, &advice)) {
            all.append(advice);
        }
    }
    const Groups tags = groupsOf(plan, PollEntry::Kind::kTag);
    for (auto group = tags.begin(); group != tags.end(); ++group) {
        if (!isString(*group)) {
            all.append(combinationOf(*group));
        }
    }
    QVector<PollAdvice> useful;
    for (const PollAdvice& advice : all) {
        if (advice.gainMs(readMs) > 0) {
            useful.append(advice);
        }
    }
    std::stable_sort(useful.begin(), useful.end(),
                     [readMs](const PollAdvice& one, const PollAdvice& other) {
                         return one.gainMs(readMs) > other.gainMs(readMs);
                     });
    return useful;
}

PollCost costAfter(const PollPlan& plan, const QVector<PollAdvice>& advice) {
    PollCost cost = plan.cost();
    for (const PollAdvice& one : advice) {
        cost.entries += one.after.entries - one.before.entries;
        cost.requests += one.after.requests - one.before.requests;
        cost.listBytes += one.after.listBytes - one.before.listBytes;
    }
    return cost;
}
