#include "apps/simulator/json_values.h"

#include <gtest/gtest.h>

#include <QJsonDocument>

namespace {

QJsonObject object(const char* text) {
    return QJsonDocument::fromJson(text).object();
}

TEST(JsonValues, AreTakenAsText) {
    const QJsonObject json = object(R"({"one": 1.5, "list": [1, "x", true, false], "empty": []})");
    QStringList values;
    QString error;
    EXPECT_TRUE(sim::jsonValues(json["none"], &values, &error));
    EXPECT_TRUE(sim::jsonValues(json["empty"], &values, &error));
    EXPECT_TRUE(values.isEmpty());
    EXPECT_TRUE(sim::jsonValues(json["one"], &values, &error));
    EXPECT_TRUE(sim::jsonValues(json["list"], &values, &error));
    EXPECT_EQ((QStringList{"1.5", "1", "x", "1", "0"}), values);
}

TEST(JsonValues, AreFlat) {
    const QJsonObject json = object(R"({"a": null, "b": [[1]], "c": {}})");
    for (const char* key : {"a", "b", "c"}) {
        QStringList values;
        QString error;
        EXPECT_FALSE(sim::jsonValues(json[key], &values, &error)) << key;
        EXPECT_EQ("a value is neither a number, nor a string, nor true or false",
                  error.toStdString());
    }
}

TEST(KnownKeys, NameTheOthers) {
    QString error;
    EXPECT_TRUE(sim::knownKeys(object(R"({"a": 1})"), {"a", "b"}, &error));
    EXPECT_FALSE(sim::knownKeys(object(R"({"a": 1, "c": 1})"), {"a", "b"}, &error));
    EXPECT_EQ("there is no key 'c' (a, b)", error.toStdString());
}

}  // namespace
