#ifndef EIP_RECORD_IP_PACKETS_H
#define EIP_RECORD_IP_PACKETS_H

#include <cstddef>
#include <cstdint>
#include <vector>

/// Made-up IPv4 packets around what was really said. Any thread.

/// TCP flags (RFC 9293, 3.1).
enum TcpFlag : unsigned char { kTcpFin = 0x01, kTcpSyn = 0x02, kTcpPush = 0x08, kTcpAck = 0x10 };

struct IpEnd {
    uint32_t address;  ///< 192.0.2.1 is 0xC0000201
    uint16_t port;
};

/// The part of a TCP segment that is neither address nor data.
struct TcpPlace {
    uint32_t sequence;
    uint32_t acknowledged;
    unsigned char flags;  ///< TcpFlag
};

/// Makes `packet` an IPv4 packet with one TCP segment in it, checksums and all. `size` is at most
/// 65,495 bytes.
void makeTcpPacket(const IpEnd& from, const IpEnd& to, const TcpPlace& place,
                   const unsigned char* data, size_t size, std::vector<unsigned char>* packet);
/// Makes `packet` an IPv4 packet with an empty UDP datagram in it.
void makeEmptyUdpPacket(const IpEnd& from, const IpEnd& to, std::vector<unsigned char>* packet);

#endif
