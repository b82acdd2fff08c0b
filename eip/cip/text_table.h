#ifndef EIP_CIP_TEXT_TABLE_H
#define EIP_CIP_TEXT_TABLE_H

#include <cstddef>
#include <cstdint>

// Tables of message texts. Internal to eip/cip.

namespace cip {

struct CodeText {
    int32_t code;
    const char* text;
};

/// The text of `code`, or `otherwise` when the table has none.
template <size_t N>
const char* textOf(const CodeText (&table)[N], int32_t code, const char* otherwise) {
    for (const CodeText& entry : table) {
        if (entry.code == code) {
            return entry.text;
        }
    }
    return otherwise;
}

}  // namespace cip

#endif
