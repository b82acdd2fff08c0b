// docs/commissioning.md, run line by line against two simulated controllers. They have the page's
// addresses on loopback, with ports of the system's choice.

#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include "integration/cli/cli_program.h"
#include "integration/cli/doc_page.h"

namespace {

const int kDayMs = 120000;
const char kMark[] = "----- next line of the page";

class Commissioning : public CliTest {
 protected:
    static QStringList plant(const QString& address, const QStringList& values) {
        const QStringList tags = {"COUNTER:DINT",    "RUNNING:BOOL", "LEVEL:REAL", "SPEED:INT",
                                  "RECIPE:DINT[10]", "NAME:STRING",  "MASK:DWORD"};
        QStringList arguments = {"--address", address, "--udp", "--delay", "1"};
        for (int i = 0; i < tags.size(); ++i) {
            const QString value = values.value(i);
            arguments << "--tag" << (value.isEmpty() ? tags.at(i) : tags.at(i) + '=' + value);
        }
        return arguments;
    }

    /// The page's names to what is here, and back.
    QString here(QString command) const {
        command.replace("micro800 discover", QString("micro800 discover --broadcast 127.0.0.20 "
                                                     "--timeout 300 --port %1")
                                                 .arg(former.port()));
        command.replace("192.168.1.20", QString("127.0.0.20:%1").arg(former.port()));
        command.replace("192.168.1.21", QString("127.0.0.21:%1").arg(latter.port()));
        // A host names one port only.
        return command.replace("doctor --port 9", "doctor --host 127.0.0.21:9");
    }
    QString onThePage(QString text) const {
        for (const SimulatorProcess* one : {&former, &latter}) {
            text.replace(QString(":%1").arg(one->port()), ":44818");
            text.replace(QString("port %1").arg(one->port()), "port 44818");
        }
        return text.replace("127.0.0.2", "192.168.1.2");
    }

    /// What each line prints, run by one shell in a directory of its own.
    QList<QStringList> runAll(const QList<PageLine>& lines) {
        QByteArray script = "exec 2>&1\n";
        for (const PageLine& line : lines) {
            script += QByteArray("echo '") + kMark + "'\n" + here(line.command).toUtf8() + '\n';
        }
        QTemporaryDir day;
        QProcess shell;
        QProcessEnvironment settings = environment;
        settings.insert("PATH", QFileInfo(program()).path() + ':' + settings.value("PATH"));
        shell.setProcessEnvironment(settings);
        shell.setWorkingDirectory(day.path());
        shell.setStandardInputFile(QProcess::nullDevice());
        shell.start("sh", QStringList{"-c", script});
        EXPECT_TRUE(shell.waitForFinished(kDayMs));
        QList<QStringList> printed;
        for (const QString& line :
             onThePage(QString::fromUtf8(shell.readAllStandardOutput())).split('\n')) {
            if (line == kMark) {
                printed << QStringList();
            } else if (!line.isEmpty() && !printed.isEmpty()) {
                printed.last() << line.simplified();
            }
        }
        return printed;
    }

    SimulatorProcess former{
        plant("127.0.0.20", {"42", "1", "21.5", "1450", "250,80,40,5", "Mixer 3"})};
    SimulatorProcess latter{plant("127.0.0.21", {"", "", "", "", "", "Mixer 3"})};
};

TEST_F(Commissioning, ThePageIsWhatHappens) {
    if (environment.contains("MICRO800_EMULATOR")) {
        GTEST_SKIP() << "the shell of this machine starts no program of another";
    }
    ASSERT_TRUE(former.start()) << former.error();
    ASSERT_TRUE(latter.start()) << latter.error();
    QFile page(PROJECT_ROOT "/docs/commissioning.md");
    ASSERT_TRUE(page.open(QIODevice::ReadOnly));
    const QList<PageLine> lines = linesOf(QString::fromUtf8(page.readAll()));
    ASSERT_GT(lines.size(), 12);
    const QList<QStringList> printed = runAll(lines);
    ASSERT_EQ(printed.size(), lines.size());
    for (int i = 0; i < lines.size(); ++i) {
        EXPECT_TRUE(isPrinted(lines.at(i).printed, printed.at(i)))
            << "$ " << qPrintable(lines.at(i).command) << '\n'
            << qPrintable(printed.at(i).join('\n'));
    }
    // The controller that the day began with has been read only.
    for (const QJsonObject& request : former.log()) {
        EXPECT_NE(request.value("service").toString(), QString("WriteTag"));
    }
}

}  // namespace
