#ifndef TESTS_UNIT_COMMON_HEAP_IN_USE_H
#define TESTS_UNIT_COMMON_HEAP_IN_USE_H

#include <malloc.h>

#include <cstddef>

extern "C" __attribute__((weak)) std::size_t __sanitizer_get_current_allocated_bytes();

/// Bytes of heap that are handed out now, under the sanitizers' allocators as well.
inline std::size_t heapInUse() {
    if (__sanitizer_get_current_allocated_bytes != nullptr) {
        return __sanitizer_get_current_allocated_bytes();
    }
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

#endif
