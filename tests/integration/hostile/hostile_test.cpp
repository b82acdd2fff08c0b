// For every answer of a controller, in any pieces: no crash, an answer or a documented failure in
// time, and never a value that was not sent for that tag.
//
// Every test plays all replies of one exchange. A reply that fails is named; to play it alone:
//   HOSTILE_CASE='status 5, words 1, whole' .../integration_hostile --gtest_filter='*ReadDint*'
// HOSTILE_EVERY=20 plays every twentieth only.

#include <gtest/gtest.h>

#include <QPluginLoader>
#include <QSet>
#include <algorithm>
#include <atomic>
#include <iostream>
#include <mutex>
#include <thread>
#include <vector>

#include "integration/hostile/hostile_rig.h"
#include "support/app_directory/app_directory.h"

namespace {

/// Drivers, each with a controller of its own, that share the cases of a test.
const int kRigs = 6;
/// Failures that are worth a line each.
const int kShown = 20;

std::string text(const QByteArray& bytes) {
    return bytes.toStdString();
}

std::string nameOf(const ::testing::TestParamInfo<Exchange>& info) {
    return text(info.param.name);
}

std::vector<Exchange> exchanges() {
    const QList<Exchange> all = allExchanges();
    return std::vector<Exchange>(all.begin(), all.end());
}

class HostileReplies : public ::testing::TestWithParam<Exchange> {
 protected:
    void SetUp() override {
        writeProjectDatabase(
            GetParam().declaration.isEmpty() ? QStringList() : QStringList(GetParam().declaration));
        // As a runtime takes the file.
        QPluginLoader loader(pluginFile());
        ASSERT_TRUE(loader.load()) << loader.errorString().toStdString();
        cases = casesOf(GetParam());
    }

    void playAll() {
        HostileRig rig(GetParam());
        for (int next = taken++; next < cases.size(); next = taken++) {
            const HostileCase& hostile = cases.at(next);
            const QByteArray problem = rig.play(hostile);
            const std::lock_guard<std::mutex> lock(mutex);
            goodOnes += rig.wasTaken() ? 1 : 0;
            if (rig.longestMs() > longestMs) {
                longestMs = rig.longestMs();
                longestName = hostile.name();
            }
            if (!problem.isEmpty()) {
                problems << hostile.name() + ": " + problem;
            }
        }
    }

    QList<HostileCase> cases;
    std::atomic<int> taken{0};
    std::mutex mutex;
    QList<QByteArray> problems;  ///< guarded by mutex, like those below
    int goodOnes = 0;
    int longestMs = 0;
    QByteArray longestName;
};

TEST_P(HostileReplies, AreRefusedOrTakenForWhatTheyAre) {
    ASSERT_FALSE(cases.isEmpty());
    std::vector<std::thread> threads;
    for (int i = 0; i < std::min(kRigs, cases.size()); ++i) {
        threads.emplace_back([this] { playAll(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::cout << cases.size() << " deliveries, " << goodOnes << " of them good; longest access "
              << longestMs << " ms: " << text(longestName) << std::endl;
    EXPECT_EQ(0, problems.size());
    for (const QByteArray& problem : problems.mid(0, kShown)) {
        ADD_FAILURE() << text(problem);
    }
}

INSTANTIATE_TEST_SUITE_P(To, HostileReplies, ::testing::ValuesIn(exchanges()), nameOf);

/// The table itself: the lengths in it agree, and what it calls good is good.
TEST(HostileTable, GoodRepliesAreGood) {
    for (const Exchange& exchange : allExchanges()) {
        const ReplyText reply = ReplyText::from(exchange.reply);
        const QByteArray request(100, '\x11');
        const QByteArray bytes = replyTo(request, reply.bytes, reply.echoes);
        EXPECT_EQ(bytes.size(), firstMessageSize(bytes)) << text(exchange.name);
        if (reply.hasField("dataLength")) {
            const ReplyField& length = reply.field("dataLength");
            EXPECT_EQ(bytes.size() - length.at - 2, int(numberAt(bytes, length.at, 2)))
                << text(exchange.name);
        }
        const Verdict verdict = verdictOf(exchange, request, bytes);
        EXPECT_EQ(exchange.kind != Exchange::kClose, verdict.isGood)
            << text(exchange.name) << text(verdict.reason);
    }
}

TEST(HostileTable, HasThousandsOfReplies) {
    int replies = 0;
    for (const Exchange& exchange : allExchanges()) {
        QSet<QByteArray> names;
        const QList<Variant> variants = variantsOf(exchange);
        for (const Variant& variant : variants) {
            names << variant.name;
        }
        EXPECT_EQ(variants.size(), names.size()) << text(exchange.name);
        replies += variants.size();
    }
    std::cout << replies << " replies" << std::endl;
    EXPECT_GE(replies, 3000);
}

}  // namespace
