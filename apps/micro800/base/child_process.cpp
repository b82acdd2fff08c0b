#include "apps/micro800/base/child_process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "apps/micro800/base/signals.h"

namespace {

const int kNotExecuted = 127;    // what a shell gives for a program that cannot be started
const int kEndedBySignal = 128;  // what a shell adds to a signal's number

sigset_t everySignal() {
    sigset_t all;
    sigfillset(&all);
    return all;
}

}  // namespace

ChildProcess::ChildProcess() {
    const sigset_t all = everySignal();
    pthread_sigmask(SIG_BLOCK, &all, &maskBefore);
    // Where SIGCHLD is ignored, the system keeps no end of a child.
    struct sigaction byDefault = {};
    byDefault.sa_handler = SIG_DFL;
    sigaction(SIGCHLD, &byDefault, &childActionBefore);
}

ChildProcess::~ChildProcess() {
    sigaction(SIGCHLD, &childActionBefore, nullptr);
    pthread_sigmask(SIG_SETMASK, &maskBefore, nullptr);
}

void ChildProcess::execute(const char* program, char* const* words, int report) {
    sigaction(SIGCHLD, &childActionBefore, nullptr);
    pthread_sigmask(SIG_SETMASK, &maskBefore, nullptr);
    execvp(program, words);
    const int error = errno;
    const ssize_t ignored = write(report, &error, sizeof error);
    static_cast<void>(ignored);
    _exit(kNotExecuted);
}

bool ChildProcess::start(const QByteArray& program, std::vector<QByteArray> words) {
    std::vector<char*> pointers;
    for (QByteArray& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    int report[2];  // the end of file says that the program runs, a number that it does not
    if (pipe2(report, O_CLOEXEC) != 0) {
        return false;
    }
    const pid_t parent = getpid();
    pid = fork();
    if (pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent) {
            _exit(kNotExecuted);  // it was killed before the line above
        }
        execute(program.constData(), pointers.data(), report[1]);
    }
    int error = errno;
    close(report[1]);
    const bool failed = pid < 0 || read(report[0], &error, sizeof error) == sizeof error;
    close(report[0]);
    if (failed && pid > 0) {
        waitpid(pid, nullptr, 0);
    }
    errno = error;
    return !failed;
}

bool ChildProcess::hasEnded(ProcessEnd* end) {
    int status = 0;
    while (waitpid(pid, &status, WNOHANG | WUNTRACED) == pid) {
        if (WIFEXITED(status)) {
            end->exitCode = WEXITSTATUS(status);
            return true;
        }
        if (WIFSIGNALED(status)) {
            end->signal = WTERMSIG(status);
            return true;
        }
        raise(SIGSTOP);
        kill(pid, SIGCONT);
    }
    return false;
}

ProcessEnd ChildProcess::wait() {
    const sigset_t all = everySignal();
    ProcessEnd end;
    while (!hasEnded(&end)) {
        siginfo_t info;
        const int number = sigwaitinfo(&all, &info);
        // What the kernel sends is for the whole foreground group: the child has its own.
        const bool isSent = number > 0 && info.si_code <= 0;
        if (isSent && number != SIGCHLD && !isIgnored(number)) {
            kill(pid, number);
        }
    }
    return end;
}

void endLike(const ProcessEnd& end) {
    std::fflush(nullptr);
    if (end.signal == 0) {
        _exit(end.exitCode);
    }
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    std::signal(end.signal, SIG_DFL);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, end.signal);
    pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
    raise(end.signal);
    _exit(kEndedBySignal + end.signal);
}
