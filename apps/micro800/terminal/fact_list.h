#ifndef APPS_MICRO800_TERMINAL_FACT_LIST_H
#define APPS_MICRO800_TERMINAL_FACT_LIST_H

#include <QJsonObject>
#include <QString>
#include <QVector>

#include "apps/micro800/terminal/console.h"

/// One fact about the plugin or the controller: how a person reads it and how --json names it.
struct Fact {
    const char* label;
    const char* key;
    QJsonValue value;
    QString text;
};

Fact textFact(const char* label, const char* key, const QString& value);
Fact numberFact(const char* label, const char* key, int value, const QString& text);

/// All of them as one object.
QJsonObject factsJson(const QVector<Fact>& facts);
/// One line a fact, or one JSON object.
void printFacts(const QVector<Fact>& facts, bool json, Console& console);

#endif
