#include "apps/micro800/terminal/command_line.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

CommandHelp sampleHelp() {
    CommandHelp help;
    help.name = "sample";
    help.summary = "shows the form";
    help.synopsis << "--depth N THING...";
    help.description << "One paragraph.";
    help.options << OptionSpec{"depth", "N", "How deep.", "3"}
                 << OptionSpec{"flat", QString(), "Not deep at all.", QString()}
                 << OptionSpec{"output", "FILE", "Where to.", QString(), "o"};
    help.examples << "micro800 sample --depth 2 a\nresult";
    return help;
}

TEST(CommandLine, WhatIsWrongIsToldInItsOwnWords) {
    const struct {
        QStringList arguments;
        const char* problem;
    } rows[] = {
        {{"--dpeth", "2"}, "unknown option --dpeth; did you mean --depth?"},
        {{"--dept=2"}, "unknown option --dept; did you mean --depth?"},
        {{"--verbose"}, "unknown option --verbose"},
        {{"a", "-1", "-flta"}, "unknown option -flta; did you mean --flat?"},
        {{"-x"}, "unknown option -x"},
        {{"--depth", "--flat", "--hlep"}, "unknown option --hlep; did you mean --help?"},
        {{"a", "--depth"}, "--depth N: the value is missing"},
        {{"--flat=yes"}, "--flat takes no value"},
        {{"-o"}, "-o FILE: the value is missing"},
    };
    for (const auto& row : rows) {
        CommandLine line(sampleHelp());
        QString problem;
        EXPECT_FALSE(line.parse(row.arguments, &problem)) << row.problem;
        EXPECT_EQ(problem, QString(row.problem));
    }
}

TEST(CommandLine, AnOptionMayHaveALetter) {
    QString problem;
    for (const QStringList& arguments :
         {QStringList{"-o", "f"}, QStringList{"-of"}, QStringList{"--output", "f"}}) {
        CommandLine line(sampleHelp());
        ASSERT_TRUE(line.parse(arguments, &problem)) << qPrintable(problem);
        EXPECT_EQ(line.value("output"), QString("f"));
    }
}

TEST(CommandLine, OptionsMayStandAnywhere) {
    QString problem;
    CommandLine line(sampleHelp());
    ASSERT_TRUE(line.parse({"a", "--depth", "2", "b", "--flat"}, &problem)) << qPrintable(problem);
    EXPECT_EQ(line.positional(), (QStringList{"a", "b"}));
    EXPECT_EQ(line.value("depth"), QString("2"));
    EXPECT_TRUE(line.isSet("flat"));
    EXPECT_FALSE(line.helpWanted());
    EXPECT_TRUE(line.knows("depth"));
    EXPECT_FALSE(line.knows("deep"));
}

TEST(CommandLine, ANegativeNumberIsAValue) {
    QString problem;
    CommandLine line(sampleHelp());
    ASSERT_TRUE(
        line.parse({"-1", "x", "-2.5", "-.5", "-0x10", "-1e-3", "-inf", "--flat", "-7"}, &problem))
        << qPrintable(problem);
    EXPECT_EQ(line.positional(),
              (QStringList{"-1", "x", "-2.5", "-.5", "-0x10", "-1e-3", "-inf", "-7"}));
    EXPECT_TRUE(line.isSet("flat"));
}

TEST(CommandLine, ANegativeNumberIsAnOptionsValueToo) {
    QString problem;
    CommandLine line(sampleHelp());
    ASSERT_TRUE(line.parse({"--depth", "-4"}, &problem)) << qPrintable(problem);
    EXPECT_EQ(line.value("depth"), QString("-4"));
    EXPECT_EQ(line.values("depth"), QStringList("-4"));
}

TEST(CommandLine, TwoDashesEndTheOptions) {
    QString problem;
    CommandLine line(sampleHelp());
    ASSERT_TRUE(line.parse({"--flat", "--", "--depth", "-3", "--"}, &problem));
    EXPECT_EQ(line.positional(), (QStringList{"--depth", "-3", "--"}));
}

TEST(CommandLine, WhateverTheArgumentItComesBackUnchanged) {
    QString problem;
    const QString marked = QString(QChar(0xE000)) + "-1";
    CommandLine line(sampleHelp());
    ASSERT_TRUE(line.parse({marked, "", " ", "\"", "-1-2"}, &problem));
    EXPECT_EQ(line.positional(), (QStringList{marked, "", " ", "\"", "-1-2"}));
}

TEST(CommandLine, NumbersAreCheckedAgainstTheirRange) {
    QString problem;
    int number = -1;
    CommandLine absent(sampleHelp());
    ASSERT_TRUE(absent.parse({}, &problem));
    EXPECT_TRUE(absent.number("depth", 1, 9, 3, &number, &problem));
    EXPECT_EQ(number, 3);
    for (const char* text : {"0", "10", "-1", "x", "", "1.5", "99999999999"}) {
        CommandLine line(sampleHelp());
        ASSERT_TRUE(line.parse({"--depth", text}, &problem));
        EXPECT_FALSE(line.number("depth", 1, 9, 3, &number, &problem)) << text;
        EXPECT_EQ(problem, QString("--depth %1: not a whole number from 1 to 9").arg(text));
    }
    CommandLine good(sampleHelp());
    ASSERT_TRUE(good.parse({"--depth", "9"}, &problem));
    EXPECT_TRUE(good.number("depth", 1, 9, 3, &number, &problem));
    EXPECT_EQ(number, 9);
}

TEST(CommandLine, TheHelpPageHasAllSections) {
    EXPECT_EQ(helpPage(sampleHelp()), QString("NAME\n"
                                              "    micro800 sample - shows the form\n"
                                              "\n"
                                              "SYNOPSIS\n"
                                              "    micro800 sample --depth N THING...\n"
                                              "\n"
                                              "DESCRIPTION\n"
                                              "    One paragraph.\n"
                                              "\n"
                                              "OPTIONS\n"
                                              "    --depth N\n"
                                              "        How deep. Default: 3.\n"
                                              "    --flat\n"
                                              "        Not deep at all.\n"
                                              "    -o, --output FILE\n"
                                              "        Where to.\n"
                                              "    --help\n"
                                              "        Shows this page.\n"
                                              "\n"
                                              "EXAMPLES\n"
                                              "    micro800 sample --depth 2 a\n"
                                              "    result\n"
                                              "\n"
                                              "EXIT STATUS\n"
                                              "    0  everything was done\n"
                                              "    1  something failed: a tag, the plugin file, "
                                              "the project\n"
                                              "    2  the command line is wrong; nothing was "
                                              "sent"));
}

TEST(Wrapped, BreaksAtBlanksAndKeepsLongWords) {
    EXPECT_EQ(wrapped("aa bb cc", 2, 7), QString("  aa bb\n  cc"));
    EXPECT_EQ(wrapped("aaaaaaaaaa b", 0, 5), QString("aaaaaaaaaa\nb"));
    EXPECT_EQ(wrapped("", 2, 10), QString("  "));
}

}  // namespace
