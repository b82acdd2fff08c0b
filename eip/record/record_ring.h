#ifndef EIP_RECORD_RECORD_RING_H
#define EIP_RECORD_RECORD_RING_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "eip/record/record.h"

/// The last records, in memory that is allocated once.
///
/// A new record takes the place of the oldest ones when the bytes, the messages or the events are
/// at their limit. How the TCP connection of the oldest message was opened is kept aside, since
/// a reader of a recording cannot decode a connected message without its Forward Open.
///
/// One thread at a time.
class RecordRing {
 public:
    /// Room for `bytes` of records with their heads, and for `messages` messages and as many
    /// events.
    RecordRing(size_t bytes, size_t messages);

    /// Data that is longer than the ring is cut.
    void append(RecordKind kind, uint16_t connection, const RecordTime& time, const void* data,
                size_t size);

    /// Makes `out` a copy of all records, oldest first, to be read with nextRecord(). Before them
    /// are the opening that was kept aside and an event with the number of missing ones. `out`
    /// does not grow beyond copySize().
    void copyTo(std::vector<unsigned char>* out) const;
    size_t copySize() const;

    size_t messages() const { return messageCount; }
    size_t events() const { return eventCount; }

 private:
    void put(const void* bytes, size_t size);
    void peek(size_t at, void* bytes, size_t size) const;
    RecordHead oldestHead() const;
    void dropOldest();
    void keepOpening(const RecordHead& head, size_t dataAt);

    const size_t limit;  ///< of messages, and of events
    std::vector<unsigned char> ring;
    size_t first;  ///< index of the oldest byte
    size_t used;   ///< bytes in use from there on, round the end
    size_t messageCount;
    size_t eventCount;
    uint64_t overwritten;  ///< messages that had to make room
    std::vector<unsigned char> opening;
};

#endif
