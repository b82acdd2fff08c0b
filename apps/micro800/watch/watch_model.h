#ifndef APPS_MICRO800_WATCH_WATCH_MODEL_H
#define APPS_MICRO800_WATCH_WATCH_MODEL_H

#include <QString>
#include <QVector>
#include <deque>

#include "apps/micro800/format/address.h"
#include "apps/micro800/format/value_format.h"
#include "apps/micro800/plugin/driver_session.h"

/// How many happen in a second, over the last few. Times are milliseconds of any one clock.
class RateMeter {
 public:
    void add(qint64 now);
    double perSecond(qint64 now) const;

 private:
    std::deque<qint64> times;
    qint64 first = -1;
};

/// One watched tag and what its reads have shown.
struct WatchedTag {
    TagAddress address;
    CommunicatorCommand command;
    DriverResult last;      ///< the last read
    QByteArray bytes;       ///< the last good value
    QString error;          ///< empty while the last read was good
    qint64 readAt = -1;     ///< of the last good read; -1 before it
    qint64 changedAt = -1;  ///< when the value was first seen or last seen to change
    int changes = 0;        ///< changes seen, not counting the first value

    bool hasValue() const { return readAt >= 0; }
    bool isGood() const { return hasValue() && error.isEmpty(); }
    bool fromCache() const { return last.microseconds < kCacheLimitMicroseconds; }
    QString text(NumberBase base = NumberBase::kDecimal) const;
};

/// What a read brought that is worth telling.
enum class WatchEvent {
    kNothing,
    kValue,  ///< the first value, another value, or a value after a failure
    kError,  ///< the first failure, or one with another text
};

/// All watched tags and what they add up to. Knows no clock: the caller gives the time, in
/// milliseconds since the beginning.
class WatchModel {
 public:
    WatchModel(const QVector<TagAddress>& addresses, const QVector<CommunicatorCommand>& commands);

    int size() const { return tags.size(); }
    const WatchedTag& tag(int index) const { return tags.at(index); }

    WatchEvent take(int index, const DriverResult& result, qint64 now);

    /// Whether the last read of every tag was good.
    bool allGood() const;
    /// The text of the last failure; empty while there was none.
    QString lastError() const { return lastFailure; }
    double cacheReadsPerSecond(qint64 now) const { return cacheRate.perSecond(now); }
    double controllerReadsPerSecond(qint64 now) const { return controllerRate.perSecond(now); }
    int changes() const { return changeCount; }
    int failedReads() const { return failureCount; }

    /// One line that sums up the whole time.
    QString summary(qint64 now) const;

 private:
    QVector<WatchedTag> tags;
    RateMeter cacheRate;
    RateMeter controllerRate;
    QString lastFailure;
    int cacheReads = 0;
    int controllerReads = 0;
    int failureCount = 0;
    int changeCount = 0;
};

#endif
