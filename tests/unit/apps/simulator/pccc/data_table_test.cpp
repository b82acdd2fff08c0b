#include "apps/simulator/pccc/data_table.h"

#include <gtest/gtest.h>

namespace {

using sim::DataFile;
using sim::DataTable;
using sim::findFileType;
using sim::findFileTypeByCode;

TEST(FileType, IsFoundByLetterAndCode) {
    const struct {
        char letter;
        int code;
        size_t elementSize;
        bool isStructure;
    } rows[] = {
        {'S', 0x84, 2, false}, {'B', 0x85, 2, false}, {'T', 0x86, 6, true},  {'C', 0x87, 6, true},
        {'R', 0x88, 6, true},  {'N', 0x89, 2, false}, {'F', 0x8A, 4, false}, {'L', 0x91, 4, false},
    };
    for (const auto& row : rows) {
        const sim::FileType* type = findFileType(row.letter);
        ASSERT_TRUE(type) << row.letter;
        EXPECT_EQ(type, findFileTypeByCode(uint8_t(row.code))) << row.letter;
        EXPECT_EQ(row.elementSize, type->elementSize()) << row.letter;
        EXPECT_EQ(row.isStructure, type->isStructure()) << row.letter;
    }
    EXPECT_EQ(nullptr, findFileType('n'));
    EXPECT_EQ(nullptr, findFileTypeByCode(0x8D));
}

TEST(DataTable, HasFilesByNumber) {
    DataTable table;
    EXPECT_EQ(nullptr, table.find(7));
    table.put(7, DataFile(*findFileType('N'), 10));
    ASSERT_TRUE(table.find(7));
    EXPECT_EQ(20u, table.find(7)->bytes.size());
    table.put(7, DataFile(*findFileType('T'), 2));
    EXPECT_EQ('T', table.find(7)->type->letter);
    EXPECT_EQ(12u, table.find(7)->bytes.size());
}

TEST(DataTable, HasFilesAtFirst) {
    DataTable table;
    table.putDefaultFiles();
    const std::string letters = "SBTCRNF";
    for (uint32_t number = 2; number <= 8; ++number) {
        ASSERT_TRUE(table.find(number)) << number;
        EXPECT_EQ(letters[number - 2], table.find(number)->type->letter);
    }
    EXPECT_LE(301u, table.find(7)->elements);
    EXPECT_EQ(nullptr, table.find(0));
}

}  // namespace
