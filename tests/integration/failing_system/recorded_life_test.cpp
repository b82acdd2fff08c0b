// What the system refuses a driver that records: only the recording is lost, the runtime's log says
// so once, and the next one is written.

#include <errno.h>
#include <gtest/gtest.h>
#include <string.h>

#include <string>

#include "integration/failing_system/failing_rig.h"

namespace {

/// Of the refusal and of the end.
const int kRecordings = 2;

/// How many of the failures of a call lose a recording.
enum Loses { kAll, kSome, kNone };

struct RecorderCall {
    Call call;
    failing::Mode mode;
    Loses loses;
};

void PrintTo(const RecorderCall& row, std::ostream* out) {
    PrintTo(row.call, out);
}

bool ends(const std::string& text, const std::string& with) {
    return text.size() >= with.size() &&
           text.compare(text.size() - with.size(), with.size(), with) == 0;
}

/// Whether a line says why a recording was lost, by one of the errors.
bool saysWhy(const char* line, const std::vector<int>& errors) {
    for (const int error : errors) {
        if (ends(line, std::string(": ") + strerror(error))) {
            return true;
        }
    }
    return false;
}

class RecordedLife : public FailingSystem, public ::testing::WithParamInterface<RecorderCall> {};

TEST_P(RecordedLife, LosesARecordingAtMost) {
    const RecorderCall& row = GetParam();
    int losses = 0;
    int failures = 0;
    const Reports ended = failEach(row.call, row.mode, true);
    for (const Report& report : ended) {
        ASSERT_LE(report.left.told, 1) << report.left.line;
        EXPECT_EQ(kRecordings - report.left.told, report.left.files) << report.left.line;
        losses += report.left.told;
        failures += report.failed;
        if (report.left.told > 0) {
            EXPECT_TRUE(saysWhy(report.left.line, row.call.errors)) << report.left.line;
        }
    }
    EXPECT_EQ(row.loses != kNone, losses > 0) << losses;
    if (row.loses == kAll) {
        EXPECT_EQ(failures, losses);
    }
}

const RecorderCall kCalls[] = {
    {{"close", {EIO}}, failing::kPlain, kNone},
    {{"fsync", {EIO, ENOSPC}}, failing::kPlain, kAll},
    {{"link", {ENOSPC, EROFS}}, failing::kPlain, kAll},
    // Without a folder it is the file that cannot be.
    {{"mkdir", {EACCES, ENOENT}}, failing::kPlain, kSome},
    {{"open", {EMFILE, ENOSPC, EROFS}}, failing::kPlain, kSome},
    {{"opendir", {EMFILE}}, failing::kPlain, kNone},
    {{"rename", {EIO, ENOSPC}}, failing::kNoLinks, kAll},
    {{"setpriority", {EACCES}}, failing::kPlain, kNone},
    {{"stat", {ENOMEM}}, failing::kPlain, kNone},
    {{"unlink", {EBUSY}}, failing::kPlain, kNone},
    {{"write", {EDQUOT, EIO, ENOSPC}}, failing::kPlain, kAll},
};

INSTANTIATE_TEST_SUITE_P(All, RecordedLife, ::testing::ValuesIn(kCalls),
                         [](const ::testing::TestParamInfo<RecorderCall>& info) {
                             return std::string(info.param.call.name);
                         });

class RecordedLifeWithout : public FailingSystem {};

/// There is no memory for a line in the log either.
TEST_F(RecordedLifeWithout, MemoryLosesARecordingAtMost) {
    for (const Report& report : failEach({"malloc", {ENOMEM}}, failing::kPlain, true)) {
        EXPECT_GE(report.left.files, kRecordings - 1);
    }
}

/// The one for the recorder, or the one for the worker: a new error text asks for it again.
TEST_F(RecordedLifeWithout, AThreadLosesNoRecording) {
    int told = 0;
    for (const Report& report : failEach({"pthread_create", {EAGAIN}}, failing::kPlain, true)) {
        EXPECT_GE(report.left.files, kRecordings);
        told += report.left.told;
        if (report.left.told > 0) {
            EXPECT_STREQ("micro800 recorder: can not start the thread that writes recordings",
                         report.left.line);
        }
    }
    EXPECT_EQ(1, told);
}

TEST_F(RecordedLifeWithout, AnInterruptedWriteLosesNoRecording) {
    for (const Report& report : failEach({"write", {EINTR}}, failing::kPlain, true)) {
        EXPECT_EQ(kRecordings, report.left.files);
        EXPECT_EQ(0, report.left.told) << report.left.line;
    }
}

struct Way {
    const char* name;
    failing::Mode mode;
    int files;
    int told;
};

void PrintTo(const Way& way, std::ostream* out) {
    *out << way.name;
}

class RecordedTo : public FailingSystem, public ::testing::WithParamInterface<Way> {};

TEST_P(RecordedTo, ADisk) {
    const Reports ended = live({Lot{{"none", 0}, 0, GetParam().mode, true, true, 1}});
    ASSERT_EQ(1u, ended.size());
    EXPECT_EQ(GetParam().files, ended[0].left.files);
    EXPECT_EQ(GetParam().told, ended[0].left.told) << ended[0].left.line;
}

INSTANTIATE_TEST_SUITE_P(
    All, RecordedTo,
    ::testing::Values(Way{"InOrder", failing::kPlain, kRecordings, 0},
                      Way{"ThatTakesLittle", failing::kShortWrites, kRecordings, 0},
                      Way{"ThatIsFull", failing::kFullDisk, 0, 1},
                      Way{"WithoutLinks", failing::kNoLinks, kRecordings, 0}),
    [](const ::testing::TestParamInfo<Way>& info) { return std::string(info.param.name); });

}  // namespace
