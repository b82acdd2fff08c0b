#include "apps/micro800/serve/live/tag_history.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

/// A value that stays gets a sample at least so often.
const qint64 kLongestRunMs = 60 * 1000;
const double kNoValue = std::numeric_limits<double>::quiet_NaN();

bool isSame(double one, double other) {
    return one == other || (std::isnan(one) && std::isnan(other));
}

/// The least and the greatest of samples without a gap, in the order of time.
void appendExtremes(const QVector<Sample>& samples, int begin, int end, QVector<Sample>* kept) {
    const auto less = [](const Sample& one, const Sample& other) {
        return one.value < other.value;
    };
    const auto ends = std::minmax_element(samples.begin() + begin, samples.begin() + end, less);
    const Sample* first = std::min(ends.first, ends.second);
    const Sample* second = std::max(ends.first, ends.second);
    kept->append(*first);
    if (first != second) {
        kept->append(*second);
    }
}

}  // namespace

QVector<Sample> fewer(const QVector<Sample>& samples, int points) {
    if (samples.size() <= points) {
        return samples;
    }
    const qint64 start = samples.first().time;
    const qint64 length = std::max<qint64>(samples.last().time - start, 1);
    const qint64 stretches = std::max(points / 2, 1);
    const auto stretchOf = [=](const Sample& sample) {
        return std::min((sample.time - start) * stretches / length, stretches - 1);
    };
    QVector<Sample> kept;
    int begin = 0;
    while (begin < samples.size()) {
        if (samples.at(begin).isGap()) {
            kept.append(samples.at(begin++));
            continue;
        }
        int end = begin + 1;
        while (end < samples.size() && !samples.at(end).isGap() &&
               stretchOf(samples.at(end)) == stretchOf(samples.at(begin))) {
            ++end;
        }
        appendExtremes(samples, begin, end, &kept);
        begin = end;
    }
    return kept;
}

QVector<Extremes> fewer(const QVector<Extremes>& stretches, int points) {
    const int together = (stretches.size() + points - 1) / std::max(points, 1);
    QVector<Extremes> kept;
    int inLast = 0;
    for (const Extremes& one : stretches) {
        if (inLast == 0 || inLast >= together || one.isGap() || kept.last().isGap()) {
            kept.append(one);
            inLast = 0;
        } else {
            kept.last().least = std::min(kept.last().least, one.least);
            kept.last().greatest = std::max(kept.last().greatest, one.greatest);
        }
        ++inLast;
    }
    return kept;
}

TagHistory::Kept TagHistory::keptOf(const Sample& sample) const {
    Kept kept = {static_cast<quint32>(sample.time - base), {0, 0}};
    std::memcpy(kept.half, &sample.value, sizeof sample.value);
    return kept;
}

Sample TagHistory::sampleOf(const Kept& kept) const {
    Sample sample = {base + kept.offset, 0};
    std::memcpy(&sample.value, kept.half, sizeof sample.value);
    return sample;
}

/// Whether a sample only says that the last value is still there.
bool TagHistory::prolongs(const Sample& sample) const {
    if (full.size() < 2) {
        return false;
    }
    const Sample last = sampleOf(full.back());
    const Sample before = sampleOf(full[full.size() - 2]);
    return isSame(last.value, sample.value) && isSame(before.value, sample.value) &&
           sample.time - before.time < kLongestRunMs;
}

void TagHistory::append(const Sample& sample) {
    if (base < 0) {
        base = sample.time;
    }
    if (prolongs(sample)) {
        full.back() = keptOf(sample);
    } else {
        full.push_back(keptOf(sample));
    }
    thinOut(sample.time);
}

void TagHistory::add(qint64 time, double value) {
    if (!std::isfinite(value)) {
        addGap(time);
        return;
    }
    append({time, value});
}

void TagHistory::addGap(qint64 time) {
    // One mark a gap: it lasts until the next value.
    if (full.empty() ? old.empty() : !sampleOf(full.back()).isGap()) {
        append({time, kNoValue});
    }
    thinOut(time);
}

void TagHistory::thinOut(qint64 now) {
    // By number as well as by time: samples that come faster than was said do not take more memory.
    const auto most = static_cast<size_t>(limits.fullRateMs / limits.intervalMs + 1);
    while (full.size() > 1 &&
           (full.size() > most || sampleOf(full.front()).time < now - limits.fullRateMs)) {
        addToThinned(sampleOf(full.front()));
        full.pop_front();
    }
    while (!old.empty() && base + old.front().step * limits.stepMs < now - limits.thinnedMs) {
        old.pop_front();
    }
    // The base moves along, or the offsets would come to an end after seven weeks.
    if (!full.empty() && now - base > 2 * limits.thinnedMs + 2 * limits.fullRateMs) {
        const qint64 steps = (now - limits.thinnedMs - limits.fullRateMs - base) / limits.stepMs;
        for (Kept& kept : full) {
            const qint64 moved = kept.offset - steps * limits.stepMs;
            kept.offset = static_cast<quint32>(std::max<qint64>(moved, 0));
        }
        for (KeptExtremes& extremes : old) {
            extremes.step -= static_cast<quint32>(steps);
        }
        base += steps * limits.stepMs;
    }
}

/// A stretch with a gap in it is a gap after its values.
void TagHistory::addToThinned(const Sample& sample) {
    const auto step = static_cast<quint32>((sample.time - base) / limits.stepMs);
    const bool isSameStep = !old.empty() && old.back().step == step;
    if (isSameStep && std::isnan(old.back().least) == sample.isGap()) {
        KeptExtremes& extremes = old.back();
        extremes.least = std::min(extremes.least, sample.value);
        extremes.greatest = std::max(extremes.greatest, sample.value);
        return;
    }
    // At most two of one stretch, so that a tag that comes and goes takes no more memory.
    const bool isFull = isSameStep && old.size() > 1 && old[old.size() - 2].step == step;
    if (!isFull) {
        old.push_back({step, sample.value, sample.value});
    } else if (sample.isGap()) {
        std::swap(old[old.size() - 2], old.back());
    } else {
        std::swap(old[old.size() - 2], old.back());
        old.back().least = std::min(old.back().least, sample.value);
        old.back().greatest = std::max(old.back().greatest, sample.value);
    }
}

QVector<Sample> TagHistory::samples(qint64 from, qint64 to) const {
    const auto isBefore = [this](const Kept& kept, qint64 time) {
        return sampleOf(kept).time < time;
    };
    const auto isBehind = [this](qint64 time, const Kept& kept) {
        return time < sampleOf(kept).time;
    };
    auto begin = std::lower_bound(full.begin(), full.end(), from, isBefore);
    auto end = std::upper_bound(full.begin(), full.end(), to, isBehind);
    if (begin != full.begin()) {
        --begin;
    }
    if (end != full.end()) {
        ++end;
    }
    QVector<Sample> found;
    for (; begin < end; ++begin) {
        found.append(sampleOf(*begin));
    }
    return found;
}

QVector<Extremes> TagHistory::thinned(qint64 from, qint64 to) const {
    QVector<Extremes> found;
    for (const KeptExtremes& kept : old) {
        const qint64 time = base + kept.step * limits.stepMs;
        if (time + limits.stepMs > from && time <= to) {
            found.append({time, kept.least, kept.greatest});
        }
    }
    return found;
}

qint64 TagHistory::bytes() const {
    return static_cast<qint64>(full.size() * sizeof(Kept) + old.size() * sizeof(KeptExtremes));
}

qint64 TagHistory::mostBytes(const HistoryLimits& limits) {
    const qint64 samples = limits.fullRateMs / limits.intervalMs + 2;
    const qint64 stretches = (limits.thinnedMs - limits.fullRateMs) / limits.stepMs + 2;
    return samples * static_cast<qint64>(sizeof(Kept)) +
           2 * stretches * static_cast<qint64>(sizeof(KeptExtremes));
}
