#ifndef EIP_RECORD_SEEN_TEXTS_H
#define EIP_RECORD_SEEN_TEXTS_H

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

/// The failures of the last minute, so that one that goes on is not taken for a new one. Knows the
/// last 64 texts. Any thread.
class SeenTexts {
 public:
    /// Whether the text was noted within the minute before `now` (monotonic microseconds).
    bool knows(const std::string& text, int64_t now) const;
    /// Notes the text; returns whether it was known.
    bool note(const std::string& text, int64_t now);

 private:
    struct Seen {
        std::string text;
        int64_t when;
    };
    const Seen* find(const std::string& text) const;

    mutable std::mutex mutex;
    std::vector<Seen> texts;  // guarded by mutex, the latest last
};

#endif
