#include "eip/cip/pccc_services.h"

#include <gtest/gtest.h>

#include <string>

#include "unit/eip/cip/reply_sweeps.h"
#include "unit/eip/cip/scripted_transport.h"

namespace {

const char kRequestor[] = "CB 00 00 00 07 06 04 89 67 45 23 ";

class PcccServices : public testing::Test {
 protected:
    PcccServices() : session(NewSession(1000, &transport)), connection(), target() {
        session->sessionHandle = 0x77;
        target.session = session;
    }
    ~PcccServices() override { DeleteSession(session); }

    /// Answers the next request, whose transaction is 0x1234: status, then data.
    void answer(const std::string& statusAndData) {
        const Bytes rest = bytes(statusAndData);
        const std::string data = hexOf(Bytes(rest.begin() + 1, rest.end()));
        transport.play(unconnectedReply(
            0x77, kRequestor + ("4F " + hexOf(Bytes{rest[0]})) + " 34 12 " + data));
    }

    /// The PCCC request that went out last, from its function code on.
    std::string request() const {
        const Bytes& whole = transport.requests.back();
        return hexOf(Bytes(whole.begin() + 57, whole.end()));
    }

    /// Type, element size, mask and data of a record, "null" without one. Frees it.
    static std::string taken(_PLC_Read* read) {
        if (!read) {
            return "null";
        }
        const std::string text =
            std::to_string(read->type) + "/" + std::to_string(read->elementSize) + "/" +
            std::to_string(read->mask) + ": " +
            hexOf(bytesAt(_GetPLCReadData(read), static_cast<size_t>(read->size)));
        _FreePLCRead(read);
        return text;
    }

    std::string typed(const char* address, uint16_t count) {
        return taken(_ReadPLCData_Ex(&target, 0x1234, address, count));
    }

    std::string three(const char* address, uint16_t count) {
        return taken(_ReadPLCData_ExPlus(&target, 0x1234, address, count));
    }

    ScriptedTransport transport;
    _Eip_Session* session;
    _Eip_Connection connection;
    _PCCC_Target target;
};

TEST_F(PcccServices, TypedReads) {
    const struct {
        const char* address;
        uint16_t count;
        const char* reply;
        const char* read;
    } rows[] = {
        {"N7:0", 1, "00 42 2A 00", "4/2/0: 2A 00"},
        {"N7:0", 2, "00 95 09 42 01 00 02 00", "4/2/0: 01 00 02 00"},
        {"F8:1", 1, "00 94 08 00 00 80 3F", "8/4/0: 00 00 80 3F"},
        {"B3:2/5", 1, "00 22 20 00", "2/2/32: 20 00"},
        {"T4:0.ACC", 1, "00 42 07 00", "4/2/0: 07 00"},
        {"T4:0/DN", 1, "00 22 00 20", "2/2/8192: 00 20"},
        {"N7:0/0", 1, "00 99 09 03 42 01 00", "4/2/1: 01 00"},
    };
    for (const auto& row : rows) {
        answer(row.reply);
        EXPECT_EQ(row.read, typed(row.address, row.count)) << row.address;
        EXPECT_EQ((CipError{6, 0, 0}), lastError());
    }
    EXPECT_EQ("null", typed("N7:0", 3));
    EXPECT_EQ(hexOf(bytes("68 | 00 00 | 03 00 | 06 07 00 | 03 00")), request());
}

TEST_F(PcccServices, ThreeAddressReads) {
    const struct {
        const char* address;
        uint16_t count;
        const char* request;
        const char* reply;
        const char* read;
    } rows[] = {
        {"N7:0", 1, "A2 02 07 89 00 00", "00 2A 00", "4/2/0: 2A 00"},
        {"N7:300", 2, "A2 04 07 89 FF 2C 01 00", "00 01 00 02 00", "4/2/0: 01 00 02 00"},
        {"F8:1", 1, "A2 04 08 8A 01 00", "00 00 00 80 3F", "8/4/0: 00 00 80 3F"},
        {"B3:2/5", 1, "A2 02 03 85 02 00", "00 20 00", "2/2/32: 20 00"},
        {"S:1", 1, "A2 02 02 84 01 00", "00 34 12", "2/2/0: 34 12"},
        {"L9:1", 1, "A2 04 09 91 01 00", "00 01 02 03 04", "4/4/0: 01 02 03 04"},
        {"D9:1", 1, "A2 02 09 8F 01 00", "00 34 12", "16/2/0: 34 12"},
        {"A9:1", 1, "A2 02 09 8E 01 00", "00 42 41", "3/2/0: 42 41"},
        {"T4:0", 1, "A2 06 04 86 00 00", "00 00 20 64 00 07 00", "5/6/0: 00 20 64 00 07 00"},
        {"C5:0", 1, "A2 06 05 87 00 00", "00 00 20 64 00 07 00", "6/6/0: 00 20 64 00 07 00"},
        {"R6:0", 1, "A2 06 06 88 00 00", "00 00 20 64 00 07 00", "7/6/0: 00 20 64 00 07 00"},
        {"T4:0.ACC", 1, "A2 06 04 86 00 00", "00 00 20 64 00 07 00", "4/2/0: 07 00"},
        {"T4:0.PRE", 2, "A2 0C 04 86 00 00", "00 00 20 64 00 07 00 00 00 C8 00 09 00",
         "4/2/0: 64 00 C8 00"},
        {"T4:0.ACC", 2, "A2 0C 04 86 00 00", "00 00 20 64 00 07 00 00 00 C8 00 09 00",
         "4/2/0: 07 00 09 00"},
        {"T4:0/DN", 1, "A2 06 04 86 00 00", "00 00 20 64 00 07 00", "2/2/8192: 00 20"},
        {"I:1.2", 1, "A2 06 01 8C 01 00", "00 01 00 02 00 03 00", "2/2/0: 03 00"},
        {"I:1.1/3", 2, "A2 06 01 8C 01 00", "00 01 00 02 00 03 00", "2/2/8: 02 00 03 00"},
        {"I:1.0", 1, "A2 02 01 8C 01 00", "00 01 00", "2/2/0: 01 00"},
    };
    for (const auto& row : rows) {
        answer(row.reply);
        EXPECT_EQ(row.read, three(row.address, row.count)) << row.address;
        EXPECT_EQ(row.request, request()) << row.address;
        EXPECT_EQ((CipError{6, 0, 0}), lastError());
    }
}

TEST_F(PcccServices, ValuesReadBackAsNumbers) {
    answer("00 97 09 42 2A 00 FE FF 03 00");
    _PLC_Read* integers = _ReadPLCData_Ex(&target, 0x1234, "N7:0", 3);
    ASSERT_TRUE(integers);
    EXPECT_EQ(42, _PCCC_GetValueAsInteger(integers, 0));
    EXPECT_EQ(-2, _PCCC_GetValueAsInteger(integers, 1));
    _FreePLCRead(integers);
    answer("00 00 00 C0 3F");
    _PLC_Read* real = _ReadPLCData_ExPlus(&target, 0x1234, "F8:1", 1);
    ASSERT_TRUE(real);
    EXPECT_EQ(1.5f, _PCCC_GetValueAsFloat(real, 0));
    _FreePLCRead(real);
    answer("00 20 00");
    _PLC_Read* bit = _ReadPLCData_ExPlus(&target, 0x1234, "B3:2/5", 1);
    ASSERT_TRUE(bit);
    EXPECT_TRUE(_PCCC_GetValueAsBoolean(bit, 0));
    _FreePLCRead(bit);
}

TEST_F(PcccServices, KindOfControllerChoosesTheCommand) {
    taken(_ReadPLCData(&target, PLC_KIND_PLC5, 0x1234, "N7:0", 1));
    EXPECT_EQ("68", request().substr(0, 2));
    taken(_ReadPLCData(&target, PLC_KIND_SLC500, 0x1234, "N7:0", 1));
    EXPECT_EQ("A2", request().substr(0, 2));
    taken(_ReadPLCData(&target, PLC_KIND_LOGIX, 0x1234, "N7:0", 1));
    EXPECT_EQ("68", request().substr(0, 2));
    answer("00 42 2A 00");
    EXPECT_EQ("4/2/0: 2A 00", taken(_ReadPLCData(&target, PLC_KIND_PLC5, 0x1234, "N7:0", 1)));
}

TEST_F(PcccServices, AnotherNumberOfElements) {
    const CipError invalid{0, -20, 0};
    answer("00 42 2A 00");
    EXPECT_EQ("null", typed("N7:0", 2));
    EXPECT_EQ(invalid, lastError());
    answer("00 95 09 42 01 00 02 00");
    EXPECT_EQ("null", typed("N7:0", 1));
    EXPECT_EQ(invalid, lastError());
    for (const char* reply : {"00", "00 01", "00 01 00 02", "00 01 00 02 00 03 00"}) {
        answer(reply);
        EXPECT_EQ("null", three("N7:0", 2));
        EXPECT_EQ(invalid, lastError()) << reply;
    }
    answer("00");
    EXPECT_EQ("null", three("N7:0", 0));
    EXPECT_EQ(invalid, lastError());
}

TEST_F(PcccServices, EveryStatusByteBecomesItsText) {
    for (int status = 1; status <= 0xFF; ++status) {
        const std::string reply = hexOf(Bytes{static_cast<unsigned char>(status)}) + " 04";
        const CipError error{6, status, 0};
        answer(reply);
        EXPECT_EQ("null", typed("N7:0", 1));
        EXPECT_EQ(error, lastError());
        answer(reply);
        EXPECT_EQ("null", three("N7:0", 1));
        EXPECT_EQ(error, lastError());
        answer(reply);
        EXPECT_EQ(status, WriteMaskAndDataToPLC(&target, 0x1234, "B3:0", 1, 1));
        EXPECT_EQ(error, lastError());
        answer(reply);
        EXPECT_EQ(status, WriteBytesToPLC(&target, 0x1234, "N7:0", "ab", 2));
        EXPECT_EQ(error, lastError());
        answer(reply);
        EXPECT_EQ(status, _WritePLCData(&target, 0x1234, "N7:0", PLC_TYPE_INTEGER, "ab", 1));
        EXPECT_EQ(error, lastError());
    }
    answer("10");
    typed("N7:0", 1);
    EXPECT_STREQ("PCCC error: 10H", cip_err_msg());
    EXPECT_STREQ("Illegal command or format",
                 CIPGetErrMsg(cip_err_type(), cip_errno(), cip_ext_errno()));
    answer("F0 04");
    typed("N7:0", 1);
    EXPECT_STREQ("PCCC error: F0H, 00H", cip_err_msg());
}

TEST_F(PcccServices, Writes) {
    answer("00");
    EXPECT_EQ(0, WriteMaskAndDataToPLC(&target, 0x1234, "B3:2", 0x20, 0x20));
    EXPECT_EQ("AB 02 03 85 02 00 20 00 20 00", request());
    EXPECT_EQ((CipError{6, 0, 0}), lastError());
    answer("00");
    EXPECT_EQ(0, WriteBytesToPLC(&target, 0x1234, "N7:1", "\x01\x00\x02\x00", 4));
    EXPECT_EQ("AA 04 07 89 01 00 01 00 02 00", request());
    answer("00");
    EXPECT_EQ(0, _WritePLCData(&target, 0x1234, "N7:0", PLC_TYPE_INTEGER, "\x2A\x00", 1));
    EXPECT_EQ("67 00 00 01 00 06 07 00 42 2A 00", request());
    answer("00");
    EXPECT_EQ(0, _WritePLCData(&target, 0x1234, "F8:1", PLC_TYPE_FLOAT, "\0\0\x80\x3F", 1));
    EXPECT_EQ("67 00 00 01 00 06 08 01 94 08 00 00 80 3F", request());
    answer("00");
    EXPECT_EQ(0, _WritePLCData(&target, 0x1234, "B3:0", PLC_TYPE_BIT_STRING, "\x05\x80", 1));
    EXPECT_EQ("67 00 00 01 00 06 03 00 22 05 80", request());
}

TEST_F(PcccServices, WithoutAReply) {
    EXPECT_EQ(-1, WriteMaskAndDataToPLC(&target, 0x1234, "B3:0", 1, 1));
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
    EXPECT_EQ(-1, WriteBytesToPLC(&target, 0x1234, "N7:0", "ab", 2));
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
    EXPECT_EQ(-1, _WritePLCData(&target, 0x1234, "N7:0", PLC_TYPE_INTEGER, "ab", 1));
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
    EXPECT_EQ("null", typed("N7:0", 1));
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
    EXPECT_EQ("null", three("N7:0", 1));
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
}

TEST_F(PcccServices, NothingGoesOutThatIsNoRequest) {
    EXPECT_EQ("null", typed("N7", 1));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ("null", three("N7", 1));
    EXPECT_EQ("null", three("N7:0", 128));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ("null", three("ST9:0", 0xFFFF));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ(-1, WriteMaskAndDataToPLC(&target, 0x1234, "N7", 1, 1));
    EXPECT_EQ(-1, WriteBytesToPLC(&target, 0x1234, "N7:0", "ab", 256));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    for (int type : {5, 9, 0, -1}) {
        EXPECT_EQ(-1, _WritePLCData(&target, 0x1234, "N7:0", _PLC_Data_Type(type), "abcd", 1));
        EXPECT_EQ((CipError{0, -24, 0}), lastError()) << type;
    }
    EXPECT_EQ(-1, WriteBytesToPLC(&target, 0x1234, "N7", "ab", 2));
    EXPECT_EQ((CipError{0, -1, 0}), lastError()) << "no address at all";
    EXPECT_EQ(nullptr, _ReadPLCData_Ex(nullptr, 0x1234, "N7:0", 1));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(-1, WriteBytesToPLC(nullptr, 0x1234, "N7:0", "ab", 2));
    EXPECT_TRUE(transport.requests.empty());
}

TEST_F(PcccServices, BitsAreWrittenWithAMaskOnly) {
    for (const char* address : {"N7:0/5", "B3:2/5", "T4:0/DN"}) {
        EXPECT_EQ(-1, _WritePLCData(&target, 1, address, PLC_TYPE_INTEGER, "\x01\x00", 1));
        EXPECT_EQ((CipError{0, -21, 0}), lastError()) << address;
        EXPECT_EQ(-1, WriteBytesToPLC(&target, 1, address, "\x01\x00", 2));
        EXPECT_EQ((CipError{0, -21, 0}), lastError()) << address;
    }
    EXPECT_TRUE(transport.requests.empty());
}

TEST_F(PcccServices, OverAConnection) {
    target.connection = &connection;
    transport.play(connectedReply(0x77, 1, std::string(kRequestor) + "4F 00 34 12 42 2A 00"));
    EXPECT_EQ("4/2/0: 2A 00", typed("N7:0", 1));
    EXPECT_EQ("70 00", hexOf(bytesAt(transport.requests.back().data(), 2)));
    transport.play(connectedReply(0x77, 2, std::string(kRequestor) + "4F 00 34 12"));
    EXPECT_EQ(0, WriteMaskAndDataToPLC(&target, 0x1234, "B3:0", 1, 1));
    const _DHP_Header dhp = {0, 5, 0, 0};
    target.dhp = &dhp;
    transport.play(connectedReply(0x77, 3, "00 00 00 00 00 00 05 00 | 4F 00 34 12 42 2A 00"));
    EXPECT_EQ("4/2/0: 2A 00", typed("N7:0", 1));
}

TEST_F(PcccServices, HostileReplies) {
    const struct {
        const char* data;
        bool isTyped;
        const char* address;
        uint16_t count;
    } rows[] = {{"4F 00 34 12 42 2A 00", true, "N7:0", 1},
                {"4F 00 34 12 95 09 42 01 00 02 00", true, "N7:0", 2},
                {"4F 00 34 12 99 09 0A 94 08 00 00 80 3F 00 00 00 40", true, "F8:0", 2},
                {"4F 00 34 12 2A 00", false, "N7:0", 1},
                {"4F 00 34 12 00 20 64 00 07 00 00 00 C8 00 09 00", false, "T4:0.ACC", 2},
                {"4F 10 34 12", true, "N7:0", 1}};
    int decoded = 0;
    for (const auto& row : rows) {
        const Bytes whole = unconnectedReply(0x77, kRequestor + std::string(row.data));
        const auto use = [&](const Bytes& variant, size_t) {
            transport.play(variant);
            _PLC_Read* read = row.isTyped
                                  ? _ReadPLCData_Ex(&target, 0x1234, row.address, row.count)
                                  : _ReadPLCData_ExPlus(&target, 0x1234, row.address, row.count);
            if (read) {
                ++decoded;
                EXPECT_EQ(row.count, read->count) << hexOf(variant);
                for (int index = -1; index <= row.count; ++index) {
                    _PCCC_GetValueAsInteger(read, index);
                    _PCCC_GetValueAsFloat(read, index);
                    _PCCC_GetValueAsBoolean(read, index);
                }
            }
            taken(read);
            transport.play(variant);
            WriteBytesToPLC(&target, 0x1234, "N7:0", "ab", 2);
            transport.requests.clear();
        };
        forEachVariant(whole, use);
        forEachCut(whole, [&](const Bytes& cut, size_t size) {
            transport.play(cut);
            EXPECT_EQ("null",
                      row.isTyped ? typed(row.address, row.count) : three(row.address, row.count))
                << size;
        });
    }
    EXPECT_GT(decoded, 1000);
}

}  // namespace
