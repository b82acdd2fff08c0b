#ifndef APPS_MICRO800_SERVE_TAG_HISTORY_H
#define APPS_MICRO800_SERVE_TAG_HISTORY_H

#include <QVector>
#include <QtGlobal>
#include <cmath>
#include <deque>

/// A value and when it was read, in milliseconds since 1970. Not-a-number marks a gap: from here on
/// there was no good value.
struct Sample {
    qint64 time;
    double value;

    bool isGap() const { return std::isnan(value); }
};

/// The least and the greatest value of a stretch of time that begins with `time`; both
/// not-a-number for a gap.
struct Extremes {
    qint64 time;
    double least;
    double greatest;

    bool isGap() const { return std::isnan(least); }
};

/// How much a history keeps.
struct HistoryLimits {
    qint64 fullRateMs = 3600 * 1000;     ///< so long every sample is kept
    qint64 thinnedMs = 8 * 3600 * 1000;  ///< so long, counted from now, the extremes are kept
    qint64 stepMs = 10 * 1000;           ///< a stretch of the thinned part
    qint64 intervalMs = 100;             ///< samples come no faster
};

/// What one tag was, for as long as the limits say. It knows no clock: time comes with the samples
/// and never goes backwards. One thread at a time.
///
/// A value that stays takes two samples a minute, the first and the last of its time. Older than an
/// hour, samples become the extremes of ten seconds each. A gap is kept in both parts.
class TagHistory {
 public:
    explicit TagHistory(const HistoryLimits& limits) : limits(limits) {}

    /// A good value, read at `time`. An infinity or not-a-number counts as a gap: no chart shows
    /// it.
    void add(qint64 time, double value);
    /// There was no good value at `time`.
    void addGap(qint64 time);

    /// The samples from `from` to `to`, and the one before and after them, so that a line can be
    /// drawn up to both ends.
    QVector<Sample> samples(qint64 from, qint64 to) const;
    /// The stretches that have to do with that time, all of them before the samples.
    QVector<Extremes> thinned(qint64 from, qint64 to) const;

    /// Memory in use, about, and the most that one history can come to.
    qint64 bytes() const;
    static qint64 mostBytes(const HistoryLimits& limits);

 private:
    struct Kept {
        quint32 offset;   ///< milliseconds since `base`
        quint32 half[2];  ///< of the value: with a double the record would grow by a third
    };
    struct KeptExtremes {
        quint32 step;
        double least;
        double greatest;
    };
    Kept keptOf(const Sample& sample) const;
    Sample sampleOf(const Kept& kept) const;
    bool prolongs(const Sample& sample) const;
    void append(const Sample& sample);
    void thinOut(qint64 now);
    void addToThinned(const Sample& sample);

    const HistoryLimits limits;
    qint64 base = -1;
    std::deque<Kept> full;
    std::deque<KeptExtremes> old;
};

/// About so many samples (2 at least) in place of more: of each stretch of time the least and the
/// greatest, and every gap.
QVector<Sample> fewer(const QVector<Sample>& samples, int points);
/// The same for stretches: several become one, but for gaps.
QVector<Extremes> fewer(const QVector<Extremes>& stretches, int points);

#endif
