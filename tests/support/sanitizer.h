#ifndef TESTS_SUPPORT_SANITIZER_H
#define TESTS_SUPPORT_SANITIZER_H

/// Whether the programs are built with a sanitizer. It takes the signals of faults itself, and
/// needs descriptors of its own to look at memory.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
const bool kSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
const bool kSanitized = true;
#else
const bool kSanitized = false;
#endif
#else
const bool kSanitized = false;
#endif

#endif
