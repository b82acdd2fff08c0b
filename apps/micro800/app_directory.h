#ifndef APPS_MICRO800_APP_DIRECTORY_H
#define APPS_MICRO800_APP_DIRECTORY_H

#include <QString>

/// The directory that plays the runtime's application directory.
///
/// The driver looks for the project's database below the directory of the running program, which
/// Qt takes from /proc/self/exe. So that any directory can hold the project, the program copies
/// itself into a private temporary directory, puts `compile` of the project beside the copy (a
/// symbolic link, or an empty project when none was named) and replaces itself by the copy. The
/// copy removes the directory when it ends: at its normal end, after an error, and on a signal
/// that ends it. Only a crash or SIGKILL leaves it behind.
///
/// Where programs run under an emulator that the kernel does not know, the environment's
/// MICRO800_EMULATOR holds the command that runs one, e.g. "qemu-arm-static -L /sysroot".

/// To be called first in main(), when the QCoreApplication exists. In the copy it takes over the
/// temporary directory and unblocks the signals; in any other process it does nothing. False when
/// this process is a copy that does not find itself in its directory: it cannot go on.
/// `argv` must live as long as the process.
bool adoptAppDirectory(char** argv, QString* problem);

/// Removes the temporary directory of this process, if it has one.
void leaveAppDirectory();

/// The directory of the program that the user started, also in the copy.
QString programDirectory();

/// Makes the application directory hold the project in `project`, or an empty project when that
/// is empty. Returns true at once in the copy. Otherwise it does not return (the copy starts
/// from main() with the same arguments) unless something fails: then false, nothing left behind.
bool enterAppDirectory(const QString& project, QString* problem);

#endif
