#ifndef TESTS_INTEGRATION_CLI_DOC_PAGE_H
#define TESTS_INTEGRATION_CLI_DOC_PAGE_H

#include <QList>
#include <QString>
#include <QStringList>

// A page of the documentation whose commands are run.

/// A command of the page and what it prints.
struct PageLine {
    QString command;  ///< with its continued lines
    QStringList printed;
};

/// The commands in the page's blocks of kind "console", each with what the page shows behind it.
QList<PageLine> linesOf(const QString& page);

/// Whether the page's lines stand for these. An ellipsis is any text; alone on its line, any lines.
bool isPrinted(const QStringList& page, const QStringList& printed);

#endif
