#include "soak/call_watch.h"

#include <algorithm>

#include "soak/time_oracle.h"

namespace {

const int64_t kAttemptMs = 1000;

}  // namespace

void CallWatch::begin(int attempts) {
    waits = attempts * (mayBeLate ? 2 : 1);
    lateness.reset();
    began = nowMs();
}

void CallWatch::end(const char* what, Outcome outcome) {
    const int64_t took = nowMs() - began;
    longest = std::max(longest, took);
    longestSince = std::max(longestSince, took);
    const int64_t over = took - waits * kAttemptMs;
    worstOver = std::max(worstOver, over);
    const int64_t overHere = over - waits * std::max<int64_t>(lateness.worstMs(), 0);
    if (overHere > worstOverHere) {
        worstOverHere = overHere;
        worstWhat = QString("%1, %2 ms of %3").arg(what).arg(took).arg(waits * kAttemptMs);
    }
    if (outcome == kAnswered) {
        mayBeLate = false;
    } else if (outcome == kNoAnswer) {
        mayBeLate = true;
    }
}

int64_t CallWatch::takeLongestMs() {
    const int64_t taken = longestSince;
    longestSince = 0;
    return taken;
}
