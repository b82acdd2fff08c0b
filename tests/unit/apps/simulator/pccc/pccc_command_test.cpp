#include "apps/simulator/pccc/pccc_command.h"

#include <gtest/gtest.h>

#include "unit/apps/simulator/hex.h"

namespace {

class PcccCommands : public testing::Test {
 protected:
    PcccCommands() {
        put('S', 2, 4, "0100 3412");
        put('B', 3, 4, "0000 0000 2000");
        put('T', 4, 3, "0020 6400 0700 0000 C800 0900");
        put('N', 7, 301, "2A00 FEFF");
        put('F', 8, 2, "0000C03F 00000040");
        put('L', 9, 2, "01020304");
    }

    void put(char letter, uint32_t number, uint32_t elements, const char* front) {
        sim::DataFile file(*sim::findFileType(letter), elements);
        const sim::Bytes bytes = hex(front);
        std::copy(bytes.begin(), bytes.end(), file.bytes.begin());
        table.put(number, file);
    }

    /// The reply to a command of transaction 0x1234, from its status byte on and without the
    /// transaction number.
    std::string answer(const std::string& functionAndFields) {
        request = hex("0F 00 3412" + functionAndFields);
        EXPECT_TRUE(decodePccc(request, table, &command));
        sim::Bytes reply;
        answerPccc(most, &command, &reply);
        EXPECT_EQ("4f", hexOf(reply).substr(0, 2));
        EXPECT_EQ("3412", hexOf(reply).substr(4, 4));
        return hexOf(reply).substr(2, 2) + hexOf(reply).substr(8);
    }

    std::string bytes(uint32_t number, size_t at, size_t size) {
        return hexOf(sim::ByteView(table.find(number)->bytes.data() + at, size));
    }

    sim::DataTable table;
    sim::Bytes request;  ///< what command looks into
    sim::PcccCommand command;
    size_t most = 500;  ///< bytes of a reply
};

struct Row {
    const char* request;
    const char* reply;
};

TEST_F(PcccCommands, AreNoneWithoutAHead) {
    for (const char* text : {"", "0F", "0F 00", "0F 00 34"}) {
        EXPECT_FALSE(decodePccc(hex(text), table, &command)) << text;
    }
}

TEST_F(PcccCommands, RefuseWhatTheyDoNotKnow) {
    const struct {
        const char* request;
        const char* reply;
    } rows[] = {
        {"0F 00 3412", "4F 10 3412"},     // no function
        {"0F 01 3412 68", "4F 10 3412"},  // a status
        {"06 00 3412 03", "46 10 3412"},  // another command
        {"4F 00 3412 68", "4F 10 3412"},  // a reply
        {"0F 00 3412 A1 02 07 89 00", "4F 10 3412"},
        {"0F 00 3412 00", "4F 10 3412"},
    };
    for (const auto& row : rows) {
        const sim::Bytes bytes = hex(row.request);
        ASSERT_TRUE(decodePccc(bytes, table, &command)) << row.request;
        sim::Bytes reply;
        answerPccc(most, &command, &reply);
        EXPECT_EQ(hexText(row.reply), hexOf(reply)) << row.request;
    }
}

TEST_F(PcccCommands, RefuseToReadMoreThanTheReplyHolds) {
    // Head, type/data parameter, and one word; of three of them the array's parameter as well.
    most = 4 + 1 + 2;
    EXPECT_EQ("00422a00", answer("68 0000 0100 06 07 00 0100"));
    EXPECT_EQ("f009", answer("68 0000 0300 06 07 00 0300"));
    EXPECT_EQ(0xF0, command.status.sts);
    EXPECT_EQ("002a00", answer("A2 02 07 89 00 00"));
    EXPECT_EQ("10", answer("A2 04 07 89 00 00"));
    most = 4 + 3 + 1 + 3 * 2;
    EXPECT_EQ("00990907422a00feff0000", answer("68 0000 0300 06 07 00 0300"));
}

// Offset, total, address, size.
TEST_F(PcccCommands, ReadTyped) {
    const Row rows[] = {
        {"68 0000 0100 06 07 00 0100", "00 42 2A00"},
        {"68 0000 0200 06 07 00 0200", "00 99 09 05 42 2A00 FEFF"},
        {"68 0100 0200 06 07 00 0100", "00 42 FEFF"},
        {"68 0000 0100 06 07 FF 2C01 0100", "00 42 0000"},
        {"68 0000 0100 06 08 01 0100", "00 94 08 00000040"},
        {"68 0000 0200 06 08 00 0200", "00 99 09 0A 94 08 0000C03F 00000040"},
        {"68 0000 0100 06 03 02 0100", "00 22 2000"},
        {"68 0000 0100 06 02 01 0100", "00 22 3412"},
        {"68 0000 0100 06 04 00 0100", "00 56 0020 6400 0700"},
        {"68 0000 0100 0E 04 00 00 0100", "00 22 0020"},
        {"68 0000 0100 0E 04 01 01 0100", "00 42 C800"},
        {"68 0000 0100 0E 04 00 02 0100", "00 42 0700"},
        {"68 0000 0100 06 09 00 0100", "00 44 01020304"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(hexText(row.reply), answer(row.request)) << row.request;
    }
}

TEST_F(PcccCommands, ReadTypedAsMuchAsAReplyHolds) {
    EXPECT_EQ(hexText("00 99 09 F5 42 2A00 FEFF"),
              answer("68 0000 7A00 06 07 00 7A00").substr(0, 18));
    EXPECT_EQ(244, command.size);
    EXPECT_EQ(hexText("F0 09"), answer("68 0000 7B00 06 07 00 7B00"));
}

TEST_F(PcccCommands, RefuseToReadTyped) {
    const Row rows[] = {
        {"68", "10"},
        {"68 0000 01", "10"},
        {"68 0000 0100", "10"},
        {"68 0000 0100 06 07", "10"},
        {"68 0000 0100 06 07 00", "10"},
        {"68 0000 0100 06 07 00 01", "10"},
        {"68 0000 0100 06 07 00 0100 00", "10"},
        {"68 0000 0000 06 07 00 0000", "F0 01"},
        {"68 0000 0100 06 07 00 0200", "F0 01"},
        {"68 0100 0100 06 07 00 0100", "F0 01"},
        {"68 FFFF FFFF 06 07 00 FFFF", "F0 01"},
        {"68 0000 0100 02 07 0100", "F0 02"},
        {"68 0000 0100 1E 07 00 00 00 0100", "F0 03"},
        {"68 0000 0100 06 0B 00 0100", "F0 06"},       // no such file
        {"68 0000 0100 06 07 FF 2D01 0100", "F0 06"},  // no such element
        {"68 0000 0100 0E 07 00 00 0100", "F0 06"},    // a word of a number
        {"68 0000 0100 0E 04 00 03 0100", "F0 06"},    // no such word
        {"68 0000 0200 06 07 FF 2C01 0200", "F0 0A"},
        {"68 2D01 2E01 06 07 00 0100", "F0 0A"},
        {"68 0000 0200 0E 04 00 01 0200", "F0 0A"},  // words of a timer one by one
    };
    for (const Row& row : rows) {
        EXPECT_EQ(hexText(row.reply), answer(row.request)) << row.request;
    }
}

TEST_F(PcccCommands, WriteTyped) {
    EXPECT_EQ("00", answer("67 0000 0100 06 07 00 42 0700"));
    EXPECT_EQ("00", answer("67 0000 0200 06 07 FF 2B01 95 09 42 0102 0304"));
    EXPECT_EQ("00", answer("67 0200 0400 06 07 00 99 09 05 22 0506 0708"));
    EXPECT_EQ(hexText("0700 FEFF 0506 0708 0000"), bytes(7, 0, 10));
    EXPECT_EQ(hexText("0000 0102 0304"), bytes(7, 596, 6));
    EXPECT_EQ("00", answer("67 0000 0100 06 08 01 94 08 0000803F"));
    EXPECT_EQ(hexText("0000C03F 0000803F"), bytes(8, 0, 8));
    EXPECT_EQ("00", answer("67 0000 0100 06 03 02 42 FFFF"));
    EXPECT_EQ(hexText("0000 FFFF 0000"), bytes(3, 2, 6));
    EXPECT_EQ("00", answer("67 0000 0100 0E 04 00 02 42 0000"));
    EXPECT_EQ("00", answer("67 0000 0100 06 04 01 56 0100 0200 0300"));
    EXPECT_EQ(hexText("0020 6400 0000 0100 0200 0300"), bytes(4, 0, 12));
}

TEST_F(PcccCommands, RefuseToWriteTypedAndChangeNothing) {
    const sim::Bytes before = table.find(7)->bytes;
    const Row rows[] = {
        {"67", "10"},
        {"67 0000 0100 06 07 00", "10"},
        {"67 0000 0100 06 07 00 42", "10"},
        {"67 0000 0100 06 07 00 42 01", "10"},
        {"67 0000 0100 06 07 00 42 0100 0200", "10"},  // one element that is two
        {"67 0000 0100 06 07 00 40 0100", "10"},
        {"67 0000 0200 06 07 00 95 09 42 0100 02", "10"},
        {"67 0000 0200 06 07 00 94 09 42 0100 0200", "10"},  // the array's size
        {"67 0000 0200 06 07 00 91 09", "10"},
        {"67 0000 0200 06 07 00 92 09 99 09", "10"},
        {"67 0000 0100 06 07 00 95 09 42 0100 0200", "F0 01"},
        {"67 0000 0200 06 07 FF 2C01 95 09 42 0100 0200", "F0 0A"},
        {"67 0000 0100 06 0B 00 42 0100", "F0 06"},
        {"67 0000 0100 06 07 00 A2 0A 0100", "10"},
        {"67 0000 0100 06 07 00 92 0A 0100", "F0 11"},  // type 10
        {"67 0000 0100 06 07 00 02 0100", "F0 11"},     // type 0
        {"67 0000 0100 06 07 00 94 08 0000803F", "F0 17"},
        {"67 0000 0100 06 07 00 44 01000000", "F0 17"},
        {"67 0000 0100 06 08 00 42 0100", "F0 17"},
        {"67 0000 0100 06 04 00 42 0100", "F0 17"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(hexText(row.reply), answer(row.request)) << row.request;
    }
    EXPECT_EQ(hexOf(before), hexOf(table.find(7)->bytes));
}

// Byte size, file, type, element, sub-element.
TEST_F(PcccCommands, ReadWithThreeAddressFields) {
    const Row rows[] = {
        {"A2 02 07 89 00 00", "00 2A00"},           {"A2 04 07 89 00 00", "00 2A00 FEFF"},
        {"A2 02 07 89 FF 2C01 00", "00 0000"},      {"A2 04 08 8A 01 00", "00 00000040"},
        {"A2 02 03 85 02 00", "00 2000"},           {"A2 02 02 84 01 00", "00 3412"},
        {"A2 06 04 86 00 00", "00 0020 6400 0700"}, {"A2 02 04 86 00 02", "00 0700"},
        {"A2 04 04 86 00 02", "00 0700 0000"},      {"A2 04 FF 0900 91 00 00", "00 01020304"},
        {"A2 02 08 8A 01 00", "00 0000"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(hexText(row.reply), answer(row.request)) << row.request;
    }
}

TEST_F(PcccCommands, RefuseToReadWithThreeAddressFields) {
    const Row rows[] = {
        {"A2", "10"},
        {"A2 02 07 89 00", "10"},
        {"A2 02 07 89 FF 2C", "10"},
        {"A2 02 07 89 00 00 00", "10"},
        {"A2 00 07 89 00 00", "10"},
        {"A2 03 07 89 00 00", "10"},
        {"A2 F6 07 89 00 00", "10"},  // 246 bytes
        {"A2 02 07 8D 00 00", "10"},  // a type that there is not
        {"A2 02 0B 89 00 00", "50"},  // no such file
        {"A2 02 07 8A 00 00", "50"},  // a file of another type
        {"A2 02 07 89 FF 2D01 00", "50"},
        {"A2 02 07 89 00 01", "50"},
        {"A2 02 04 86 00 03", "50"},
        {"A2 04 07 89 FF 2C01 00", "50"},  // on past the end
    };
    for (const Row& row : rows) {
        EXPECT_EQ(hexText(row.reply), answer(row.request)) << row.request;
    }
}

TEST_F(PcccCommands, WriteWithThreeAddressFields) {
    EXPECT_EQ("00", answer("AA 04 07 89 FF 2B01 00 0102 0304"));
    EXPECT_EQ(hexText("0000 0102 0304"), bytes(7, 596, 6));
    EXPECT_EQ("00", answer("AA 02 04 86 01 02 0500"));
    EXPECT_EQ(hexText("0000 C800 0500"), bytes(4, 6, 6));
    EXPECT_EQ("00", answer("AA 04 08 8A 00 00 0000803F"));
    EXPECT_EQ(hexText("0000803F 00000040"), bytes(8, 0, 8));
}

// The mask follows the address.
TEST_F(PcccCommands, WriteWithMask) {
    EXPECT_EQ("00", answer("AB 02 03 85 02 00 0F00 FAFF"));
    EXPECT_EQ(hexText("0000 2A00 0000"), bytes(3, 2, 6));
    EXPECT_EQ("00", answer("AB 04 03 85 00 00 00FF 1234 5678"));
    EXPECT_EQ(hexText("0034 0078"), bytes(3, 0, 4)) << "the same mask for each word";
}

TEST_F(PcccCommands, RefuseToWriteWithThreeAddressFieldsAndChangeNothing) {
    const sim::Bytes before = table.find(7)->bytes;
    const Row rows[] = {
        {"AA 02 07 89 00 00", "10"},
        {"AA 02 07 89 00 00 01", "10"},
        {"AA 02 07 89 00 00 0100 00", "10"},
        {"AA 03 07 89 00 00 010000", "10"},
        {"AA 02 0B 89 00 00 0100", "50"},
        {"AA 04 07 89 FF 2C01 00 01000200", "50"},
        {"AB 02 07 89 00 00", "10"},
        {"AB 02 07 89 00 00 FF", "10"},
        {"AB 02 07 89 00 00 FFFF 01", "10"},
        {"AB 02 07 89 00 00 FFFF 0100 00", "10"},
        {"AB 02 07 89 FF 2D01 00 FFFF 0100", "50"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(hexText(row.reply), answer(row.request)) << row.request;
    }
    EXPECT_EQ(hexOf(before), hexOf(table.find(7)->bytes));
}

TEST_F(PcccCommands, TellWhatTheyAsk) {
    answer("68 0000 0300 06 07 00 0300");
    EXPECT_EQ("N7:0", command.address);
    EXPECT_EQ(3, command.count);
    answer("AA 02 04 86 01 02 0500");
    EXPECT_EQ("T4:1.2", command.address);
    EXPECT_EQ(2, command.count);
    EXPECT_EQ("0500", hexOf(command.written));
    answer("AB 02 0B 89 00 00 FFFF 0100");
    EXPECT_EQ("N11:0", command.address);
    EXPECT_EQ("0100", hexOf(command.written));
    answer("67 0000 0100 06 0B 00 42 0100");
    EXPECT_EQ("11:0", command.address);
    answer("A2");
    EXPECT_EQ("", command.address);
    EXPECT_EQ(-1, command.count);
}

TEST(PcccFunctionName, IsNullForOthers) {
    EXPECT_STREQ("TypedRead", sim::pcccFunctionName(0x68));
    EXPECT_STREQ("TypedWrite", sim::pcccFunctionName(0x67));
    EXPECT_STREQ("ThreeAddressRead", sim::pcccFunctionName(0xA2));
    EXPECT_STREQ("ThreeAddressWrite", sim::pcccFunctionName(0xAA));
    EXPECT_STREQ("MaskedWrite", sim::pcccFunctionName(0xAB));
    EXPECT_EQ(nullptr, sim::pcccFunctionName(0xA1));
}

}  // namespace
