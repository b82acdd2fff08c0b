#include "unit/eip/cip/failing_calloc.h"

#include <cerrno>
#include <cstddef>

namespace {

const int kNever = -1;
const int kDone = -2;

thread_local int callsBefore = kNever;

}  // namespace

extern "C" {
void* __real_calloc(size_t count, size_t size);
void* __wrap_calloc(size_t count, size_t size);
}

void* __wrap_calloc(size_t count, size_t size) {
    if (callsBefore == 0) {
        callsBefore = kDone;
        errno = ENOMEM;
        return nullptr;
    }
    callsBefore -= callsBefore > 0 ? 1 : 0;
    return __real_calloc(count, size);
}

FailingCalloc::FailingCalloc(int before) {
    callsBefore = before;
}

FailingCalloc::~FailingCalloc() {
    callsBefore = kNever;
}

bool FailingCalloc::hasFailed() const {
    return callsBefore == kDone;
}
