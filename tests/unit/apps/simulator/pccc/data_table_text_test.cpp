#include "apps/simulator/pccc/data_table_text.h"

#include <gtest/gtest.h>

#include "unit/apps/simulator/hex.h"

namespace {

class DataTableText : public testing::Test {
 protected:
    /// "" or the reason.
    std::string add(const char* text) {
        QString problem;
        return addFileFromText(text, table, &problem) ? "" : problem.toStdString();
    }

    std::string addJson(const char* text) {
        QString problem;
        return addFilesFromJson(text, table, &problem) ? "" : problem.toStdString();
    }

    std::string set(const char* text) {
        QString problem;
        return setFileFromText(text, table, &problem) ? "" : problem.toStdString();
    }

    std::string get(const char* text) {
        QString values;
        QString problem;
        return fileText(text, table, &values, &problem) ? values.toStdString()
                                                        : problem.toStdString();
    }

    std::string bytes(uint32_t number) {
        return table.find(number) ? hexOf(table.find(number)->bytes) : "none";
    }

    sim::DataTable table;
};

TEST_F(DataTableText, DeclaresFiles) {
    EXPECT_EQ("", add("N7[4]=1,-2,0xFFFE"));
    EXPECT_EQ(hexText("0100 FEFF FEFF 0000"), bytes(7));
    EXPECT_EQ("", add("f8[2]= 1.5, -0.25"));
    EXPECT_EQ(hexText("0000C03F 000080BE"), bytes(8));
    EXPECT_EQ("", add("T4[2]=0,1000,250,8192"));
    EXPECT_EQ(hexText("0000 E803 FA00 0020 0000 0000"), bytes(4));
    EXPECT_EQ("", add("B3=65535"));
    EXPECT_EQ(hexText("FFFF"), bytes(3));
    EXPECT_EQ("", add("L9[2]=-1,4294967295"));
    EXPECT_EQ(hexText("FFFFFFFF FFFFFFFF"), bytes(9));
    EXPECT_EQ("", add("S2[3]"));
    EXPECT_EQ(hexText("0000 0000 0000"), bytes(2));
    EXPECT_EQ("", add("N7=5")) << "in place of the file before";
    EXPECT_EQ(hexText("0500"), bytes(7));
    EXPECT_EQ("", add("N999[65535]"));
}

TEST_F(DataTableText, SaysWhatIsWrongWithADeclaration) {
    const struct {
        const char* text;
        const char* problem;
    } rows[] = {
        {"", "'' is no file: a letter of SBTCRNFL and a number up to 999"},
        {"N", "'N' is no file: a letter of SBTCRNFL and a number up to 999"},
        {"X7", "'X7' is no file: a letter of SBTCRNFL and a number up to 999"},
        {"N1000", "'N1000' is no file: a letter of SBTCRNFL and a number up to 999"},
        {"N7[0]", "a file has from 1 to 65535 elements"},
        {"N7[65536]", "a file has from 1 to 65535 elements"},
        {"N7[99999999999]", "a file has from 1 to 65535 elements"},
        {"N7[", "FILE[elements]=values is wanted"},
        {"N7[2]x=1", "FILE[elements]=values is wanted"},
        {"N7=1,2", "2 numbers where there is room for 1"},
        {"N7=65536", "'65536' is no INT (-32768..32767)"},
        {"N7=x", "'x' is no INT (-32768..32767)"},
        {"F8=x", "'x' is no REAL"},
        {"T4=0,0,0,0", "4 numbers where there is room for 3"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(std::string("file '") + row.text + "': " + row.problem, add(row.text));
    }
}

TEST_F(DataTableText, DeclaresFilesInJson) {
    EXPECT_EQ("", addJson(R"({"tags": []})"));
    EXPECT_EQ("", addJson(R"({"pccc": [{"file": "N7", "elements": 3, "value": [1, "0x10"]},
                                       {"file": "F8", "value": 1.5}]})"));
    EXPECT_EQ(hexText("0100 1000 0000"), bytes(7));
    EXPECT_EQ(hexText("0000C03F"), bytes(8));
    const struct {
        const char* text;
        const char* problem;
    } rows[] = {
        {"[", "unterminated array at byte 1"},
        {R"({"pccc": 1})", "{\"pccc\": [...]} is wanted"},
        {R"({"pccc": [1]})", "file 1 '': an object with file, elements and value is wanted"},
        {R"({"pccc": [{"file": "N7", "size": 1}]})",
         "file 1 'N7': there is no key 'size' (file, elements, value)"},
        {R"({"pccc": [{"file": "N7", "elements": "3"}]})",
         "file 1 'N7': a file has from 1 to 65535 elements"},
        {R"({"pccc": [{"file": "N7", "elements": 1e9}]})",
         "file 1 'N7': a file has from 1 to 65535 elements"},
        {R"({"pccc": [{"file": "N7", "value": [null]}]})",
         "file 1 'N7': a value is neither a number, nor a string, nor true or false"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.problem, addJson(row.text)) << row.text;
    }
}

TEST_F(DataTableText, TellsAddressesFromTags) {
    EXPECT_TRUE(sim::isFileAddress("N7:0"));
    EXPECT_TRUE(sim::isFileAddress("N7:0=5"));
    EXPECT_FALSE(sim::isFileAddress("NAME"));
    EXPECT_FALSE(sim::isFileAddress("NAME=a:b"));
}

TEST_F(DataTableText, SetsAndGetsNumbers) {
    add("N7[3]=1,-2,3");
    add("T4[2]=32768,1000,250,1,2,3");
    add("F8[2]=1.5,2");
    add("B3=0x8001");
    EXPECT_EQ("-2", get("N7:1"));
    EXPECT_EQ("-32768,1000,250", get("t4:0"));
    EXPECT_EQ("2", get("T4:1.PRE"));
    EXPECT_EQ("3", get("T4:1.acc"));
    EXPECT_EQ("3", get("T4:1.2"));
    EXPECT_EQ("1", get("T4:1.CTL"));
    EXPECT_EQ("1.5", get(" F8:0 "));
    EXPECT_EQ("32769", get("B3:0"));
    EXPECT_EQ("", set("N7:1=7,8"));
    EXPECT_EQ("", set("T4:1.ACC=9"));
    EXPECT_EQ(hexText("0100 0700 0800"), bytes(7));
    EXPECT_EQ("1,2,9", get("T4:1"));
}

TEST_F(DataTableText, SaysWhatIsWrongWithAnAddress) {
    add("N7[3]=1,2,3");
    add("T4[1]");
    for (const char* text : {"N7:3", "N8:0", "T7:0", "N7:", "N7:0.0", "T4:0.LEN", "T4:0.3", "T4:0.",
                             "N7:99999999999", "N7:0/1"}) {
        EXPECT_EQ(std::string("there is no '") + text + "'", get(text));
    }
    EXPECT_EQ("ADDRESS=values is wanted", set("N7:0"));
    EXPECT_EQ("there is no 'N7:3'", set("N7:3=1"));
    EXPECT_EQ("4 numbers where there is room for 3", set("N7:0=1,2,3,4"));
    EXPECT_EQ("'' is no INT (-32768..32767)", set("N7:0=9,"));
    EXPECT_EQ(hexText("0100 0200 0300"), bytes(7)) << "all or none";
}

}  // namespace
