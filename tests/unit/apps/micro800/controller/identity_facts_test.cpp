#include "apps/micro800/controller/identity_facts.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <cstring>

#include "unit/apps/micro800/qt_printers.h"

namespace {

CipIdentity controller() {
    CipIdentity identity = {};
    identity.port = 44818;
    identity.ipAddress = 0xC0A80114;
    identity.vendorId = 1;
    identity.deviceType = 14;
    identity.productCode = 186;
    identity.majorRevision = 12;
    identity.minorRevision = 11;
    identity.status = 0x0034;
    identity.serialNumber = 0x0080C0DE;
    strcpy(identity.productName, "2080-LC50-48QWB");
    identity.state = 3;
    return identity;
}

QString textOf(const CipIdentity& identity, const char* label) {
    for (const Fact& fact : identityFacts(identity)) {
        if (strcmp(fact.label, label) == 0) {
            return fact.text;
        }
    }
    return "no such fact";
}

TEST(IdentityFacts, EveryFieldInWords) {
    QStringList lines;
    for (const Fact& fact : identityFacts(controller())) {
        lines << QString("%1: %2").arg(fact.label, fact.text);
    }
    EXPECT_EQ(lines.join('\n'), QString("Vendor: Rockwell Automation/Allen-Bradley (1)\n"
                                        "Product type: programmable logic controller (14)\n"
                                        "Product code: 186\n"
                                        "Product name: \"2080-LC50-48QWB\"\n"
                                        "Revision: 12.11\n"
                                        "Serial number: 0x0080C0DE\n"
                                        "Status: 0x0034 (configured, no I/O connections)\n"
                                        "State: operational\n"
                                        "Address: 192.168.1.20:44818"));
}

TEST(IdentityFacts, EveryFieldForAScript) {
    EXPECT_EQ(QJsonDocument(factsJson(identityFacts(controller()))).toJson(QJsonDocument::Compact),
              QByteArray("{\"address\":\"192.168.1.20:44818\","
                         "\"product_code\":186,"
                         "\"product_name\":\"2080-LC50-48QWB\","
                         "\"product_type\":{\"id\":14,\"name\":\"programmable logic controller\"},"
                         "\"revision\":{\"major\":12,\"minor\":11},"
                         "\"serial_number\":\"0x0080C0DE\","
                         "\"state\":{\"code\":3,\"text\":\"operational\"},"
                         "\"status\":{\"text\":\"configured, no I/O connections\",\"word\":52},"
                         "\"vendor\":{\"id\":1,\"name\":\"Rockwell Automation/Allen-Bradley\"}}"));
}

TEST(IdentityFacts, WhatHasNoNameIsANumber) {
    CipIdentity identity = controller();
    identity.vendorId = 0xFFFF;
    identity.deviceType = 0x0A;
    identity.status = 0;
    identity.state = 255;
    EXPECT_EQ(textOf(identity, "Vendor"), QString("65535"));
    EXPECT_EQ(textOf(identity, "Product type"), QString("10"));
    EXPECT_EQ(textOf(identity, "Status"), QString("0x0000"));
    EXPECT_EQ(textOf(identity, "State"), QString("state 255"));
    const QJsonObject json = factsJson(identityFacts(identity));
    EXPECT_EQ(json.value("vendor").toObject(), (QJsonObject{{"id", 65535}}));
    EXPECT_EQ(json.value("product_type").toObject(), (QJsonObject{{"id", 10}}));
}

TEST(IdentityFacts, ANameCannotSpeakToTheTerminal) {
    CipIdentity identity = controller();
    strcpy(identity.productName, "a\x1b[2J\"\n\x7f\xE4");
    EXPECT_EQ(textOf(identity, "Product name"),
              QString::fromUtf8("\"a\\x1b[2J\\\"\\n\\x7f\xC3\xA4\""));
    EXPECT_EQ(factsJson(identityFacts(identity)).value("product_name").toString(),
              QString::fromLatin1("a\x1b[2J\"\n\x7f\xE4"));
}

// Vol. 1, tables 5-2.2 to 5-2.4
TEST(IdentityFacts, StatusWords) {
    const struct {
        uint16_t word;
        const char* text;
    } rows[] = {
        {0x0000, ""},
        {0x0001, "owned"},
        {0x0004, "configured"},
        {0x0010, "firmware update in progress"},
        {0x0020, "an I/O connection has failed"},
        {0x0030, "no I/O connections"},
        {0x0040, "non-volatile configuration bad"},
        {0x0050, "major fault"},
        {0x0060, "an I/O connection in run mode"},
        {0x0070, "all I/O connections in idle mode"},
        {0x0080, "extended status 8"},
        {0x0100, "minor recoverable fault"},
        {0x0200, "minor unrecoverable fault"},
        {0x0400, "major recoverable fault"},
        {0x0800, "major unrecoverable fault"},
        {0x3000, "reserved bits 0x3000"},
        {0x0565,
         "owned, configured, minor recoverable fault, major recoverable fault, an I/O "
         "connection in run mode"},
        {0xFFFF,
         "owned, configured, minor recoverable fault, minor unrecoverable fault, major "
         "recoverable fault, major unrecoverable fault, extended status 15, reserved bits "
         "0xF00A"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(statusText(row.word), QString(row.text)) << row.word;
    }
}

TEST(IdentityFacts, States) {
    const char* const texts[] = {"nonexistent",
                                 "self-testing",
                                 "standby",
                                 "operational",
                                 "major recoverable fault",
                                 "major unrecoverable fault",
                                 "state 6"};
    for (uint8_t state = 0; state < 7; ++state) {
        EXPECT_EQ(stateText(state), QString(texts[state]));
    }
}

}  // namespace
