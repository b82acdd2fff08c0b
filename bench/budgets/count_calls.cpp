// The allocator and the clock, replaced for the whole process, the plugin file included.

#include <dlfcn.h>
#include <stddef.h>
#include <time.h>

#include <atomic>

#include "bench/budgets/counted.h"

extern "C" void* __libc_malloc(size_t size);
extern "C" void* __libc_calloc(size_t count, size_t size);
extern "C" void* __libc_realloc(void* memory, size_t size);

namespace {

std::atomic<long> allocations(0);
std::atomic<long> clockReads(0);
thread_local long ownAllocations = 0;
thread_local long ownClockReads = 0;

void countAllocation() {
    allocations.fetch_add(1, std::memory_order_relaxed);
    ++ownAllocations;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void* malloc(size_t size) {
    countAllocation();
    return __libc_malloc(size);
}

extern "C" __attribute__((visibility("default"))) void* calloc(size_t count, size_t size) {
    countAllocation();
    return __libc_calloc(count, size);
}

extern "C" __attribute__((visibility("default"))) void* realloc(void* memory, size_t size) {
    countAllocation();
    return __libc_realloc(memory, size);
}

extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock,
                                                                    timespec* time) noexcept {
    typedef int Function(clockid_t, timespec*);
    static Function* const next = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, "clock_gettime"));
    clockReads.fetch_add(1, std::memory_order_relaxed);
    ++ownClockReads;
    return next(clock, time);
}

Counted countedSoFar() {
    return {allocations, clockReads, ownAllocations, ownClockReads};
}
