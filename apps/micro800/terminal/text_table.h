#ifndef APPS_MICRO800_TERMINAL_TEXT_TABLE_H
#define APPS_MICRO800_TERMINAL_TEXT_TABLE_H

#include <QStringList>
#include <QVector>

/// Lines of a table: a heading, then the rows, each column as wide as its longest cell, two blanks
/// between. A row may have fewer cells than the heading. No line ends with blanks.
QStringList tableLines(const QStringList& heading, const QVector<QStringList>& rows);

#endif
