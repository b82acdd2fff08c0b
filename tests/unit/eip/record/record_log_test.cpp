#include "eip/record/record_log.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

namespace {

const unsigned long kAtOnce = 0;
const unsigned long kLong = 20000;
const int64_t kHour = 3600 * 1000000LL;

class RecordLogWith : public ::testing::Test {
 protected:
    explicit RecordLogWith(int64_t pauseUs = 0) : log(RecordSettings(), pauseUs) {}

    void event(const std::string& text) { log.append(kRecordEvent, text.data(), text.size()); }

    /// The texts of the copy that is to be written, joined.
    std::string copied() const {
        std::string texts;
        size_t at = 0;
        RecordView record;
        while (nextRecord(job.records->data(), job.records->size(), &at, &record)) {
            texts.append(reinterpret_cast<const char*>(record.data), record.head.size);
        }
        return texts;
    }

    RecordLog log;
    RecordLog::Job job;
};

class RecordLogAtEase : public RecordLogWith {
 protected:
    RecordLogAtEase() : RecordLogWith(kHour) {}
};

TEST_F(RecordLogWith, NothingToWrite) {
    event("a");
    EXPECT_EQ(RecordLog::kIdle, log.next(kAtOnce, &job));
}

/// What is recorded after the failure is not in the copy, however late the writer comes.
TEST_F(RecordLogWith, TheFailureIsTheLastThing) {
    event("a");
    log.trigger("lost", "detail");
    event("b");
    ASSERT_EQ(RecordLog::kWrite, log.next(kAtOnce, &job));
    EXPECT_EQ("lost", job.why);
    EXPECT_EQ("detail", job.detail);
    EXPECT_EQ("a", copied());
    log.done();
    EXPECT_EQ(RecordLog::kIdle, log.next(kAtOnce, &job));
}

/// The copy that is being written stays as it is; the next failure waits for it.
TEST_F(RecordLogWith, ACopyHoldsUntilItIsWritten) {
    event("a");
    log.trigger("first", "");
    ASSERT_EQ(RecordLog::kWrite, log.next(kAtOnce, &job));
    event("b");
    log.trigger("second", "");
    log.trigger("third", "");
    EXPECT_EQ("a", copied());
    log.done();
    EXPECT_EQ(RecordLog::kIdle, log.next(kAtOnce, &job));
    event("c");
    ASSERT_EQ(RecordLog::kWrite, log.next(kAtOnce, &job));
    EXPECT_EQ("second", job.why);
    EXPECT_EQ("abc", copied());
}

/// Nobody records any more: the writer makes the copy itself.
TEST_F(RecordLogWith, ARecordingThatWaitsNeedsNoFurtherRecord) {
    event("a");
    log.triggerLater("dump");
    EXPECT_EQ(RecordLog::kIdle, log.next(kAtOnce, &job));
    ASSERT_EQ(RecordLog::kWrite, log.next(kAtOnce, &job));
    EXPECT_EQ("dump", job.why);
    EXPECT_EQ("a", copied());
}

TEST_F(RecordLogAtEase, TheSecondRecordingWaitsForThePause) {
    log.trigger("first", "");
    ASSERT_EQ(RecordLog::kWrite, log.next(kAtOnce, &job));
    log.done();
    event("a");
    log.trigger("second", "");
    event("b");
    EXPECT_EQ(RecordLog::kIdle, log.next(kAtOnce, &job));
    EXPECT_EQ(RecordLog::kIdle, log.next(kAtOnce, &job));
    // The end waits for nothing.
    log.end();
    ASSERT_EQ(RecordLog::kWrite, log.next(kLong, &job));
    EXPECT_EQ("second", job.why);
    EXPECT_EQ("ab", copied());
    log.done();
    EXPECT_EQ(RecordLog::kEnd, log.next(kLong, &job));
}

TEST_F(RecordLogAtEase, AtTheEndOnlyWhatIsNew) {
    event("a");
    log.trigger("lost", "");
    log.end();
    ASSERT_EQ(RecordLog::kWrite, log.next(kLong, &job));
    log.done();
    EXPECT_EQ(RecordLog::kEnd, log.next(kLong, &job));
}

TEST_F(RecordLogAtEase, TheEnd) {
    event("a");
    log.end();
    ASSERT_EQ(RecordLog::kWrite, log.next(kLong, &job));
    EXPECT_EQ("end", job.why);
    EXPECT_EQ("a", copied());
    log.done();
    EXPECT_EQ(RecordLog::kEnd, log.next(kLong, &job));
}

TEST_F(RecordLogAtEase, TheEndOfNothing) {
    log.end();
    EXPECT_EQ(RecordLog::kEnd, log.next(kLong, &job));
}

/// A fraction of a second that reaches into the next one, whenever the test begins.
TEST_F(RecordLogWith, WaitsForItsTime) {
    const int64_t before = monotonicMicros();
    EXPECT_EQ(RecordLog::kIdle, log.next(999, &job));
    EXPECT_GE(monotonicMicros() - before, 998000);
}

/// The first reason stays the recording's.
TEST_F(RecordLogAtEase, AReasonThatWaitsIsNotReplaced) {
    log.trigger("first", "");
    ASSERT_EQ(RecordLog::kWrite, log.next(kAtOnce, &job));
    log.done();
    event("a");
    log.trigger("second", "detail");
    log.triggerLater("dump");
    log.end();
    ASSERT_EQ(RecordLog::kWrite, log.next(kLong, &job));
    EXPECT_EQ("second", job.why);
    EXPECT_EQ("detail", job.detail);
}

TEST_F(RecordLogWith, WakesTheWriter) {
    std::thread other([this] { log.trigger("lost", ""); });
    EXPECT_EQ(RecordLog::kWrite, log.next(kLong, &job));
    other.join();
}

/// Two threads record, a third writes; a thread sanitizer looks on.
TEST_F(RecordLogWith, ManyThreads) {
    std::atomic<int> recording(2);
    const auto record = [&] {
        for (int i = 0; i < 2000; ++i) {
            event("x");
            log.trigger("lost", "x");
        }
        if (--recording == 0) {
            log.end();
        }
    };
    std::thread one(record);
    std::thread two(record);
    int written = 0;
    RecordLog::Step step = RecordLog::kIdle;
    while (step != RecordLog::kEnd) {
        step = log.next(1, &job);
        if (step == RecordLog::kWrite) {
            ++written;
            EXPECT_EQ(std::string::npos, copied().find_first_not_of('x'));
            log.done();
        }
    }
    one.join();
    two.join();
    EXPECT_GE(written, 1);
}

}  // namespace
