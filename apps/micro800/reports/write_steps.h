#ifndef APPS_MICRO800_REPORTS_WRITE_STEPS_H
#define APPS_MICRO800_REPORTS_WRITE_STEPS_H

#include <QByteArray>
#include <QStringList>
#include <QVector>

#include "apps/micro800/format/address.h"

/// One write to the driver: values for a tag or for successive elements of an array.
struct WriteStep {
    TagAddress address;
    CommunicatorCommand command;
    QByteArray bytes;  ///< of all values, as the controller stores them
    int count = 1;
};

/// Whether the arguments of write are assignments, ADDRESS=VALUE, and not one address with its
/// values. The first one decides.
bool areAssignments(const QStringList& words);

/// The writes that the arguments ask for, all checked: the addresses, the types and ranges of the
/// values. Assignments may come from @FILE and "-". False when one of them cannot be carried out;
/// `problem` says which and why.
bool writeStepsFrom(const QStringList& words, QVector<WriteStep>* steps, QString* problem);

#endif
