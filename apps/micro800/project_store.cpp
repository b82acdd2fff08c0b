#include "apps/micro800/project_store.h"

#include <QDir>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include "apps/micro800/problem.h"

namespace {

const char* const kTables[] = {
    "CREATE TABLE IF NOT EXISTS custom_tag_table "
    "(address TEXT NOT NULL, connector_id INTEGER NOT NULL)",
    "CREATE TABLE IF NOT EXISTS LINK (LINKID INTEGER PRIMARY KEY, HMIPORT INTEGER NOT NULL)",
    "CREATE TABLE IF NOT EXISTS NODE (LINKID INTEGER NOT NULL, STATIONID INTEGER NOT NULL, "
    "IP TEXT, PORT INTEGER, ISDEFAULT INTEGER NOT NULL DEFAULT 0)",
};

}  // namespace

QString projectDatabasePath(const QString& directory) {
    return QDir(directory).absoluteFilePath(QStringLiteral("compile/database/database"));
}

bool projectExists(const QString& directory) {
    return QFileInfo(projectDatabasePath(directory)).isFile();
}

bool createEmptyProject(const QString& directory, QString* problem) {
    ProjectStore store;
    return store.openToChange(directory, problem) && store.commit(problem);
}

/// One statement and its values, in order of its question marks.
class ProjectStore::Query {
 public:
    Query(const QString& connection, const char* sql, const QVariantList& values = {})
        : query_(QSqlDatabase::database(connection, false)) {
        ok_ = query_.prepare(QLatin1String(sql));
        for (const QVariant& value : values)
            query_.addBindValue(value);
    }
    bool run() { return ok_ && query_.exec(); }
    bool next() { return query_.next(); }
    int number(int column) const { return query_.value(column).toInt(); }
    QString text(int column) const { return query_.value(column).toString(); }
    QString error() const { return query_.lastError().text().trimmed(); }

 private:
    QSqlQuery query_;
    bool ok_ = false;
};

ProjectStore::ProjectStore()
    : connection_(QStringLiteral("project-%1").arg(reinterpret_cast<quintptr>(this))) {}

ProjectStore::~ProjectStore() {
    if (!QSqlDatabase::contains(connection_))
        return;
    {
        QSqlDatabase database = QSqlDatabase::database(connection_, false);
        if (inTransaction_)
            database.rollback();
        database.close();
    }
    QSqlDatabase::removeDatabase(connection_);
}

bool ProjectStore::open(const QString& directory, const QString& options, QString* problem) {
    path_ = projectDatabasePath(directory);
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection_);
    database.setDatabaseName(path_);
    database.setConnectOptions(options);
    if (!database.open())
        return fail(problem,
                    QStringLiteral("project %1: %2").arg(path_, database.lastError().text()));
    return true;
}

bool ProjectStore::openToRead(const QString& directory, QString* problem) {
    if (!projectExists(directory)) {
        return fail(problem, QStringLiteral("no project in %1: %2 is missing")
                                 .arg(directory, projectDatabasePath(directory)));
    }
    return open(directory, QStringLiteral("QSQLITE_OPEN_READONLY"), problem);
}

bool ProjectStore::openToChange(const QString& directory, QString* problem) {
    const QString folder = QFileInfo(projectDatabasePath(directory)).path();
    if (!QDir().mkpath(folder))
        return fail(problem, QStringLiteral("cannot make the directory %1").arg(folder));
    if (!open(directory, QString(), problem))
        return false;
    // Before it looks: two of them at a time must not both find a declaration missing.
    Query begin(connection_, "BEGIN IMMEDIATE");
    if (!execute(&begin, problem))
        return false;
    inTransaction_ = true;
    for (const char* sql : kTables) {
        Query create(connection_, sql);
        if (!execute(&create, problem))
            return false;
    }
    return true;
}

bool ProjectStore::execute(Query* query, QString* problem) {
    if (query->run())
        return true;
    return fail(problem, QStringLiteral("project %1: %2").arg(path_, query->error()));
}

bool ProjectStore::hasTable(const QString& name) {
    return QSqlDatabase::database(connection_, false).tables().contains(name, Qt::CaseInsensitive);
}

bool ProjectStore::declareArray(int linkId, const ArrayDeclaration& declaration, Declared* done,
                                QString* problem) {
    Query present(connection_, "SELECT rowid, address FROM custom_tag_table WHERE connector_id = ?",
                  {linkId});
    if (!execute(&present, problem))
        return false;
    QVector<int> same;
    QVector<int> older;
    while (present.next()) {
        if (present.text(1) == declaration.text)
            same.append(present.number(0));
        else if (declaredArrayName(present.text(1)) == declaration.name)
            older.append(present.number(0));
    }
    const bool keep = same.size() == 1 && older.isEmpty();
    *done = keep                                ? Declared::kUnchanged
            : same.isEmpty() && older.isEmpty() ? Declared::kAdded
                                                : Declared::kReplaced;
    if (keep)
        return true;
    for (const int row : same + older) {
        Query remove(connection_, "DELETE FROM custom_tag_table WHERE rowid = ?", {row});
        if (!execute(&remove, problem))
            return false;
    }
    Query insert(connection_, "INSERT INTO custom_tag_table (address, connector_id) VALUES (?, ?)",
                 {declaration.text, linkId});
    return execute(&insert, problem);
}

bool ProjectStore::setLink(int linkId, int hmiPort, bool change, QString* problem) {
    Query present(connection_, "SELECT HMIPORT FROM LINK WHERE LINKID = ?", {linkId});
    if (!execute(&present, problem))
        return false;
    if (present.next()) {
        if (!change || present.number(0) == hmiPort)
            return true;
        Query update(connection_, "UPDATE LINK SET HMIPORT = ? WHERE LINKID = ?",
                     {hmiPort, linkId});
        return execute(&update, problem);
    }
    Query insert(connection_, "INSERT INTO LINK (LINKID, HMIPORT) VALUES (?, ?)",
                 {linkId, hmiPort});
    return execute(&insert, problem);
}

bool ProjectStore::setDefaultNode(const ProjectContents::Node& node, QString* problem) {
    Query others(connection_, "UPDATE NODE SET ISDEFAULT = 0 WHERE LINKID = ?", {node.linkId});
    Query remove(connection_, "DELETE FROM NODE WHERE LINKID = ? AND STATIONID = ?",
                 {node.linkId, node.stationId});
    Query insert(connection_,
                 "INSERT INTO NODE (LINKID, STATIONID, IP, PORT, ISDEFAULT) VALUES (?, ?, ?, ?, 1)",
                 {node.linkId, node.stationId, node.ip, node.port});
    return execute(&others, problem) && execute(&remove, problem) && execute(&insert, problem);
}

bool ProjectStore::commit(QString* problem) {
    Query end(connection_, "COMMIT");
    if (!execute(&end, problem))
        return false;
    inTransaction_ = false;
    return true;
}

bool ProjectStore::contents(ProjectContents* contents, QString* problem) {
    if (hasTable(QStringLiteral("LINK"))) {
        Query links(connection_, "SELECT LINKID, HMIPORT FROM LINK ORDER BY LINKID");
        if (!execute(&links, problem))
            return false;
        while (links.next())
            contents->links.append({links.number(0), links.number(1)});
    }
    if (hasTable(QStringLiteral("NODE"))) {
        Query nodes(connection_,
                    "SELECT LINKID, STATIONID, IP, PORT, ISDEFAULT FROM NODE "
                    "ORDER BY LINKID, STATIONID");
        if (!execute(&nodes, problem))
            return false;
        while (nodes.next())
            contents->nodes.append({nodes.number(0), nodes.number(1), nodes.text(2),
                                    nodes.number(3), nodes.number(4) == 1});
    }
    Query arrays(connection_,
                 "SELECT connector_id, address FROM custom_tag_table ORDER BY connector_id, rowid");
    if (!execute(&arrays, problem))
        return false;
    while (arrays.next())
        contents->arrays.append({arrays.number(0), arrays.text(1)});
    return true;
}
