#ifndef EIP_BYTE_STREAM_DEVICE_H
#define EIP_BYTE_STREAM_DEVICE_H

#include <QVariant>

/// A byte stream of the host that can carry encapsulated messages: a serial line, a tunnel, a
/// socket of its own. The host implements it and owns the object.
class ByteStreamDevice {
 public:
    virtual ~ByteStreamDevice() {}

    /// Reads up to `length` bytes, waiting as long as the device sees fit. Returns the number of
    /// bytes, 0 when time was up, a negative number on failure (errno).
    virtual int read(char* buffer, int length) = 0;
    /// Writes `length` bytes. Returns the number written.
    virtual int write(const char* buffer, int length) = 0;
    /// A request beside the stream; codes below.
    virtual void control(int code, const QVariant& value) = 0;
};

/// Control code sent before every request, with an empty value: the device may discard what it
/// has received so far.
const int kByteStreamBeforeSend = 12;

#endif
