#ifndef TESTS_SUPPORT_APP_DIRECTORY_APP_DIRECTORY_H
#define TESTS_SUPPORT_APP_DIRECTORY_APP_DIRECTORY_H

#include <QString>
#include <QStringList>

/// Runs the tests of this program with an application directory of their own, so that tests that
/// run at the same time do not share a project database. Starts the program anew from a link in a
/// fresh directory beside it and removes that directory at the end. To be called first in main().
int runTestsInOwnAppDirectory(int argc, char** argv);

/// The same for a program that is no test: `body` is its main(), with a QCoreApplication. The exit
/// code is that of `body`.
int runInOwnAppDirectory(int argc, char** argv, int (*body)(int, char**));

/// Writes the project database that the program's application directory contains, with one row in
/// `custom_tag_table` for every address (connector 1) and the tables LINK and NODE. Replaces an
/// earlier one. Returns its path.
QString writeProjectDatabase(const QStringList& addresses, int connectorId = 1);

/// Removes the database, so that opening it fails.
void removeProjectDatabase();

/// Runs SQL statements on that database, one after the other; the file is made when it is missing.
/// Returns its path.
QString changeProjectDatabase(const QStringList& statements);

/// While it lives, nobody else can read that database.
class ProjectLock {
 public:
    ProjectLock();
    ~ProjectLock();
    ProjectLock(const ProjectLock&) = delete;
    ProjectLock& operator=(const ProjectLock&) = delete;
};

#endif
