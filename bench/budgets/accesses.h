#ifndef BENCH_BUDGETS_ACCESSES_H
#define BENCH_BUDGETS_ACCESSES_H

/// The accesses that have a budget, in the order in which the probe makes them.
enum Access { kStartUp, kDirectRead, kWrite, kCachedRead, kPolledRead, kAccesses };

/// Their names, in the table and in what the probe prints.
const char* const kAccessNames[kAccesses] = {"start-up", "direct read", "write", "cached read",
                                             "polled read"};

/// A mark among the system calls of the probe: it closes a descriptor that there cannot be. An even
/// mark begins an access, the odd one after it ends it.
const int kFirstMark = -1000;

inline int beginMark(Access access) {
    return kFirstMark - 2 * access;
}
inline int endMark(Access access) {
    return beginMark(access) - 1;
}

#endif
