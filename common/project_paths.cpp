#include "common/project_paths.h"

#include <QCoreApplication>

const QString COMPILE_PATH(QLatin1String("compile"));
const QString DATABASE_PATH(QLatin1String("database"));

namespace {

/// cd() leaves the directory as it is when the entry cannot be entered (a plain file).
void moveIntoEntry(QDir& dir, const QString& name) {
    if (dir.exists(name)) {
        dir.cd(name);
    }
}

}  // namespace

QDir GetCompilePath() {
    QDir dir(QCoreApplication::applicationDirPath());
    moveIntoEntry(dir, COMPILE_PATH);
    return dir;
}

QString GetDatabaseName() {
    QDir dir = GetCompilePath();
    moveIntoEntry(dir, DATABASE_PATH);
    return dir.absoluteFilePath(DATABASE_PATH);
}
