#include "support/lateness_meter.h"

#include <algorithm>
#include <chrono>

namespace {

const int64_t kNapMs = 5;
const int64_t kMeanOf = 400;  // naps

int64_t nowMs() {
    using std::chrono::duration_cast;
    using std::chrono::milliseconds;
    return duration_cast<milliseconds>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

LatenessMeter::LatenessMeter() : woke(nowMs()), thread([this] { run(); }) {}

LatenessMeter::~LatenessMeter() {
    ended = true;
    thread.join();
}

void LatenessMeter::run() {
    while (!ended) {
        std::this_thread::sleep_for(std::chrono::milliseconds(kNapMs));
        const std::lock_guard<std::mutex> lock(mutex);
        const int64_t now = nowMs();
        const int64_t late = now - woke - kNapMs;
        worst = std::max(worst, late);
        mean = mean + (std::max<int64_t>(late, 0) * 1000 - mean) / kMeanOf;
        woke = now;
    }
}

void LatenessMeter::reset() {
    const std::lock_guard<std::mutex> lock(mutex);
    worst = 0;
}

int64_t LatenessMeter::worstMs() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return std::max(worst, nowMs() - woke - kNapMs);
}

int64_t LatenessMeter::meanUs() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return mean;
}
