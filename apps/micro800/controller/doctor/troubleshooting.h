#ifndef APPS_MICRO800_CONTROLLER_DOCTOR_TROUBLESHOOTING_H
#define APPS_MICRO800_CONTROLLER_DOCTOR_TROUBLESHOOTING_H

#include <QString>
#include <QStringList>
#include <QVector>

/// What the page docs/troubleshooting.md says of a text, without its markup.
struct Advice {
    QString means;
    QString check;
    QString text;  ///< the first one of the row

    bool isEmpty() const { return means.isEmpty() && check.isEmpty(); }
};

/// The tables of the page whose columns are "text", "means" and "check".
///
/// The first column has texts in backquotes. One with an ellipsis matches any text there; two
/// with "to" between them for the numbers from the one to the other; one with "and above" after it
/// for that number and higher ones.
class Troubleshooting {
 public:
    explicit Troubleshooting(const QString& page);

    /// The row of a text: the one that has it word for word, else the one whose range contains it,
    /// else the one with the most of it beside an ellipsis. Empty when there is none.
    Advice adviceFor(const QString& text) const;
    int rowCount() const { return rows.size(); }

 private:
    struct Row {
        QString cell;       ///< the first column
        QStringList texts;  ///< in backquotes there
        Advice advice;
    };
    static int likeness(const Row& row, const QString& text);

    QVector<Row> rows;
};

/// The page as it was when this program was built.
const Troubleshooting& troubleshooting();

#endif
