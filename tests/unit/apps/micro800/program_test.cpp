#include "apps/micro800/program.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "apps/micro800/commands/command.h"
#include "unit/apps/micro800/console_probe.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

struct WrongUsage {
    QStringList arguments;
    QString firstLine;
};

void expectWrong(const QStringList& arguments, const QString& firstLine) {
    ConsoleProbe probe;
    EXPECT_EQ(runProgram(arguments, probe.console()), kExitUsage)
        << qPrintable(arguments.join(' '));
    EXPECT_EQ(probe.err().section('\n', 0, 0), firstLine);
    EXPECT_EQ(probe.out(), QString());
}

TEST(Program, WhatIsNoCommand) {
    expectWrong({}, "micro800: no command given");
    expectWrong({"reed"}, "micro800: unknown command reed; did you mean read?");
    expectWrong({""}, "micro800: unknown command ");
    expectWrong({"--host", "h", "read"},
                "micro800: the command comes first: micro800 COMMAND --host");
    expectWrong({"help", "reed"}, "micro800: unknown command reed; did you mean read?");
}

TEST(Program, EveryWrongCommandLineNamesItsCommandAndItsHelp) {
    ConsoleProbe probe;
    EXPECT_EQ(runProgram({"read", "--nonsense"}, probe.console()), kExitUsage);
    EXPECT_EQ(probe.err(), QString("micro800 read: unknown option --nonsense\n"
                                   "Try 'micro800 read --help'.\n"));
}

TEST(Program, TheNearCommandAndTheNearOptionAreSuggested) {
    expectWrong({"wacth"}, "micro800: unknown command wacth; did you mean watch?");
    expectWrong({"compile"}, "micro800: unknown command compile");
    expectWrong({"read", "--jsno", "DINT0:X"},
                "micro800 read: unknown option --jsno; did you mean --json?");
}

/// The environment's host for as long as it lives.
class HostVariable {
 public:
    explicit HostVariable(const char* host) { qputenv("MICRO800_HOST", host); }
    ~HostVariable() { qunsetenv("MICRO800_HOST"); }
};

TEST(Program, TheHostMayComeFromTheEnvironment) {
    {
        const HostVariable host("192.0.2.1");
        expectWrong({"read"}, "micro800 read: no address given");
        expectWrong({"read", "--host", "a b", "DINT0:X"},
                    "micro800 read: --host \"a b\": not a host name or IP address");
    }
    {
        const HostVariable host("a b");
        expectWrong({"read", "DINT0:X"},
                    "micro800 read: MICRO800_HOST \"a b\": not a host name or IP address");
        expectWrong({"read", "--host", "h"}, "micro800 read: no address given");
    }
    const HostVariable host("");
    expectWrong({"read", "DINT0:X"}, "micro800 read: --host HOST is missing");
}

TEST(Program, HelpOfEveryCommandFitsATerminal) {
    ASSERT_GE(commandTable().size(), 6);
    for (const Command& command : commandTable()) {
        const QString name = command.help().name;
        ConsoleProbe asOption;
        ConsoleProbe asCommand;
        EXPECT_EQ(runProgram({name, "--help"}, asOption.console()), kExitOk);
        EXPECT_EQ(runProgram({"help", name}, asCommand.console()), kExitOk);
        EXPECT_EQ(asOption.out(), asCommand.out());
        EXPECT_TRUE(asOption.out().startsWith("NAME\n    micro800 " + name + " - "));
        EXPECT_TRUE(asOption.out().contains("\nEXAMPLES\n    micro800 " + name));
        for (const QString& line : asOption.out().split('\n')) {
            EXPECT_LE(line.size(), 82) << qPrintable(line);
        }
        for (const OptionSpec& option : command.help().options) {
            EXPECT_TRUE(asOption.out().contains((option.shortName.isEmpty()
                                                     ? QString("\n    ")
                                                     : "\n    -" + option.shortName + ", ") +
                                                "--" + option.name));
        }
    }
}

TEST(Program, OverallHelpNamesEveryCommand) {
    ConsoleProbe probe;
    EXPECT_EQ(runProgram({"--help"}, probe.console()), kExitOk);
    for (const Command& command : commandTable()) {
        EXPECT_TRUE(probe.out().contains("\n    " + command.help().name + " "));
    }
    EXPECT_EQ(probe.err(), QString());
}

TEST(Program, Version) {
    ConsoleProbe probe;
    EXPECT_EQ(runProgram({"--version"}, probe.console()), kExitOk);
    EXPECT_EQ(probe.out(), QString("micro800 1.0.0\n"));
}

TEST(Program, OutputThatCannotBeWrittenIsAFailure) {
    std::FILE* full = std::fopen("/dev/full", "w");
    ASSERT_NE(full, nullptr);
    ConsoleProbe probe;
    std::FILE* err = std::tmpfile();
    {
        Console console(full, err);
        EXPECT_EQ(runProgram({"--help"}, console), kExitFailed);
    }
    std::fclose(full);
    std::fclose(err);
}

// ---- read, write, watch: refused before anything is sent ---------------------------------------

TEST(ReadUsage, Refused) {
    expectWrong({"read", "DINT0:X"}, "micro800 read: --host HOST is missing");
    expectWrong({"read", "--host", "", "DINT0:X"},
                "micro800 read: --host \"\": not a host name or IP address");
    expectWrong({"read", "--host", "a b", "DINT0:X"},
                "micro800 read: --host \"a b\": not a host name or IP address");
    expectWrong({"read", "--host", "h"}, "micro800 read: no address given");
    expectWrong(
        {"read", "--host", "h:x", "DINT0:X"},
        "micro800 read: --host \"h:x\": what is behind the colon is no port from 1 to 65535");
    expectWrong({"read", "--host", "h:1", "--port", "2", "DINT0:X"},
                "micro800 read: --host h:1 and --port 2 name two ports");
    expectWrong({"read", "--host", "h", "--port", "0", "DINT0:X"},
                "micro800 read: --port 0: not a whole number from 1 to 65535");
    expectWrong({"read", "--host", "h", "--port", "65536", "DINT0:X"},
                "micro800 read: --port 65536: not a whole number from 1 to 65535");
    expectWrong({"read", "--host", "h", "--timeout", "-1", "DINT0:X"},
                "micro800 read: --timeout -1: not a whole number from 1 to 600000");
    expectWrong({"read", "--host", "h", "--retry", "many", "DINT0:X"},
                "micro800 read: --retry many: not a whole number from 0 to 100");
    expectWrong({"read", "--host", "h", "--repeat", "0", "DINT0:X"},
                "micro800 read: --repeat 0: not a whole number from 1 to 1000000000");
    expectWrong({"read", "--host", "h", "--count", "0", "DINT0:X[0]"},
                "micro800 read: --count 0: not a whole number from 1 to 65535");
    expectWrong({"read", "--host", "h", "--count", "2", "INT0:A[0]", "DINT0:X"},
                "micro800 read: DINT0:X: a plain tag is always one element; for 2 elements of an "
                "array write its first one, as in 'DINT0:X[0]'");
    expectWrong({"read", "--host", "h", "DINT0:GOOD", "NOPREFIX"},
                "micro800 read: \"NOPREFIX\": no type prefix; an address reads PREFIX:NAME, for "
                "example DINT0:COUNTER");
    expectWrong({"read", "--host", "h", "--json", "--csv", "DINT0:X"},
                "micro800 read: --json and --csv exclude each other");
    expectWrong({"read", "--host", "h", "--project", "", "DINT0:X"},
                "micro800 read: --project: no directory given");
}

TEST(WriteUsage, Refused) {
    expectWrong({"write", "--host", "h"}, "micro800 write: no address given");
    expectWrong({"write", "--host", "h", "DINT0:X"}, "micro800 write: DINT0:X: no value given");
    expectWrong({"write", "--host", "h", "DINT0:X", "5000000000"},
                "micro800 write: DINT0:X: 5000000000 does not fit DINT (-2147483648 to "
                "2147483647)");
    expectWrong({"write", "--host", "h", "BOOL0:X", "maybe"},
                "micro800 write: BOOL0:X: maybe is not a BOOL (true, false, on, off, yes, "
                "no, 1 or 0)");
    // The value is read as a value although it begins with a dash.
    expectWrong({"write", "--host", "h", "USINT0:X", "-1"},
                "micro800 write: USINT0:X: -1 does not fit USINT (0 to 255)");
    expectWrong({"write", "--host", "h", "REAL0:X", "-inf"},
                "micro800 write: REAL0:X: -inf is not a finite number; a REAL is only written "
                "with one");
    expectWrong({"write", "--host", "h", "DINT0:X", "1", "2"},
                "micro800 write: DINT0:X: a plain tag is always one element; for 2 elements of an "
                "array write its first one, as in 'DINT0:X[0]'");
    expectWrong({"write", "--host", "h", "--count", "3", "INT0:A[0]", "1", "2"},
                "micro800 write: --count 3, but 2 values are given");
    expectWrong({"write", "--host", "h", "--count", "3", "INT0:A[0]", "1"},
                "micro800 write: --count 3, but 1 value is given");
    expectWrong({"write", "--host", "h", "INT0:A[0]", "1", "x"},
                "micro800 write: INT0:A[0]: x is not a whole number");
    expectWrong({"write", "--host", "h", "STRING0:A[0]", "a", "b"},
                "micro800 write: STRING0:A[0]: STRING elements are accessed one at a time; name "
                "each of them");
    expectWrong({"write", "--host", "h", "--retry", "2", "DINT0:X", "1"},
                "micro800 write: unknown option --retry");
}

TEST(WriteUsage, EveryAssignmentIsChecked) {
    expectWrong({"write", "--host", "h", "DINT0:X=1", "DINT0:Y"},
                "micro800 write: DINT0:Y: not an assignment; write ADDRESS=VALUE, for example "
                "DINT0:SETPOINT=42");
    expectWrong({"write", "--host", "h", "DINT0:X=1", "INT0:A[0]=1,40000"},
                "micro800 write: INT0:A[0]: 40000 does not fit INT (-32768 to 32767)");
    expectWrong({"write", "--host", "h", "DINT0:X=1,2"},
                "micro800 write: DINT0:X: a plain tag is always one element; for 2 elements of an "
                "array write its first one, as in 'DINT0:X[0]'");
    expectWrong({"write", "--host", "h", "DINT0:X="},
                "micro800 write: DINT0:X:  is not a whole number");
    expectWrong({"write", "--host", "h", "X=1"},
                "micro800 write: \"X\": no type prefix; an address reads PREFIX:NAME, for example "
                "DINT0:COUNTER");
    expectWrong({"write", "--host", "h", "--count", "1", "DINT0:X=1"},
                "micro800 write: --count goes with ADDRESS VALUE..., not with assignments");
    QTemporaryDir dir;
    QFile file(dir.filePath("values"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("DINT0:X = 1\nBOOL0:B = maybe\n");
    file.close();
    expectWrong({"write", "--host", "h", "@" + file.fileName()},
                QString("micro800 write: %1:2: BOOL0:B: maybe is not a BOOL (true, false, on, off, "
                        "yes, no, 1 or 0)")
                    .arg(file.fileName()));
}

TEST(WatchUsage, Refused) {
    expectWrong({"watch", "--host", "h"}, "micro800 watch: no address given");
    for (const char* text : {"0", "-1", "x", "nan", "inf", ""}) {
        expectWrong(
            {"watch", "--host", "h", "--duration", text, "DINT0:X"},
            QString("micro800 watch: --duration %1: not a number of seconds above 0").arg(text));
    }
    expectWrong({"watch", "--host", "h", "--interval", "0", "DINT0:X"},
                "micro800 watch: --interval 0: not a whole number from 1 to 3600000");
    QStringList many{"watch", "--host", "h"};
    for (int i = 0; i < 200; ++i) {
        many << QString("DINT0:A_TAG_WITH_A_LONG_NAME_%1").arg(i, 3, 10, QChar('0'));
    }
    expectWrong(many,
                "micro800 watch: 200 addresses make a list of 5808 bytes, and the driver takes at "
                "most 4096; 'micro800 plan' tells what would help");
}

TEST(IdentifyUsage, Refused) {
    expectWrong({"identify"}, "micro800 identify: --host HOST is missing");
    expectWrong({"identify", "--host", "a b"},
                "micro800 identify: --host \"a b\": not a host name or IP address");
    expectWrong({"identify", "--host", "h", "DINT0:X"},
                "micro800 identify: unexpected argument DINT0:X");
    expectWrong({"identify", "--host", "h", "--port", "0"},
                "micro800 identify: --port 0: not a whole number from 1 to 65535");
    expectWrong({"identify", "--host", "h", "--timeout", "0"},
                "micro800 identify: --timeout 0: not a whole number from 1 to 600000");
    expectWrong({"identify", "--host", "h", "--plugin", "p"},
                "micro800 identify: unknown option --plugin");
}

TEST(InfoUsage, Refused) {
    expectWrong({"info", "file"}, "micro800 info: unexpected argument file");
}

// ---- project, all the way
// ------------------------------------------------------------------------

TEST(ProjectUsage, Refused) {
    QTemporaryDir dir;
    const QString path = dir.path() + "/new";
    expectWrong({"project"}, "micro800 project: no directory given");
    expectWrong({"project", "a", "b"}, "micro800 project: more than one directory given");
    expectWrong({"project", path, "--array", "DINT0:X[5..2]"},
                "micro800 project: DINT0:X[5..2]: the range 5..2 ends below its beginning");
    expectWrong({"project", path, "--connector", "COM"},
                "micro800 project: --connector \"COM\": not a port of the runtime, such as "
                "ETHERNET1 or COM2");
    expectWrong({"project", path, "--connector", "12"},
                "micro800 project: --connector \"12\": not a port of the runtime, such as "
                "ETHERNET1 or COM2");
    expectWrong({"project", path, "--port", "1"},
                "micro800 project: --port and --station describe a controller: --host is missing");
    expectWrong({"project", path, "--host", "h", "--station", "256"},
                "micro800 project: --station 256: not a whole number from 0 to 255");
    EXPECT_FALSE(QFileInfo::exists(path));
}

/// The reply to a read contains 496 bytes of values.
TEST(ProjectCommand, WarnsOfArraysThatTakeSeveralRequests) {
    QTemporaryDir dir;
    const QString path = dir.path() + "/panel";
    ConsoleProbe made;
    EXPECT_EQ(runProgram({"project", path, "--array", "DINT0:FITS[0..123]", "--array",
                          "DINT0:LARGE[0..124]", "--array", "LREAL0:GRID[0..99,0..9]", "--array",
                          "STRING0:NAMES[0..999]"},
                         made.console()),
              kExitOk);
    EXPECT_EQ(
        made.err(),
        QString("micro800: warning: DINT0:LARGE[0..124]: more than the 496 bytes that one "
                "packet holds; each polling pass takes 2 requests, and the elements may be of "
                "different scans of the controller\n"
                "micro800: warning: LREAL0:GRID[0..99,0..9]: more than the 496 bytes that one "
                "packet holds; each polling pass takes 17 requests, and the elements may be "
                "of different scans of the controller\n"));
    ConsoleProbe listed;
    EXPECT_EQ(runProgram({"project", path}, listed.console()), kExitOk);
    EXPECT_EQ(listed.err(), QString());
}

TEST(ProjectCommand, MakesExtendsAndLists) {
    QTemporaryDir dir;
    const QString path = dir.path() + "/panel";
    ConsoleProbe missing;
    EXPECT_EQ(runProgram({"project", path}, missing.console()), kExitFailed);
    EXPECT_EQ(missing.err(), QString("micro800: no project in %1: %1/compile/database/database is "
                                     "missing\n")
                                 .arg(path));

    ConsoleProbe made;
    EXPECT_EQ(runProgram({"project", path, "--array", "DINT0:RECIPE[0..9,0..4]", "--array",
                          "INT0:ONE[3..3]", "--host", "192.168.1.20"},
                         made.console()),
              kExitOk);
    EXPECT_EQ(made.out(), QString("DINT0:RECIPE[0..9,0..4] (50 elements) on link 1: added\n"
                                  "INT0:ONE[3..3] (1 element) on link 1: added\n"
                                  "192.168.1.20:44818 on link 1: default node\n"));

    EXPECT_EQ(made.err(), QString());

    ConsoleProbe extended;
    EXPECT_EQ(runProgram({"project", path, "--array", "DINT0:RECIPE[0..9,0..4]", "--array",
                          "INT0:ONE[0..1]", "--link", "1", "--connector", "COM2"},
                         extended.console()),
              kExitOk);
    EXPECT_EQ(extended.out(), QString("DINT0:RECIPE[0..9,0..4] (50 elements) on link 1: unchanged\n"
                                      "INT0:ONE[0..1] (2 elements) on link 1: replaced\n"));

    ConsoleProbe listed;
    EXPECT_EQ(runProgram({"project", path}, listed.console()), kExitOk);
    EXPECT_EQ(listed.out(), QString("link 1: port 1003\n"
                                    "node on link 1: station 0, 192.168.1.20:44818, default\n"
                                    "array on link 1: DINT0:RECIPE[0..9,0..4] (50 elements)\n"
                                    "array on link 1: INT0:ONE[0..1] (2 elements)\n"));

    ConsoleProbe json;
    EXPECT_EQ(runProgram({"project", path, "--json"}, json.console()), kExitOk);
    EXPECT_EQ(json.out(),
              QString("{\"arrays\":[{\"address\":\"DINT0:RECIPE[0..9,0..4]\",\"link\":1},"
                      "{\"address\":\"INT0:ONE[0..1]\",\"link\":1}],"
                      "\"links\":[{\"link\":1,\"port\":1003}],"
                      "\"nodes\":[{\"default\":true,\"ip\":\"192.168.1.20\",\"link\":1,"
                      "\"port\":44818,\"station\":0}]}\n"));
}

}  // namespace
