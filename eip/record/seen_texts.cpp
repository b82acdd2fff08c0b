#include "eip/record/seen_texts.h"

namespace {

const size_t kMostTexts = 64;
const int64_t kMinuteUs = 60 * 1000000LL;

}  // namespace

const SeenTexts::Seen* SeenTexts::find(const std::string& text) const {
    for (const Seen& seen : texts) {
        if (seen.text == text) {
            return &seen;
        }
    }
    return 0;
}

bool SeenTexts::knows(const std::string& text, int64_t now) const {
    std::lock_guard<std::mutex> lock(mutex);
    const Seen* const seen = find(text);
    return seen && now - seen->when < kMinuteUs;
}

bool SeenTexts::note(const std::string& text, int64_t now) {
    std::lock_guard<std::mutex> lock(mutex);
    const Seen* const seen = find(text);
    const bool known = seen && now - seen->when < kMinuteUs;
    if (seen) {
        texts.erase(texts.begin() + (seen - texts.data()));
    } else if (texts.size() >= kMostTexts) {
        texts.erase(texts.begin());
    }
    const Seen latest = {text, now};
    texts.push_back(latest);
    return known;
}
