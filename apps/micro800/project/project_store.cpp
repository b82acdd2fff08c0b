#include "apps/micro800/project/project_store.h"

#include <QDir>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include "apps/micro800/base/problem.h"

namespace {

const char* const kTables[] = {
    "CREATE TABLE IF NOT EXISTS custom_tag_table "
    "(address TEXT NOT NULL, connector_id INTEGER NOT NULL)",
    "CREATE TABLE IF NOT EXISTS LINK (LINKID INTEGER PRIMARY KEY, HMIPORT INTEGER NOT NULL)",
    "CREATE TABLE IF NOT EXISTS NODE (LINKID INTEGER NOT NULL, STATIONID INTEGER NOT NULL, "
    "IP TEXT, PORT INTEGER, ISDEFAULT INTEGER NOT NULL DEFAULT 0)",
};

/// Of one table; more than any project has.
const int kMostRows = 100000;

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
        : query(QSqlDatabase::database(connection, false)) {
        query.setForwardOnly(true);
        ok = query.prepare(QLatin1String(sql));
        for (const QVariant& value : values) {
            query.addBindValue(value);
        }
    }
    bool run() { return ok && query.exec(); }
    bool next() { return query.next(); }
    /// Whether next() was false because there are no more rows.
    bool isComplete() const { return !query.lastError().isValid(); }
    int number(int column) const { return query.value(column).toInt(); }
    QString text(int column) const { return query.value(column).toString(); }
    QString error() const { return query.lastError().text().trimmed(); }

 private:
    QSqlQuery query;
    bool ok = false;
};

ProjectStore::ProjectStore()
    : connection(QStringLiteral("project-%1").arg(reinterpret_cast<quintptr>(this))) {}

ProjectStore::~ProjectStore() {
    if (!QSqlDatabase::contains(connection)) {
        return;
    }
    {
        QSqlDatabase database = QSqlDatabase::database(connection, false);
        if (inTransaction) {
            database.rollback();
        }
        database.close();
    }
    QSqlDatabase::removeDatabase(connection);
}

bool ProjectStore::open(const QString& directory, const QString& options, QString* problem) {
    path = projectDatabasePath(directory);
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
    database.setDatabaseName(path);
    database.setConnectOptions(options);
    if (!database.open()) {
        return fail(problem,
                    QStringLiteral("project %1: %2").arg(path, database.lastError().text()));
    }
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
    if (!QDir().mkpath(folder)) {
        return fail(problem, QStringLiteral("cannot make the directory %1").arg(folder));
    }
    if (!open(directory, QString(), problem)) {
        return false;
    }
    // Before it looks: two of them at a time must not both find a declaration missing.
    Query begin(connection, "BEGIN IMMEDIATE");
    if (!execute(&begin, problem)) {
        return false;
    }
    inTransaction = true;
    for (const char* sql : kTables) {
        Query create(connection, sql);
        if (!execute(&create, problem)) {
            return false;
        }
    }
    return true;
}

bool ProjectStore::execute(Query* query, QString* problem) {
    if (query->run()) {
        return true;
    }
    return fail(problem, QStringLiteral("project %1: %2").arg(path, query->error()));
}

bool ProjectStore::hasTable(const QString& name) {
    return QSqlDatabase::database(connection, false).tables().contains(name, Qt::CaseInsensitive);
}

/// The file is not trusted: a computed table may have no end, and Qt would keep every row of a
/// query that can go back.
bool ProjectStore::eachRow(Query* query, const std::function<void(const Query& row)>& take,
                           QString* problem) {
    if (!execute(query, problem)) {
        return false;
    }
    for (int rows = 0; query->next(); ++rows) {
        if (rows == kMostRows) {
            return fail(problem, QStringLiteral("project %1: a table has more than %2 rows")
                                     .arg(path, QString::number(kMostRows)));
        }
        take(*query);
    }
    return query->isComplete() ||
           fail(problem, QStringLiteral("project %1: %2").arg(path, query->error()));
}

/// A view can compute for ever before it gives a row; the driver refuses it as well.
bool ProjectStore::declarationsAreStored(QString* problem) {
    const QStringList views = QSqlDatabase::database(connection, false).tables(QSql::Views);
    return !views.contains(QLatin1String("custom_tag_table"), Qt::CaseInsensitive) ||
           fail(problem, QStringLiteral("project %1: custom_tag_table is not a table").arg(path));
}

bool ProjectStore::declareArray(int linkId, const ArrayDeclaration& declaration, Declared* done,
                                QString* problem) {
    Query present(connection, "SELECT rowid, address FROM custom_tag_table WHERE connector_id = ?",
                  {linkId});
    QVector<int> same;
    QVector<int> older;
    const auto take = [&](const Query& row) {
        if (row.text(1) == declaration.text) {
            same.append(row.number(0));
        } else if (declaredArrayName(row.text(1)) == declaration.name) {
            older.append(row.number(0));
        }
    };
    if (!declarationsAreStored(problem) || !eachRow(&present, take, problem)) {
        return false;
    }
    const bool keep = same.size() == 1 && older.isEmpty();
    *done = keep                                ? Declared::kUnchanged
            : same.isEmpty() && older.isEmpty() ? Declared::kAdded
                                                : Declared::kReplaced;
    if (keep) {
        return true;
    }
    for (const int row : same + older) {
        Query remove(connection, "DELETE FROM custom_tag_table WHERE rowid = ?", {row});
        if (!execute(&remove, problem)) {
            return false;
        }
    }
    Query insert(connection, "INSERT INTO custom_tag_table (address, connector_id) VALUES (?, ?)",
                 {declaration.text, linkId});
    return execute(&insert, problem);
}

bool ProjectStore::setLink(int linkId, int hmiPort, bool change, QString* problem) {
    Query present(connection, "SELECT HMIPORT FROM LINK WHERE LINKID = ?", {linkId});
    if (!execute(&present, problem)) {
        return false;
    }
    if (present.next()) {
        if (!change || present.number(0) == hmiPort) {
            return true;
        }
        Query update(connection, "UPDATE LINK SET HMIPORT = ? WHERE LINKID = ?", {hmiPort, linkId});
        return execute(&update, problem);
    }
    Query insert(connection, "INSERT INTO LINK (LINKID, HMIPORT) VALUES (?, ?)", {linkId, hmiPort});
    return execute(&insert, problem);
}

bool ProjectStore::setDefaultNode(const ProjectContents::Node& node, QString* problem) {
    Query others(connection, "UPDATE NODE SET ISDEFAULT = 0 WHERE LINKID = ?", {node.linkId});
    Query remove(connection, "DELETE FROM NODE WHERE LINKID = ? AND STATIONID = ?",
                 {node.linkId, node.stationId});
    Query insert(connection,
                 "INSERT INTO NODE (LINKID, STATIONID, IP, PORT, ISDEFAULT) VALUES (?, ?, ?, ?, 1)",
                 {node.linkId, node.stationId, node.ip, node.port});
    return execute(&others, problem) && execute(&remove, problem) && execute(&insert, problem);
}

bool ProjectStore::commit(QString* problem) {
    Query end(connection, "COMMIT");
    if (!execute(&end, problem)) {
        return false;
    }
    inTransaction = false;
    return true;
}

bool ProjectStore::contents(ProjectContents* contents, QString* problem) {
    if (hasTable(QStringLiteral("LINK"))) {
        Query links(connection, "SELECT LINKID, HMIPORT FROM LINK ORDER BY LINKID");
        const auto take = [contents](const Query& row) {
            contents->links.append({row.number(0), row.number(1)});
        };
        if (!eachRow(&links, take, problem)) {
            return false;
        }
    }
    if (hasTable(QStringLiteral("NODE"))) {
        Query nodes(connection,
                    "SELECT LINKID, STATIONID, IP, PORT, ISDEFAULT FROM NODE "
                    "ORDER BY LINKID, STATIONID");
        const auto take = [contents](const Query& row) {
            contents->nodes.append(
                {row.number(0), row.number(1), row.text(2), row.number(3), row.number(4) == 1});
        };
        if (!eachRow(&nodes, take, problem)) {
            return false;
        }
    }
    Query arrays(connection,
                 "SELECT connector_id, address FROM custom_tag_table ORDER BY connector_id, rowid");
    const auto take = [contents](const Query& row) {
        contents->arrays.append({row.number(0), row.text(1)});
    };
    return declarationsAreStored(problem) && eachRow(&arrays, take, problem);
}
