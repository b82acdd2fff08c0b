#include "eip/record/recording.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "eip/record/pcapng.h"

namespace {

// Addresses for documentation (RFC 5737): no machine has them.
const uint32_t kPanelAddress = 0xC0000201;
const uint32_t kControllerAddress = 0xC0000202;
const uint16_t kControllerPort = 44818;  // EtherNet/IP (CIP Vol. 2, 2-2)
const uint16_t kFirstPanelPort = 49152;
const uint16_t kPanelPorts = 16384;
const uint16_t kEventPort = 9;  // discard (RFC 863)

const size_t kLargestSegment = 1460;
const uint32_t kFirstSequence = 1;

/// The two clocks are read one after the other, and drift.
const int64_t kClockStepUs = 1000000;

std::string textOf(const RecordView& record) {
    return std::string(reinterpret_cast<const char*>(record.data), record.head.size);
}

}  // namespace

Recording::Recording(const RecordTime& last)
    : offset(last.wall - last.monotonic),
      shownStep(0),
      connection(0),
      panelSequence(kFirstSequence),
      controllerSequence(kFirstSequence),
      halfOpen(false) {}

int64_t Recording::timeOf(const RecordTime& time) const {
    return time.monotonic + offset;
}

void Recording::begin(const std::string& application, const std::string& comment,
                      std::vector<unsigned char>* out) {
    pcapngSectionHeader(application, comment, out);
    pcapngInterface(out);
}

void Recording::add(const RecordView& record, std::vector<unsigned char>* out) {
    noteClock(record.head.time, out);
    if (record.head.connection != connection) {
        connection = record.head.connection;
        panelSequence = kFirstSequence;
        controllerSequence = kFirstSequence;
        halfOpen = false;
    }
    switch (record.head.kind) {
        case kRecordSent:
        case kRecordReceived:
            addMessage(record, record.head.kind == kRecordSent, out);
            break;
        case kRecordConnecting:
        case kRecordConnected:
        case kRecordClosed:
            addHandshake(record, out);
            break;
        default:
            addEvent(timeOf(record.head.time), textOf(record), out);
            break;
    }
}

/// Tells when the time of day of a record is not the one of the file's times.
void Recording::noteClock(const RecordTime& time, std::vector<unsigned char>* out) {
    const int64_t step = time.wall - timeOf(time);
    if (std::llabs(step - shownStep) < kClockStepUs) {
        return;
    }
    shownStep = step;
    char text[96];
    std::snprintf(text, sizeof text, "clock: the time of day was %+lld s from the times shown here",
                  static_cast<long long>(step / kClockStepUs));
    addEvent(timeOf(time), text, out);
}

void Recording::addMessage(const RecordView& record, bool toController,
                           std::vector<unsigned char>* out) {
    size_t at = 0;
    while (at < record.head.size) {
        const size_t size = std::min(kLargestSegment, record.head.size - at);
        const bool last = at + size == record.head.size;
        const unsigned char flags = static_cast<unsigned char>(last ? kTcpAck | kTcpPush : kTcpAck);
        addSegment(timeOf(record.head.time), toController, flags, record.data + at, size,
                   std::string(), out);
        at += size;
    }
}

void Recording::addHandshake(const RecordView& record, std::vector<unsigned char>* out) {
    const int64_t micros = timeOf(record.head.time);
    const std::string text = textOf(record);
    if (record.head.kind == kRecordConnecting) {
        panelSequence = kFirstSequence - 1;
        controllerSequence = kFirstSequence - 1;
        addSegment(micros, true, kTcpSyn, 0, 0, text, out);
        halfOpen = true;
    } else if (record.head.kind == kRecordClosed) {
        addSegment(micros, true, kTcpFin | kTcpAck, 0, 0, text, out);
    } else if (halfOpen) {
        addSegment(micros, false, kTcpSyn | kTcpAck, 0, 0, text, out);
        addSegment(micros, true, kTcpAck, 0, 0, std::string(), out);
        halfOpen = false;
    }
}

void Recording::addEvent(int64_t micros, const std::string& text, std::vector<unsigned char>* out) {
    const IpEnd panel = {kPanelAddress, kEventPort};
    makeEmptyUdpPacket(panel, panel, &packet);
    pcapngPacket(micros, packet, text, out);
}

/// SYN and FIN count for one byte each.
void Recording::addSegment(int64_t micros, bool toController, unsigned char flags,
                           const unsigned char* data, size_t size, const std::string& comment,
                           std::vector<unsigned char>* out) {
    const IpEnd panel = {kPanelAddress,
                         static_cast<uint16_t>(kFirstPanelPort + connection % kPanelPorts)};
    const IpEnd controller = {kControllerAddress, kControllerPort};
    uint32_t& own = toController ? panelSequence : controllerSequence;
    const uint32_t other = toController ? controllerSequence : panelSequence;
    const TcpPlace place = {own, (flags & kTcpAck) != 0 ? other : 0, flags};
    makeTcpPacket(toController ? panel : controller, toController ? controller : panel, place, data,
                  size, &packet);
    pcapngPacket(micros, packet, comment, out);
    own += static_cast<uint32_t>(size) + ((flags & (kTcpSyn | kTcpFin)) != 0 ? 1 : 0);
}
