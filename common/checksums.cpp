#include "common/checksums.h"

#include "common/crc.h"

namespace {

unsigned int sumOf(const void* data, int length) {
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    unsigned int sum = 0;
    for (int i = 0; i < length; ++i) {
        sum += bytes[i];
    }
    return sum;
}

}  // namespace

quint8 UInt8CheckSum(const void* data, int length) {
    return static_cast<quint8>(sumOf(data, length) & 0xFFu);
}

quint16 UShortCheckSum(const void* data, int length) {
    return static_cast<quint16>(sumOf(data, length) & 0xFFFFu);
}

quint8 XorUInt8CheckSum(const void* data, int length) {
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    quint8 check = 0;
    for (int i = 0; i < length; ++i) {
        check ^= bytes[i];
    }
    return check;
}

quint16 CRC16Calculate(const void* data, int length) {
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    quint16 crc = 0;
    for (int i = 0; i < length; ++i) {
        crc = update_crc_16(crc, bytes[i]);
    }
    return crc;
}
