#include "apps/micro800/plugin/tag_csv.h"

#include <QStringList>

#include "apps/micro800/format/escape.h"

namespace {

/// A number is what it is; what csvField() guards against is text that a spreadsheet would compute.
QString valueField(const TagAddress& address, int count, const DriverResult& result,
                   NumberBase base) {
    if (!result.ok) {
        return QString();
    }
    const QString text = valueText(*address.type, result.bytes, count, base);
    if (address.type->kind != ValueKind::kString) {
        return text;
    }
    // The string itself and not its text in quotes: CSV has quotes of its own.
    return csvField(valueJson(*address.type, result.bytes, count).toString());
}

}  // namespace

QString accessCsvHeader() {
    return QStringLiteral("address,type,ok,ms,value,error");
}

QString accessCsv(const TagAddress& address, int count, const DriverResult& result,
                  NumberBase base) {
    return QStringList{csvField(address.text),
                       QLatin1String(address.type->name),
                       result.ok ? QStringLiteral("true") : QStringLiteral("false"),
                       QString::number(result.microseconds / 1000, 'f', 3),
                       valueField(address, count, result, base),
                       csvField(result.error)}
        .join(QLatin1Char(','));
}
