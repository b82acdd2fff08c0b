// Requests that reach their object by other ways than a tag name: PCCC commands, and what travels
// in an Unconnected Send.

#include "unit/apps/simulator/controller_fixture.h"

namespace {

// Execute PCCC with the requestor id 07 0604 89674523.
const char kExecute[] = "4B 02 20672401 07 0604 89674523";
// Transaction 0x1234: typed read of one element of N7:0.
const char kReadN7[] = "0F 00 3412 68 0000 0100 06 07 00 0100";

std::string sized(const std::string& text) {
    sim::Bytes length;
    sim::put16(length, uint16_t(hex(text).size()));
    return hexOf(length) + hexText(text);
}

/// An unconnected request with this message-router request in it.
std::string unconnected(const std::string& cip) {
    return "6F00 0000 SSSSSSSS 00000000 0000000000000000 00000000"
           "00000000 0000 0200 0000 0000 B200 " +
           sized(cip);
}

/// A message on the connection, sequence count 9.
std::string connected(const std::string& message) {
    return "7000 0000 SSSSSSSS 00000000 0000000000000000 00000000"
           "00000000 0000 0200 A100 0400 CCCCCCCC B100 " +
           sized("0900" + message);
}

class ControllerServices : public ControllerTest {
 protected:
    ControllerServices() {
        QString problem;
        EXPECT_TRUE(addFileFromText("N7[301]=42", files, &problem));
    }

    /// The message-router reply to an unconnected request.
    std::string answer(const std::string& cip) {
        serve(unconnected(cip));
        return exchange.reply.size() > 40 ? hexOf(sim::ByteView(exchange.reply).from(40))
                                          : hexOf(exchange.reply);
    }

    void acceptPath(const char* path) {
        settings.connections.paths.push_back(hex(path));
        makeController();
        session.handle = 0;
        registerSession();
    }
};

TEST_F(ControllerServices, ExecutesPcccUnconnected) {
    registerSession();
    EXPECT_EQ(expected("6F00 2200 SSSSSSSS 00000000 0000000000000000 00000000"
                       "00000000 0000 0200 0000 0000 B200 1200"
                       "CB 00 00 00 07 0604 89674523 4F 00 3412 42 2A00"),
              serve(unconnected(std::string(kExecute) + kReadN7)));
    EXPECT_EQ("N7:0", exchange.pccc.address);
}

TEST_F(ControllerServices, ExecutesPcccConnected) {
    openConnection();
    EXPECT_EQ(expected("7000 2800 SSSSSSSS 00000000 0000000000000000 00000000"
                       "00000000 0000 0200 A100 0400 0100FE80 B100 1400 0900"
                       "CB 00 00 00 07 0604 89674523 4F 00 3412 42 2A00"),
              serve(connected(std::string(kExecute) + kReadN7)));
}

TEST_F(ControllerServices, RefusesToExecute) {
    registerSession();
    const struct {
        const char* why;
        const char* request;
        const char* reply;
    } rows[] = {
        {"another object", "4B 02 20022401 07 0604 89674523 0F003412 68", "CB000500"},
        {"another instance", "4B 02 20672402 07 0604 89674523 0F003412 68", "CB000500"},
        {"a tag", "4B 02 91014100 07 0604 89674523 0F003412 68", "CB000500"},
        {"another service", "0E 02 20672401", "8E000800"},
        {"no path", "4B 00", "CB000400"},
        {"a path past the end", "4B 09 20672401", "CB002600"},
        {"no data", "4B 02 20672401", "CB001300"},
        {"half a requestor id", "4B 02 20672401 07 0604", "CB001300"},
        {"a short requestor id", "4B 02 20672401 03 0604 0F003412", "CB002000"},
        {"half a command head", "4B 02 20672401 07 0604 89674523 0F0034", "CB001300"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(hexText(row.reply), answer(row.request)) << row.why;
        EXPECT_FALSE(exchange.hasPccc) << row.why;
    }
    EXPECT_EQ(hexText("CB 00 00 00 07 0604 89674523 4F F0 3412 06"),
              answer(std::string(kExecute) + "0F 00 3412 68 0000 0100 06 0B 00 0100"));
}

/// What is missing decides the status: the object, or the service of an object that there is.
TEST_F(ControllerServices, RefusesWhatThereIsNot) {
    registerSession();
    const struct {
        const char* why;
        const char* request;
        const char* reply;
    } rows[] = {
        {"Get_Attributes_All of the TCP/IP object", "01 02 20F52401", "81000500"},
        {"Get_Attribute_Single of the Ethernet Link object", "0E 03 20F624013003", "8E000500"},
        {"an unknown service of an unknown class", "3F 03 21002C012401", "BF000500"},
        {"Get_Attributes_All of the message router", "01 02 20022401", "81000800"},
        {"Get_Attribute_Single of the connection manager", "0E 03 200624013001", "8E000800"},
        {"Multiple Service Packet", "0A 02 20022401 0100 0400 0E0320012401 3001", "8A000800"},
        {"Reset of the identity object", "05 02 20012401", "85000800"},
        {"an unknown service of a tag", "3F 02 91014100", "BF000800"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(hexText(row.reply), answer(row.request)) << row.why;
    }
}

TEST_F(ControllerServices, ListsTheInstancesOfTheSymbolClass) {
    registerSession();
    addTag("B:INT");
    EXPECT_EQ(hexText("CB 00 00 00 01000000 02000000"), answer("4B 02 206B2400"));
    EXPECT_EQ(hexText("CB 00 15 00"), answer("4B 02 206B2400 00"));
    EXPECT_EQ(hexText("CB 00 05 00"), answer("4B 02 206B2401"));
}

TEST_F(ControllerServices, UnwrapsAnUnconnectedSend) {
    registerSession();
    EXPECT_EQ(hexText("CC 00 00 00 C400 2A000000"),
              answer("52 02 20062401 07 9A 0800 4C 02 91014100 0100 00 00"));
    EXPECT_EQ(sim::kReadTag, exchange.service);
    EXPECT_TRUE(exchange.unconnectedSend);
    // of odd size, with a pad byte
    EXPECT_EQ(hexText("CB 00 00 00 07 0604 89674523 4F 00 3412 42 2A00"),
              answer(std::string("52 02 20062401 07 9A 1B00") + kExecute + kReadN7 + "00 00 00"));
    EXPECT_EQ(hexText("CC 00 05 00"),
              answer("52 02 20062401 07 9A 0800 4C 02 91015A00 0100 00 00"));
}

TEST_F(ControllerServices, RefusesAnUnconnectedSend) {
    registerSession();
    const struct {
        const char* why;
        const char* request;
        const char* reply;
    } rows[] = {
        {"a route to elsewhere", "52 02 20062401 07 9A 0800 4C02910141000100 02 00 01000200",
         "D2 00 01 01 1103 02"},
        {"too little data", "52 02 20062401 07 9A 0800 4C02910141000100 01 00", "D2 00 13 00"},
        {"too much data", "52 02 20062401 07 9A 0800 4C02910141000100 00 00 00", "D2 00 15 00"},
        {"no message", "52 02 20062401 07 9A 0000 00 00", "D2 00 13 00"},
        {"one in another", "52 02 20062401 07 9A 0C00 52 02 20062401 07 9A 0000 00 00 00 00",
         "D2 00 08 00"},
        {"another object", "52 02 20022401 07 9A 0800 4C02910141000100 00 00", "D2 00 08 00"},
        {"another instance", "52 02 20062402 07 9A 0800 4C02910141000100 00 00", "D2 00 08 00"},
        {"an unreadable path inside", "52 02 20062401 07 9A 0800 4C02910541000100 00 00",
         "CC 00 04 00"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(hexText(row.reply), answer(row.request)) << row.why;
    }
}

TEST_F(ControllerServices, UnwrapsWhatComesOnAnAcceptedRoute) {
    acceptPath("0100");
    EXPECT_EQ(hexText("CC 00 00 00 C400 2A000000"),
              answer("52 02 20062401 07 9A 0800 4C02910141000100 01 00 0100"));
    EXPECT_EQ("0100", hexOf(exchange.route));
    EXPECT_EQ(hexText("D2 00 01 01 1103 01"),
              answer("52 02 20062401 07 9A 0800 4C02910141000100 01 00 0101"));
}

class DhpConnection : public ControllerServices {
 protected:
    /// Opens a connection to the proxy of channel A.
    void openDhp() {
        acceptPath("20A624012C01");
        serve(
            "6F00 4000 SSSSSSSS 00000000 0000000000000000 00000000"
            "00000000 0000 0200 0000 0000 B200 3000"
            "54 02 20062401 05 F7 00000000 0100FE80 0200 1B50 44332211 02 000000"
            "80841E00 F843 80841E00 F843 A3 03 20A624012C01");
        ASSERT_TRUE(exchange.status.ok());
        connection = sim::get32(exchange.reply, 44);
    }
};

TEST_F(DhpConnection, CarriesPcccBehindAHeader) {
    openDhp();
    EXPECT_EQ(expected("7000 2500 SSSSSSSS 00000000 0000000000000000 00000000"
                       "00000000 0000 0200 A100 0400 0100FE80 B100 1100 0900"
                       "0700 0800 0000 0300 4F 00 3412 42 2A00"),
              serve(connected(std::string("0000 0300 0700 0800") + kReadN7)));
    EXPECT_EQ(-1, exchange.service);
}

TEST_F(DhpConnection, SaysNothingToHalfAMessage) {
    openDhp();
    for (const char* message : {"", "0000 0300 0700 08", "0000 0300 0700 0800 0F 00 34"}) {
        EXPECT_EQ("", serve(connected(message)));
        EXPECT_STREQ("no whole DH+ message", exchange.note);
    }
    EXPECT_NE("", serve(connected("0000 0300 0700 0800 0F 00 3412")));
    EXPECT_EQ(0x10, exchange.pccc.status.sts);
}

TEST_F(DhpConnection, IsRefusedWhatItCannotHold) {
    acceptPath("20A624012C01");
    // 258 bytes: sequence count, header, command head, and 244 of data.
    serve(
        "6F00 4000 SSSSSSSS 00000000 0000000000000000 00000000"
        "00000000 0000 0200 0000 0000 B200 3000"
        "54 02 20062401 05 F7 00000000 0100FE80 0200 1B50 44332211 02 000000"
        "80841E00 0243 80841E00 0243 A3 03 20A624012C01");
    ASSERT_TRUE(exchange.status.ok());
    connection = sim::get32(exchange.reply, 44);
    serve(connected("0000 0300 0700 0800 0F 00 3412 A2 F4 07 89 00 00"));
    EXPECT_EQ(44u + 258, exchange.reply.size());
    EXPECT_EQ(0x00, exchange.pccc.status.sts);
    // A typed read has a type/data parameter as well.
    serve(connected("0000 0300 0700 0800 0F 00 3412 68 0000 7900 06 07 00 7900"));
    EXPECT_EQ(0xF0, exchange.pccc.status.sts);
    EXPECT_EQ(0x09, exchange.pccc.status.ext);
    serve(connected("0000 0300 0700 0800 0F 00 3412 68 0000 7800 06 07 00 7800"));
    EXPECT_EQ(44u + 258, exchange.reply.size());
}

TEST_F(DhpConnection, MeetsFaultsOnce) {
    openDhp();
    addFault("silence@2x1");
    addFault("pccc-status:F0,0B@3");
    serve(connected(std::string("0000 0300 0700 0800") + kReadN7));
    EXPECT_TRUE(exchange.faults.empty());
    serve(connected(std::string("0000 0300 0700 0800") + kReadN7));
    ASSERT_EQ(1u, exchange.faults.size());
    EXPECT_EQ(expected("7000 2300 SSSSSSSS 00000000 0000000000000000 00000000"
                       "00000000 0000 0200 A100 0400 0100FE80 B100 0F00 0900"
                       "0700 0800 0000 0300 4F F0 3412 0B"),
              serve(connected(std::string("0000 0300 0700 0800") + kReadN7)));
}

TEST_F(ControllerServices, RefusesPcccByFaultWithoutTakingEffect) {
    registerSession();
    const std::string write = std::string(kExecute) + "0F 00 3412 AA 02 07 89 00 00 0700";
    addFault("pccc-status:50x1");
    addFault("pccc-status:F0,17@2x1");
    addFault("pccc-status:F0@3x1");
    addFault("pccc-status:00@4x1@tag=N7:0");
    addFault("status:08@5x1@on=pccc");
    const char* const replies[] = {
        "CB000000 07 0604 89674523 4F 50 3412",
        "CB000000 07 0604 89674523 4F F0 3412 17",
        "CB000000 07 0604 89674523 4F F0 3412 00",
        "CB000000 07 0604 89674523 4F 00 3412",
        "CB000800",
    };
    for (const char* reply : replies) {
        EXPECT_EQ(hexText(reply), answer(write));
    }
    EXPECT_EQ("2a00", hexOf(sim::ByteView(files.find(7)->bytes.data(), 2)));
    EXPECT_EQ(hexText("CB000000 07 0604 89674523 4F 00 3412"), answer(write));
    EXPECT_EQ("0700", hexOf(sim::ByteView(files.find(7)->bytes.data(), 2)));
}

TEST_F(ControllerServices, CountsPcccFaultsByAddress) {
    registerSession();
    addFault("pccc-status:50@tag=n7:1");
    answer(std::string(kExecute) + kReadN7);
    EXPECT_TRUE(exchange.faults.empty());
    answer(std::string(kExecute) + "0F 00 3412 68 0000 0100 06 07 01 0100");
    EXPECT_EQ(1u, exchange.faults.size());
    serve(unconnected("4C 02 91014100 0100"));
    EXPECT_TRUE(exchange.faults.empty());
    EXPECT_FALSE(exchange.hasPccc);
}

}  // namespace
