#include "apps/micro800/watch/watch_model.h"

#include <algorithm>

namespace {

const qint64 kRateWindowMs = 3000;
const qint64 kShortestRateMs = 250;

}  // namespace

void RateMeter::add(qint64 now) {
    if (first < 0) {
        first = now;
    }
    while (!times.empty() && times.front() <= now - kRateWindowMs) {
        times.pop_front();
    }
    times.push_back(now);
}

double RateMeter::perSecond(qint64 now) const {
    if (first < 0) {
        return 0;
    }
    const auto inWindow = std::count_if(times.begin(), times.end(),
                                        [now](qint64 time) { return time > now - kRateWindowMs; });
    const qint64 span = std::max(std::min(now - first, kRateWindowMs), kShortestRateMs);
    return static_cast<double>(inWindow) * 1000.0 / static_cast<double>(span);
}

QString WatchedTag::text(NumberBase base) const {
    return valueText(*address.type, bytes, 1, base);
}

WatchModel::WatchModel(const QVector<TagAddress>& addresses,
                       const QVector<CommunicatorCommand>& commands) {
    for (int i = 0; i < addresses.size(); ++i) {
        WatchedTag tag;
        tag.address = addresses.at(i);
        tag.command = commands.at(i);
        tags.append(tag);
    }
}

WatchEvent WatchModel::take(int index, const DriverResult& result, qint64 now) {
    WatchedTag& tag = tags[index];
    tag.last = result;
    if (!result.ok) {
        ++failureCount;
        lastFailure = result.error;
        const bool isNew = tag.error != result.error;
        tag.error = result.error;
        return isNew ? WatchEvent::kError : WatchEvent::kNothing;
    }
    const bool cached = tag.fromCache();
    ++(cached ? cacheReads : controllerReads);
    (cached ? cacheRate : controllerRate).add(now);

    const bool isFirst = !tag.hasValue();
    const bool isChange = !isFirst && tag.bytes != result.bytes;
    const bool isRecovery = !tag.error.isEmpty();
    tag.error.clear();
    tag.readAt = now;
    if (isFirst || isChange) {
        tag.bytes = result.bytes;
        tag.changedAt = now;
    }
    if (isChange) {
        ++tag.changes;
        ++changeCount;
    }
    return isFirst || isChange || isRecovery ? WatchEvent::kValue : WatchEvent::kNothing;
}

bool WatchModel::allGood() const {
    return std::all_of(tags.begin(), tags.end(),
                       [](const WatchedTag& tag) { return tag.isGood(); });
}

QString WatchModel::summary(qint64 now) const {
    const double seconds = std::max(static_cast<double>(now) / 1000.0, 0.001);
    const auto rate = [seconds](int count) { return QString::number(count / seconds, 'f', 1); };
    return QStringLiteral(
               "%1 s: %2 changes, %3 failed reads; reads per second: %4 from the cache, %5 from "
               "the controller")
        .arg(QString::number(seconds, 'f', 1), QString::number(changeCount),
             QString::number(failureCount), rate(cacheReads), rate(controllerReads));
}
