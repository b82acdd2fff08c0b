#include "apps/micro800/terminal/text_table.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

TEST(TextTable, ColumnsAreAsWideAsTheirLongestCell) {
    EXPECT_EQ(tableLines({"A", "LONG"}, {{"wider", "x"}, {"y"}, {"", "z"}}).join('\n'),
              QString("A      LONG\n"
                      "wider  x\n"
                      "y\n"
                      "       z"));
    EXPECT_EQ(tableLines({"A"}, {}), QStringList("A"));
}

}  // namespace
