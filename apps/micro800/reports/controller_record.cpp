#include "apps/micro800/reports/controller_record.h"

#include <QStringList>

#include "apps/micro800/controller/identity_facts.h"
#include "apps/micro800/controller/identity_query.h"
#include "apps/micro800/format/escape.h"

QJsonObject controllerRecord(const Connection& connection, QString* problem) {
    CipIdentity identity;
    QJsonObject record;
    if (queryIdentity(connection, TraceSink(), &identity, problem)) {
        record = factsJson(identityFacts(identity));
    }
    record[QStringLiteral("host")] = connection.host;
    record[QStringLiteral("port")] = connection.port;
    return record;
}

QString controllerText(const QJsonObject& record) {
    QStringList parts;
    const QString name = record.value(QStringLiteral("product_name")).toString();
    const QJsonObject revision = record.value(QStringLiteral("revision")).toObject();
    if (!name.isEmpty() && !revision.isEmpty()) {
        parts << QStringLiteral("%1 %2.%3")
                     .arg(quotedText(name),
                          QString::number(revision.value(QStringLiteral("major")).toInt()),
                          QString::number(revision.value(QStringLiteral("minor")).toInt()));
    }
    const QString serial = record.value(QStringLiteral("serial_number")).toString();
    if (!serial.isEmpty()) {
        parts << QStringLiteral("serial number %1").arg(serial);
    }
    const QString host = record.value(QStringLiteral("host")).toString();
    if (!host.isEmpty()) {
        parts << QStringLiteral("at %1:%2")
                     .arg(host, QString::number(record.value(QStringLiteral("port")).toInt()));
    }
    return parts.isEmpty() ? QStringLiteral("an unknown controller")
                           : parts.join(QLatin1String(", "));
}

bool isSameController(const QJsonObject& one, const QJsonObject& other) {
    for (const char* key : {"vendor", "product_code", "serial_number"}) {
        const QJsonValue value = one.value(QLatin1String(key));
        if (value.isUndefined() || value != other.value(QLatin1String(key))) {
            return false;
        }
    }
    return true;
}
