#include "apps/simulator/objects/identity.h"

#include <gtest/gtest.h>

#include "unit/apps/simulator/hex.h"

namespace {

TEST(IdentityItem, HasTheStandardsLayout) {
    sim::Identity identity;
    identity.productCode = 0x0102;
    identity.majorRevision = 12;
    identity.minorRevision = 11;
    identity.serial = 0x11223344;
    identity.productName = "2080-LC50-48QWB";
    sim::Bytes out;
    putIdentityItem(out, identity, 0x7F000001, 44818);
    EXPECT_EQ(hexText("0C00 3100 0100"                          // item, length 49, version
                      "0002 AF12 7F000001 0000000000000000"     // socket address, big-endian
                      "0100 0E00 0201 0C 0B 3400 44332211"      // vendor to serial number
                      "0F 323038302D4C4335302D3438515742 03"),  // name, state
              hexOf(out));
}

TEST(ServicesItem, OffersCipOverTcp) {
    sim::Bytes out;
    sim::putServicesItem(out);
    EXPECT_EQ(hexText("0001 1400 0100 2000 436F6D6D756E69636174696F6E730000"), hexOf(out));
}

}  // namespace
