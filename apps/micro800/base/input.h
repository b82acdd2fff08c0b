#ifndef APPS_MICRO800_BASE_INPUT_H
#define APPS_MICRO800_BASE_INPUT_H

#include <QByteArray>
#include <QString>
#include <QVector>

/// The name that means standard input.
const char kStandardInput[] = "-";

/// The largest input that is read, in bytes.
const qint64 kLargestInput = 16 * 1024 * 1024;

/// Reads a file as a whole, or standard input when `name` is "-". False with a problem that names
/// the input: it cannot be read, it is a directory, or it is larger than kLargestInput.
///
/// The program may be started again as a copy (project/app_directory.h), which reads its arguments
/// a second time. What can be read only once, such as a pipe, is kept in memory under an open
/// descriptor and read from there from then on, also by the copy.
bool readInput(const QString& name, QByteArray* content, QString* problem);

/// What was read and kept, under a descriptor that a program started from here inherits.
struct KeptInput {
    QString name;
    int descriptor;
};

/// All that readInput() has kept so far, to be handed to the copy.
QVector<KeptInput> keptInputs();
/// In the copy: what the program before it kept is read from there.
void adoptInput(const KeptInput& input);

#endif
