#ifndef TESTS_SUPPORT_DESCRIPTOR_H
#define TESTS_SUPPORT_DESCRIPTOR_H

#include <unistd.h>

/// Closes what is open and marks it as closed.
inline void closeIfOpen(int* descriptor) {
    if (*descriptor >= 0) {
        close(*descriptor);
    }
    *descriptor = -1;
}

#endif
