#include "bench/budgets/system_calls.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <string.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

namespace {

const int kSyscallStop = SIGTRAP | 0x80;

bool isWait(const SystemCall& call) {
#ifdef SYS_select
    if (call.number == SYS_select) {
        return true;
    }
#endif
    return call.number == SYS_pselect6;
}

bool isSend(const SystemCall& call) {
    return call.number == SYS_sendto;
}

bool isMark(const SystemCall& call, int mark) {
    return call.number == SYS_close && static_cast<int>(call.firstArgument) == mark;
}

pid_t startTraced(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        // Stops at its exec; the table is all that is to be printed.
        const int nowhere = open("/dev/null", O_WRONLY);
        if (dup2(nowhere, STDOUT_FILENO) >= 0 && ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0) {
            execv(arguments[0], arguments.data());
        }
        _exit(127);
    }
    return child;
}

void noteEntry(pid_t thread, std::vector<SystemCall>* calls) {
    __ptrace_syscall_info info;
    if (ptrace(PTRACE_GET_SYSCALL_INFO, thread, sizeof info, &info) > 0 &&
        info.op == PTRACE_SYSCALL_INFO_ENTRY) {
        calls->push_back(
            {thread, static_cast<long>(info.entry.nr), static_cast<long>(info.entry.args[0])});
    }
}

/// The signal that the stopped thread is to get: none that the tracing itself brought about.
int signalFor(int status) {
    const int signal = WSTOPSIG(status);
    return signal == SIGTRAP || signal == SIGSTOP || signal == kSyscallStop ? 0 : signal;
}

int median(std::vector<int> values) {
    if (values.empty()) {
        return -1;
    }
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// Calls from the first begin of the access to its last end.
std::vector<SystemCall> during(Access access, const std::vector<SystemCall>& calls) {
    const auto begins = [&](const SystemCall& call) { return isMark(call, beginMark(access)); };
    const auto ends = [&](const SystemCall& call) { return isMark(call, endMark(access)); };
    const auto first = std::find_if(calls.begin(), calls.end(), begins);
    const auto last = std::find_if(calls.rbegin(), calls.rend(), ends).base();
    return first < last ? std::vector<SystemCall>(first, last) : std::vector<SystemCall>();
}

/// The host's calls in each access.
std::vector<int> hostCalls(Access access, const std::vector<SystemCall>& calls, pid_t host) {
    std::vector<int> counts;
    int count = 0;
    for (const SystemCall& call : calls) {
        if (call.thread != host) {
            continue;
        }
        if (isMark(call, beginMark(access))) {
            count = 0;
        } else if (isMark(call, endMark(access))) {
            counts.push_back(count);
        } else {
            ++count;
        }
    }
    return counts;
}

/// The worker's calls for each command: from the end of its wait to the wait after the answer,
/// which is its second send.
std::vector<int> workerCallsForCommands(const std::vector<SystemCall>& calls, pid_t host) {
    std::vector<int> counts;
    int count = 0;
    int sends = 0;
    for (const SystemCall& call : calls) {
        if (call.thread == host || (count == 0 && isWait(call))) {
            continue;
        }
        ++count;
        sends += isSend(call) ? 1 : 0;
        if (sends == 2 && isWait(call)) {
            counts.push_back(count);
            count = 0;
            sends = 0;
        }
    }
    return counts;
}

/// The worker's calls from one request of its own to the next.
std::vector<int> workerCallsForPolls(const std::vector<SystemCall>& calls, pid_t host) {
    std::vector<int> counts;
    int count = 0;
    for (const SystemCall& call : calls) {
        if (call.thread == host) {
            continue;
        }
        if (isSend(call)) {
            counts.push_back(count);
            count = 0;
        }
        ++count;
    }
    counts.erase(counts.begin(), counts.begin() + std::min<long>(1, long(counts.size())));
    return counts;
}

}  // namespace

std::vector<SystemCall> traceProgram(const std::vector<std::string>& command,
                                     std::string* problem) {
    std::vector<SystemCall> calls;
    const pid_t child = startTraced(command);
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFSTOPPED(status) ||
        ptrace(PTRACE_SETOPTIONS, child, 0,
               PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_EXITKILL) != 0) {
        *problem = "this system does not let a program be traced: " + std::string(strerror(errno));
        return calls;
    }
    pid_t stopped = child;
    int ended = -1;
    while (stopped > 0 && ended < 0) {
        if (WIFSTOPPED(status)) {
            if (WSTOPSIG(status) == kSyscallStop) {
                noteEntry(stopped, &calls);
            }
            ptrace(PTRACE_SYSCALL, stopped, 0, signalFor(status));
        }
        stopped = waitpid(-1, &status, __WALL);
        if (stopped == child && !WIFSTOPPED(status)) {
            ended = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
    }
    if (ended != 0) {
        *problem = "the traced program ended with " + std::to_string(ended);
    }
    return calls;
}

int callsOf(Access access, const std::vector<SystemCall>& calls) {
    if (calls.empty()) {
        return -1;
    }
    const pid_t host = calls.front().thread;
    const std::vector<SystemCall> phase = during(access, calls);
    switch (access) {
        case kStartUp:
            return static_cast<int>(phase.size()) - 2;
        case kCachedRead:
            return median(hostCalls(access, phase, host));
        case kPolledRead:
            return median(workerCallsForPolls(phase, host));
        default:
            return median(hostCalls(access, phase, host)) +
                   median(workerCallsForCommands(phase, host));
    }
}
