#include "eip/cip/cip_error.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <thread>

#include "unit/eip/cip/wire_bytes.h"

namespace {

const int kLongTextErrno = 1000123;

std::string longText() {
    return std::string(300, 'x');
}

}  // namespace

/// Replaces that of the C library: a system whose text for one number is longer than the record
/// contains.
extern "C" char* strerror(int number) noexcept {
    static const std::string text = longText();
    static thread_local char buffer[128];
    if (number == kLongTextErrno) {
        return const_cast<char*>(text.c_str());
    }
    return strerror_r(number, buffer, sizeof(buffer));
}

namespace {

TEST(CipErrorRecord, SuccessIsRecorded) {
    CIPERROR(3, 4, 5);
    CIPERROR(0, 0, 0);
    EXPECT_EQ((CipError{0, 0, 0}), lastError());
    EXPECT_STREQ("Internal: success", cip_err_msg());
}

/// What is recorded is what was given, also when only the extended number differs from the success
/// already recorded.
TEST(CipErrorRecord, SuccessWithAnExtendedNumberIsRecorded) {
    CIPERROR(0, 0, 0);
    CIPERROR(0, 0, 7);
    EXPECT_EQ((CipError{0, 0, 7}), lastError());
    EXPECT_STREQ("Internal: success", cip_err_msg());
    CIPERROR(0, 0, 0);
    EXPECT_EQ((CipError{0, 0, 0}), lastError());
}

TEST(CipErrorRecord, UnknownTypesHaveTheirOwnSpelling) {
    for (int32_t type : {4, 7, 9, -1, INT32_MAX, INT32_MIN}) {
        CIPERROR(0, 0, 0);
        CIPERROR(type, 11, 12);
        EXPECT_EQ((CipError{type, 11, 12}), lastError());
        EXPECT_STREQ("unknown error type", cip_err_msg());
    }
    EXPECT_STREQ("Unknow Error type", CIPGetErrMsg(4, 11, 12));
}

struct Row {
    CipError error;
    const char* text;
};

const Row kRows[] = {
    {{0, -5, 0}, "Internal: timeout"},    {{0, -102, 236}, "Internal: unknown error"},
    {{2, 0, 0}, "EIP error: 0000H"},      {{2, 0x64, 0}, "EIP error: 0064H"},
    {{2, -1, 0}, "EIP error: FFFFFFFFH"}, {{3, 1, 0x0100}, "MR error: 0001H, 0100H"},
    {{3, 4, 0}, "MR error: 0004H"},       {{5, 0x3FF, 0x2105}, "AB error: 01FFH, 2105H"},
    {{5, 0x0005, 0}, "AB error: 0005H"},  {{6, 0x1F0, 4}, "PCCC error: F0H, 04H"},
    {{6, 0x10, 0}, "PCCC error: 10H"},
};

TEST(CipErrorRecord, ShortTexts) {
    for (const Row& row : kRows) {
        CIPERROR(row.error.type, row.error.number, row.error.extended);
        EXPECT_EQ(row.error, lastError());
        EXPECT_STREQ(row.text, cip_err_msg());
    }
}

TEST(CipErrorRecord, SystemErrorsHaveTheSystemsText) {
    CIPERROR(1, ECONNREFUSED, 0);
    EXPECT_STREQ(strerror(ECONNREFUSED), cip_err_msg());
    EXPECT_EQ((CipError{1, ECONNREFUSED, 0}), lastError());
}

TEST(CipErrorRecord, LongSystemTextsAreCutAt255Bytes) {
    CIPERROR(1, kLongTextErrno, 0);
    EXPECT_EQ(longText().substr(0, 255), cip_err_msg());
    EXPECT_EQ(0, cip_err_msg()[255]);
}

TEST(CipErrorRecord, NothingOfALongerTextStays) {
    CIPERROR(1, kLongTextErrno, 0);
    CIPERROR(0, -9, 0);
    EXPECT_EQ(std::string("Internal: no reply") + std::string(256 - 18, '\0'),
              std::string(cip_err_msg(), 256));
}

/// Recorded over what differs from it in one thing only.
TEST(CipErrorRecord, SuccessReplacesEveryPartOfARecord) {
    const auto expectSuccess = [](const char* over) {
        CIPERROR(0, 0, 0);
        EXPECT_EQ((CipError{0, 0, 0}), lastError()) << over;
        EXPECT_STREQ("Internal: success", cip_err_msg()) << over;
    };
    expectSuccess("anything");
    expectSuccess("success");
    CIPAppendErrMsg("; and more");
    expectSuccess("text");
    _cip_errno = 1;
    expectSuccess("number");
    _cip_ext_errno = 1;
    expectSuccess("extended number");
    _cip_err_type = 1;
    expectSuccess("type");
}

TEST(CipErrorRecord, AccessorsReadTheThreadsVariables) {
    CIPERROR(5, 0x1FF, 0x2107);
    EXPECT_EQ(5, _cip_err_type);
    EXPECT_EQ(0x1FF, _cip_errno);
    EXPECT_EQ(0x2107, _cip_ext_errno);
    EXPECT_EQ(_cip_err_msg, cip_err_msg());
}

TEST(CipErrorRecord, EachThreadHasItsOwn) {
    CIPERROR(3, 4, 0);
    CipError atStart{-1, -1, -1};
    std::string textAtStart = "unset";
    CipError after{-1, -1, -1};
    std::thread other([&] {
        atStart = lastError();
        textAtStart = cip_err_msg();
        CIPERROR(2, 0x64, 0);
        after = lastError();
    });
    other.join();
    EXPECT_EQ((CipError{0, 0, 0}), atStart);
    EXPECT_EQ("", textAtStart);
    EXPECT_EQ((CipError{2, 0x64, 0}), after);
    EXPECT_EQ((CipError{3, 4, 0}), lastError());
    EXPECT_STREQ("MR error: 0004H", cip_err_msg());
}

TEST(CipErrorRecord, TextIsAppended) {
    CIPERROR(5, 5, 0);
    CIPAppendErrMsg("; more");
    CIPAppendErrMsg("");
    EXPECT_STREQ("AB error: 0005H; more", cip_err_msg());
    EXPECT_EQ((CipError{5, 5, 0}), lastError());
    CIPAppendErrMsg(std::string(300, 'x').c_str());
    EXPECT_EQ(255u, strlen(cip_err_msg()));
    CIPAppendErrMsg("y");
    EXPECT_EQ(255u, strlen(cip_err_msg()));
    EXPECT_EQ('x', cip_err_msg()[254]);
    CIPERROR(5, 5, 0);
    EXPECT_STREQ("AB error: 0005H", cip_err_msg());
}

}  // namespace
