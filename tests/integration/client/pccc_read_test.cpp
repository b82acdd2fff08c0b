// Reads from the data table, each by every way that a command can take.

#include "integration/client/client_rig.h"

namespace {

class PcccReads : public PcccWays {
 protected:
    PlcRead typed(const char* address, uint16_t count = 1) {
        return PlcRead(_ReadPLCData_Ex(&target, next(), address, count));
    }

    PlcRead three(const char* address, uint16_t count = 1) {
        return PlcRead(_ReadPLCData_ExPlus(&target, next(), address, count));
    }

    /// The elements as numbers, by both commands.
    std::string integers(const char* address, uint16_t count = 1) {
        const std::string byType = numbers(typed(address, count));
        EXPECT_EQ(byType, numbers(three(address, count))) << address;
        return byType;
    }

    static std::string numbers(const PlcRead& read) {
        if (!read) {
            return cip_err_msg();
        }
        EXPECT_EQ(kPcccSuccess, lastError());
        std::string text;
        for (int i = 0; i < read->count; ++i) {
            text += (i > 0 ? "," : "") + std::to_string(_PCCC_GetValueAsInteger(read.get(), i));
            EXPECT_EQ(kNoError, lastError());
        }
        return text;
    }

    /// Whether the simulator took the last command by the way that is tested.
    void expectWay() {
        const QJsonObject request = simulator->log().last();
        const bool isConnected = target.connection;
        EXPECT_EQ(isConnected ? "SendUnitData" : "SendRRData",
                  request["command"].toString().toStdString());
        EXPECT_EQ(isDhp ? "" : "ExecutePCCC", request["service"].toString().toStdString());
        EXPECT_EQ(GetParam() == Way::routed ? "0100" : "",
                  request["route"].toString().toStdString());
        EXPECT_EQ("00", request["sts"].toString().toStdString());
        if (isDhp) {
            // after encapsulation header, item heads and sequence count: links and nodes, command
            EXPECT_EQ(
                "0100030204000500"
                "0f00",
                request["request"].toString().mid(2 * 46, 2 * 10).toStdString());
        }
    }
};

INSTANTIATE_TEST_SUITE_P(All, PcccReads, testing::ValuesIn(kWays),
                         testing::PrintToStringParamName());

TEST_P(PcccReads, IntegersComeBackAsNumbers) {
    EXPECT_EQ("42", integers("N7:0"));
    expectWay();
    EXPECT_EQ("42,-2,32767,-32768", integers("N7:0", 4));
    EXPECT_EQ("-32768", integers("N7:3"));
    EXPECT_EQ("-100000,100000", integers("L9:0", 2));
    EXPECT_EQ("4660", integers("S:1"));
    EXPECT_EQ("65535", integers("B3:3"));
}

TEST_P(PcccReads, ElementsFrom255OnAreEscaped) {
    command("set N7:254=7,8");
    command("set N7:300=-7");
    EXPECT_EQ("7,8", integers("N7:254", 2));
    EXPECT_EQ("8", integers("N7:255"));
    EXPECT_EQ("-7", integers("N7:300"));
}

TEST_P(PcccReads, FloatsComeBackAsNumbers) {
    const PlcRead reads[] = {typed("F8:0", 3), three("F8:0", 3)};
    for (const PlcRead& read : reads) {
        ASSERT_TRUE(read) << cip_err_msg();
        EXPECT_EQ(1.5f, _PCCC_GetValueAsFloat(read.get(), 0));
        EXPECT_EQ(-0.25f, _PCCC_GetValueAsFloat(read.get(), 1));
        EXPECT_EQ(16777216.0f, _PCCC_GetValueAsFloat(read.get(), 2));
    }
    const PlcRead one = typed("F8:1");
    ASSERT_TRUE(one);
    EXPECT_EQ(-0.25f, _PCCC_GetValueAsFloat(one.get(), 0));
    const PlcRead integer = typed("N7:1");
    ASSERT_TRUE(integer);
    EXPECT_EQ(-2.0f, _PCCC_GetValueAsFloat(integer.get(), 0));
}

TEST_P(PcccReads, BitsComeBackAsBooleans) {
    const struct {
        const char* address;
        bool value;
    } rows[] = {
        {"B3:2/5", true},  {"B3:2/4", false},  {"B3/37", true},      {"B3:3/15", true},
        {"T4:0/DN", true}, {"T4:0/EN", false}, {"T4:1.EN", true},    {"N7:0/1", true},
        {"N7:0/0", false}, {"S:1/2", true},    {"T4:0.ACC/1", true},
    };
    for (const auto& row : rows) {
        const PlcRead reads[] = {typed(row.address), three(row.address)};
        for (const PlcRead& read : reads) {
            ASSERT_TRUE(read) << row.address << ": " << cip_err_msg();
            EXPECT_EQ(row.value, _PCCC_GetValueAsBoolean(read.get(), 0)) << row.address;
        }
    }
}

TEST_P(PcccReads, WordsOfStructuresComeBackAsNumbers) {
    EXPECT_EQ("1000", integers("T4:0.PRE"));
    EXPECT_EQ("250", integers("T4:0.ACC"));
    EXPECT_EQ("7", integers("T4:1.2"));
    EXPECT_EQ("-5", integers("C5:0.PRE"));
    EXPECT_EQ("9", integers("C5:0.ACC"));
    EXPECT_EQ("250,7", numbers(three("T4:0.ACC", 2)));
    const PlcRead reads[] = {typed("T4:0", 2), three("T4:0", 2)};
    for (const PlcRead& read : reads) {
        ASSERT_TRUE(read) << cip_err_msg();
        EXPECT_EQ(PLC_TYPE_TIMER, read->type);
        EXPECT_EQ(6, read->elementSize);
        EXPECT_EQ("00 20 E8 03 FA 00 00 80 D0 07 07 00",
                  hexOf(bytesAt(_GetPLCReadData(read.get()), size_t(read->size))));
    }
}

TEST_P(PcccReads, KindOfControllerChoosesTheCommand) {
    const struct {
        int kind;
        const char* function;
    } rows[] = {{PLC_KIND_PLC5, "TypedRead"},
                {PLC_KIND_SLC500, "ThreeAddressRead"},
                {PLC_KIND_LOGIX, "TypedRead"}};
    for (const auto& row : rows) {
        const PlcRead read(_ReadPLCData(&target, row.kind, next(), "N7:0", 2));
        EXPECT_EQ("42,-2", numbers(read));
        EXPECT_EQ(row.function, simulator->log().last()["function"].toString().toStdString());
        EXPECT_EQ("N7:0", simulator->log().last()["address"].toString().toStdString());
    }
}

TEST_P(PcccReads, AsMuchAsOneReplyHolds) {
    // A command has 244 bytes of data. These connections have 258 bytes: the sequence count, what
    // comes before the command and its head leave less for a reply; a typed one has four bytes for
    // its type.
    const bool isObject = !isDhp && target.connection;
    const uint16_t mostTyped = isDhp ? 120 : isObject ? 118 : 122;
    const uint16_t mostWords = isObject ? 120 : 122;
    const PlcRead read = typed("N7:0", mostTyped);
    ASSERT_TRUE(read) << cip_err_msg();
    EXPECT_EQ(mostTyped, read->count);
    EXPECT_EQ(0, _PCCC_GetValueAsInteger(read.get(), mostTyped - 1));
    EXPECT_FALSE(typed("N7:0", mostTyped + 1));
    EXPECT_EQ((CipError{6, 0xF0, 0}), lastError());
    EXPECT_TRUE(three("N7:0", mostWords));
    EXPECT_FALSE(three("N7:0", mostWords + 1));
    EXPECT_EQ((CipError{6, 0x10, 0}), lastError());
}

TEST_P(PcccReads, AreRefusedWhereNothingIs) {
    for (const char* address : {"N7:301", "N11:0", "F8:4", "T4:2.ACC"}) {
        EXPECT_FALSE(typed(address)) << address;
        EXPECT_EQ((CipError{6, 0xF0, 0}), lastError()) << address;
        EXPECT_FALSE(three(address)) << address;
        EXPECT_EQ((CipError{6, 0x50, 0}), lastError()) << address;
    }
    EXPECT_FALSE(three("F7:0")) << "a file of another type";
    EXPECT_EQ((CipError{6, 0x50, 0}), lastError());
    EXPECT_EQ("42", integers("N7:0")) << "and goes on";
}

class PcccConnections : public ClientTest {};

TEST_F(PcccConnections, AreRefusedOnPathsThatLeadNowhere) {
    startClient();
    const unsigned char route[] = {0x01, 0x01};
    EXPECT_FALSE(_ConnectPLCOverCNET(session, PLC_KIND_PLC5, 5, 247, 0x80FE0001, 2, 20507, 1, 2,
                                     2000, _Transport, route, sizeof route));
    EXPECT_EQ((CipError{3, 1, 0x0311}), lastError());
    EXPECT_FALSE(_ConnectPLCOverDHP(session, PLC_KIND_PLC5, 5, 247, 0x80FE0001, 2, 20507, 1, 2,
                                    2000, _Transport, 'B', nullptr, 0));
    EXPECT_EQ((CipError{3, 1, 0x0311}), lastError());
    EXPECT_TRUE(simulator->waitForLog(2, [](const QJsonObject& request) {
        return request["service"] == "ForwardOpen" && request["status"] == "01/0311";
    }));
}

}  // namespace
