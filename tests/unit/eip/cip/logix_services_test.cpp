#include "eip/cip/logix_services.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "unit/eip/cip/scripted_transport.h"

namespace {

class LogixServices : public testing::Test {
 protected:
    LogixServices() : session(NewSession(1000, &transport)), connection() {
        session->sessionHandle = 0x77;
        connection.session = session;
        connection.oToTConnectionId = 0x80000002;
    }
    ~LogixServices() override { DeleteSession(session); }

    /// Answers the next request with this message-router reply.
    void answer(const std::string& reply) {
        connection.sequenceCount = 0;
        transport.play(connectedReply(0x77, 1, reply));
    }

    /// The value of a read as hexadecimal text, "null" when it fails.
    std::string read(const char* name, uint16_t count) {
        _LGX_Read* decoded = _ReadLgxData(session, &connection, name, count);
        if (!decoded) {
            return "null";
        }
        const QByteArray value = GetLGXValueAsByteArray(decoded);
        _FreeLGXRead(decoded);
        return hexOf(bytesAt(value.constData(), static_cast<size_t>(value.size())));
    }

    int write(int type, const Bytes& data, uint16_t count) {
        return _WriteLgxData(session, &connection, "A", _LGX_Data_Type(type), data.data(), count);
    }

    Bytes request() const {
        const Bytes& whole = transport.requests.back();
        return Bytes(whole.begin() + 46, whole.end());
    }

    ScriptedTransport transport;
    _Eip_Session* session;
    _Eip_Connection connection;
};

const CipError kInvalid{0, -20, 0};

TEST_F(LogixServices, ReadRequestBytes) {
    // Read Tag in SendUnitData (CIP Vol. 2, 2-4.8)
    EXPECT_EQ("null", read("Counter", 1));
    EXPECT_EQ(
        hexOf(bytes("70 00 24 00 77 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 | "
                    "00 00 00 00 01 00 | 02 00 | A1 00 04 00 02 00 00 80 | B1 00 10 00 01 00 | "
                    "4C 05 91 07 43 6F 75 6E 74 65 72 00 01 00")),
        hexOf(transport.requests.at(0)));
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
}

TEST_F(LogixServices, WriteRequestBytes) {
    EXPECT_EQ(-1, write(0xC3, bytes("01 00 02 00"), 2));
    EXPECT_EQ(
        hexOf(bytes("70 00 24 00 77 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 | "
                    "00 00 00 00 01 00 | 02 00 | A1 00 04 00 02 00 00 80 | B1 00 10 00 01 00 | "
                    "4D 02 91 01 41 00 C3 00 02 00 01 00 02 00")),
        hexOf(transport.requests.at(0)));
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
}

TEST_F(LogixServices, WriteOfAShortString) {
    write(0xDA, bytes("4F 4B"), 2);
    EXPECT_EQ("4D 02 91 01 41 00 DA 00 01 00 02 4F 4B", hexOf(request()));
}

TEST_F(LogixServices, NothingGoesOutThatDoesNotFit) {
    EXPECT_EQ(-1, write(0xC5, Bytes(), 1));
    EXPECT_EQ((CipError{0, -24, 0}), lastError());
    EXPECT_EQ(-1, write(0xDA, filled(256, 0), 256));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ(-1, write(0xC1, filled(1001, 0), 1001));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ(-1, write(0xC1, filled(1000, 0), 1000));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ(
        -1, _WriteLgxData(session, &connection, "A", LGX_TYPE_LREAL, filled(8, 0).data(), 0xFFFF));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ("null",
              read(std::string(2000, '.').append(2000, 'A').insert(0, "A.B.C.D.").c_str(), 1));
    std::string deep;
    for (int i = 0; i < 200; ++i) {
        deep += "A.";
    }
    EXPECT_EQ("null", read(deep.c_str(), 1));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_LE(transport.requests.size(), 1u);
}

TEST_F(LogixServices, NameThatNoSegmentHoldsIsNotSent) {
    const std::string name(256, 'A');
    EXPECT_EQ("null", read(name.c_str(), 1));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ(-1, _WriteLgxData(session, &connection, name.c_str(), LGX_TYPE_SINT, "x", 1));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_TRUE(transport.requests.empty());
}

TEST_F(LogixServices, BadArguments) {
    EXPECT_EQ(nullptr, _ReadLgxData(nullptr, &connection, "A", 1));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(nullptr, _ReadLgxData(session, nullptr, "A", 1));
    EXPECT_EQ(-1, _WriteLgxData(session, nullptr, "A", LGX_TYPE_SINT, "x", 1));
    EXPECT_EQ(-1, _WriteLgxData(session, &connection, "A", LGX_TYPE_SINT, nullptr, 1));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_TRUE(transport.requests.empty());
}

TEST_F(LogixServices, ReadsAValue) {
    answer("CC 00 00 00 C4 00 2A 00 00 00");
    EXPECT_EQ("2A 00 00 00", read("Counter", 1));
    EXPECT_EQ((CipError{0, 0, 0}), lastError());
    answer("CC 00 00 00 C3 00 01 00 02 00 03 00");
    EXPECT_EQ("01 00 02 00 03 00", read("A", 3));
    answer("CC 00 00 00 DA 00 02 4F 4B");
    EXPECT_EQ("4F 4B", read("Name", 1));
    answer("CC 00 00 00 DA 00 00");
    EXPECT_EQ("", read("Name", 1));
}

TEST_F(LogixServices, FewerElementsThanAskedForAreNoAnswer) {
    for (uint16_t count : {3, 4, 0xFFFF}) {
        answer("CC 00 00 00 C4 00 01 00 00 00 02 00 00 00");
        EXPECT_EQ("null", read("A", count)) << count;
        EXPECT_EQ(kInvalid, lastError()) << count;
    }
    answer("CC 00 00 00 C4 00 01 00 00 00 02 00 00");
    EXPECT_EQ("null", read("A", 2)) << "the second is not whole";
    EXPECT_EQ(kInvalid, lastError());
}

TEST_F(LogixServices, MoreElementsAndBytesAreTaken) {
    for (uint16_t count : {0, 1, 2}) {
        answer("CC 00 00 00 C4 00 01 00 00 00 02 00 00 00");
        EXPECT_EQ("01 00 00 00 02 00 00 00", read("A", count)) << count;
        EXPECT_EQ((CipError{0, 0, 0}), lastError()) << count;
    }
    answer("CC 00 00 00 C4 00 01 00 00 00 FF");
    EXPECT_EQ("01 00 00 00 FF", read("A", 1));
}

TEST_F(LogixServices, Refusals) {
    const struct {
        const char* reply;
        CipError error;
        const char* text;
    } rows[] = {
        {"%s 00 04 00", {5, 4, 0}, "AB error: 0004H"},
        {"%s 00 05 00", {5, 5, 0}, "AB error: 0005H"},
        {"%s 00 06 00 C4 00 01 00 00 00", {5, 6, 0}, "AB error: 0006H"},
        {"%s 00 08 00", {5, 8, 0}, "AB error: 0008H"},
        {"%s 00 FF 01 05 21", {5, 0x1FF, 0x2105}, "AB error: 01FFH, 2105H"},
        {"%s 00 FF 01 07 21", {5, 0x1FF, 0x2107}, "AB error: 01FFH, 2107H"},
        {"%s 00 00 01 00 00", {5, 0x100, 0}, "AB error: 0100H"},
        {"%s 00 FF FF", {0, -20, 0}, "Internal: invalid reply"},
    };
    for (const auto& row : rows) {
        char reply[64];
        snprintf(reply, sizeof(reply), row.reply, "CC");
        answer(reply);
        EXPECT_EQ("null", read("A", 1));
        EXPECT_EQ(row.error, lastError()) << row.reply;
        EXPECT_STREQ(row.text, cip_err_msg());
        snprintf(reply, sizeof(reply), row.reply, "CD");
        answer(reply);
        EXPECT_EQ(-1, write(0xC1, bytes("01"), 1));
        EXPECT_EQ(row.error, lastError()) << row.reply;
    }
}

TEST_F(LogixServices, OnlyTheOwnServicesReplyIsAnAnswer) {
    for (const char* reply :
         {"CD 00 00 00 C4 00 2A 00 00 00", "CB 00 00 00 C4 00 2A 00 00 00", "CD 00 00 00"}) {
        answer(reply);
        EXPECT_EQ("null", read("A", 1));
        EXPECT_EQ((CipError{0, -102, 236}), lastError()) << reply;
    }
    answer("CD 00 05 00");
    EXPECT_EQ("null", read("A", 1));
    EXPECT_EQ((CipError{5, 5, 0}), lastError());
    answer("8A 00 00 00 01 00 04 00 CC 00 00 00 C4 00 2A 00 00 00");
    EXPECT_EQ("null", read("A", 1));
    EXPECT_EQ(kInvalid, lastError());
    for (const char* reply : {"4C 00 00 00 C4 00 2A 00 00 00", "D2 00 00 00", "00 00 00 00"}) {
        answer(reply);
        EXPECT_EQ("null", read("A", 1));
        EXPECT_EQ((CipError{0, -22, 0}), lastError()) << reply;
    }
    for (const char* reply :
         {"CC 00 00 00 C4 00 2A 00 00 00", "CB 00 00 00", "8A 00 00 00 01 00 04 00 CD 00 00 00"}) {
        answer(reply);
        EXPECT_EQ(-1, write(0xC1, bytes("01"), 1));
        EXPECT_EQ(kInvalid, lastError()) << reply;
    }
    answer("CC 00 05 00");
    EXPECT_EQ(-1, write(0xC1, bytes("01"), 1));
    EXPECT_EQ((CipError{5, 5, 0}), lastError());
}

TEST_F(LogixServices, WriteGivesTheNumberOfReplies) {
    answer("CD 00 00 00");
    EXPECT_EQ(1, write(0xC1, bytes("01"), 1));
}

TEST_F(LogixServices, ReplyOfAnEarlierRequest) {
    answer("CC 00 00 00 C4 00 2A 00 00 00");
    connection.sequenceCount = 7;
    EXPECT_EQ("null", read("A", 1));
    EXPECT_EQ((CipError{0, -7, 0}), lastError());
}

TEST_F(LogixServices, DecodingFailures) {
    const struct {
        const char* reply;
        CipError error;
    } rows[] = {
        {"CC 00 00 00 A0 02 34 12 01 00", {0, -102, 236}},
        {"CC 00 00 00 C4 00", {0, -102, 248}},
        {"CC 00 00 00 C4 00 01 00 00", {0, -102, 248}},
        {"CC 00 00 00 DA 00 09 41", {0, -102, 248}},
        {"CC 00 00 00", kInvalid},
        {"CC 00 00", kInvalid},
    };
    for (const auto& row : rows) {
        answer(row.reply);
        EXPECT_EQ("null", read("A", 1));
        EXPECT_EQ(row.error, lastError()) << row.reply;
    }
}

}  // namespace
