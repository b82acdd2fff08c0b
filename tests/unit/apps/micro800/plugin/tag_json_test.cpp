#include "apps/micro800/plugin/tag_json.h"

#include <gtest/gtest.h>

#include <QJsonDocument>

#include "unit/apps/micro800/parsed_address.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

QByteArray line(const QJsonObject& object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

TEST(AccessJson, OneValue) {
    DriverResult result;
    result.ok = true;
    result.bytes = QByteArray::fromHex("2a000000");
    result.microseconds = 6412.4;
    EXPECT_EQ(line(accessJson(parsed("DINT0:COUNTER"), 1, result, result.bytes)),
              QByteArray("{\"address\":\"DINT0:COUNTER\",\"ms\":6.412,\"ok\":true,"
                         "\"type\":\"DINT\",\"value\":42}"));
}

TEST(AccessJson, SeveralValues) {
    DriverResult result;
    result.ok = true;
    result.microseconds = 0.4;
    EXPECT_EQ(line(accessJson(parsed("INT0:A[1]"), 2, result, QByteArray::fromHex("0100ffff"))),
              QByteArray("{\"address\":\"INT0:A[1]\",\"ms\":0,\"ok\":true,\"type\":\"INT\","
                         "\"values\":[1,-1]}"));
}

TEST(AccessJson, AFailureHasNoValue) {
    DriverResult result;
    result.error = "read DINT0:X> Path destination \"unknown\"";
    result.microseconds = 1000000;
    EXPECT_EQ(line(accessJson(parsed("DINT0:X"), 1, result, result.bytes)),
              QByteArray("{\"address\":\"DINT0:X\","
                         "\"error\":\"read DINT0:X> Path destination \\\"unknown\\\"\","
                         "\"ms\":1000,\"ok\":false,\"type\":\"DINT\"}"));
}

}  // namespace
