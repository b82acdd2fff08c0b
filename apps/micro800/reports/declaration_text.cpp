#include "apps/micro800/reports/declaration_text.h"

#include "apps/micro800/format/array_declaration.h"

namespace {

QString doneText(ProjectStore::Declared done) {
    switch (done) {
        case ProjectStore::Declared::kAdded:
            return QStringLiteral("added");
        case ProjectStore::Declared::kReplaced:
            return QStringLiteral("replaced");
        case ProjectStore::Declared::kUnchanged:
            break;
    }
    return QStringLiteral("unchanged");
}

}  // namespace

QString elementsText(const QString& address) {
    ArrayDeclaration declaration;
    QString ignored;
    if (!parseArrayDeclaration(address, &declaration, &ignored)) {
        return QString();
    }
    const int size = declaration.size();
    return size == 1 ? QStringLiteral(" (1 element)") : QStringLiteral(" (%1 elements)").arg(size);
}

QString declaredText(const QString& address, int link, ProjectStore::Declared done) {
    return QStringLiteral("%1 on link %2: %3")
        .arg(address + elementsText(address), QString::number(link), doneText(done));
}
