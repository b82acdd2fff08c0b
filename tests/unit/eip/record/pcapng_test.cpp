#include "eip/record/pcapng.h"

#include <gtest/gtest.h>

#include <QByteArray>

#include "support/hex_bytes.h"

namespace {

typedef std::vector<unsigned char> Bytes;

QByteArray text(const Bytes& bytes) {
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), int(bytes.size())).toHex();
}

// The expected bytes are those of a machine with the low byte first, as all of ours are.

TEST(Pcapng, SectionHeader) {
    Bytes out;
    pcapngSectionHeader("abcde", "why", &out);
    EXPECT_EQ(QByteArray("0a0d0d0a"          // section header block
                         "34000000"          // 52 bytes in all
                         "4d3c2b1a"          // byte-order magic
                         "01000000"          // version 1.0
                         "ffffffffffffffff"  // section length unknown
                         "0100030077687900"  // comment, 3 bytes, "why", one byte of padding
                         "04000500616263646500"
                         "0000"      // application, 5 bytes, three of padding
                         "00000000"  // end of options
                         "34000000"),
              text(out));
}

TEST(Pcapng, SectionHeaderWithoutTexts) {
    Bytes out;
    pcapngSectionHeader("", "", &out);
    EXPECT_EQ(QByteArray("0a0d0d0a"
                         "20000000"
                         "4d3c2b1a"
                         "01000000"
                         "ffffffffffffffff"
                         "00000000"
                         "20000000"),
              text(out));
}

TEST(Pcapng, Interface) {
    Bytes out;
    pcapngInterface(&out);
    EXPECT_EQ(QByteArray("01000000"
                         "14000000"  // 20 bytes
                         "6500"      // link type 101
                         "0000"
                         "00000000"  // no limit
                         "14000000"),
              text(out));
}

TEST(Pcapng, PacketWithAComment) {
    Bytes out;
    pcapngPacket(0x0006487FA1B2C3D4, Bytes{0x45, 0x01, 0x02, 0x03, 0x04}, "ok", &out);
    EXPECT_EQ(QByteArray("06000000"
                         "34000000"          // 52 bytes
                         "00000000"          // interface
                         "7f480600d4c3b2a1"  // time, high half first
                         "0500000005000000"  // captured, original
                         "4501020304000000"  // packet, three bytes of padding
                         "010002006f6b0000"  // comment
                         "00000000"
                         "34000000"),
              text(out));
}

TEST(Pcapng, PacketWithoutAComment) {
    Bytes out;
    pcapngPacket(1, Bytes{0x45}, "", &out);
    EXPECT_EQ(QByteArray("06000000"
                         "24000000"
                         "00000000"
                         "0000000001000000"
                         "0100000001000000"
                         "45000000"
                         "24000000"),
              text(out));
}

TEST(Pcapng, BlocksFollowEachOther) {
    Bytes out{0x99, 0x99, 0x99, 0x99};
    pcapngInterface(&out);
    EXPECT_EQ(24u, out.size());
    pcapngPacket(1, Bytes{0x45}, "", &out);
    EXPECT_EQ(QByteArray("24000000"), text(out).right(8));
    EXPECT_EQ(60u, out.size());
}

TEST(Pcapng, LongCommentIsCut) {
    Bytes out;
    pcapngPacket(1, Bytes(), std::string(70000, 'x'), &out);
    EXPECT_EQ(28u + 4 + 65536 + 4 + 4, out.size());
    EXPECT_EQ(0xFF, out[30]);
    EXPECT_EQ(0xFF, out[31]);
}

}  // namespace
