#include "eip/record/record.h"

#include <time.h>

#include <cstring>

namespace {

const int64_t kMicros = 1000000;

int64_t microsOf(clockid_t clock) {
    struct timespec now;
    clock_gettime(clock, &now);
    return now.tv_sec * kMicros + now.tv_nsec / 1000;
}

}  // namespace

int64_t monotonicMicros() {
    return microsOf(CLOCK_MONOTONIC);
}

RecordTime recordTimeNow() {
    RecordTime time;
    time.wall = microsOf(CLOCK_REALTIME);
    time.monotonic = monotonicMicros();
    return time;
}

bool nextRecord(const unsigned char* records, size_t size, size_t* at, RecordView* record) {
    if (*at > size || size - *at < sizeof record->head) {
        return false;
    }
    std::memcpy(&record->head, records + *at, sizeof record->head);
    const size_t dataAt = *at + sizeof record->head;
    if (record->head.size > size - dataAt) {
        return false;
    }
    record->data = records + dataAt;
    *at = dataAt + record->head.size;
    return true;
}
