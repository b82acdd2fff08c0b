#include "unit/eip/failing_malloc.h"

#include <cerrno>
#include <cstddef>

namespace {

thread_local bool isArmed = false;

}  // namespace

extern "C" {
void* __real_malloc(size_t size);
void* __wrap_malloc(size_t size);
}

void* __wrap_malloc(size_t size) {
    if (isArmed) {
        isArmed = false;
        errno = ENOMEM;
        return nullptr;
    }
    return __real_malloc(size);
}

FailingMalloc::FailingMalloc() {
    isArmed = true;
}

FailingMalloc::~FailingMalloc() {
    isArmed = false;
}

bool FailingMalloc::hasFailed() const {
    return !isArmed;
}
