#ifndef COMMON_PROJECT_PATHS_H
#define COMMON_PROJECT_PATHS_H

#include <QDir>
#include <QString>

/// "compile": the project's compile directory below the application directory.
extern const QString COMPILE_PATH;
/// "database": the directory below the compile directory, and the database file in it.
extern const QString DATABASE_PATH;

/// The running application's directory, or its entry "compile" when there is one. Any thread.
QDir GetCompilePath();

/// Absolute path of the project's SQLite file, normally compile/database/database below the
/// application directory; a directory that is missing is skipped. The file need not exist.
/// Any thread.
QString GetDatabaseName();

#endif
