#ifndef APPS_MICRO800_PROJECT_PROJECT_STORE_H
#define APPS_MICRO800_PROJECT_PROJECT_STORE_H

#include <QString>
#include <QVector>
#include <functional>

#include "apps/micro800/format/array_declaration.h"

/// Where the project in `directory` keeps its database: compile/database/database below it.
QString projectDatabasePath(const QString& directory);
bool projectExists(const QString& directory);

/// Makes a project without any declaration in `directory`.
bool createEmptyProject(const QString& directory, QString* problem);

/// The contents of a project that the drivers read.
struct ProjectContents {
    struct Link {
        int linkId;
        int hmiPort;  ///< the runtime's port number, e.g. 2000 for Ethernet
    };
    struct Node {
        int linkId;
        int stationId;
        QString ip;
        int port;
        bool isDefault;
    };
    struct Array {
        int linkId;
        QString address;
    };
    QVector<Link> links;
    QVector<Node> nodes;
    QVector<Array> arrays;
};

/// The project database, an SQLite file. One connection, closed by the destructor. Every change
/// belongs to one transaction that commit() ends; without it the file stays as it was.
class ProjectStore {
 public:
    /// What became of a declaration.
    enum class Declared { kAdded, kReplaced, kUnchanged };

    ProjectStore();
    ~ProjectStore();
    ProjectStore(const ProjectStore&) = delete;
    ProjectStore& operator=(const ProjectStore&) = delete;

    /// Opens an existing project to look at it.
    bool openToRead(const QString& directory, QString* problem);
    /// Opens a project to change it; directories, file and tables are made when missing.
    bool openToChange(const QString& directory, QString* problem);

    /// Declares an array on a link. An earlier declaration of the same name (in any case) on that
    /// link is replaced: the driver would take the last one only.
    bool declareArray(int linkId, const ArrayDeclaration& declaration, Declared* done,
                      QString* problem);
    /// Gives a link the runtime's port; a link that exists keeps its own unless `change` is set.
    bool setLink(int linkId, int hmiPort, bool change, QString* problem);
    /// Makes this the default node of its link; a node of the same station is replaced.
    bool setDefaultNode(const ProjectContents::Node& node, QString* problem);
    bool commit(QString* problem);

    /// A table that is missing counts as empty, but for the declarations'.
    bool contents(ProjectContents* contents, QString* problem);

 private:
    class Query;

    bool open(const QString& directory, const QString& options, QString* problem);
    bool execute(Query* query, QString* problem);
    bool hasTable(const QString& name);
    bool declarationsAreStored(QString* problem);
    bool eachRow(Query* query, const std::function<void(const Query& row)>& take, QString* problem);

    QString connection;
    QString path;
    bool inTransaction = false;
};

#endif
