#include "support/app_directory/app_directory.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QList>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>
#include <string>
#include <vector>

namespace {

const char kMarker[] = "TEST_APP_DIRECTORY";
// Names of database connections.
const char kWriter[] = "project-writer";
const char kLocker[] = "project-locker";

std::string ownPath() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    return length > 0 ? std::string(path, static_cast<size_t>(length)) : std::string();
}

/// Replaces this process; only returns when that is impossible. Where programs run under an
/// emulator that the kernel does not know, MICRO800_EMULATOR contains its command.
void execute(const std::string& program, char** argv) {
    const QByteArray emulator = qgetenv("MICRO800_EMULATOR");
    if (emulator.isEmpty()) {
        execv(program.c_str(), argv);
        return;
    }
    QList<QByteArray> words = emulator.split(' ');
    words << QByteArray(program.c_str());
    std::vector<char*> arguments;
    for (QByteArray& word : words) {
        arguments.push_back(word.data());
    }
    while (*++argv) {
        arguments.push_back(*argv);
    }
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
}

/// Starts the program again from a directory of its own; only returns when that is impossible.
int startFromOwnDirectory(char** argv) {
    const std::string self = ownPath();
    const std::string parent = self.substr(0, self.rfind('/'));
    std::string dir = parent + "/app-XXXXXX";
    if (!mkdtemp(&dir[0])) {
        perror("mkdtemp");
        return 1;
    }
    const std::string program = dir + self.substr(self.rfind('/'));
    if (link(self.c_str(), program.c_str()) != 0) {
        perror("link");
        return 1;
    }
    setenv(kMarker, dir.c_str(), 1);
    execute(program, argv);
    perror("exec");
    return 1;
}

QString databasePath() {
    return QCoreApplication::applicationDirPath() + "/compile/database/database";
}

QSqlDatabase openToWrite(const char* connection) {
    QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", connection);
    database.setDatabaseName(databasePath());
    EXPECT_TRUE(database.open()) << database.lastError().text().toStdString();
    return database;
}

}  // namespace

int runInOwnAppDirectory(int argc, char** argv, int (*body)(int, char**)) {
    const char* dir = getenv(kMarker);
    if (!dir) {
        return startFromOwnDirectory(argv);
    }
    const QString own = QString::fromLocal8Bit(dir);
    unsetenv(kMarker);
    // The work is done in a child, so that the directory goes also when it dies.
    const pid_t child = fork();
    if (child > 0) {
        int status = 1;
        while (waitpid(child, &status, 0) < 0) {
        }
        QDir(own).removeRecursively();
        return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
    }
    QCoreApplication app(argc, argv);
    return body(argc, argv);
}

int runTestsInOwnAppDirectory(int argc, char** argv) {
    return runInOwnAppDirectory(argc, argv, [](int count, char** words) {
        ::testing::InitGoogleTest(&count, words);
        return RUN_ALL_TESTS();
    });
}

QString writeProjectDatabase(const QStringList& addresses, int connectorId) {
    const QString path = databasePath();
    QDir().mkpath(QFileInfo(path).path());
    QFile::remove(path);
    {
        QSqlDatabase database = openToWrite(kWriter);
        QSqlQuery query(database);
        EXPECT_TRUE(query.exec("CREATE TABLE custom_tag_table (address TEXT, connector_id INT)"));
        EXPECT_TRUE(query.exec("CREATE TABLE LINK (LINKID INT, HMIPORT INT)"));
        EXPECT_TRUE(
            query.exec("CREATE TABLE NODE (LINKID INT, STATIONID INT, IP TEXT, "
                       "PORT INT, ISDEFAULT INT)"));
        for (const QString& address : addresses) {
            query.prepare("INSERT INTO custom_tag_table VALUES (?, ?)");
            query.addBindValue(address);
            query.addBindValue(connectorId);
            EXPECT_TRUE(query.exec());
        }
    }
    QSqlDatabase::removeDatabase(kWriter);
    return path;
}

void removeProjectDatabase() {
    QFile::remove(databasePath());
}

QString changeProjectDatabase(const QStringList& statements) {
    {
        QSqlDatabase database = openToWrite(kWriter);
        for (const QString& statement : statements) {
            QSqlQuery query(database);
            EXPECT_TRUE(query.exec(statement)) << query.lastError().text().toStdString();
        }
    }
    QSqlDatabase::removeDatabase(kWriter);
    return databasePath();
}

ProjectLock::ProjectLock() {
    QSqlQuery query(openToWrite(kLocker));
    EXPECT_TRUE(query.exec("BEGIN EXCLUSIVE")) << query.lastError().text().toStdString();
}

ProjectLock::~ProjectLock() {
    QSqlDatabase::database(kLocker, false).close();
    QSqlDatabase::removeDatabase(kLocker);
}
