#include "eip/cip/malloc_ptr.h"

#include <cerrno>

#include "eip/cip/cip_error.h"

void* cip::allocateZeroedBytes(size_t size) {
    void* memory = calloc(1, size);
    if (!memory) {
        CIPERROR(CIP_ERR_SYSTEM, errno, 0);
    }
    return memory;
}
