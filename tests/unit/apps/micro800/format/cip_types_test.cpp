#include "apps/micro800/format/cip_types.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

TEST(CipTypes, NamesAndPrefixes) {
    const struct {
        int code;
        const char* name;
        const char* prefix;  ///< null where no prefix names the type
    } rows[] = {
        {0xC1, "BOOL", "BOOL0"},        {0xC2, "SINT", "SINT0"},          {0xC3, "INT", "INT0"},
        {0xC4, "DINT", "DINT0"},        {0xC5, "LINT", nullptr},          {0xC6, "USINT", "USINT0"},
        {0xC7, "UINT", "UINT0"},        {0xC8, "UDINT", "UDINT0"},        {0xC9, "ULINT", nullptr},
        {0xCA, "REAL", "REAL0"},        {0xCB, "LREAL", "LREAL0"},        {0xCD, "DATE", nullptr},
        {0xD1, "BYTE", nullptr},        {0xD2, "WORD", nullptr},          {0xD3, "DWORD", nullptr},
        {0xD4, "LWORD", nullptr},       {0xDA, "STRING", "STRING0"},      {0xDB, "TIME", nullptr},
        {0xA0, "a structure", nullptr}, {0x1234, "type 0x1234", nullptr}, {0, "type 0x0", nullptr},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(cipTypeName(row.code), QString(row.name));
        const TagType* type = tagTypeForCode(row.code);
        ASSERT_EQ(type != nullptr, row.prefix != nullptr) << row.name;
        if (type) {
            EXPECT_STREQ(type->prefix, row.prefix);
        }
    }
    // Another string than the one that the prefix names.
    EXPECT_EQ(tagTypeForCode(0xD0), nullptr);
}

}  // namespace
