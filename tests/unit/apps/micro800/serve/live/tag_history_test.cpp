#include "apps/micro800/serve/live/tag_history.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

const qint64 kStart = 1700000000000;
const qint64 kMinute = 60000;
const qint64 kHour = 60 * kMinute;
const qint64 kEver = std::numeric_limits<qint64>::max();
const double kGap = std::numeric_limits<double>::quiet_NaN();

struct TagHistoryTest : testing::Test {
    /// "10=1 20=1.5 30=-", times since the start, a dash for a gap.
    static std::string text(const QVector<Sample>& samples) {
        std::string line;
        for (const Sample& sample : samples) {
            line += (line.empty() ? "" : " ") + std::to_string(sample.time - kStart) + "=" +
                    (sample.isGap() ? "-" : std::to_string(static_cast<int>(sample.value)));
        }
        return line;
    }
    std::string all() const { return text(history.samples(0, kEver)); }

    HistoryLimits limits;
    TagHistory history{limits};
};

TEST_F(TagHistoryTest, KeepsEveryChange) {
    for (int i = 0; i < 5; ++i) {
        history.add(kStart + 100 * i, i % 2);
    }
    EXPECT_EQ(all(), "0=0 100=1 200=0 300=1 400=0");
}

TEST_F(TagHistoryTest, AValueThatStaysIsTwoSamplesAMinute) {
    for (int i = 0; i <= 700; ++i) {
        history.add(kStart + 100 * i, 7);
    }
    EXPECT_EQ(all(), "0=7 59900=7 70000=7");
    history.add(kStart + 70100, 8);
    EXPECT_EQ(all(), "0=7 59900=7 70000=7 70100=8");
}

TEST_F(TagHistoryTest, AGapIsOneMark) {
    history.add(kStart, 1);
    history.addGap(kStart + 100);
    history.addGap(kStart + 200);
    history.add(kStart + 300, 2);
    history.add(kStart + 400, std::numeric_limits<double>::infinity());
    history.add(kStart + 500, 3);
    EXPECT_EQ(all(), "0=1 100=- 300=2 400=- 500=3");
}

TEST_F(TagHistoryTest, GivesWhatALineNeedsUpToBothEnds) {
    for (int i = 0; i < 10; ++i) {
        history.add(kStart + 100 * i, i);
    }
    EXPECT_EQ(text(history.samples(kStart + 250, kStart + 450)), "200=2 300=3 400=4 500=5");
    EXPECT_EQ(text(history.samples(kStart + 5000, kStart + 6000)), "900=9");
    EXPECT_EQ(text(history.samples(0, kStart - 1)), "0=0");
    EXPECT_EQ(text(history.samples(kStart + 450, kStart + 250)), "");
}

TEST_F(TagHistoryTest, OlderThanAnHourItIsExtremes) {
    // A saw tooth of ten seconds between 0 and 99, for an hour and a minute.
    const qint64 end = kHour + kMinute;
    for (qint64 time = 0; time <= end; time += 100) {
        history.add(kStart + time, static_cast<double>(time / 100 % 100));
    }
    const QVector<Sample> samples = history.samples(0, kEver);
    EXPECT_EQ(samples.first().time, kStart + kMinute);
    EXPECT_EQ(samples.size(), kHour / 100 + 1);
    const QVector<Extremes> thinned = history.thinned(0, kEver);
    ASSERT_EQ(thinned.size(), 6);
    for (int i = 0; i < thinned.size(); ++i) {
        EXPECT_EQ(thinned.at(i).time, kStart + 10000 * i);
        EXPECT_EQ(thinned.at(i).least, 0);
        EXPECT_EQ(thinned.at(i).greatest, 99);
    }
    EXPECT_EQ(history.thinned(kStart + 25000, kStart + 35000).size(), 2);
}

TEST_F(TagHistoryTest, AGapStaysOneWhenItIsOld) {
    history.add(kStart, 1);
    history.addGap(kStart + 30000);
    history.add(kStart + 90000, 2);
    history.add(kStart + 2 * kHour, 3);
    const QVector<Extremes> thinned = history.thinned(0, kEver);
    ASSERT_EQ(thinned.size(), 3);
    EXPECT_EQ(thinned.at(0).greatest, 1);
    EXPECT_TRUE(thinned.at(1).isGap());
    EXPECT_EQ(thinned.at(1).time, kStart + 30000);
    EXPECT_EQ(thinned.at(2).least, 2);
    EXPECT_EQ(all(), "7200000=3");
}

TEST_F(TagHistoryTest, AStretchWithManyGapsIsTwo) {
    for (int i = 0; i < 40; ++i) {
        history.add(kStart + 200 * i, i);
        history.addGap(kStart + 200 * i + 100);
    }
    history.add(kStart + 2 * kHour, 3);
    const QVector<Extremes> thinned = history.thinned(0, kEver);
    ASSERT_EQ(thinned.size(), 2);
    EXPECT_EQ(thinned.at(0).least, 0);
    EXPECT_EQ(thinned.at(0).greatest, 39);
    EXPECT_TRUE(thinned.at(1).isGap());
}

TEST_F(TagHistoryTest, StaysWithinItsBound) {
    // The worst there is: another value each time, gaps in between, and pauses.
    limits.fullRateMs = kHour / 10;
    limits.thinnedMs = kHour;
    TagHistory small(limits);
    qint64 most = 0;
    qint64 time = kStart;
    for (int i = 0; i < 400000; ++i) {
        time += i % 10000 == 0 ? 10 * kMinute : 50;  // faster than was said
        if (i % 7 == 0) {
            small.addGap(time);
        } else {
            small.add(time, i);
        }
        most = std::max(most, small.bytes());
    }
    EXPECT_LE(most, TagHistory::mostBytes(limits));
    EXPECT_GT(most, TagHistory::mostBytes(limits) / 4);
    EXPECT_EQ(small.samples(time - 1000, time).last().time, time);
    EXPECT_GE(small.thinned(0, kEver).first().time, time - kHour - limits.stepMs);
}

TEST_F(TagHistoryTest, AGapThatLastsForWeeksComesToItsEnd) {
    history.add(kStart, 1);
    history.addGap(kStart + 100);
    for (int hour = 1; hour < 24 * 60; ++hour) {
        history.addGap(kStart + hour * kHour);
    }
    const qint64 end = kStart + 24 * 60 * kHour;
    history.add(end, 2);
    const QVector<Sample> samples = history.samples(end - kHour, end);
    ASSERT_EQ(samples.last().time, end);
    EXPECT_EQ(samples.last().value, 2);
    EXPECT_EQ(history.thinned(0, end - 9 * kHour).size(), 0);
}

TEST(FewerSamples, KeepsExtremesAndGaps) {
    QVector<Sample> samples;
    for (int i = 0; i < 1000; ++i) {
        samples.append({kStart + i, i == 321 ? -50.0 : i == 654 ? 5000.0 : i});
    }
    samples.insert(500, {kStart + 499, kGap});
    const QVector<Sample> kept = fewer(samples, 20);
    EXPECT_LE(kept.size(), 24);
    const auto has = [&kept](double value) {
        return std::any_of(kept.begin(), kept.end(),
                           [value](const Sample& sample) { return sample.value == value; });
    };
    EXPECT_TRUE(has(-50));
    EXPECT_TRUE(has(5000));
    EXPECT_TRUE(
        std::any_of(kept.begin(), kept.end(), [](const Sample& one) { return one.isGap(); }));
    EXPECT_TRUE(std::is_sorted(kept.begin(), kept.end(),
                               [](const Sample& a, const Sample& b) { return a.time < b.time; }));
    EXPECT_EQ(fewer(samples, 2000).size(), samples.size());
}

TEST(FewerStretches, BecomeOneButForGaps) {
    const QVector<Extremes> stretches = {{0, 1, 2},  {10, 0, 1}, {20, kGap, kGap},
                                         {30, 5, 6}, {40, 4, 9}, {50, 7, 7}};
    const QVector<Extremes> kept = fewer(stretches, 3);
    ASSERT_EQ(kept.size(), 4);
    EXPECT_EQ(kept.at(0).least, 0);
    EXPECT_EQ(kept.at(0).greatest, 2);
    EXPECT_TRUE(kept.at(1).isGap());
    EXPECT_EQ(kept.at(2).time, 30);
    EXPECT_EQ(kept.at(2).greatest, 9);
    EXPECT_EQ(kept.at(3).time, 50);
}

}  // namespace
