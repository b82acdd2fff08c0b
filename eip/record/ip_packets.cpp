#include "eip/record/ip_packets.h"

namespace {

const size_t kIpHeader = 20;
const size_t kTcpHeader = 20;
const size_t kUdpHeader = 8;
const unsigned char kVersionAndHeaderWords = 0x45;
const uint16_t kDontFragment = 0x4000;
const unsigned char kTimeToLive = 64;
const unsigned char kProtocolTcp = 6;
const unsigned char kProtocolUdp = 17;
const size_t kIpChecksumAt = 10;
const size_t kTcpChecksumAt = kIpHeader + 16;
const size_t kUdpChecksumAt = kIpHeader + 6;
const size_t kAddressesAt = 12;
const uint16_t kTcpHeaderWords = 5 << 12;
const uint16_t kWindow = 0xFFFF;

typedef std::vector<unsigned char> Bytes;

void append16(uint32_t value, Bytes* out) {
    out->push_back(static_cast<unsigned char>(value >> 8));
    out->push_back(static_cast<unsigned char>(value));
}

void append32(uint32_t value, Bytes* out) {
    append16(value >> 16, out);
    append16(value, out);
}

/// Adds 16-bit words, the last byte alone counting as a high one (RFC 1071).
uint32_t sumOf(const Bytes& bytes, size_t from, size_t to, uint32_t sum) {
    for (size_t i = from; i < to; ++i) {
        sum += (i - from) % 2 == 0 ? static_cast<uint32_t>(bytes[i]) << 8 : bytes[i];
    }
    return sum;
}

void setChecksum(size_t at, uint32_t sum, Bytes* packet) {
    while (sum >> 16 != 0) {
        sum = (sum & 0xFFFF) + (sum >> 16);
    }
    const uint16_t checksum = static_cast<uint16_t>(~sum);
    (*packet)[at] = static_cast<unsigned char>(checksum >> 8);
    (*packet)[at + 1] = static_cast<unsigned char>(checksum);
}

/// IPv4 (RFC 791): version and header words (8)  service (8)  total length (16)  identification
/// (16)
///                 flags and fragment (16)  time to live (8)  protocol (8)  checksum (16)
///                 source (32)  destination (32)
void appendIpHeader(const IpEnd& from, const IpEnd& to, unsigned char protocol, size_t payload,
                    Bytes* packet) {
    packet->push_back(kVersionAndHeaderWords);
    packet->push_back(0);
    append16(static_cast<uint32_t>(kIpHeader + payload), packet);
    append16(0, packet);
    append16(kDontFragment, packet);
    packet->push_back(kTimeToLive);
    packet->push_back(protocol);
    append16(0, packet);
    append32(from.address, packet);
    append32(to.address, packet);
    setChecksum(kIpChecksumAt, sumOf(*packet, 0, kIpHeader, 0), packet);
}

/// The checksum of TCP and UDP also covers the addresses, the protocol and the length.
void setTransportChecksum(size_t at, unsigned char protocol, Bytes* packet) {
    const uint32_t length = static_cast<uint32_t>(packet->size() - kIpHeader);
    const uint32_t head = sumOf(*packet, kAddressesAt, kIpHeader, protocol + length);
    setChecksum(at, sumOf(*packet, kIpHeader, packet->size(), head), packet);
}

}  // namespace

/// TCP (RFC 9293): ports (16, 16)  sequence (32)  acknowledgement (32)  header words and flags (16)
///                 window (16)  checksum (16)  urgent pointer (16)
void makeTcpPacket(const IpEnd& from, const IpEnd& to, const TcpPlace& place,
                   const unsigned char* data, size_t size, Bytes* packet) {
    packet->clear();
    appendIpHeader(from, to, kProtocolTcp, kTcpHeader + size, packet);
    append16(from.port, packet);
    append16(to.port, packet);
    append32(place.sequence, packet);
    append32(place.acknowledged, packet);
    append16(static_cast<uint32_t>(kTcpHeaderWords | place.flags), packet);
    append16(kWindow, packet);
    append32(0, packet);
    packet->insert(packet->end(), data, data + size);
    setTransportChecksum(kTcpChecksumAt, kProtocolTcp, packet);
}

/// UDP (RFC 768): ports (16, 16)  length (16)  checksum (16)
void makeEmptyUdpPacket(const IpEnd& from, const IpEnd& to, Bytes* packet) {
    packet->clear();
    appendIpHeader(from, to, kProtocolUdp, kUdpHeader, packet);
    append16(from.port, packet);
    append16(to.port, packet);
    append16(static_cast<uint32_t>(kUdpHeader), packet);
    append16(0, packet);
    setTransportChecksum(kUdpChecksumAt, kProtocolUdp, packet);
}
