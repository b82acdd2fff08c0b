// What the compiler's static libstdc++, and the checks that it compiles in, take from the C library
// and a panel's C library does not have yet.

#include <stdlib.h>
#include <sys/select.h>

/// Since 2.32 the C library says here whether the process has one thread only. "No" is always
/// right: the library then counts its references with atomic operations.
extern "C" __attribute__((visibility("hidden"))) const char __libc_single_threaded;
const char __libc_single_threaded = 0;

/// Since 2.15 the checked FD_SET asks here for the word that a descriptor's bit is in, and dies
/// when the set has no such word.
extern "C" __attribute__((visibility("hidden"))) long __fdelt_chk(long descriptor);
long __fdelt_chk(long descriptor) {
    if (descriptor < 0 || descriptor >= FD_SETSIZE) {
        abort();
    }
    return descriptor / NFDBITS;
}
