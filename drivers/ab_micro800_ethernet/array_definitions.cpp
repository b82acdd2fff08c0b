// The array tags that the project declares, read once from its database.

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <exception>

#include "common/device_setting.h"
#include "common/tools.h"
#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"
#include "drivers/ab_micro800_ethernet/border.h"
#include "runtime/abstract_device_interface.h"

namespace {

/// Reads one decimal int and moves `*text` after it; false when there is none that fits.
bool scanInt(const char** text, int* value) {
    char* end = 0;
    errno = 0;
    const long number = std::strtol(*text, &end, 10);
    if (end == *text || errno == ERANGE || number > INT_MAX || number < INT_MIN) {
        return false;
    }
    *text = end;
    *value = static_cast<int>(number);
    return true;
}

/// "lower..upper"
bool scanRange(const QByteArray& text, LgxArrayDef::Bounds* bounds) {
    const char* at = text.constData();
    if (!scanInt(&at, &bounds->lower) || at[0] != '.' || at[1] != '.') {
        return false;
    }
    at += 2;
    return scanInt(&at, &bounds->upper) && bounds->upper >= bounds->lower;
}

/// Digits only: a number that does not fit is not the same as no number.
bool isDecimal(const QString& text) {
    for (int i = 0; i < text.size(); ++i) {
        if (!text.at(i).isDigit()) {
            return false;
        }
    }
    return !text.isEmpty();
}

qint64 width(const LgxArrayDef::Bounds& bounds) {
    return qint64(bounds.upper) - bounds.lower + 1;
}

/// SQLite waits this long, in milliseconds, for another program's lock: the runtime's thread waits
/// with it. Qt's own choice is five seconds.
const char kConnectOptions[] = "QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=400";

/// More rows than any project has, and longer than any address that a request could carry: the name
/// in it has up to 255 characters. Of a longer one only its beginning is searched.
const int kMostRows = 100000;
const int kLongestAddress = 512;

const char kTableProblem[] = "failed to initialize array definition table";

/// The rows of one link in the declarations' table, one at a time. The file is not trusted: what is
/// kept in memory and how long a search may last must not be for its writer to choose.
class DeclarationRows {
 public:
    DeclarationRows(const QString& connection, int connectorId);
    /// Gives the next address; false after the last one and on failure.
    bool next(QString* address);
    bool failed() const { return !problemText.isEmpty(); }
    QString problem() const { return problemText; }

 private:
    bool isStoredTable();
    bool fail(const QString& reason);

    QSqlQuery query;
    int rows;
    QString problemText;  ///< empty: none so far
};

DeclarationRows::DeclarationRows(const QString& connection, int connectorId)
    : query(QSqlDatabase::database(connection, false)), rows(0) {
    // Qt keeps every row of any other query.
    query.setForwardOnly(true);
    if (!isStoredTable()) {
        return;
    }
    const QString statement =
        QString::fromLatin1("SELECT address FROM custom_tag_table WHERE connector_id = %1")
            .arg(connectorId);
    // Cut by SQLite: a text of hundreds of megabytes ends the process where it becomes a QString.
    query.exec(QString::fromLatin1("SELECT substr(address, 1, %1) FROM (%2)")
                   .arg(QString::number(kLongestAddress), statement));
    if (!query.isActive()) {
        fail(QString());
    }
}

/// A stored table ends with the file. A view or a virtual table can compute for ever, also before
/// its first row, and nothing in QtSql interrupts SQLite.
bool DeclarationRows::isStoredTable() {
    query.exec(
        QLatin1String("SELECT sql FROM sqlite_master WHERE lower(name) = 'custom_tag_table' "
                      "AND type IN ('table', 'view') AND sql NOT LIKE 'CREATE TABLE %'"));
    if (!query.isActive()) {
        return fail(QString());
    }
    return !query.next() || fail(QLatin1String("custom_tag_table is not a table"));
}

bool DeclarationRows::next(QString* address) {
    if (failed()) {
        return false;
    }
    if (!query.next()) {
        const QSqlError error = query.lastError();
        return error.isValid() && fail(error.databaseText());
    }
    *address = query.value(0).toString();
    return ++rows <= kMostRows || fail(QString::fromLatin1("more than %1 rows").arg(kMostRows));
}

/// Keeps the text for the operator; always false.
bool DeclarationRows::fail(const QString& reason) {
    problemText = QLatin1String(kTableProblem);
    if (!reason.isEmpty()) {
        problemText += QLatin1String(": ") + reason;
    }
    return false;
}

}  // namespace

int LgxArrayDef::size() const {
    if (dims < 1) {
        return 0;
    }
    qint64 elements = 1;
    for (int i = 0; i < dims && i < kMaxDims; ++i) {
        elements *= width(bounds[i]);  // at most 2^31 by 2^32
        if (elements > INT_MAX) {
            return INT_MAX;
        }
    }
    return static_cast<int>(elements);
}

bool DriverABMicro800Eth::createDBConnection() {
    if (QSqlDatabase::contains(connectionName)) {
        return true;
    }
    bool opened = false;
    connectionListed = true;
    try {
        QSqlDatabase database = QSqlDatabase::addDatabase(QLatin1String("QSQLITE"), connectionName);
        database.setDatabaseName(GetDatabaseName());
        database.setConnectOptions(QLatin1String(kConnectOptions));
        opened = database.open();
    } catch (const std::exception&) {
        closeDatabase();
        throw;
    }
    endBeforeTheDatabase();
    if (!opened) {
        closeDatabase();  // so that the next access tries to open it again
    }
    return opened;
}

bool DriverABMicro800Eth::readDB(AbstractDeviceInterface* device) {
    if (arrayDefsLoaded) {
        return true;
    }
    if (dbOpen && !QSqlDatabase::database(connectionName, false).isValid()) {
        closeDatabase();  // Qt gives a connection to no thread but the one that made it
    }
    if (!dbOpen) {
        dbOpen = createDBConnection();
        if (!dbOpen) {
            setCommError(QLatin1String("can not open database"));
            return false;
        }
    }
    if (!initArrayDefMap(device->deviceSetting()->linkID)) {
        return false;
    }
    arrayDefsLoaded = true;
    closeDatabase();
    return true;
}

/// Closes the connection and takes it out of Qt's list. Without memory for that it stays there for
/// the next call, the destructor's at the latest.
void DriverABMicro800Eth::closeDatabase() {
    dbOpen = false;
    connectionListed = !withoutThrowing(false, [this] {
        QSqlDatabase::database(connectionName, false).close();
        QSqlDatabase::removeDatabase(connectionName);
        return true;
    });
}

bool DriverABMicro800Eth::initArrayDefMap(int connectorId) {
    DeclarationRows rows(connectionName, connectorId);
    QHash<QString, LgxArrayDef> defs;
    QString address;
    while (rows.next(&address)) {
        LgxArrayDef def;
        if (rangeMatcher.indexIn(address) >= 0 && arrayDefFromStr(rangeMatcher.cap(3), def)) {
            defs.insert(rangeMatcher.cap(2).toUpper(), def);
        }
    }
    if (rows.failed()) {
        setCommError(rows.problem());
        return false;
    }
    arrayDefs = defs;
    return true;
}

bool DriverABMicro800Eth::arrayDefFromStr(const QString& ranges, LgxArrayDef& def) const {
    const QStringList parts = ranges.split(QLatin1Char(','));
    def.dims = parts.size();
    if (parts.size() > LgxArrayDef::kMaxDims) {
        return false;
    }
    for (int i = 0; i < parts.size(); ++i) {
        if (!scanRange(parts.at(i).toLatin1(), &def.bounds[i])) {
            return false;
        }
    }
    return true;
}

bool DriverABMicro800Eth::arrayDefined(const QString& name) const {
    return arrayDefs.contains(name);
}

int DriverABMicro800Eth::arraySize(const QString& name) const {
    return arrayDefs.value(name).size();
}

int DriverABMicro800Eth::arrayElementByteOffset(const QString& name, const QString& indexes,
                                                int elementSize) const {
    return strToValueOffset(indexes, arrayDefs.value(name), elementSize);
}

int DriverABMicro800Eth::strToValueOffset(const QString& indexes, const LgxArrayDef& def,
                                          int elementSize) const {
    const QStringList parts = indexes.split(QLatin1Char(','));
    if (def.dims < parts.size() || parts.size() > LgxArrayDef::kMaxDims) {
        return -1;
    }
    qint64 element = 0;
    for (int i = 0; i < parts.size(); ++i) {
        bool fits = false;
        const qint64 index = parts.at(i).toLongLong(&fits);
        const bool tooLong = !fits && isDecimal(parts.at(i));
        if (tooLong || index > INT_MAX || index < INT_MIN) {
            return -1;
        }
        const qint64 scale = i == 0 ? 1 : width(def.bounds[i]);
        if (__builtin_mul_overflow(element, scale, &element) ||
            __builtin_add_overflow(element, index - def.bounds[i].lower, &element)) {
            return -1;
        }
    }
    qint64 offset = 0;
    if (__builtin_mul_overflow(element, qint64(elementSize), &offset) || offset > INT_MAX ||
        offset < INT_MIN) {
        return -1;
    }
    return static_cast<int>(offset);
}
