#ifndef TESTS_UNIT_EIP_CIP_TEXT_ROWS_H
#define TESTS_UNIT_EIP_CIP_TEXT_ROWS_H

#include <cstddef>
#include <cstdint>
#include <string>

/// A code and the text it must give.
struct Row {
    int32_t code;
    const char* text;
};

/// The text that a table has for a code, or `otherwise`.
template <size_t N>
std::string expected(const Row (&table)[N], int32_t code, const char* otherwise) {
    for (const Row& row : table) {
        if (row.code == code) {
            return row.text;
        }
    }
    return otherwise;
}

#endif
