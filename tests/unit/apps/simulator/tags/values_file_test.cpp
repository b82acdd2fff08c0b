#include "apps/simulator/tags/values_file.h"

#include <gtest/gtest.h>

#include "apps/simulator/tags/tag_text.h"

namespace {

QByteArray file(const QByteArray& values) {
    return R"({"format": "micro800-values/1", "saved": "2026-11-21T22:05:00Z",)"
           R"( "controller": {"product_name": "2080-LC50-48QWB"}, "values": [)" +
           values + "]}";
}

std::string get(const sim::TagTable& table, const char* name) {
    QString values;
    QString problem;
    return (tagText(name, table, &values, &problem) ? values : problem).toStdString();
}

TEST(ValuesFile, IsKnownByItsFormat) {
    EXPECT_TRUE(sim::isValuesFile(file("")));
    EXPECT_TRUE(sim::isValuesFile(R"({"format": "micro800-values/2"})"));
    for (const char* other : {"", "{}", "[]", R"({"tags": []})", R"({"format": 1})"}) {
        EXPECT_FALSE(sim::isValuesFile(other)) << other;
    }
}

TEST(ValuesFile, DeclaresEveryVariable) {
    sim::TagTable table;
    QString problem;
    ASSERT_TRUE(
        addTagsFromValues(file(R"({"address": "DINT0:COUNTER", "type": "DINT", "value": -42},
                {"address": "BOOL0:ON", "type": "BOOL", "value": true},
                {"address": "UDINT0:TOTAL", "type": "UDINT", "value": 4294967295},
                {"address": "STRING0:NAME", "type": "STRING", "value": "a, \"b\"\u00e4"},
                {"address": "LREAL0:EXACT", "type": "LREAL", "value": 0.1},
                {"address": "DINT0:GONE", "type": "DINT", "problem": "AB error: 0005H"},
                {"address": "REAL0:LEVELS[0..2]", "type": "REAL", "value": [21.5, "nan", "-inf"]},
                {"address": "STRING0:WORDS[1..2]", "type": "STRING", "value": ["", "b"], "more": 1},
                {"address": "INT0:GRID[2..3,0..1]", "type": "INT", "value": [1, 2, 3, 4]})"),
                          table, &problem))
        << problem.toStdString();
    EXPECT_EQ(8u, table.size());
    EXPECT_EQ("-42", get(table, "COUNTER"));
    EXPECT_EQ("1", get(table, "ON"));
    EXPECT_EQ("4294967295", get(table, "TOTAL"));
    EXPECT_EQ("\"a, \\\"b\\\"\\xe4\"", get(table, "NAME"));
    EXPECT_EQ("0.10000000000000001", get(table, "EXACT"));
    EXPECT_EQ("21.5,nan,-inf", get(table, "LEVELS"));
    EXPECT_EQ("\"\",\"b\"", get(table, "WORDS"));
    EXPECT_EQ("3", get(table, "GRID[3,0]"));
    EXPECT_EQ("there is no 'GRID[0,0]'", get(table, "GRID[0,0]"));
    EXPECT_EQ(sim::kInt, table.find("GRID")->type().code);
}

TEST(ValuesFile, JoinsThePartsOfAnArray) {
    sim::TagTable table;
    QString problem;
    ASSERT_TRUE(
        addTagsFromValues(file(R"({"address": "INT0:A[5..6]", "type": "INT", "value": [5, 6]},
                {"address": "INT0:B[1..1,1..1]", "type": "INT", "value": [7]},
                {"address": "INT0:a[2..3]", "type": "INT", "value": [2, 3]},
                {"address": "INT0:B[0..0,0..1]", "type": "INT", "value": [8, 9]})"),
                          table, &problem))
        << problem.toStdString();
    EXPECT_EQ("2,3,0,5,6", get(table, "A"));
    EXPECT_EQ("2", get(table, "A[2]"));
    EXPECT_EQ("8,9,0,7", get(table, "B"));
    EXPECT_EQ("9", get(table, "B[0,1]"));
}

TEST(ValuesFile, SaysWhatIsWrong) {
    const struct {
        const char* values;
        const char* problem;
    } rows[] = {
        {R"({"address": "DINT0:A", "type": "INT", "value": 1})",
         "value 1 'DINT0:A': the address is not of the type 'INT'"},
        {R"({"address": "DINT0:A", "value": 1})",
         "value 1 'DINT0:A': the address is not of the type ''"},
        {R"(5)", "value 1 '': the address is not of the type ''"},
        {R"({"address": "DINT0:A", "type": "DINT"})", "value 1 'DINT0:A': 0 values for 1 elements"},
        {R"({"address": "DINT0:A", "type": "DINT", "value": [1]})",
         "value 1 'DINT0:A': 1 values for 1 elements"},
        {R"({"address": "DINT0:A[3]", "type": "DINT", "value": [1]})",
         "value 1 'DINT0:A[3]': an array needs a range for every dimension, such as [0..9,2..5]"},
        {R"({"address": "DINT0:A[0..1", "type": "DINT", "value": [1, 2]})",
         "value 1 'DINT0:A[0..1': an array needs a range for every dimension, such as [0..9,2..5]"},
        {R"({"address": "DINT0:A[1..0]", "type": "DINT", "value": []})",
         "value 1 'DINT0:A[1..0]': '1..0' is no dimension (10 or 2..5)"},
        {R"({"address": "DINT0:A[0..1]", "type": "DINT", "value": [1]})",
         "value 1 'DINT0:A[0..1]': 1 values for 2 elements"},
        {R"({"address": "DINT0:A[0..0]", "type": "DINT", "value": 1})",
         "value 1 'DINT0:A[0..0]': 1 values for 1 elements"},
        {R"({"address": "DINT0:A", "type": "DINT", "value": 1},
            {"address": "DINT0:a", "type": "DINT", "value": 1})",
         "value 2 'DINT0:a': another entry has the same name"},
        {R"({"address": "DINT0:A[0..0]", "type": "DINT", "value": [1]},
            {"address": "INT0:A[1..1]", "type": "INT", "value": [1]})",
         "value 2 'INT0:A[1..1]': another entry has the same name"},
        {R"({"address": "DINT0:A[0..0]", "type": "DINT", "value": [1]},
            {"address": "DINT0:A[1000000..1000000]", "type": "DINT", "value": [1]})",
         "value 2 'DINT0:A[1000000..1000000]': more than 1000000 elements"},
        {R"({"address": "DINT0:A", "type": "DINT", "value": 1.5})",
         "value of 'A': '1.5' is no DINT (-2147483648..2147483647)"},
        {R"({"address": "TIME0:A", "type": "TIME", "value": 1})",
         "value of 'A': there is no type 'TIME' (BOOL, SINT, INT, DINT, USINT, UINT, UDINT, REAL, "
         "LREAL, DWORD, STRING)"},
        {R"({"address": "DINT0:", "type": "DINT", "value": 1})",
         "value of '': a name is made of letters, digits and underscores and begins with no digit"},
    };
    for (const auto& row : rows) {
        sim::TagTable table;
        QString problem;
        EXPECT_FALSE(addTagsFromValues(file(row.values), table, &problem)) << row.values;
        EXPECT_EQ(row.problem, problem.toStdString());
    }
    sim::TagTable table;
    QString problem;
    EXPECT_FALSE(addTagsFromValues(R"({"format": "micro800-values/2"})", table, &problem));
    EXPECT_EQ("the format 'micro800-values/2' is not known (micro800-values/1)",
              problem.toStdString());
    EXPECT_FALSE(addTagsFromValues(R"({"format": "micro800-values/1"})", table, &problem));
    EXPECT_EQ("{\"values\": [...]} is wanted", problem.toStdString());
}

}  // namespace
