#include "eip/cip/cip_trace.h"

#include <cstdarg>
#include <cstdio>

thread_local int32_t _cip_debuglevel = 0;

namespace {

const int kBytesPerLine = 10;

}  // namespace

void LogCip(int32_t level, const char* format, ...) {
    if (level > _cip_debuglevel) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    vfprintf(stdout, format, arguments);
    va_end(arguments);
}

void FlushCipBuffer(int32_t level, const void* buffer, int32_t size) {
    if (level > _cip_debuglevel || !buffer) {
        return;
    }
    const unsigned char* bytes = static_cast<const unsigned char*>(buffer);
    for (int32_t i = 0; i < size; ++i) {
        if (i % kBytesPerLine == 0) {
            if (i > 0) {
                fputc('\n', stdout);
            }
            fprintf(stdout, "%p (%04d) :\t", static_cast<const void*>(bytes + i), i);
        }
        fprintf(stdout, "%02X ", static_cast<unsigned>(bytes[i]));
    }
    fputc('\n', stdout);
    fflush(stdout);
}
