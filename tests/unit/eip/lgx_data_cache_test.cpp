#include "eip/lgx_data_cache.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <thread>

namespace {

TEST(LgxDataCacheKey, IsNameAndCount) {
    EXPECT_EQ(QString("Motor_Speed_1"), LgxDataCache::keyFrom("Motor_Speed", 1));
    EXPECT_EQ(QString("Motor_Speed_10"), LgxDataCache::keyFrom("Motor_Speed", 10));
    EXPECT_EQ(QString("_0"), LgxDataCache::keyFrom("", 0));
    EXPECT_EQ(QString("_0"), LgxDataCache::keyFrom(QString(), 0));
    EXPECT_EQ(QString("A_-5"), LgxDataCache::keyFrom("A", -5));
    EXPECT_EQ(QString("A_-2147483648"), LgxDataCache::keyFrom("A", INT_MIN));
    EXPECT_EQ(QString("A_2147483647"), LgxDataCache::keyFrom("A", INT_MAX));
    EXPECT_EQ(QString("GRID[2,3]_4"), LgxDataCache::keyFrom("GRID[2,3]", 4));
}

TEST(LgxDataCacheKey, TakesTheNameAsItStands) {
    EXPECT_EQ(QString("A%2%1_7"), LgxDataCache::keyFrom("A%2%1", 7));
}

TEST(LgxDataCache, HasWhatWentIn) {
    LgxDataCache cache;
    cache.insert("A_1", QByteArray::fromHex("2a000000"));
    EXPECT_TRUE(cache.hasKey("A_1"));
    EXPECT_FALSE(cache.hasKey("A_2"));
    EXPECT_FALSE(cache.hasKey("a_1"));
    QByteArray out("old");
    EXPECT_TRUE(cache.value("A_1", out));
    EXPECT_EQ(QByteArray::fromHex("2a000000"), out);
}

TEST(LgxDataCache, LeavesTheResultOnAMiss) {
    LgxDataCache cache;
    QByteArray out("as it was");
    EXPECT_FALSE(cache.value("A_1", out));
    EXPECT_EQ(QByteArray("as it was"), out);
    EXPECT_FALSE(cache.value("A_1", out, 0));
    EXPECT_EQ(QByteArray("as it was"), out);
}

TEST(LgxDataCache, InsertReplaces) {
    LgxDataCache cache;
    cache.insert("A_1", QByteArray("first"));
    cache.insert("A_1", QByteArray("2nd"));
    QByteArray out;
    EXPECT_TRUE(cache.value("A_1", out));
    EXPECT_EQ(QByteArray("2nd"), out);
}

TEST(LgxDataCache, WithholdsAnEntryUntilItsNextInsert) {
    LgxDataCache cache;
    cache.insert("A_1", QByteArray("old"));
    cache.insert("B_1", QByteArray("other"));
    cache.withhold("A_1");
    QByteArray out("untouched");
    EXPECT_FALSE(cache.value("A_1", out));
    EXPECT_FALSE(cache.value("A_1", out, 0));
    EXPECT_EQ(QByteArray("untouched"), out);
    EXPECT_TRUE(cache.hasKey("A_1"));
    EXPECT_TRUE(cache.value("B_1", out));
    EXPECT_EQ(QByteArray("other"), out);
    cache.insert("A_1", QByteArray("new"));
    EXPECT_TRUE(cache.value("A_1", out));
    EXPECT_EQ(QByteArray("new"), out);
}

TEST(LgxDataCache, WithholdingWhatIsNotThereMakesNoEntry) {
    LgxDataCache cache;
    cache.withhold("A_1");
    EXPECT_FALSE(cache.hasKey("A_1"));
}

TEST(LgxDataCache, WithholdsAllEntriesUntilTheirNextInsert) {
    LgxDataCache cache;
    cache.insert("A_1", QByteArray("a"));
    cache.insert("B_1", QByteArray("b"));
    cache.withholdAll();
    cache.insert("B_1", QByteArray("b2"));
    QByteArray out;
    EXPECT_FALSE(cache.value("A_1", out));
    EXPECT_TRUE(cache.hasKey("A_1"));
    EXPECT_TRUE(cache.value("B_1", out));
    EXPECT_EQ(QByteArray("b2"), out);
    cache.withholdAll();
    EXPECT_FALSE(cache.value("B_1", out));
}

TEST(LgxDataCache, KeepsAnEmptyValue) {
    LgxDataCache cache;
    cache.insert("A_1", QByteArray());
    QByteArray out("old");
    EXPECT_TRUE(cache.value("A_1", out));
    EXPECT_TRUE(out.isEmpty());
}

TEST(LgxDataCache, SlicesWithinTheValueOnly) {
    LgxDataCache cache;
    cache.insert("A_8", QByteArray("01234567"));
    const struct {
        int offset;
        int length;
        const char* expected;  // null for a miss
    } rows[] = {{0, 8, "01234567"},
                {0, 4, "0123"},
                {4, 4, "4567"},
                {7, 1, "7"},
                {8, 0, ""},
                {0, 0, ""},
                {9, 0, nullptr},
                {8, 1, nullptr},
                {5, 4, nullptr},
                {0, 9, nullptr},
                {-1, 4, nullptr},
                {-1, 0, nullptr},
                {INT_MAX, 4, nullptr},
                {INT_MIN, 4, nullptr},
                {INT_MAX, 0, nullptr}};
    for (const auto& row : rows) {
        const QByteArray before(row.length, '#');
        QByteArray out = before;
        EXPECT_EQ(row.expected != nullptr, cache.value("A_8", out, row.offset))
            << row.offset << " " << row.length;
        EXPECT_EQ(row.expected ? QByteArray(row.expected) : before, out)
            << row.offset << " " << row.length;
        EXPECT_EQ(QByteArray(row.length, '#'), before) << "the caller's other copy changed";
    }
}

TEST(LgxDataCache, SharesNoStorage) {
    LgxDataCache cache;
    QByteArray in("value");
    QString key("A_1");
    cache.insert(key, in);
    // Written to without Qt's knowledge: a shared block would show it in the cache.
    const_cast<char*>(in.constData())[0] = '#';
    const_cast<QChar*>(key.constData())[0] = QChar('#');
    QByteArray first;
    QByteArray second;
    ASSERT_TRUE(cache.value("A_1", first));
    ASSERT_TRUE(cache.value("A_1", second));
    EXPECT_EQ(QByteArray("value"), first);
    EXPECT_NE(in.constData(), first.constData());
    EXPECT_NE(first.constData(), second.constData());
    const_cast<char*>(first.constData())[0] = '#';
    QByteArray third;
    ASSERT_TRUE(cache.value("A_1", third));
    EXPECT_EQ(QByteArray("value"), third);
}

TEST(LgxDataCache, TakesTheMemoryThatTheResultHas) {
    LgxDataCache cache;
    cache.insert("A_1", "abc");
    QByteArray out(3, 0);
    const char* const memory = out.constData();
    ASSERT_TRUE(cache.value("A_1", out));
    EXPECT_EQ("abc", out);
    EXPECT_EQ(memory, out.constData());
}

TEST(LgxDataCache, LeavesACopyOfTheResultAlone) {
    LgxDataCache cache;
    cache.insert("A_1", "abc");
    QByteArray out("xyz");
    const QByteArray copy = out;
    ASSERT_TRUE(cache.value("A_1", out));
    EXPECT_EQ("abc", out);
    EXPECT_EQ("xyz", copy);
}

TEST(LgxDataCache, ClearEmpties) {
    LgxDataCache cache;
    cache.clear();
    cache.insert("A_1", QByteArray("a"));
    cache.insert("B_1", QByteArray("b"));
    cache.clear();
    EXPECT_FALSE(cache.hasKey("A_1"));
    EXPECT_FALSE(cache.hasKey("B_1"));
    cache.clear();
    cache.insert("A_1", QByteArray("c"));
    EXPECT_TRUE(cache.hasKey("A_1"));
}

TEST(LgxDataCache, ServesTwoThreads) {
    LgxDataCache cache;
    std::atomic<bool> stop(false);
    cache.insert("A_4", QByteArray(64, 'a'));
    std::thread writer([&] {
        for (char c = 'a'; !stop; c = c == 'z' ? 'a' : static_cast<char>(c + 1)) {
            const QString key = LgxDataCache::keyFrom("A", 4);
            cache.insert(key, QByteArray(64, c));
            cache.insert("B_1", QByteArray(1, c));
            if (c == 'm') {
                cache.clear();
            }
        }
    });
    int hits = 0;
    for (int i = 0; i < 5000 || (hits == 0 && i < 5000000); ++i) {
        QByteArray whole;
        QByteArray slice(16, '#');
        if (cache.value("A_4", whole)) {
            ++hits;
            ASSERT_EQ(QByteArray(64, whole.at(0)), whole);  // one write's bytes, never a mixture
        }
        if (cache.value("A_4", slice, 48)) {
            ASSERT_EQ(QByteArray(16, slice.at(0)), slice);
        }
        cache.hasKey("B_1");
    }
    stop = true;
    writer.join();
    EXPECT_GT(hits, 0);
}

}  // namespace
