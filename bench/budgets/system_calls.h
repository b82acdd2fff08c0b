#ifndef BENCH_BUDGETS_SYSTEM_CALLS_H
#define BENCH_BUDGETS_SYSTEM_CALLS_H

#include <sys/types.h>

#include <string>
#include <vector>

#include "bench/budgets/accesses.h"

/// A system call, as its thread began it.
struct SystemCall {
    pid_t thread;
    long number;
    long firstArgument;
};

/// Runs a program to its end and notes every system call of all its threads in the order in which
/// they began. `problem` is empty when it could be traced and ended with exit code 0.
std::vector<SystemCall> traceProgram(const std::vector<std::string>& command, std::string* problem);

/// The system calls that one access takes, from its begin to the worker's next wait for a command;
/// of all accesses of its kind the median. What the worker does in vain while the host is slow is
/// not among them. -1 when there is none.
int callsOf(Access access, const std::vector<SystemCall>& calls);

#endif
