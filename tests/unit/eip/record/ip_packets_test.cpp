#include "eip/record/ip_packets.h"

#include <gtest/gtest.h>

#include <QByteArray>

namespace {

typedef std::vector<unsigned char> Bytes;

const IpEnd kPanel = {0xC0000201, 49152};
const IpEnd kController = {0xC0000202, 44818};

QByteArray text(const Bytes& bytes) {
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), int(bytes.size())).toHex();
}

// IPv4: 4500+002c+4000+4006+c000+0201+c000+0202 = 24935 -> 4937, checksum b6c8 (44 bytes).
// TCP:  c000+0201+c000+0202+0006+0018 = 18421; c000+af12+0000+0001+0000+0002+5018+ffff = 2bf2c;
//       0102+0304 = 0406; together 44753 -> 4757, checksum b8a8.
TEST(IpPackets, Tcp) {
    const unsigned char data[] = {1, 2, 3, 4};
    const TcpPlace place = {1, 2, kTcpAck | kTcpPush};
    Bytes packet;
    makeTcpPacket(kPanel, kController, place, data, sizeof data, &packet);
    EXPECT_EQ(QByteArray("4500002c00004000"
                         "4006b6c8"
                         "c0000201c0000202"
                         "c000af12"
                         "0000000100000002"
                         "5018ffff"
                         "b8a80000"
                         "01020304"),
              text(packet));
}

// An odd number of data bytes counts as if a zero byte came after it.
// IPv4: as above with 29: 24932 -> 4934, b6cb.
// TCP:  c000+0202+c000+0201+0006+0015 = 1841e; af12+c000+0000+0007+0000+0009+5012+ffff = 2bf33;
//       0100; together 44451 -> 4455, bbaa.
TEST(IpPackets, OddNumberOfBytesTheOtherWay) {
    const unsigned char data[] = {1};
    const TcpPlace place = {7, 9, kTcpAck | kTcpSyn};
    Bytes packet;
    makeTcpPacket(kController, kPanel, place, data, sizeof data, &packet);
    EXPECT_EQ(QByteArray("4500002900004000"
                         "4006b6cb"
                         "c0000202c0000201"
                         "af12c000"
                         "0000000700000009"
                         "5012ffff"
                         "bbaa0000"
                         "01"),
              text(packet));
}

// IPv4: 4500+001c+4000+4011+c000+0201+c000+0201 = 2492f -> 4931, b6ce.
// UDP:  c000+0201+c000+0201+0011+0008 = 1841b; 0009+0009+0008 = 1a; 18435 -> 8436, 7bc9.
TEST(IpPackets, EmptyUdp) {
    const IpEnd panel = {0xC0000201, 9};
    Bytes packet(5, 0xEE);
    makeEmptyUdpPacket(panel, panel, &packet);
    EXPECT_EQ(QByteArray("4500001c00004000"
                         "4011b6ce"
                         "c0000201c0000201"
                         "00090009"
                         "00087bc9"),
              text(packet));
}

}  // namespace
