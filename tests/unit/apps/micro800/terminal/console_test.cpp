#include "apps/micro800/terminal/console.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/console_probe.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

const QString kHostile = QString("a\x1b]0;x\x07") + QChar(0x9b) + "2J\nb";

TEST(Console, LinesAndErrorsAreOneHarmlessLineEach) {
    ConsoleProbe probe;
    probe.console().line(kHostile);
    probe.console().error(kHostile);
    EXPECT_EQ(probe.out(), QString("a\\x1b]0;x\\x07\\x9b2J\\nb\n"));
    EXPECT_EQ(probe.err(), probe.out());
}

TEST(Console, AnObjectIsOneHarmlessLine) {
    ConsoleProbe probe;
    probe.console().json({{"a", kHostile}});
    EXPECT_EQ(probe.out(), QString("{\"a\":\"a\\u001b]0;x\\u0007\\u009b2J\\nb\"}\n"));
}

TEST(Console, APageIsAsItIs) {
    ConsoleProbe probe;
    probe.console().page("NAME\n    micro800");
    EXPECT_EQ(probe.out(), QString("NAME\n    micro800\n"));
}

TEST(Console, KnowsThatALineDidNotGetOut) {
    std::FILE* full = std::fopen("/dev/full", "w");
    ASSERT_NE(full, nullptr);
    {
        Console console(full, stderr);
        console.line("x");
        console.flush();
        EXPECT_TRUE(console.hasFailed());
        EXPECT_FALSE(console.allWritten());
    }
    std::fclose(full);
    ConsoleProbe probe;
    probe.console().line("x");
    EXPECT_TRUE(probe.console().allWritten());
    EXPECT_FALSE(probe.console().hasFailed());
}

}  // namespace
