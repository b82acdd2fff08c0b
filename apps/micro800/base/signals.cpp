#include "apps/micro800/base/signals.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <initializer_list>

namespace {

/// Not what this program was started to ignore, by nohup or as a job in the background: a blocked
/// signal comes through all the same.
sigset_t stopSet() {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        if (!isIgnored(number)) {
            sigaddset(&set, number);
        }
    }
    return set;
}

}  // namespace

bool isIgnored(int number) {
    struct sigaction action;
    return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

SignalsHeld::SignalsHeld() {
    sigset_t held;
    sigfillset(&held);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
        sigdelset(&held, fault);
    }
    pthread_sigmask(SIG_BLOCK, &held, &before);
}

SignalsHeld::~SignalsHeld() {
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

StopSignals::StopSignals() {
    const sigset_t stops = stopSet();
    pthread_sigmask(SIG_BLOCK, &stops, &before);
    descriptor = signalfd(-1, &stops, SFD_NONBLOCK | SFD_CLOEXEC);
}

StopSignals::~StopSignals() {
    if (descriptor >= 0) {
        // A signal for a whole group of processes comes twice, of its own and handed on.
        while (take()) {
        }
        close(descriptor);
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

bool StopSignals::take() {
    struct signalfd_siginfo info;
    return read(descriptor, &info, sizeof info) == sizeof info;
}

bool StopSignals::wait(int ms, int alsoDescriptor) {
    struct pollfd waited[] = {{descriptor, POLLIN, 0}, {alsoDescriptor, POLLIN, 0}};
    poll(waited, 2, ms);
    signalled = take() || signalled;
    return signalled;
}
