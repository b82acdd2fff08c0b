#ifndef EIP_CIP_CIP_TRACE_H
#define EIP_CIP_CIP_TRACE_H

#include <cstdint>

// Trace output of the CIP client on standard output. Level 2: entry and exit of the request
// functions; level 3: dumps of the buffers. Silent until a thread raises its own level.

/// The calling thread's trace threshold; 0 in every new thread, never raised by the client.
extern thread_local int32_t _cip_debuglevel;

/// Prints printf-style to standard output unless `level` is above the thread's threshold.
void LogCip(int32_t level, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// Prints `size` bytes in hexadecimal, ten a line, each line headed by the address and the index of
/// its first byte, and flushes. Does nothing when `level` is above the thread's threshold or when
/// `buffer` is null; a size below 1 prints just a line feed.
void FlushCipBuffer(int32_t level, const void* buffer, int32_t size);

#endif
