#ifndef EIP_RECORD_RECORD_H
#define EIP_RECORD_RECORD_H

#include <cstddef>
#include <cstdint>

/// What the flight recorder keeps: messages as they went over TCP, and what the driver did beside
/// them.
enum RecordKind : uint16_t {
    kRecordSent,        ///< data: bytes to the controller, from an encapsulation header on
    kRecordReceived,    ///< data: bytes from the controller
    kRecordConnecting,  ///< a TCP connection is asked for; data: text
    kRecordConnected,   ///< it is there; data: text
    kRecordClosed,      ///< it was given up; data: text
    kRecordEvent        ///< data: text, "NAME: DETAIL" or "NAME"
};

inline bool isMessage(uint16_t kind) {
    return kind == kRecordSent || kind == kRecordReceived;
}

/// Two clocks read together, both in microseconds.
struct RecordTime {
    int64_t wall;       ///< since 1970, as the system's clock was set then
    int64_t monotonic;  ///< since boot, never steps
};

/// Reads both clocks. Any thread.
RecordTime recordTimeNow();
/// The monotonic one of the two alone.
int64_t monotonicMicros();

/// The head before the data of each record in memory.
struct RecordHead {
    RecordTime time;
    uint32_t size;        ///< bytes of data after the head
    uint16_t kind;        ///< RecordKind
    uint16_t connection;  ///< number of the TCP connection that it belongs to; wraps
};

/// A record and its data inside a copy of the ring.
struct RecordView {
    RecordHead head;
    const unsigned char* data;
};

/// Takes the record at `*at` of the `size` bytes at `records` and moves `*at` after it. False at
/// the end, or when no whole record is there.
bool nextRecord(const unsigned char* records, size_t size, size_t* at, RecordView* record);

#endif
