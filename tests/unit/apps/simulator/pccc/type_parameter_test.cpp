#include "apps/simulator/pccc/type_parameter.h"

#include <gtest/gtest.h>

#include "unit/apps/simulator/hex.h"

namespace {

using sim::TypeParameter;

/// "type/size, bytes left", or "none".
std::string taken(const char* bytes) {
    const sim::Bytes data = hex(bytes);
    sim::ByteReader reader(data);
    TypeParameter parameter;
    if (!takeTypeParameter(reader, &parameter)) {
        return "none";
    }
    return std::to_string(parameter.type) + "/" + std::to_string(parameter.size) + ", " +
           std::to_string(reader.left());
}

TEST(TypeParameter, IsTakenInEveryForm) {
    const struct {
        const char* bytes;
        const char* taken;
    } rows[] = {
        {"42", "4/2, 0"},
        {"42 2A 00", "4/2, 2"},
        {"94 08", "8/4, 0"},
        {"99 09 05 42", "9/5, 1"},
        {"95 09 42", "9/5, 1"},
        {"9A 09 2C 01", "9/300, 0"},
        {"CC 01 02 03 04 05 06 07 08", "67305985/134678021, 0"},
        {"00", "0/0, 0"},
        {"77", "7/7, 0"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.taken, taken(row.bytes)) << row.bytes;
    }
}

TEST(TypeParameter, IsRefused) {
    for (const char* bytes : {"", "94", "99 09", "9A 09 2C", "82", "28", "D2 01 02 03 04 05",
                              "4D 01 02 03 04 05", "F4 01 02 03"}) {
        EXPECT_EQ("none", taken(bytes)) << bytes;
    }
}

TEST(TypeParameter, IsWritten) {
    sim::Bytes out;
    putTypeParameter(out, TypeParameter{4, 2});
    putTypeParameter(out, TypeParameter{8, 4});
    putTypeParameter(out, TypeParameter{16, 300});
    EXPECT_EQ(hexText("42 94 08 9A 10 2C 01"), hexOf(out));
    out.clear();
    sim::putArrayParameter(out, 3);
    sim::putArrayParameter(out, 256);
    EXPECT_EQ(hexText("99 09 03 9A 09 00 01"), hexOf(out));
}

}  // namespace
