#include "apps/micro800/controller/discovery/device_list.h"

#include <QJsonArray>

#include "apps/micro800/controller/identity_facts.h"
#include "apps/micro800/terminal/text_table.h"

namespace {

bool isSameDevice(const FoundDevice& known, const QString& endpoint, const CipIdentity& identity) {
    const CipIdentity& other = known.identity;
    const bool sameKind =
        other.vendorId == identity.vendorId && other.deviceType == identity.deviceType &&
        other.productCode == identity.productCode && other.serialNumber == identity.serialNumber;
    return sameKind && (identity.serialNumber != 0 || known.endpoints.contains(endpoint));
}

QString vendorText(uint16_t id) {
    const QString name = vendorName(id);
    return name.isEmpty() ? QString::number(id) : name;
}

}  // namespace

void DeviceList::add(const QString& sender, const CipIdentity& identity) {
    const QString endpoint = QStringLiteral("%1:%2").arg(sender).arg(identity.port);
    for (FoundDevice& known : found) {
        if (isSameDevice(known, endpoint, identity)) {
            if (!known.endpoints.contains(endpoint)) {
                known.endpoints << endpoint;
            }
            return;
        }
    }
    found.append({identity, {endpoint}});
}

QStringList deviceTable(const QVector<FoundDevice>& devices) {
    QVector<QStringList> rows;
    for (const FoundDevice& device : devices) {
        const CipIdentity& identity = device.identity;
        rows.append({device.endpoints.join(QLatin1Char(',')), productText(identity),
                     revisionText(identity), serialText(identity), stateText(identity.state),
                     vendorText(identity.vendorId)});
    }
    return tableLines(
        {QStringLiteral("ADDRESS"), QStringLiteral("PRODUCT"), QStringLiteral("REVISION"),
         QStringLiteral("SERIAL"), QStringLiteral("STATE"), QStringLiteral("VENDOR")},
        rows);
}

QJsonObject deviceJson(const FoundDevice& device) {
    QJsonObject object = factsJson(identityFacts(device.identity));
    object[QStringLiteral("addresses")] = QJsonArray::fromStringList(device.endpoints);
    return object;
}
