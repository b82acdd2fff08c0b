// Setting records out of a broken stream.

#include <QDataStream>
#include <QtEndian>
#include <cstdint>

#include "common/device_setting.h"
#include "common/driver_setting.h"

namespace {

const int kTypeSize = 4;
/// Baud rate, data bits, stop bits, parity, extra value, link id, index, and the number of pairs.
const int kNumbersSize = 8 * 4;
const int kPortSize = 2;
const int kLengthSize = 4;
const quint32 kNullText = 0xFFFFFFFF;

/// Far more than the longest input has, and even, since the length of a text is.
const quint32 kLongText = 0x10000;

/// Where the length of a text is more than the stream has, Qt allocates up to 2 MB and frees it
/// again. That took nearly all the time of an input. Such a length becomes a smaller one that is
/// still more than the stream has. Only the first one matters: the stream ends there.
void shortenLongText(QByteArray* record) {
    int at = kTypeSize;
    for (int gap = kNumbersSize; at <= record->size() - kLengthSize; gap = kPortSize) {
        char* const field = record->data() + at;
        const quint32 length = qFromBigEndian<quint32>(field);
        at += kLengthSize;
        const bool hasBytes = length != kNullText && length % 2 == 0;
        if (hasBytes && length > quint32(record->size() - at)) {
            qToBigEndian(qMin(length, kLongText), field);
            return;
        }
        at += (hasBytes ? int(length) : 0) + gap;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QByteArray bytes(reinterpret_cast<const char*>(data), int(size));
    shortenLongText(&bytes);
    QDataStream deviceStream(bytes);
    DeviceSetting device(device_type(32), "COM2", 9600, 8, 0, 0);
    deviceStream >> device;
    (void)device.socketIP();
    (void)device.port();
    // No entry takes less than six bytes of the stream.
    if (device.socketList.size() > int(size) / 6 + 1) {
        __builtin_trap();
    }
    QDataStream driverStream(bytes);
    DriverSetting driver(0, 0, 0, 0);
    driverStream >> driver;
    return 0;
}
