#include "apps/simulator/pccc/file_address.h"

#include <gtest/gtest.h>

#include "unit/apps/simulator/hex.h"

namespace {

using sim::FileAddress;
using sim::PcccStatus;

std::string text(const PcccStatus& status) {
    char text[8];
    std::snprintf(text, sizeof text, "%02X/%02X", status.sts, status.ext);
    return text;
}

/// The address as text, or the status that refuses it.
std::string logical(const char* bytes, char letter = 0) {
    const sim::Bytes data = hex(bytes);
    sim::ByteReader reader(data);
    FileAddress address;
    const PcccStatus status = takeLogicalAddress(reader, &address);
    return status.ok() ? address.text(sim::findFileType(letter)) : text(status);
}

std::string three(const char* bytes, char letter = 0) {
    const sim::Bytes data = hex(bytes);
    sim::ByteReader reader(data);
    FileAddress address;
    return takeThreeAddressField(reader, &address) ? address.text(sim::findFileType(letter))
                                                   : "none";
}

TEST(LogicalAddress, IsTaken) {
    EXPECT_EQ("N7:0", logical("06 07 00", 'N'));
    EXPECT_EQ("N7:0", logical("07 00 07 00", 'N'));
    EXPECT_EQ("T4:0.2", logical("0E 04 00 02", 'T'));
    EXPECT_EQ("T4:0.0", logical("0E 04 00 00", 'T'));
    EXPECT_EQ("7:254", logical("06 07 FE"));
    EXPECT_EQ("7:300", logical("06 07 FF 2C 01"));
    EXPECT_EQ("300:7.5", logical("0F 00 FF 2C 01 FF 07 00 FF 05 00"));
}

TEST(LogicalAddress, IsRefused) {
    const struct {
        const char* bytes;
        const char* status;
    } rows[] = {
        {"", "10/00"},
        {"06", "10/00"},
        {"06 07", "10/00"},
        {"06 07 FF 2C", "10/00"},
        {"0E 04 00", "10/00"},
        {"00 24 4E 37 3A 30 00", "F0/02"},
        {"02 07", "F0/02"},
        {"04 00", "F0/02"},
        {"16 07 00 00", "F0/03"},
        {"86 07 00", "F0/03"},
        {"07 01 07 00", "F0/06"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.status, logical(row.bytes)) << row.bytes;
    }
}

TEST(ThreeAddressField, IsTaken) {
    EXPECT_EQ("N7:0", three("07 89 00 00", 'N'));
    EXPECT_EQ("N7:300", three("07 89 FF 2C 01 00", 'N'));
    EXPECT_EQ("T4:1.2", three("04 86 01 02", 'T'));
    EXPECT_EQ("F300:1", three("FF 2C 01 8A 01 00", 'F'));
    EXPECT_EQ("<ff>7:0", three("07 FF 00 00"));
    EXPECT_EQ("<89>7:0.256", three("07 89 00 FF 00 01"));
}

TEST(ThreeAddressField, IsRefusedWhenCutOff) {
    for (const char* bytes : {"", "07", "07 89", "07 89 00", "07 89 FF 2C 01", "07 89 FF 2C"}) {
        EXPECT_EQ("none", three(bytes)) << bytes;
    }
}

}  // namespace
