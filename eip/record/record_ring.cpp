#include "eip/record/record_ring.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "eip/cip/encap_header.h"

namespace {

/// Some messages of a hundred bytes each open a connection; what is longer is none of them.
const size_t kOpeningSize = 4096;
const size_t kOpeningMessage = 512;

/// The event that reports missing records.
const size_t kMissingText = 64;

void appendRecord(std::vector<unsigned char>* out, const RecordHead& head, const void* data) {
    const unsigned char* const headBytes = reinterpret_cast<const unsigned char*>(&head);
    out->insert(out->end(), headBytes, headBytes + sizeof head);
    const unsigned char* const bytes = static_cast<const unsigned char*>(data);
    out->insert(out->end(), bytes, bytes + head.size);
}

}  // namespace

RecordRing::RecordRing(size_t bytes, size_t messages)
    : limit(std::max<size_t>(messages, 1)),
      ring(std::max(bytes, 2 * sizeof(RecordHead))),
      first(0),
      used(0),
      messageCount(0),
      eventCount(0),
      overwritten(0) {
    opening.reserve(kOpeningSize);
}

void RecordRing::append(RecordKind kind, uint16_t connection, const RecordTime& time,
                        const void* data, size_t size) {
    RecordHead head;
    head.time = time;
    head.kind = kind;
    head.connection = connection;
    head.size = static_cast<uint32_t>(std::min(size, ring.size() - sizeof head));
    const size_t& count = isMessage(kind) ? messageCount : eventCount;
    while (ring.size() - used < sizeof head + head.size || count >= limit) {
        dropOldest();
    }
    put(&head, sizeof head);
    put(data, head.size);
    ++(isMessage(kind) ? messageCount : eventCount);
}

void RecordRing::put(const void* bytes, size_t size) {
    const size_t at = (first + used) % ring.size();
    const size_t toEnd = std::min(size, ring.size() - at);
    const unsigned char* const from = static_cast<const unsigned char*>(bytes);
    std::copy(from, from + toEnd, ring.begin() + static_cast<ptrdiff_t>(at));
    std::copy(from + toEnd, from + size, ring.begin());
    used += size;
}

void RecordRing::peek(size_t at, void* bytes, size_t size) const {
    const size_t from = (first + at) % ring.size();
    const size_t toEnd = std::min(size, ring.size() - from);
    std::memcpy(bytes, ring.data() + from, toEnd);
    std::memcpy(static_cast<unsigned char*>(bytes) + toEnd, ring.data(), size - toEnd);
}

RecordHead RecordRing::oldestHead() const {
    RecordHead head = RecordHead();
    if (used > 0) {
        peek(0, &head, sizeof head);
    }
    return head;
}

void RecordRing::dropOldest() {
    const RecordHead head = oldestHead();
    keepOpening(head, sizeof head);
    const size_t size = sizeof head + head.size;
    first = (first + size) % ring.size();
    used -= size;
    --(isMessage(head.kind) ? messageCount : eventCount);
    overwritten += isMessage(head.kind) ? 1 : 0;
}

/// Keeps a record that is about to go when it belongs to the opening of a connection: the
/// connect, and messages with a command other than SendUnitData.
void RecordRing::keepOpening(const RecordHead& head, size_t dataAt) {
    if (head.kind == kRecordConnecting || head.kind == kRecordClosed) {
        opening.clear();
    }
    if (head.kind == kRecordClosed || head.kind == kRecordEvent || head.size > kOpeningMessage ||
        opening.size() + sizeof head + head.size > kOpeningSize) {
        return;
    }
    unsigned char data[kOpeningMessage];
    peek(dataAt, data, head.size);
    const bool connected =
        isMessage(head.kind) && head.size >= 2 && (data[0] | data[1] << 8) == ENCAP_SEND_UNIT_DATA;
    if (!connected) {
        appendRecord(&opening, head, data);
    }
}

size_t RecordRing::copySize() const {
    return kOpeningSize + sizeof(RecordHead) + kMissingText + ring.size();
}

void RecordRing::copyTo(std::vector<unsigned char>* out) const {
    out->clear();
    out->insert(out->end(), opening.begin(), opening.end());
    if (overwritten > 0) {
        char text[kMissingText];
        RecordHead head = oldestHead();
        head.kind = kRecordEvent;
        head.size = static_cast<uint32_t>(
            std::snprintf(text, sizeof text, "overwritten: %llu older messages",
                          static_cast<unsigned long long>(overwritten)));
        appendRecord(out, head, text);
    }
    const size_t toEnd = std::min(used, ring.size() - first);
    out->insert(out->end(), ring.data() + first, ring.data() + first + toEnd);
    out->insert(out->end(), ring.data(), ring.data() + (used - toEnd));
}
