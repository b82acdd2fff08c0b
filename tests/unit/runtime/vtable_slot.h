#ifndef TESTS_UNIT_RUNTIME_VTABLE_SLOT_H
#define TESTS_UNIT_RUNTIME_VTABLE_SLOT_H

#include <cstddef>
#include <cstring>

/// Place of a virtual operation in its class's table, counted from 0; a virtual destructor takes
/// two places. Itanium C++ ABI, which Linux uses: a pointer to a virtual member function contains
/// the offset in the table, plus 1 (on ARM the mark is in the second word instead).
template <typename MemberFunction>
std::ptrdiff_t vtableSlot(MemberFunction function) {
    std::ptrdiff_t word = 0;
    std::memcpy(&word, &function, sizeof(word));
#if defined(__arm__) || defined(__aarch64__)
    const std::ptrdiff_t mark = 0;
#else
    const std::ptrdiff_t mark = 1;
#endif
    return (word - mark) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

#endif
