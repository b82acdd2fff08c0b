#include "apps/simulator/tags/tag_text.h"

#include <gtest/gtest.h>

#include "unit/apps/simulator/hex.h"

namespace {

using sim::Tag;
using sim::TagTable;

/// The tag that the text declares; fails the test when it declares none.
Tag* add(TagTable& table, const QString& text) {
    QString problem;
    EXPECT_TRUE(addTagFromText(text, table, &problem)) << problem.toStdString();
    return table.size() > 0 ? &table.at(table.size() - 1) : nullptr;
}

std::string bytesOf(Tag* tag) {
    return hexOf(sim::ByteView(tag->bytes(0), tag->count() * tag->type().size));
}

std::string values(const TagTable& table, const QString& text) {
    QString values;
    QString problem;
    return tagText(text, table, &values, &problem) ? values.toStdString() : problem.toStdString();
}

TEST(AddTag, TakesNameTypeAndValue) {
    TagTable table;
    Tag* tag = add(table, "Counter:dint=42");
    EXPECT_EQ("Counter", tag->name());
    EXPECT_EQ(sim::kDint, tag->type().code);
    EXPECT_TRUE(tag->dimensions().empty());
    EXPECT_EQ("2a000000", bytesOf(tag));
    EXPECT_EQ("00", bytesOf(add(table, "Flag:BOOL")));
    EXPECT_EQ("ff", bytesOf(add(table, " A : SINT = -1 ")));
    EXPECT_EQ("UDT.MEMBER", add(table, "UDT.MEMBER:INT")->name());
}

TEST(AddTag, TakesDimensions) {
    TagTable table;
    EXPECT_EQ("0100020000000000", bytesOf(add(table, "A:INT[4]=1,2")));
    Tag* grid = add(table, "B:SINT[2..3, 0..1 ,7..7]=1,2,3,4");
    EXPECT_EQ("01020304", bytesOf(grid));
    ASSERT_EQ(3u, grid->dimensions().size());
    EXPECT_EQ(2u, grid->dimensions()[0].lower);
    EXPECT_EQ(3u, grid->dimensions()[0].upper);
    EXPECT_EQ(7u, grid->dimensions()[2].lower);
}

TEST(AddTag, TakesStrings) {
    TagTable table;
    EXPECT_EQ("Mixer 3", add(table, "A:STRING=Mixer 3")->string(0));
    Tag* tag = add(table, R"(B:STRING[6]=" a,b ",c\,d,"e\"f\\",,\x41\x0a)");
    EXPECT_EQ(" a,b ", tag->string(0));
    EXPECT_EQ("c,d", tag->string(1));
    EXPECT_EQ("e\"f\\", tag->string(2));
    EXPECT_EQ("", tag->string(3));
    EXPECT_EQ("A\n", tag->string(4));
    EXPECT_EQ("", tag->string(5));
    EXPECT_EQ("a=b:c[0]", add(table, "C:STRING=a=b:c[0]")->string(0));
}

TEST(AddTag, TakesNamesOfFortyCharacters) {
    TagTable table;
    const QString name(40, 'x');
    EXPECT_EQ(name.toStdString(), add(table, name + ":DINT")->name());
}

TEST(AddTag, SaysWhatIsWrong) {
    const QString longName(41, 'x');
    const struct {
        QString text;
        const char* why;
    } rows[] = {
        {"A", "NAME:TYPE[dims]=values is wanted"},
        {":DINT", "a name is made of letters, digits and underscores and begins with no digit"},
        {"1A:DINT", "a name is made of letters, digits and underscores and begins with no digit"},
        {"A B:DINT", "a name is made of letters, digits and underscores and begins with no digit"},
        {longName + ":DINT", "a name has at most 40 characters, this one 41"},
        {"A:WORD",
         "there is no type 'WORD' (BOOL, SINT, INT, DINT, USINT, UINT, UDINT, REAL, LREAL, DWORD, "
         "STRING)"},
        {"A:DINT[", "a bracket is missing"},
        {"A:DINT]", "a bracket is missing"},
        {"A:DINT[]", "'' is no dimension (10 or 2..5)"},
        {"A:DINT[0]", "'0' is no dimension (10 or 2..5)"},
        {"A:DINT[5..2]", "'5..2' is no dimension (10 or 2..5)"},
        {"A:DINT[-1..2]", "'-1..2' is no dimension (10 or 2..5)"},
        {"A:DINT[0..4294967295]", "'0..4294967295' is no dimension (10 or 2..5)"},
        {"A:DINT[2,2,2,2]", "more than 3 dimensions"},
        {"A:DINT[1000001]", "more than 1000000 elements"},
        {"A:DINT[2147483647,2147483647,2147483647]", "more than 1000000 elements"},
        {"A:DINT=5000000000", "'5000000000' is no DINT (-2147483648..2147483647)"},
        {"A:DINT=1,2", "2 values for 1 elements"},
        {"A:DINT[2]=1,,2", "3 values for 2 elements"},
        {"A:STRING=\"x", "a double quote is not closed"},
        {"A:STRING=x\\", "a backslash at the end of the values"},
        {"TAKEN:DINT", "there is a tag of this name already"},
    };
    for (const auto& row : rows) {
        TagTable table;
        add(table, "taken:INT");
        QString problem;
        EXPECT_FALSE(addTagFromText(row.text, table, &problem)) << row.text.toStdString();
        EXPECT_EQ(QString("tag '%1': %2").arg(row.text, row.why).toStdString(),
                  problem.toStdString());
        EXPECT_EQ(1u, table.size());
    }
}

TEST(AddTagsFromJson, TakesAllKinds) {
    TagTable table;
    QString problem;
    ASSERT_TRUE(addTagsFromJson(R"({"tags": [
        {"name": "A", "type": "DINT", "value": -7},
        {"name": "B", "type": "BOOL", "value": true},
        {"name": "C", "type": "UDINT", "value": 4000000000},
        {"name": "D", "type": "INT", "dims": "2..3,0..1", "value": [1, 2, 3]},
        {"name": "E", "type": "STRING", "dims": 3, "value": ["x, \"y\"", "z"]},
        {"name": "F", "type": "LREAL", "value": 0.1},
        {"name": "G", "type": "DWORD", "value": "0xFFFFFFFF"},
        {"name": "H", "type": "REAL"}
    ]})",
                                table, &problem))
        << problem.toStdString();
    ASSERT_EQ(8u, table.size());
    EXPECT_EQ("f9ffffff", bytesOf(&table.at(0)));
    EXPECT_EQ("01", bytesOf(&table.at(1)));
    EXPECT_EQ("00286bee", bytesOf(&table.at(2)));
    EXPECT_EQ("0100020003000000", bytesOf(&table.at(3)));
    EXPECT_EQ(2u, table.at(3).dimensions()[0].lower);
    EXPECT_EQ("x, \"y\"", table.at(4).string(0));
    EXPECT_EQ("", table.at(4).string(2));
    EXPECT_EQ("9a9999999999b93f", bytesOf(&table.at(5)));
    EXPECT_EQ("ffffffff", bytesOf(&table.at(6)));
    EXPECT_EQ("00000000", bytesOf(&table.at(7)));
}

TEST(AddTagsFromJson, NeedsNoTagsBesideDataFiles) {
    TagTable table;
    QString problem;
    EXPECT_TRUE(addTagsFromJson(R"({"pccc": []})", table, &problem)) << problem.toStdString();
    EXPECT_EQ(0u, table.size());
}

TEST(AddTagsFromJson, SaysWhatIsWrong) {
    const struct {
        const char* json;
        const char* problem;
    } rows[] = {
        {"{", "unterminated object at byte 1"},
        {"[]", "{\"tags\": [...]} is wanted"},
        {"{\"tags\": {}}", "{\"tags\": [...]} is wanted"},
        {"{\"tags\": [7]}", "tag 1 '': an object with name and type is wanted"},
        {R"({"tags": [{"name": "A", "type": "INT"}, {"name": "B", "type": "X"}]})", "tag 2 'B': "},
        {R"({"tags": [{"name": "A", "type": "INT", "valeu": 1}]})",
         "tag 1 'A': there is no key 'valeu' (name, type, dims, value)"},
        {R"({"tags": [{"name": "A", "type": "INT", "dims": []}]})",
         "tag 1 'A': dims is neither a number nor a string such as \"2..5,0..3\""},
        {R"({"tags": [{"name": "A", "type": "INT", "dims": 1.5}]})",
         "tag 1 'A': '1.5' is no dimension (10 or 2..5)"},
        {R"({"tags": [{"name": "A", "type": "INT", "value": {}}]})",
         "tag 1 'A': a value is neither a number, nor a string, nor true or false"},
        {R"({"tags": [{"name": "A", "type": "INT", "value": 1.5}]})",
         "tag 1 'A': '1.5' is no INT (-32768..32767)"},
        {R"({"tags": [{"type": "INT"}]})", "tag 1 '': a name is made of"},
    };
    for (const auto& row : rows) {
        TagTable table;
        QString problem;
        EXPECT_FALSE(addTagsFromJson(row.json, table, &problem)) << row.json;
        EXPECT_EQ(row.problem, problem.toStdString().substr(0, std::string(row.problem).size()))
            << problem.toStdString();
    }
}

TEST(SetTag, StoresFromTheNamedElementOn) {
    TagTable table;
    add(table, "A:DINT[2..5]=1,2,3,4");
    add(table, "S:STRING[2]");
    QString problem;
    EXPECT_TRUE(setTagFromText("a[3] = 7,8", table, &problem)) << problem.toStdString();
    EXPECT_EQ("1,7,8,4", values(table, "A"));
    EXPECT_TRUE(setTagFromText("A=9", table, &problem));
    EXPECT_EQ("9,7,8,4", values(table, "a"));
    EXPECT_EQ("8", values(table, "A[4]"));
    EXPECT_TRUE(setTagFromText("S[1]=a\\x00\\\"b", table, &problem));
    EXPECT_EQ("\"\",\"a\\x00\\\"b\"", values(table, "S"));
}

TEST(SetTag, ChangesNothingWhenSomethingIsWrong) {
    TagTable table;
    add(table, "A:DINT[2..5]=1,2,3,4");
    const struct {
        const char* text;
        const char* problem;
    } rows[] = {
        {"A", "NAME=values is wanted"},
        {"B=1", "there is no 'B'"},
        {"A[6]=1", "there is no 'A[6]'"},
        {"A[1]=1", "there is no 'A[1]'"},
        {"A[2,0]=1", "there is no 'A[2,0]'"},
        {"A[x]=1", "there is no 'A[x]'"},
        {"A[2=1", "there is no 'A[2'"},
        {"A[]=1", "there is no 'A[]'"},
        {"A[5]=1,2", "2 values for 1 elements"},
        {"A=9,x", "'x' is no DINT (-2147483648..2147483647)"},
    };
    for (const auto& row : rows) {
        QString problem;
        EXPECT_FALSE(setTagFromText(row.text, table, &problem)) << row.text;
        EXPECT_EQ(row.problem, problem.toStdString());
        EXPECT_EQ("1,2,3,4", values(table, "A"));
    }
    EXPECT_EQ("there is no 'B'", values(table, "B"));
}

TEST(TagText, WritesEveryType) {
    TagTable table;
    add(table, "R:REAL=0.1");
    add(table, "L:LREAL=0.1");
    add(table, "B:BOOL=1");
    add(table, "U:USINT=200");
    EXPECT_EQ("0.100000001", values(table, "R"));
    EXPECT_EQ("0.10000000000000001", values(table, "L"));
    EXPECT_EQ("1", values(table, "B"));
    EXPECT_EQ("200", values(table, "U"));
}

}  // namespace
