#include "apps/micro800/controller/trace/path_text.h"

#include <gtest/gtest.h>

#include "support/hex_bytes.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

TEST(RequestPathText, NamesWhatThePathNames) {
    const struct {
        const char* path;
        const char* text;
    } rows[] = {
        {"", ""},
        {"9103 417272 00", "Arr"},
        {"9103 417272 00 2803 29002c01", "Arr[3,300]"},
        {"9101 4100 2801 9101 4200", "A[1].B"},
        {"9101 4100 2a00 70110100", "A[70000]"},
        {"206b 2400", "class 0x6B, instance 0"},
        {"206b 2500 2c01 3005", "class 0x6B, instance 300, attribute 5"},
        {"2006 2401 2c01", "class 0x6, instance 1"},  // a connection point says nothing to a reader
        {"9104 4f4b", "OK"},                          // shorter than it says
        {"206b 25", "class 0x6B"},
        {"206b ff", "class 0x6B"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(requestPathText(hex(row.path)), QString(row.text)) << row.path;
    }
}

}  // namespace
