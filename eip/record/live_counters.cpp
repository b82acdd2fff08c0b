#include "eip/record/live_counters.h"

#include <algorithm>
#include <numeric>

#include "eip/cip/encap_header.h"
#include "eip/cip/mr_view.h"

namespace {

const size_t kStatuses = 256;
const size_t kWindow = 256;
const size_t kPercent = 100;
const size_t kNinetyNine = 99;

}  // namespace

const int LiveCounters::kNoStatus;
const int LiveCounters::kEncapsulationError;

LiveFigures::LiveFigures()
    : requests(0),
      answers(0),
      timeouts(0),
      connects(0),
      connectFailures(0),
      opens(0),
      losses(0),
      errorTexts(0),
      hostCalls(0),
      longestHostWait(0),
      passes(0),
      passLast(0),
      passMean(0),
      passP99(0),
      encapsulationErrors(0),
      byStatus(kStatuses, 0) {}

LiveCounters::LiveCounters() {
    window.reserve(kWindow);
}

void LiveCounters::noteRequest() {
    std::lock_guard<std::mutex> lock(mutex);
    ++kept.requests;
}

void LiveCounters::noteAnswer(int status) {
    std::lock_guard<std::mutex> lock(mutex);
    ++kept.answers;
    if (status == kEncapsulationError) {
        ++kept.encapsulationErrors;
    } else if (status >= 0 && status < static_cast<int>(kStatuses)) {
        ++kept.byStatus[static_cast<size_t>(status)];
    }
}

void LiveCounters::noteTimeout() {
    std::lock_guard<std::mutex> lock(mutex);
    ++kept.timeouts;
}

void LiveCounters::noteConnect(bool connected) {
    std::lock_guard<std::mutex> lock(mutex);
    ++(connected ? kept.connects : kept.connectFailures);
}

void LiveCounters::noteOpen() {
    std::lock_guard<std::mutex> lock(mutex);
    ++kept.opens;
}

void LiveCounters::noteLoss() {
    std::lock_guard<std::mutex> lock(mutex);
    ++kept.losses;
}

void LiveCounters::noteErrorText() {
    std::lock_guard<std::mutex> lock(mutex);
    ++kept.errorTexts;
}

void LiveCounters::notePass(int64_t micros) {
    const uint32_t time =
        static_cast<uint32_t>(std::min<int64_t>(std::max<int64_t>(micros, 0), UINT32_MAX));
    std::lock_guard<std::mutex> lock(mutex);
    if (window.size() < kWindow) {
        window.push_back(time);
    } else {
        window[kept.passes % kWindow] = time;
    }
    ++kept.passes;
    kept.passLast = time;
}

void LiveCounters::noteHostWait(int64_t micros) {
    std::lock_guard<std::mutex> lock(mutex);
    ++kept.hostCalls;
    kept.longestHostWait =
        std::max(kept.longestHostWait, static_cast<uint64_t>(std::max<int64_t>(micros, 0)));
}

LiveFigures LiveCounters::figures() const {
    LiveFigures result;
    std::vector<uint32_t> passes;
    {
        std::lock_guard<std::mutex> lock(mutex);
        result = kept;
        passes = window;
    }
    if (!passes.empty()) {
        std::sort(passes.begin(), passes.end());
        result.passMean =
            std::accumulate(passes.begin(), passes.end(), uint64_t(0)) / passes.size();
        result.passP99 = passes[(passes.size() * kNinetyNine + kPercent - 1) / kPercent - 1];
    }
    return result;
}

int statusOfReply(const _Encap_Header* reply) {
    for (const unsigned char byte : reply->status) {
        if (byte != 0) {
            return LiveCounters::kEncapsulationError;
        }
    }
    const uint16_t command = _GetEncapCommand(reply);
    if (command != ENCAP_SEND_UNIT_DATA && command != ENCAP_SEND_RR_DATA) {
        return LiveCounters::kNoStatus;
    }
    const cip::CpfView items = cip::viewItems(reply);
    const cip::MRView router = cip::viewMRItem(items.data);
    return router.reply ? router.reply->generalStatus : LiveCounters::kNoStatus;
}
