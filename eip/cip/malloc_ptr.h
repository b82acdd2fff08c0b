#ifndef EIP_CIP_MALLOC_PTR_H
#define EIP_CIP_MALLOC_PTR_H

#include <cstddef>
#include <cstdlib>
#include <memory>

// Owners for the malloc()ed buffers of the client's interface. Internal to eip.

namespace cip {

struct FreeDeleter {
    void operator()(void* memory) const { free(memory); }
};

/// Owns a malloc()ed object of bytes; release() passes it to a caller that will free() it.
template <typename T>
using MallocPtr = std::unique_ptr<T, FreeDeleter>;

/// `size` zeroed bytes for a T head and what follows it, or null with (1, errno, 0) recorded.
template <typename T>
MallocPtr<T> allocateZeroed(size_t size);

/// The bytes, or null with (1, errno, 0) recorded.
void* allocateZeroedBytes(size_t size);

template <typename T>
MallocPtr<T> allocateZeroed(size_t size) {
    return MallocPtr<T>(static_cast<T*>(allocateZeroedBytes(size)));
}

}  // namespace cip

#endif
