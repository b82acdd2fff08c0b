#include "integration/cli/doc_page.h"

#include <QRegularExpression>

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
