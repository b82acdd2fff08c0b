#include "unit/eip/record/failing_new.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local bool isArmed = false;
thread_local bool failed = false;

}  // namespace

void* operator new(size_t size) {
    failed = failed || isArmed;
    void* const block = isArmed ? nullptr : malloc(size > 0 ? size : 1);
    if (!block) {
        throw std::bad_alloc();
    }
    return block;
}

void operator delete(void* block) noexcept {
    free(block);
}

void operator delete(void* block, size_t) noexcept {
    free(block);
}

FailingNew::FailingNew() {
    failed = false;
    isArmed = true;
}

FailingNew::~FailingNew() {
    isArmed = false;
}

bool FailingNew::hasFailed() const {
    return failed;
}
