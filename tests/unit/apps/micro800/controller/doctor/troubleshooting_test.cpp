#include "apps/micro800/controller/doctor/troubleshooting.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

const char kPage[] =
    "# A page\n"
    "| the reason looks like | it comes from | section |\n"
    "|---|---|---|\n"
    "| `Internal: …` | the client | [client](#client) |\n"
    "\n"
    "| text | means | check |\n"
    "|---|---|---|\n"
    "| `Connection refused(111)` | nobody there | the `port`; [rows](#transport) |\n"
    "| `EIP error: 0004H` to `EIP error: 0063H` | old | equipment |\n"
    "| `EIP error: 006AH` and above | future | firmware |\n"
    "| any other `AB error: …` | unknown | status |\n"
    "| `AB error: 0105H`, `AB error: 0204H` and their kin | with words | the row |\n"
    "| any other `AB error: 01FFH, …` | unknown extended | extended |\n"
    "| any other | the system's | `errno` |\n"
    "| `host … is unknown: …` | no name | spelling |\n"
    "text\n"
    "| `outside` | of | a table |\n";

TEST(Troubleshooting, TheRowOfAText) {
    const Troubleshooting page{QString::fromUtf8(kPage)};
    const struct {
        const char* text;
        const char* means;
    } rows[] = {
        {"Connection refused(111)", "nobody there"},
        {"Verbindungsaufbau abgelehnt(111)", "nobody there"},
        {"Connection refused(112)", ""},
        {"EIP error: 0003H", ""},
        {"EIP error: 0004H", "old"},
        {"EIP error: 001FH", "old"},
        {"EIP error: 0063H", "old"},
        {"EIP error: 0064H", ""},
        {"EIP error: 006BH", "future"},
        {"EIP error: FFFFH", "future"},
        {"MR error: 001FH", ""},
        {"AB error: 0204H", "with words"},
        {"AB error: 0042H", "unknown"},
        {"AB error: 01FFH, 2105H", "unknown extended"},
        {"host a.b is unknown: no", "no name"},
        {"a host a.b is unknown: no", ""},
        {"Internal: timeout", ""},
        {"outside", ""},
        {"", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(page.adviceFor(row.text).means, QString(row.means)) << row.text;
    }
    EXPECT_EQ(page.adviceFor("Connection refused(111)").check, QString("the port; rows"));
    EXPECT_EQ(page.rowCount(), 7);
}

/// The page itself, as it was compiled in.
TEST(Troubleshooting, ThePageAdvisesOnEveryStep) {
    EXPECT_GT(troubleshooting().rowCount(), 100);
    for (const char* text :
         {"host x is unknown: Name or service not known", "Network is unreachable(101)",
          "No route to host(113)", "Connection refused(111)", "Connection timed out(110)",
          "not a Micro800: \"X\"", "major fault: \"2080\"", "Internal: timeout",
          "Internal: receive timeout", "Internal: invalid reply", "EIP error: 0001H",
          "EIP error: 0069H", "MR error: 0001H, 0113H", "MR error: 0001H, 0311H", "MR error: 0008H",
          "AB error: 0005H", "AB error: 01FFH, 2105H",
          "wrong type: the controller has REAL; write REAL0:X", "3 of 10 reads had no answer"}) {
        const Advice advice = troubleshooting().adviceFor(text);
        EXPECT_FALSE(advice.means.isEmpty() || advice.check.isEmpty()) << text;
        EXPECT_FALSE((advice.means + advice.check).contains('`')) << text;
    }
}

}  // namespace
