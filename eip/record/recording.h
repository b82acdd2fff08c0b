#ifndef EIP_RECORD_RECORDING_H
#define EIP_RECORD_RECORDING_H

#include <string>
#include <vector>

#include "eip/record/ip_packets.h"
#include "eip/record/record.h"

/// Turns records into a capture file.
///
/// A message becomes TCP segments between made-up ends: the panel is 192.0.2.1, the controller
/// 192.0.2.2 on port 44818, and each TCP connection has a port of its own on the panel's side.
/// Sequence numbers follow from the bytes, so that a reader finds no gap. Connecting and closing
/// show as SYN and FIN; any other event is the comment of an empty datagram from the panel to
/// itself.
///
/// Times come from the monotonic clock, moved to the time of day of the last record; where the
/// system's clock was set meanwhile, an event shows by how much.
///
/// One thread at a time.
class Recording {
 public:
    /// `last` is the time of the newest record.
    explicit Recording(const RecordTime& last);

    /// Appends the head of the file: its author, and `comment`.
    void begin(const std::string& application, const std::string& comment,
               std::vector<unsigned char>* out);
    /// Appends what one record comes to, in the order of time.
    void add(const RecordView& record, std::vector<unsigned char>* out);

 private:
    void noteClock(const RecordTime& time, std::vector<unsigned char>* out);
    void addMessage(const RecordView& record, bool toController, std::vector<unsigned char>* out);
    void addHandshake(const RecordView& record, std::vector<unsigned char>* out);
    void addEvent(int64_t micros, const std::string& text, std::vector<unsigned char>* out);
    void addSegment(int64_t micros, bool toController, unsigned char flags,
                    const unsigned char* data, size_t size, const std::string& comment,
                    std::vector<unsigned char>* out);
    int64_t timeOf(const RecordTime& time) const;

    const int64_t offset;  ///< from the monotonic clock to the time of day, microseconds
    int64_t shownStep;     ///< how far the time of day was off, as last reported
    uint16_t connection;   ///< that the two numbers below belong to
    uint32_t panelSequence;
    uint32_t controllerSequence;
    bool halfOpen;  ///< a SYN has no answer yet
    std::vector<unsigned char> packet;
};

#endif
