#ifndef EIP_READ_AHEAD_H
#define EIP_READ_AHEAD_H

#include <string.h>
#include <sys/socket.h>
#include <sys/types.h>

#include <algorithm>
#include <cstddef>

/// Bytes of a stream that came in with those that were asked for: a reply's head and its body are
/// mostly there together, and one receive fetches both. A message over a class 3 connection (504
/// bytes and its headers) fits.
///
/// One thread.
class ReadAhead {
 public:
    ReadAhead() : from(0), to(0) {}

    bool isEmpty() const { return from == to; }
    size_t size() const { return to - from; }
    const unsigned char* data() const { return bytes + from; }
    void clear() { from = to = 0; }

    /// One receive of as much as there is room for.
    void receive(int fd) {
        memmove(bytes, bytes + from, size());
        to = size();
        from = 0;
        to += static_cast<size_t>(std::max<ssize_t>(recv(fd, bytes + to, sizeof bytes - to, 0), 0));
    }

    /// Moves up to `length` bytes out; returns how many.
    size_t take(void* at, size_t length) {
        const size_t count = std::min(length, size());
        memcpy(at, bytes + from, count);
        from += count;
        return count;
    }

 private:
    static const size_t kRoom = 1024;

    size_t from;
    size_t to;
    unsigned char bytes[kRoom];
};

#endif
