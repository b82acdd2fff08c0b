#include "apps/micro800/plugin/tag_csv.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/parsed_address.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

DriverResult good(const char* hex) {
    DriverResult result;
    result.ok = true;
    result.bytes = QByteArray::fromHex(hex);
    result.microseconds = 6412.4;
    return result;
}

TEST(AccessCsv, HasAFieldForEachName) {
    EXPECT_EQ(accessCsvHeader(), QString("address,type,ok,ms,value,error"));
    EXPECT_EQ(accessCsv(parsed("DINT0:A"), 1, good("d6ffffff"), NumberBase::kDecimal),
              QString("DINT0:A,DINT,true,6.412,-42,"));
    EXPECT_EQ(accessCsv(parsed("INT0:A[0,1]"), 2, good("feff0100"), NumberBase::kHexadecimal),
              QString("\"INT0:A[0,1]\",INT,true,6.412,0xFFFE 0x0001,"));
}

TEST(AccessCsv, AStringStandsForItself) {
    EXPECT_EQ(accessCsv(parsed("STRING0:N"), 1, good("612c2262"), NumberBase::kDecimal),
              QString("STRING0:N,STRING,true,6.412,\"a,\"\"b\","));
    EXPECT_EQ(accessCsv(parsed("STRING0:N"), 1, good("3d31"), NumberBase::kDecimal),
              QString("STRING0:N,STRING,true,6.412,'=1,"));
}

TEST(AccessCsv, AFailureHasNoValue) {
    DriverResult failed;
    failed.error = "read DINT0:A> no, not now";
    EXPECT_EQ(accessCsv(parsed("DINT0:A"), 1, failed, NumberBase::kDecimal),
              QString("DINT0:A,DINT,false,0.000,,\"read DINT0:A> no, not now\""));
}

}  // namespace
