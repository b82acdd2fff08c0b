#include "apps/micro800/serve/feed_plan.h"

#include "apps/micro800/polling/poll_plan.h"

namespace {

bool fits(const QVector<ListedAddress>& listed, const QVector<ListedAddress>& declared) {
    return PollPlan(listed, declared).fits();
}

/// The most addresses from `first` on that fit one list, at least one.
int mostFrom(const QVector<ListedAddress>& listed, int first,
             const QVector<ListedAddress>& declared) {
    int fitting = 1;
    int tooMany = listed.size() - first + 1;
    while (tooMany - fitting > 1) {
        const int middle = fitting + (tooMany - fitting) / 2;
        (fits(listed.mid(first, middle), declared) ? fitting : tooMany) = middle;
    }
    return fitting;
}

}  // namespace

QVector<int> spreadOverDrivers(const QVector<TagAddress>& addresses,
                               const QVector<ListedAddress>& declared) {
    QVector<ListedAddress> listed;
    for (const TagAddress& address : addresses) {
        listed.append({address.text, QString(), address, {}});
    }
    QVector<int> counts;
    for (int first = 0; first < listed.size(); first += counts.last()) {
        counts.append(mostFrom(listed, first, declared));
    }
    return counts;
}
