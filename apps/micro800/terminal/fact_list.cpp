#include "apps/micro800/terminal/fact_list.h"

Fact textFact(const char* label, const char* key, const QString& value) {
    return {label, key, value, value};
}

Fact numberFact(const char* label, const char* key, int value, const QString& text) {
    return {label, key, value, text};
}

QJsonObject factsJson(const QVector<Fact>& facts) {
    QJsonObject object;
    for (const Fact& fact : facts) {
        object[QLatin1String(fact.key)] = fact.value;
    }
    return object;
}

void printFacts(const QVector<Fact>& facts, bool json, Console& console) {
    if (json) {
        console.json(factsJson(facts));
        return;
    }
    for (const Fact& fact : facts) {
        console.line(QStringLiteral("%1 ").arg(QLatin1String(fact.label), -20) + fact.text);
    }
}
