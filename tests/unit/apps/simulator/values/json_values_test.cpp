#include "apps/simulator/values/json_values.h"

#include <gtest/gtest.h>

#include <QJsonDocument>

namespace {

QJsonObject object(const char* text) {
    return QJsonDocument::fromJson(text).object();
}

TEST(JsonValues, AreTakenAsText) {
    const QJsonObject json = object(R"({"one": 1.5, "list": [1, "x", true, false], "empty": []})");
    QStringList values;
    QString problem;
    EXPECT_TRUE(sim::jsonValues(json["none"], &values, &problem));
    EXPECT_TRUE(sim::jsonValues(json["empty"], &values, &problem));
    EXPECT_TRUE(values.isEmpty());
    EXPECT_TRUE(sim::jsonValues(json["one"], &values, &problem));
    EXPECT_TRUE(sim::jsonValues(json["list"], &values, &problem));
    EXPECT_EQ((QStringList{"1.5", "1", "x", "1", "0"}), values);
}

TEST(JsonValues, AreFlat) {
    const QJsonObject json = object(R"({"a": null, "b": [[1]], "c": {}})");
    for (const char* key : {"a", "b", "c"}) {
        QStringList values;
        QString problem;
        EXPECT_FALSE(sim::jsonValues(json[key], &values, &problem)) << key;
        EXPECT_EQ("a value is neither a number, nor a string, nor true or false",
                  problem.toStdString());
    }
}

TEST(KnownKeys, NameTheOthers) {
    QString problem;
    EXPECT_TRUE(sim::knownKeys(object(R"({"a": 1})"), {"a", "b"}, &problem));
    EXPECT_FALSE(sim::knownKeys(object(R"({"a": 1, "c": 1})"), {"a", "b"}, &problem));
    EXPECT_EQ("there is no key 'c' (a, b)", problem.toStdString());
}

}  // namespace
