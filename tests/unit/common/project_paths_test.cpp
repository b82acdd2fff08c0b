#include "common/project_paths.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

namespace {

/// A directory of its own in which a program runs and asks for the paths: they hang on the
/// program's place, and tests share theirs.
class ProjectPaths : public ::testing::Test {
 protected:
    void SetUp() override {
        ASSERT_TRUE(temporary.isValid());
        root = QDir(temporary.path()).canonicalPath();
        ASSERT_TRUE(QFile::copy(MICRO800_PATHS_PROBE, root + "/probe"));
        ASSERT_TRUE(QFile::setPermissions(root + "/probe",
                                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }

    /// What the program printed, the application directory cut off its front.
    QStringList paths() {
        QProcess probe;
        probe.start(root + "/probe", QStringList());
        EXPECT_TRUE(probe.waitForFinished(30000));
        EXPECT_EQ(0, probe.exitCode());
        QStringList lines =
            QString::fromLocal8Bit(probe.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
        for (QString& line : lines) {
            EXPECT_TRUE(line.startsWith(root)) << line.toStdString();
            line.remove(0, root.size());
        }
        return lines;
    }

    void makeFile(const QString& name) {
        QFile file(root + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("x");
    }

    QTemporaryDir temporary;
    QString root;
};

TEST_F(ProjectPaths, TheNormalProject) {
    ASSERT_TRUE(QDir(root).mkpath("compile/database"));
    EXPECT_EQ(QStringList({"/compile", "/compile/database/database"}), paths());
}

TEST_F(ProjectPaths, NeitherDirectory) {
    EXPECT_EQ(QStringList({"", "/database"}), paths());
}

TEST_F(ProjectPaths, CompileDirectoryOnly) {
    ASSERT_TRUE(QDir(root).mkpath("compile"));
    EXPECT_EQ(QStringList({"/compile", "/compile/database"}), paths());
}

TEST_F(ProjectPaths, DatabaseDirectoryOnly) {
    ASSERT_TRUE(QDir(root).mkpath("database"));
    EXPECT_EQ(QStringList({"", "/database/database"}), paths());
}

TEST_F(ProjectPaths, FilesInPlaceOfDirectoriesAreNotEntered) {
    makeFile("/compile");
    makeFile("/database");
    EXPECT_EQ(QStringList({"", "/database"}), paths());
}

TEST_F(ProjectPaths, TheDatabaseFileItselfInTheCompileDirectory) {
    ASSERT_TRUE(QDir(root).mkpath("compile"));
    makeFile("/compile/database");
    EXPECT_EQ(QStringList({"/compile", "/compile/database"}), paths());
}

TEST(ProjectPathNames, AreTheProjectsDirectoryNames) {
    EXPECT_EQ("compile", COMPILE_PATH.toStdString());
    EXPECT_EQ("database", DATABASE_PATH.toStdString());
}

TEST(ProjectPathNames, TheDatabaseNameIsAbsoluteAndEndsInDatabase) {
    const QFileInfo info(GetDatabaseName());
    EXPECT_TRUE(info.isAbsolute());
    EXPECT_EQ("database", info.fileName().toStdString());
    EXPECT_TRUE(info.filePath().startsWith(QCoreApplication::applicationDirPath()));
}

}  // namespace
