#ifndef COMMON_DIGITS_H
#define COMMON_DIGITS_H

/// Whether the character is 0 to 9, in any locale. Any thread.
inline bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

#endif
