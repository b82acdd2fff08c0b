#include "eip/record/record_settings.h"

#include <gtest/gtest.h>
#include <stdlib.h>

namespace {

struct SizeRow {
    const char* text;
    bool ok;
    size_t messages;
    size_t bytes;
};

void PrintTo(const SizeRow& row, std::ostream* out) {
    *out << row.text;
}

class RecordSize : public ::testing::TestWithParam<SizeRow> {};

TEST_P(RecordSize, IsRead) {
    RecordSettings settings;
    EXPECT_EQ(GetParam().ok, parseRecordSize(GetParam().text, &settings));
    EXPECT_EQ(GetParam().messages, settings.messages);
    EXPECT_EQ(GetParam().bytes, settings.bytes);
}

const size_t kMega = 1024 * 1024;

INSTANTIATE_TEST_SUITE_P(
    All, RecordSize,
    ::testing::Values(SizeRow{"", false, 4096, kMega}, SizeRow{"x", false, 4096, kMega},
                      SizeRow{"15", false, 4096, kMega}, SizeRow{"100001", false, 4096, kMega},
                      SizeRow{"-16", false, 4096, kMega}, SizeRow{" 16", false, 4096, kMega},
                      SizeRow{"63K", false, 4096, kMega}, SizeRow{"65M", false, 4096, kMega},
                      SizeRow{"16G", false, 4096, kMega}, SizeRow{"16KB", false, 4096, kMega},
                      SizeRow{"99999999999999999999", false, 4096, kMega},
                      SizeRow{"99999999M", false, 4096, kMega},
                      SizeRow{"1000,", false, 4096, kMega}, SizeRow{"1000,1,2", false, 4096, kMega},
                      SizeRow{"16", true, 16, kMega}, SizeRow{"100000", true, 100000, kMega},
                      SizeRow{"64K", true, 4096, 65536}, SizeRow{"256k", true, 4096, 262144},
                      SizeRow{"64M", true, 4096, 64 * kMega},
                      SizeRow{"1000,2m", true, 1000, 2 * kMega},
                      SizeRow{"128K,500", true, 500, 131072}));

class RecordEnvironment : public ::testing::Test {
 protected:
    void TearDown() override {
        unsetenv("MICRO800_RECORD");
        unsetenv("MICRO800_RECORD_SIZE");
    }
};

TEST_F(RecordEnvironment, Empty) {
    EXPECT_EQ("", recordSettingsFromEnvironment().folder);
}

TEST_F(RecordEnvironment, FolderAndSize) {
    setenv("MICRO800_RECORD", "/var/log/panel", 1);
    setenv("MICRO800_RECORD_SIZE", "100", 1);
    const RecordSettings settings = recordSettingsFromEnvironment();
    EXPECT_EQ("/var/log/panel", settings.folder);
    EXPECT_EQ(100u, settings.messages);
    EXPECT_EQ(kMega, settings.bytes);
}

TEST_F(RecordEnvironment, ASizeThatIsNoneIsIgnored) {
    setenv("MICRO800_RECORD_SIZE", "much", 1);
    EXPECT_EQ(4096u, recordSettingsFromEnvironment().messages);
}

}  // namespace
