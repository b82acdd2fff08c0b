#include "apps/micro800/format/tag_type.h"

namespace {

const TagType kTypes[] = {
    {"BOOL", "BOOL0", ValueKind::kBool, 1},       {"SINT", "SINT0", ValueKind::kSigned, 1},
    {"USINT", "USINT0", ValueKind::kUnsigned, 1}, {"INT", "INT0", ValueKind::kSigned, 2},
    {"UINT", "UINT0", ValueKind::kUnsigned, 2},   {"DINT", "DINT0", ValueKind::kSigned, 4},
    {"UDINT", "UDINT0", ValueKind::kUnsigned, 4}, {"REAL", "REAL0", ValueKind::kReal, 4},
    {"LREAL", "LREAL0", ValueKind::kReal, 8},     {"STRING", "STRING0", ValueKind::kString, 0},
};

}  // namespace

const TagType* tagTypeByPrefix(const QString& prefix) {
    for (const TagType& type : kTypes) {
        if (prefix == QLatin1String(type.prefix)) {
            return &type;
        }
    }
    return nullptr;
}

QStringList tagPrefixes() {
    QStringList prefixes;
    for (const TagType& type : kTypes) {
        prefixes << QLatin1String(type.prefix);
    }
    return prefixes;
}
