#include "apps/micro800/terminal/text_table.h"

namespace {

const int kGap = 2;

QString lineOf(const QStringList& cells, const QVector<int>& widths) {
    QString line;
    for (int i = 0; i < cells.size(); ++i) {
        line += cells.at(i).leftJustified(widths.value(i) + kGap);
    }
    while (line.endsWith(QLatin1Char(' '))) {
        line.chop(1);
    }
    return line;
}

}  // namespace

QStringList tableLines(const QStringList& heading, const QVector<QStringList>& rows) {
    const QVector<QStringList> all = QVector<QStringList>{heading} + rows;
    QVector<int> widths(heading.size());
    for (const QStringList& cells : all) {
        for (int i = 0; i < cells.size() && i < widths.size(); ++i) {
            widths[i] = qMax(widths.at(i), cells.at(i).size());
        }
    }
    QStringList lines;
    for (const QStringList& cells : all) {
        lines << lineOf(cells, widths);
    }
    return lines;
}
