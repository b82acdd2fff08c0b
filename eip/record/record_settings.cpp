#include "eip/record/record_settings.h"

#include <cstdlib>

namespace {

const size_t kLeastMessages = 16;
const size_t kMostMessages = 100000;
const size_t kLeastBytes = 64 * 1024;
const size_t kMostBytes = 64 * 1024 * 1024;
const size_t kKilo = 1024;
const size_t kLongestNumber = 8;

/// One number, with K or M after it an amount of memory.
bool parsePart(const std::string& text, RecordSettings* settings) {
    const size_t digits = text.find_first_not_of("0123456789");
    const std::string unit = digits == std::string::npos ? std::string() : text.substr(digits);
    const std::string number = text.substr(0, digits);
    if (number.empty() || number.size() > kLongestNumber) {
        return false;
    }
    const size_t value = std::strtoul(number.c_str(), 0, 10);
    if (unit.empty()) {
        settings->messages = value;
        return value >= kLeastMessages && value <= kMostMessages;
    }
    const bool kilo = unit == "K" || unit == "k";
    if ((!kilo && unit != "M" && unit != "m") || value > kMostBytes / kKilo) {
        return false;
    }
    const unsigned long long bytes = 1ULL * value * kKilo * (kilo ? 1 : kKilo);
    settings->bytes = static_cast<size_t>(bytes);
    return bytes >= kLeastBytes && bytes <= kMostBytes;
}

}  // namespace

RecordSettings::RecordSettings() : messages(kDefaultRecordMessages), bytes(kDefaultRecordBytes) {}

bool parseRecordSize(const std::string& text, RecordSettings* settings) {
    RecordSettings parsed = *settings;
    const size_t comma = text.find(',');
    if (!parsePart(text.substr(0, comma), &parsed) ||
        (comma != std::string::npos && !parsePart(text.substr(comma + 1), &parsed))) {
        return false;
    }
    *settings = parsed;
    return true;
}

RecordSettings recordSettingsFromEnvironment() {
    RecordSettings settings;
    const char* const folder = std::getenv("MICRO800_RECORD");
    const char* const size = std::getenv("MICRO800_RECORD_SIZE");
    settings.folder = folder ? folder : "";
    if (size) {
        parseRecordSize(size, &settings);
    }
    return settings;
}
