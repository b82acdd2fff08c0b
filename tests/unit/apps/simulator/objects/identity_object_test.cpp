#include "apps/simulator/objects/identity_object.h"

#include <gtest/gtest.h>

#include "unit/apps/simulator/hex.h"

namespace {

const uint8_t kAll = 0x01;
const uint8_t kList = 0x03;
const uint8_t kSingle = 0x0E;

sim::Identity someIdentity() {
    sim::Identity identity;
    identity.vendor = 0x0102;
    identity.deviceType = 0x0304;
    identity.productCode = 0x0506;
    identity.majorRevision = 7;
    identity.minorRevision = 8;
    identity.status = 0x090A;
    identity.serial = 0x0B0C0D0E;
    identity.productName = "PLC";
    identity.state = 3;
    return identity;
}

/// "STATUS DATA".
std::string answer(uint8_t service, uint32_t attribute, const std::string& data = "") {
    const sim::Bytes request = hex(data);
    sim::Bytes reply;
    const sim::CipStatus status =
        getIdentityAttributes(someIdentity(), service, attribute, request, &reply);
    const sim::Bytes general = {status.general};
    return hexOf(general) + " " + hexOf(reply);
}

std::string row(const std::string& status, const std::string& data) {
    return status + " " + hexText(data);
}

TEST(IdentityObject, GivesAllThatEveryDeviceHas) {
    EXPECT_EQ(row("00", "0201 0403 0605 07 08 0A09 0E0D0C0B 03 504C43"), answer(kAll, 0));
    EXPECT_EQ(row("15", ""), answer(kAll, 0, "00"));
}

TEST(IdentityObject, GivesOneAttribute) {
    const struct {
        uint32_t attribute;
        const char* value;
    } rows[] = {{1, "0201"}, {2, "0403"},     {3, "0605"},      {4, "07 08"},
                {5, "0A09"}, {6, "0E0D0C0B"}, {7, "03 504C43"}, {8, "03"}};
    for (const auto& one : rows) {
        EXPECT_EQ(row("00", one.value), answer(kSingle, one.attribute)) << one.attribute;
    }
    for (const uint32_t attribute : {0u, 9u, 0x101u, 0x10001u}) {
        EXPECT_EQ(row("14", ""), answer(kSingle, attribute)) << attribute;
    }
    EXPECT_EQ(row("15", ""), answer(kSingle, 1, "00"));
}

TEST(IdentityObject, GivesAListOfAttributes) {
    EXPECT_EQ(row("00", "0200 0700 0000 03 504C43 0100 0000 0201"),
              answer(kList, 0, "0200 0700 0100"));
    EXPECT_EQ(row("0a", "0300 0100 0000 0201 0900 1400 0300 0000 0605"),
              answer(kList, 0, "0300 0100 0900 0300"));
    EXPECT_EQ(row("00", "0000"), answer(kList, 0, "0000"));
    for (const char* data : {"", "01", "0100", "0100 01", "0200 0100"}) {
        EXPECT_EQ(row("13", ""), answer(kList, 0, data)) << data;
    }
    EXPECT_EQ(row("15", ""), answer(kList, 0, "0100 0100 02"));
}

}  // namespace
