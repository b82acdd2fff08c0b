// Pages beside those with a test file of their own: their commands are run, and the texts of their
// tables are provoked.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>

#include "integration/cli/cli_program.h"
#include "integration/cli/doc_page.h"

namespace {

const int kDemoMs = 120000;

QString contentOf(const QString& file) {
    QFile page(QString(PROJECT_ROOT "/") + file);
    EXPECT_TRUE(page.open(QIODevice::ReadOnly)) << qPrintable(file);
    return QString::fromUtf8(page.readAll());
}

class Pages : public CliTest {
 protected:
    /// Runs the commands of a page with MICRO800_HOST set to the simulated controller.
    void expectThePage(const char* name, int atLeast) {
        QProcessEnvironment settings = shellEnvironment();
        settings.insert("MICRO800_HOST", QString("127.0.0.1:%1").arg(controller->port()));
        const auto same = [](const QString& text) { return text; };
        expectThePageIsWhatHappens(name, atLeast, {settings, same, same});
    }
};

TEST_F(Pages, AddressesAndTypes) {
    startController({"--tag", "COUNTER:DINT=42", "--tag", "LEVEL:REAL=21.5", "--tag",
                     "NAME:STRING=Mixer 3", "--tag", "LEVEL_MM:INT=-1234", "--tag",
                     "GRID:INT[3,4]=0,1,2,3,10,11,12,13,20,21,22,23"});
    expectThePage("addresses-and-types.md", 4);
}

TEST_F(Pages, CommandLineHost) {
    startController(
        {"--tag", "COUNTER:DINT=42", "--tag", "SETPOINT:DINT", "--tag", "BIG:DINT[300]"});
    expectThePage("cli.md", 4);
}

/// The commands of docs/cli.md are those of --help.
TEST_F(Pages, EveryCommandIsInTheTable) {
    const QString help = QString::fromUtf8(run({"--help"}).out);
    const QString section = help.section("COMMANDS\n", 1, 1).section("\n\n", 0, 0);
    const QString page = contentOf("docs/cli.md").section("## Commands", 1, 1).section("## ", 0, 0);
    int count = 0;
    for (const QString& line : section.split('\n')) {
        const QString command = line.trimmed().section(' ', 0, 0);
        EXPECT_TRUE(page.contains(QRegularExpression("\n\\|[^|]*`" + command + "`[^|]*\\|")))
            << qPrintable(command);
        ++count;
    }
    EXPECT_GE(count, 14);
}

/// What scripts/demo prints is what README.md shows. The build is the one that this test belongs
/// to.
TEST_F(Pages, DemoOfTheReadme) {
    if (environment.contains("MICRO800_EMULATOR")) {
        GTEST_SKIP() << "the shell of this machine starts no program of another";
    }
    const QString readme = contentOf("README.md");
    const QString shown = readme.section("exit code 0 and\n\n```\n", 1, 1).section("```", 0, 0);
    ASSERT_TRUE(shown.contains("COUNTER = 42"));
    QTemporaryDir tree;
    const QDir root(tree.path());
    ASSERT_TRUE(root.mkdir("scripts"));
    for (const char* script : {"scripts/demo", "scripts/lib.sh"}) {
        ASSERT_TRUE(QFile::copy(QString(PROJECT_ROOT "/") + script, root.filePath(script)));
    }
    QFile build(root.filePath("scripts/build"));
    ASSERT_TRUE(build.open(QIODevice::WriteOnly));
    build.write("#!/bin/sh\n");
    build.close();
    build.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    const QString built = QFileInfo(QFileInfo(program()).path()).path();
    ASSERT_TRUE(QFile::link(built, root.filePath("build")));

    QProcess demo;
    demo.setProcessEnvironment(environment);
    demo.setProcessChannelMode(QProcess::MergedChannels);
    demo.setStandardInputFile(QProcess::nullDevice());
    demo.start(root.filePath("scripts/demo"), QStringList());
    ASSERT_TRUE(demo.waitForFinished(kDemoMs));
    EXPECT_EQ(demo.exitCode(), 0);
    const QString printed = QString::fromUtf8(demo.readAll());
    EXPECT_TRUE(printed.contains(shown)) << qPrintable(printed);
    EXPECT_TRUE(printed.section(shown, 1, 1).contains("DINT0:TICKS"));
}

/// A text of the tables for the first look, and how to make the driver give it.
struct CommonText {
    const char* text;
    QStringList simulator;
    QStringList command;
};

/// Both tables list the text, and the simulator's fault gives it.
TEST_F(Pages, CommonTextsAreWhatFaultsGive) {
    const QStringList read = {"read", "DINT0:COUNTER"};
    const QStringList quickRead = {"read", "DINT0:COUNTER", "--timeout", "300", "--retry", "0"};
    const QList<CommonText> rows = {
        {"AB error: 0005H", {}, {"read", "DINT0:NO_SUCH_TAG"}},
        {"AB error: 0004H", {"--profile", "older"}, {"read", "DINT0:NO_SUCH_TAG"}},
        {"AB error: 01FFH, 2105H", {}, {"read", "DINT0:LEVELS[9]"}},
        {"AB error: 01FFH, 2107H", {}, {"write", "INT0:COUNTER", "1"}},
        {"MR error: 0001H, 0113H", {"--fault", "refuse-open"}, read},
        {"Internal: receive timeout", {"--fault", "silence"}, quickRead},
        {"Internal: receive timeout", {"--fault", "cut"}, quickRead},
        {"Internal: receive error", {"--fault", "cut:0"}, read},
        {"Internal: receive error", {"--fault", "reset"}, read},
        {"Internal: receive error", {"--fault", "torn"}, read},
        {"no answer in time", {"--fault", "silence"}, {"read", "DINT0:COUNTER", "--retry", "0"}},
    };
    const QString page = contentOf("docs/troubleshooting.md").section("## Driver\n", 0, 0);
    const QString readme = contentOf("README.md");
    for (const CommonText& row : rows) {
        startController(QStringList{"--tag", "COUNTER:DINT=42", "--tag", "LEVELS:DINT[4]"} +
                        row.simulator);
        const QString command = row.command.first();
        const CliResult result =
            runWith(qPrintable(command),
                    QStringList(row.command.mid(1)).replaceInStrings("EMPTY", files.path()));
        EXPECT_EQ(result.exitCode, 1) << row.text;
        EXPECT_TRUE(result.err.contains(row.text)) << row.text << ": " << result.err.constData();
        const QString cell = QString("`%1").arg(row.text);
        EXPECT_TRUE(page.contains(cell)) << row.text;
        if (QString(row.text) != "no answer in time") {
            EXPECT_TRUE(readme.contains(cell)) << row.text;
        }
    }
    ASSERT_EQ(controller->stop(), 0);
    const CliResult refused = runWith("read", {"DINT0:COUNTER"});
    EXPECT_TRUE(refused.err.contains("> Connection refused(111)")) << refused.err.constData();
}

}  // namespace
