// The array tags that the project declares, read once from its database.

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>
#include <cerrno>
#include <climits>
#include <cstdlib>

#include "common/device_setting.h"
#include "common/tools.h"
#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"
#include "runtime/abstract_device_interface.h"

namespace {

/// Reads one decimal int and moves `*text` behind it; false when there is none that fits.
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

}  // namespace

int LgxArrayDef::size() const {
    if (dims < 1) {
        return 0;
    }
    qint64 elements = 1;
    for (int i = 0; i < dims && i < kMaxDims; ++i) {
        if (__builtin_mul_overflow(elements, width(bounds[i]), &elements) || elements > INT_MAX) {
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
    {
        QSqlDatabase database =
            QSqlDatabase::addDatabase(QLatin1String("QSQLITE"), connectionName);
        database.setDatabaseName(GetDatabaseName());
        database.setConnectOptions(QLatin1String("QSQLITE_OPEN_READONLY"));
        opened = database.open();
    }
    if (!opened) {
        // So that the next access tries to open it again.
        QSqlDatabase::removeDatabase(connectionName);
    }
    return opened;
}

bool DriverABMicro800Eth::readDB(AbstractDeviceInterface* device) {
    if (arrayDefsLoaded) {
        return true;
    }
    if (!dbOpen) {
        dbOpen = createDBConnection();
        if (!dbOpen) {
            setCommError(QLatin1String("can not open database"));
            return false;
        }
    }
    if (!initArrayDefMap(device->deviceSetting()->linkID)) {
        setCommError(QLatin1String("failed to initialize array definition table"));
        return false;
    }
    arrayDefsLoaded = true;
    QSqlDatabase::database(connectionName, false).close();
    dbOpen = false;
    return true;
}

bool DriverABMicro800Eth::initArrayDefMap(int connectorId) {
    QSqlQuery query(QSqlDatabase::database(connectionName, false));
    query.exec(QString::fromLatin1("SELECT address FROM custom_tag_table WHERE connector_id = %1")
                   .arg(connectorId));
    if (!query.isActive()) {
        return false;
    }
    while (query.next()) {
        const QString address = query.value(0).toString();
        LgxArrayDef def;
        if (rangeMatcher.indexIn(address) >= 0 && arrayDefFromStr(rangeMatcher.cap(3), def)) {
            arrayDefs.insert(rangeMatcher.cap(2).toUpper(), def);
        }
    }
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
