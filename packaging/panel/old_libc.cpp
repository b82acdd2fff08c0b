// What the compiler's static libstdc++ takes from the C library, and a panel's C library does not
// have yet.

/// Since 2.32 the C library says here whether the process has one thread only. "No" is always
/// right: the library then counts its references with atomic operations.
extern "C" __attribute__((visibility("hidden"))) const char __libc_single_threaded;
const char __libc_single_threaded = 0;
