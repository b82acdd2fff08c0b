#include "apps/simulator/options.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace {

using sim::Options;
using sim::ParseResult;

/// The options of these arguments; fails the test when they are wrong.
Options parsed(const QStringList& arguments) {
    Options options;
    QString text;
    EXPECT_EQ(ParseResult::run,
              parseOptions(QStringList("micro800-sim") + arguments, &options, &text))
        << text.toStdString();
    return options;
}

TEST(Options, HaveDefaults) {
    const Options options = parsed({});
    EXPECT_EQ("127.0.0.1", options.address.toString().toStdString());
    EXPECT_EQ(44818, options.port);
    EXPECT_EQ(0, options.delayMs);
    EXPECT_EQ(0, options.rampMs);
    EXPECT_FALSE(options.control);
    EXPECT_FALSE(options.discovery);
    EXPECT_EQ(16u, options.controller.connections.limit);
    EXPECT_EQ(0, options.controller.connections.timeoutMs);
    EXPECT_EQ(511u, options.controller.connections.largestSize);
    EXPECT_FALSE(options.controller.connections.keep);
    EXPECT_EQ(0x05, options.controller.tags.unknownTagStatus);
    EXPECT_EQ(0x01, options.controller.tags.boolTrue);
    EXPECT_FALSE(options.controller.tags.oracle);
}

TEST(Options, AreTaken) {
    const Options options = parsed({"--address",
                                    "0.0.0.0",
                                    "--port",
                                    "0",
                                    "--tag",
                                    "A:DINT=-1",
                                    "--tag",
                                    "B:INT",
                                    "--delay",
                                    "6",
                                    "--connections=2",
                                    "--connection-timeout",
                                    "300",
                                    "--unknown-tag-status",
                                    "04",
                                    "--bool-true",
                                    "FF",
                                    "--fault",
                                    "cut@5",
                                    "--log",
                                    "f",
                                    "--stdin",
                                    "--connection-size",
                                    "256",
                                    "--keep-connections",
                                    "--udp",
                                    "--tags",
                                    "t"});
    EXPECT_EQ("0.0.0.0", options.address.toString().toStdString());
    EXPECT_EQ(0, options.port);
    EXPECT_EQ((QStringList{"A:DINT=-1", "B:INT"}), options.tags);
    EXPECT_EQ(QStringList("t"), options.tagFiles);
    EXPECT_EQ(6, options.delayMs);
    EXPECT_EQ(2u, options.controller.connections.limit);
    EXPECT_EQ(300, options.controller.connections.timeoutMs);
    EXPECT_EQ(256u, options.controller.connections.largestSize);
    EXPECT_TRUE(options.controller.connections.keep);
    EXPECT_EQ(0x04, options.controller.tags.unknownTagStatus);
    EXPECT_EQ(0xFF, options.controller.tags.boolTrue);
    EXPECT_EQ(QStringList("cut@5"), options.faults);
    EXPECT_EQ("f", options.log.toStdString());
    EXPECT_TRUE(options.control);
    EXPECT_TRUE(options.discovery);
}

TEST(Options, TakePathsAndDataFiles) {
    EXPECT_TRUE(parsed({}).controller.connections.paths.empty());
    const Options options = parsed({"--accept-path", "0100", "--accept-path", "20A624012c01",
                                    "--pccc-file", "N7[3]=1,2", "--pccc-file", "F8"});
    EXPECT_EQ((std::vector<sim::Bytes>{{0x01, 0x00}, {0x20, 0xA6, 0x24, 0x01, 0x2C, 0x01}}),
              options.controller.connections.paths);
    EXPECT_EQ((QStringList{"N7[3]=1,2", "F8"}), options.files);
}

TEST(Options, TakeWhatTheTagListHolds) {
    EXPECT_EQ(sim::SymbolList::all, parsed({}).controller.symbols);
    EXPECT_EQ(sim::SymbolList::all, parsed({"--tag-list", "all"}).controller.symbols);
    EXPECT_EQ(sim::SymbolList::partial, parsed({"--tag-list", "partial"}).controller.symbols);
    EXPECT_EQ(sim::SymbolList::none, parsed({"--tag-list", "none"}).controller.symbols);
}

TEST(Options, OverrideTheProfile) {
    EXPECT_EQ(0x04, parsed({"--profile", "older"}).controller.tags.unknownTagStatus);
    const Options options = parsed({"--unknown-tag-status", "05", "--tag-list", "all",
                                    "--bool-true", "01", "--profile", "older"});
    EXPECT_EQ(0x05, options.controller.tags.unknownTagStatus);
    EXPECT_EQ(0x01, options.controller.tags.boolTrue);
    EXPECT_EQ(sim::SymbolList::all, options.controller.symbols);
    EXPECT_FALSE(parsed({"--profile", "early"}).controller.servesTags);
}

TEST(Options, RampNeedsNoTime) {
    EXPECT_EQ(100, parsed({"--ramp"}).rampMs);
    EXPECT_EQ(100, parsed({"--ramp", "--tag", "A:DINT"}).rampMs);
    EXPECT_EQ(QStringList("A:DINT"), parsed({"--ramp", "--tag", "A:DINT"}).tags);
    EXPECT_EQ(20, parsed({"--ramp", "20"}).rampMs);
    EXPECT_EQ(30, parsed({"--ramp=30"}).rampMs);
    EXPECT_EQ(100, parsed({"--ramp-tag", "A"}).rampMs);
    EXPECT_EQ(50, parsed({"--ramp", "50", "--ramp-tag", "A"}).rampMs);
}

TEST(Options, SayWhatIsWrong) {
    const struct {
        QStringList arguments;
        const char* problem;
    } rows[] = {
        {{"--nonsense"}, "Unknown option 'nonsense'."},
        {{"--port"}, "Missing value after '--port'."},
        {{"--port", "65536"}, "--port: '65536' is no number from 0 to 65535"},
        {{"--port", "x"}, "--port: 'x' is no number from 0 to 65535"},
        {{"--address", "here"}, "--address: 'here' is no IP address"},
        {{"--delay", "-1"}, "--delay: '-1' is no number from 0 to 3600000"},
        {{"--ramp", "0"}, "--ramp: '0' is no number from 1 to 3600000"},
        {{"--connections", "-1"}, "--connections: '-1' is no number from 0 to 65535"},
        {{"--connection-size", "7"}, "--connection-size: '7' is no number from 8 to 511"},
        {{"--connection-size", "512"}, "--connection-size: '512' is no number from 8 to 511"},
        {{"--profile", "new"}, "--profile: there is no 'new' (early, older, newer)"},
        {{"--tag-list", "some"}, "--tag-list: 'some' is neither all, partial nor none"},
        {{"--unknown-tag-status", "06"}, "--unknown-tag-status: '06' is neither 04 nor 05"},
        {{"--bool-true", "2"}, "--bool-true: '2' is neither 01 nor ff"},
        {{"--fault", "sillence"}, "--fault: fault 'sillence': there is no fault 'sillence'"},
        {{"--accept-path", "01"}, "--accept-path: '01' is no path"},
        {{"--accept-path", "010"}, "--accept-path: '010' is no path"},
        {{"--accept-path", ""}, "--accept-path: '' is no path"},
        {{"--accept-path", "01 0x"}, "--accept-path: '01 0x' is no path"},
        {{"--oracle", "--ramp"}, "--ramp: oracle values do not count up by time"},
        {{"COUNTER:DINT"}, "'COUNTER:DINT' is no option"},
    };
    for (const auto& row : rows) {
        Options options;
        QString text;
        EXPECT_EQ(ParseResult::exitUsage,
                  parseOptions(QStringList("micro800-sim") + row.arguments, &options, &text));
        EXPECT_EQ(row.problem, text.toStdString());
    }
}

TEST(Options, HelpNamesOptionsExamplesAndFaults) {
    Options options;
    QString text;
    EXPECT_EQ(ParseResult::exitOk, parseOptions({"micro800-sim", "--help"}, &options, &text));
    for (const char* part :
         {"--connection-timeout <MS>", "--pccc-file <FILE>", "--accept-path <HEX>",
          "Examples:", "string-length-past-end", "pccc-status", "|pccc|any]"}) {
        EXPECT_TRUE(text.contains(part)) << part;
    }
    EXPECT_EQ(ParseResult::exitOk, parseOptions({"micro800-sim", "--version"}, &options, &text));
    EXPECT_TRUE(text.startsWith("micro800-sim ")) << text.toStdString();
}

TEST(LoadTags, TakesFilesBeforeOptions) {
    QTemporaryDir dir;
    QFile file(dir.filePath("tags.json"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"({"tags": [{"name": "A", "type": "INT"}]})");
    file.close();
    Options options;
    options.tags = QStringList("B:DINT");
    options.tagFiles = QStringList(file.fileName());
    sim::TagTable table;
    QString problem;
    ASSERT_TRUE(loadTags(options, table, &problem)) << problem.toStdString();
    EXPECT_EQ("A", table.at(0).name());
    EXPECT_EQ("B", table.at(1).name());
}

TEST(LoadTags, SaysWhatIsWrong) {
    QTemporaryDir dir;
    QFile file(dir.filePath("tags.json"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[");
    file.close();
    const QString path = file.fileName();
    Options noFile;
    noFile.tagFiles = QStringList(dir.filePath("none.json"));
    Options badFile;
    badFile.tagFiles = QStringList(path);
    Options badTag;
    badTag.tags = QStringList("A:X");
    Options badRamp;
    badRamp.tags = QStringList{"A:DINT", "B:BOOL"};
    badRamp.rampTags = QStringList("B");
    Options tooMany;
    tooMany.tags = QStringList("A:DINT[4097]");
    tooMany.controller.tags.oracle = true;
    const struct {
        Options options;
        QString problem;
    } rows[] = {
        {noFile, "--tags " + dir.filePath("none.json") + ": No such file or directory"},
        {badFile, "--tags " + path + ": "},
        {badTag, "tag 'A:X': there is no type 'X' ("},
        {badRamp, "--ramp-tag: there is no numeric tag 'B'"},
        {tooMany, "--oracle: more than 4096 elements"},
    };
    for (const auto& row : rows) {
        sim::TagTable table;
        QString problem;
        EXPECT_FALSE(loadTags(row.options, table, &problem));
        EXPECT_EQ(row.problem.toStdString(), problem.left(row.problem.size()).toStdString());
    }
}

TEST(LoadFiles, TakesDefaultsThenJsonThenOptions) {
    QTemporaryDir dir;
    QFile file(dir.filePath("files.json"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"({"pccc": [{"file": "N7", "elements": 2}, {"file": "N9", "value": 5}]})");
    file.close();
    Options options;
    options.tagFiles = QStringList(file.fileName());
    options.files = QStringList("N9[3]=1");
    sim::DataTable table;
    sim::TagTable tags;
    QString problem;
    EXPECT_TRUE(loadTags(options, tags, &problem)) << problem.toStdString();
    ASSERT_TRUE(loadFiles(options, table, &problem)) << problem.toStdString();
    EXPECT_EQ(2u, table.find(7)->elements);
    EXPECT_EQ(3u, table.find(9)->elements);
    EXPECT_TRUE(table.find(8));
    options.files = QStringList("X9");
    EXPECT_FALSE(loadFiles(options, table, &problem));
    EXPECT_EQ("file 'X9': 'X9' is no file: a letter of SBTCRNFL and a number up to 999",
              problem.toStdString());
    options.files.clear();
    options.tagFiles = QStringList(dir.filePath("none.json"));
    EXPECT_FALSE(loadFiles(options, table, &problem));
}

}  // namespace
