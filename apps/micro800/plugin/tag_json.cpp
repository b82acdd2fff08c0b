#include "apps/micro800/plugin/tag_json.h"

#include <cmath>

QJsonObject accessJson(const TagAddress& address, int count, const DriverResult& result,
                       const QByteArray& bytes, NumberBase base) {
    QJsonObject object;
    object[QStringLiteral("address")] = address.text;
    object[QStringLiteral("type")] = QLatin1String(address.type->name);
    object[QStringLiteral("ok")] = result.ok;
    object[QStringLiteral("ms")] = std::round(result.microseconds) / 1000;
    if (result.ok) {
        object[QLatin1String(count > 1 ? "values" : "value")] =
            valueJson(*address.type, bytes, count, base);
    } else {
        object[QStringLiteral("error")] = result.error;
    }
    return object;
}
