#ifndef BENCH_BUDGETS_COUNTED_H
#define BENCH_BUDGETS_COUNTED_H

/// Calls so far of what the counting probe replaces; all zero in the other one.
struct Counted {
    long allocations;  ///< malloc, calloc and realloc, of all threads
    long clockReads;   ///< clock_gettime; before Linux 4.1 a system call on ARM
    long ownAllocations;
    long ownClockReads;  ///< of the calling thread
};

Counted countedSoFar();

#endif
