// docs/recorder.md, run line by line against a simulated controller that keeps silent once.

#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include "integration/cli/cli_program.h"
#include "integration/cli/doc_page.h"

namespace {

const int kPageMs = 60000;
const char kMark[] = "----- next line of the page";

class RecorderPage : public CliTest {
 protected:
    QList<QStringList> runAll(const QList<PageLine>& lines) {
        QByteArray script = "exec 2>&1\n";
        for (const PageLine& line : lines) {
            QString command = line.command;
            command.replace("192.168.1.20", QString("127.0.0.1:%1").arg(controller->port()));
            script += QByteArray("echo '") + kMark + "'\n" + command.toUtf8() + '\n';
        }
        QTemporaryDir night;
        QProcess shell;
        QProcessEnvironment settings = environment;
        settings.insert("PATH", QFileInfo(program()).path() + ':' + settings.value("PATH"));
        shell.setProcessEnvironment(settings);
        shell.setWorkingDirectory(night.path());
        shell.setStandardInputFile(QProcess::nullDevice());
        shell.start("sh", QStringList{"-c", script});
        EXPECT_TRUE(shell.waitForFinished(kPageMs));
        QList<QStringList> printed;
        for (const QString& line : QString::fromUtf8(shell.readAllStandardOutput()).split('\n')) {
            if (line == kMark) {
                printed << QStringList();
            } else if (!line.isEmpty() && !printed.isEmpty()) {
                printed.last() << line.simplified();
            }
        }
        return printed;
    }
};

TEST_F(RecorderPage, ThePageIsWhatHappens) {
    if (environment.contains("MICRO800_EMULATOR")) {
        GTEST_SKIP() << "the shell of this machine starts no program of another";
    }
    startController({"--tag", "COUNTER:DINT=42", "--tag", "LEVEL:REAL=21.5", "--delay", "6",
                     "--fault", "silence@3x1"});
    QFile page(PROJECT_ROOT "/docs/recorder.md");
    ASSERT_TRUE(page.open(QIODevice::ReadOnly));
    const QList<PageLine> lines = linesOf(QString::fromUtf8(page.readAll()));
    ASSERT_GE(lines.size(), 5);
    const QList<QStringList> printed = runAll(lines);
    ASSERT_EQ(printed.size(), lines.size());
    for (int i = 0; i < lines.size(); ++i) {
        EXPECT_TRUE(isPrinted(lines.at(i).printed, printed.at(i)))
            << "$ " << qPrintable(lines.at(i).command) << '\n'
            << qPrintable(printed.at(i).join('\n'));
    }
}

}  // namespace
