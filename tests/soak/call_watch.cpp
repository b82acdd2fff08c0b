#include "soak/call_watch.h"

#include <algorithm>
#include <chrono>

#include "soak/time_oracle.h"

namespace {

const int64_t kNapMs = 5;
const int64_t kAttemptMs = 1000;
const int64_t kMeanOf = 400;  // naps

}  // namespace

LatenessMeter::LatenessMeter() : woke(nowMs()), thread([this] { run(); }) {}

LatenessMeter::~LatenessMeter() {
    ended = true;
    thread.join();
}

void LatenessMeter::run() {
    while (!ended) {
        std::this_thread::sleep_for(std::chrono::milliseconds(kNapMs));
        const int64_t now = nowMs();
        const int64_t late = now - woke.load() - kNapMs;
        worst = std::max(worst.load(), late);
        mean = mean + (std::max<int64_t>(late, 0) * 1000 - mean) / kMeanOf;
        woke = now;
    }
}

int64_t LatenessMeter::worstMs() const {
    return std::max(worst.load(), nowMs() - woke.load() - kNapMs);
}

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
