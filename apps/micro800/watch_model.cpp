#include "apps/micro800/watch_model.h"

#include <QSet>
#include <algorithm>

#include "apps/micro800/value_format.h"

namespace {

const qint64 kRateWindowMs = 3000;
const qint64 kShortestRateMs = 250;

/// The driver's list is one line: code, tab and transaction id, then a tab and a name, a tab and
/// a count for each entry, and a line feed.
const int kSessionLine = 4096;
const int kSessionFrame = 2 + 1 + 4 + 1;
const int kSessionEntry = 1 + 1 + 1;  // a count of one digit, the least

}  // namespace

void RateMeter::add(qint64 now) {
    if (first_ < 0)
        first_ = now;
    while (!times_.empty() && times_.front() <= now - kRateWindowMs)
        times_.pop_front();
    times_.push_back(now);
}

double RateMeter::perSecond(qint64 now) const {
    if (first_ < 0)
        return 0;
    const auto inWindow = std::count_if(times_.begin(), times_.end(),
                                        [now](qint64 time) { return time > now - kRateWindowMs; });
    const qint64 span = std::max(std::min(now - first_, kRateWindowMs), kShortestRateMs);
    return static_cast<double>(inWindow) * 1000.0 / static_cast<double>(span);
}

QString WatchedTag::text() const {
    return valueText(*address.type, bytes, 1);
}

WatchModel::WatchModel(const QVector<TagAddress>& addresses,
                       const QVector<CommunicatorCommand>& commands) {
    for (int i = 0; i < addresses.size(); ++i) {
        WatchedTag tag;
        tag.address = addresses.at(i);
        tag.command = commands.at(i);
        tags_.append(tag);
    }
}

WatchEvent WatchModel::take(int index, const DriverResult& result, qint64 now) {
    WatchedTag& tag = tags_[index];
    tag.last = result;
    if (!result.ok) {
        ++failedReads_;
        lastError_ = result.error;
        const bool isNew = tag.error != result.error;
        tag.error = result.error;
        return isNew ? WatchEvent::kError : WatchEvent::kNothing;
    }
    const bool cached = tag.fromCache();
    ++(cached ? cacheReads_ : controllerReads_);
    (cached ? cacheRate_ : controllerRate_).add(now);

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
        ++changes_;
    }
    return isFirst || isChange || isRecovery ? WatchEvent::kValue : WatchEvent::kNothing;
}

bool WatchModel::allGood() const {
    return std::all_of(tags_.begin(), tags_.end(),
                       [](const WatchedTag& tag) { return tag.isGood(); });
}

QString WatchModel::summary(qint64 now) const {
    const double seconds = std::max(static_cast<double>(now) / 1000.0, 0.001);
    const auto rate = [seconds](int count) { return QString::number(count / seconds, 'f', 1); };
    return QStringLiteral(
               "%1 s: %2 changes, %3 failed reads; reads per second: %4 from the cache, %5 from "
               "the controller")
        .arg(QString::number(seconds, 'f', 1), QString::number(changes_),
             QString::number(failedReads_), rate(cacheReads_), rate(controllerReads_));
}

bool sessionListFits(const QVector<TagAddress>& addresses, bool arraysMayBeDeclared) {
    QSet<QString> entries;
    for (const TagAddress& address : addresses) {
        const bool byArray = address.isElement && arraysMayBeDeclared;
        const QString name = byArray ? address.name.section(QLatin1Char('['), 0, 0) : address.name;
        entries.insert(name.toUpper());
    }
    qint64 length = kSessionFrame;
    for (const QString& entry : entries)
        length += entry.size() + kSessionEntry;
    return length < kSessionLine;
}
