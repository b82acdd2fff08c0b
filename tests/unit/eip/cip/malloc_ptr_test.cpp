#include "eip/cip/malloc_ptr.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "unit/eip/cip/wire_bytes.h"

/// The sanitizers would stop the program where malloc gives null. They may live in a shared
/// library.
#define SEEN_BY_SANITIZERS extern "C" __attribute__((visibility("default"))) const char*
SEEN_BY_SANITIZERS __asan_default_options() {
    return "allocator_may_return_null=1";
}
SEEN_BY_SANITIZERS __tsan_default_options() {
    return "allocator_may_return_null=1";
}
#undef SEEN_BY_SANITIZERS

namespace {

TEST(MallocPtr, NoMemoryIsRecorded) {
    volatile size_t tooMuch = SIZE_MAX / 2 + 1;  // than any object can have
    CIPERROR(0, 0, 0);
    EXPECT_EQ(nullptr, cip::allocateZeroed<unsigned char>(tooMuch).get());
    EXPECT_EQ((CipError{1, ENOMEM, 0}), lastError());
}

TEST(MallocPtr, MemoryIsZeroed) {
    const cip::MallocPtr<unsigned char> memory = cip::allocateZeroed<unsigned char>(100);
    ASSERT_TRUE(memory);
    EXPECT_EQ(filled(100, 0), bytesAt(memory.get(), 100));
}

TEST(MallocPtr, ReleasedMemoryIsFreedByFree) {
    unsigned char* memory = cip::allocateZeroed<unsigned char>(10).release();
    ASSERT_TRUE(memory);
    free(memory);
}

}  // namespace
