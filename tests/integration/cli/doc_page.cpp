#include "integration/cli/doc_page.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QList>
#include <QProcess>
#include <QRegularExpression>
#include <QStringList>
#include <QTemporaryDir>

namespace {

const int kPageMs = 120000;
const char kMark[] = "----- next line of the page";

/// A command of the page and what it prints.
struct PageLine {
    QString command;  ///< with its continued lines
    QStringList printed;
};

QList<PageLine> linesOf(const QString& page) {
    QList<PageLine> lines;
    bool inBlock = false;
    for (const QString& line : page.split('\n')) {
        if (line.startsWith("```")) {
            inBlock = line == "```console";
        } else if (inBlock && line.startsWith("$ ")) {
            lines.append({line.mid(2), {}});
        } else if (inBlock && line.startsWith("> ") && !lines.isEmpty()) {
            lines.last().command += '\n' + line.mid(2);
        } else if (inBlock && !line.isEmpty() && !lines.isEmpty()) {
            lines.last().printed << line;
        }
    }
    return lines;
}

/// Whether the page's lines match these.
bool isPrinted(const QStringList& page, const QStringList& printed) {
    QString text;
    for (const QString& line : printed) {
        text += '\n' + line;
    }
    QString pattern;
    for (const QString& line : page) {
        const QString any = QString(QChar(0x2026));
        pattern += line == any ? QString("(\n[^\n]*)*")
                               : "\n" + QRegularExpression::escape(line.simplified())
                                            .replace(QRegularExpression::escape(any), "[^\n]*");
    }
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch();
}

/// What each command prints.
QList<QStringList> runAll(const QList<PageLine>& lines, const PageStage& stage) {
    QByteArray script = "exec 2>&1\n";
    for (const PageLine& line : lines) {
        script += QByteArray("echo '") + kMark + "'\n" + stage.here(line.command).toUtf8() + '\n';
    }
    QTemporaryDir directory;
    QProcess shell;
    shell.setProcessEnvironment(stage.environment);
    shell.setWorkingDirectory(directory.path());
    shell.setStandardInputFile(QProcess::nullDevice());
    shell.start("sh", QStringList{"-c", script});
    EXPECT_TRUE(shell.waitForFinished(kPageMs));
    QList<QStringList> printed;
    const QString all = stage.onThePage(QString::fromUtf8(shell.readAllStandardOutput()));
    for (const QString& line : all.split('\n')) {
        if (line == kMark) {
            printed << QStringList();
        } else if (!line.isEmpty() && !printed.isEmpty()) {
            printed.last() << line.simplified();
        }
    }
    return printed;
}

}  // namespace

void expectThePageIsWhatHappens(const char* name, int atLeast, const PageStage& stage) {
    if (stage.environment.contains("MICRO800_EMULATOR")) {
        GTEST_SKIP() << "the shell of this machine starts no program of another";
    }
    QFile page(QString(PROJECT_ROOT "/docs/") + name);
    ASSERT_TRUE(page.open(QIODevice::ReadOnly));
    const QList<PageLine> lines = linesOf(QString::fromUtf8(page.readAll()));
    ASSERT_GE(lines.size(), atLeast);
    const QList<QStringList> printed = runAll(lines, stage);
    ASSERT_EQ(printed.size(), lines.size());
    for (int i = 0; i < lines.size(); ++i) {
        EXPECT_TRUE(isPrinted(lines.at(i).printed, printed.at(i)))
            << "$ " << qPrintable(lines.at(i).command) << '\n'
            << qPrintable(printed.at(i).join('\n'));
    }
}
