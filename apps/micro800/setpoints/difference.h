#ifndef APPS_MICRO800_SETPOINTS_DIFFERENCE_H
#define APPS_MICRO800_SETPOINTS_DIFFERENCE_H

#include <QByteArray>
#include <QString>
#include <QVector>

#include "apps/micro800/setpoints/value_file.h"

/// One element that differs between a controller and a file.
struct Difference {
    int value = 0;    ///< which of the file's values
    int element = 0;  ///< which element of it
    QByteArray now;   ///< the controller's value; both in the form of element_value.h
    QByteArray wanted;
};

/// The elements of a saved value that differ from the controller's; `value` is its number
/// in the file. `now` has as many elements as the value.
QVector<Difference> differencesOf(const SavedValue& saved, int value,
                                  const QVector<QByteArray>& now);

/// Differences that one command writes: successive elements of one value, from `first` on.
struct WriteRun {
    int first = 0;  ///< index into the list of differences
    int count = 1;
};

/// All differences in runs, in their order. Only what differs is written, and no more at a time
/// than one command carries.
QVector<WriteRun> writeRunsOf(const QVector<SavedValue>& values,
                              const QVector<Difference>& differences);

#endif
