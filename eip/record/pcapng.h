#ifndef EIP_RECORD_PCAPNG_H
#define EIP_RECORD_PCAPNG_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// The blocks of a capture file that a recording needs (IETF draft-ietf-opsawg-pcapng), in the
/// byte order of this machine, which the file itself states. Each function appends one whole block
/// to `out`. Any thread.

/// Packets are whole IPv4 packets without a link layer before them.
const uint16_t kPcapngLinkTypeRaw = 101;

/// The beginning of the file: its author and its subject, both UTF-8.
void pcapngSectionHeader(const std::string& application, const std::string& comment,
                         std::vector<unsigned char>* out);
/// The one interface, with times in microseconds.
void pcapngInterface(std::vector<unsigned char>* out);
/// A packet, `micros` since 1970, with a comment in UTF-8 unless that is empty. What a comment
/// has beyond 65,535 bytes is cut.
void pcapngPacket(int64_t micros, const std::vector<unsigned char>& packet,
                  const std::string& comment, std::vector<unsigned char>* out);

#endif
