#ifndef TESTS_UNIT_APPS_SIMULATOR_HEX_H
#define TESTS_UNIT_APPS_SIMULATOR_HEX_H

#include <cctype>
#include <string>

#include "apps/simulator/wire/bytes.h"

/// The bytes of hexadecimal digits; blanks are for the reader.
inline sim::Bytes hex(const std::string& text) {
    std::string digits;
    for (const char c : text) {
        if (!std::isspace(static_cast<unsigned char>(c))) {
            digits += c;
        }
    }
    sim::Bytes bytes;
    for (size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes.push_back(uint8_t(std::stoul(digits.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

/// Lower-case digits without blanks.
inline std::string hexOf(sim::ByteView bytes) {
    std::string text;
    sim::appendHex(bytes, &text);
    return text;
}

/// The same spelling for what a test expects.
inline std::string hexText(const std::string& text) {
    return hexOf(hex(text));
}

#endif
