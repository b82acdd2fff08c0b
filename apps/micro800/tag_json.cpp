#include "apps/micro800/tag_json.h"

#include <cmath>

#include "apps/micro800/value_format.h"

QJsonObject accessJson(const TagAddress& address, int count, const DriverResult& result,
                       const QByteArray& bytes) {
    QJsonObject object;
    object[QStringLiteral("address")] = address.text;
    object[QStringLiteral("type")] = QLatin1String(address.type->name);
    object[QStringLiteral("ok")] = result.ok;
    object[QStringLiteral("ms")] = std::round(result.microseconds) / 1000;
    if (result.ok)
        object[QLatin1String(count > 1 ? "values" : "value")] =
            valueJson(*address.type, bytes, count);
    else
        object[QStringLiteral("error")] = result.error;
    return object;
}
