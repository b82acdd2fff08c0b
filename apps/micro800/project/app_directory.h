#ifndef APPS_MICRO800_PROJECT_APP_DIRECTORY_H
#define APPS_MICRO800_PROJECT_APP_DIRECTORY_H

#include <QString>

/// The directory that plays the runtime's application directory.
///
/// The driver looks for the project's database below the directory of the running program, which
/// Qt takes from /proc/self/exe. So that any directory can contain the project, the program copies
/// itself into a private temporary directory, puts `compile` of the project beside the copy (a
/// symbolic link, or an empty project when none was named) and runs the copy in its place. It
/// removes what it has put there when the copy has ended, however that was; only when it is killed
/// by SIGKILL itself the directory remains.
///
/// The copy knows what it is from an option before its arguments, which names a descriptor: a
/// pipe that contains the directories, and the inputs that cannot be read again (base/input.h), and
/// can be read once. It removes nothing.
///
/// Where programs run under an emulator that the kernel does not know, the environment's
/// MICRO800_EMULATOR contains the command that runs one, e.g. "qemu-arm-static -L /sysroot". The
/// copy and what that command starts beside it do not see the variable.

/// To be called first in main(), when the QCoreApplication exists. In the copy it takes its option
/// out of the arguments; in any other process it does nothing. False when this process was told to
/// be a copy and is none: it cannot go on. `argc` and `argv` are main()'s and must live as long as
/// the process.
bool adoptAppDirectory(int* argc, char** argv, QString* problem);

/// The directory of the program that the user started, also in the copy.
QString programDirectory();

/// Makes the application directory contain the project in `project`, or an empty project when that
/// is empty. Returns true at once in the copy. Otherwise it does not return (the copy starts
/// from main() with the same arguments, and this process ends as it does) unless something fails:
/// then false, nothing is left.
bool enterAppDirectory(const QString& project, QString* problem);

#endif
