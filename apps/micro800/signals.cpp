#include "apps/micro800/signals.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <initializer_list>

namespace {

sigset_t stopSet() {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&set, number);
    return set;
}

}  // namespace

SignalsHeld::SignalsHeld() {
    sigset_t held;
    sigfillset(&held);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS})
        sigdelset(&held, fault);
    pthread_sigmask(SIG_BLOCK, &held, &before_);
}

SignalsHeld::~SignalsHeld() {
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

StopSignals::StopSignals() {
    const sigset_t stops = stopSet();
    pthread_sigmask(SIG_BLOCK, &stops, &before_);
    descriptor_ = signalfd(-1, &stops, SFD_NONBLOCK | SFD_CLOEXEC);
}

StopSignals::~StopSignals() {
    if (descriptor_ >= 0)
        close(descriptor_);
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

bool StopSignals::wait(int ms, int alsoDescriptor) {
    struct pollfd waited[] = {{descriptor_, POLLIN, 0}, {alsoDescriptor, POLLIN, 0}};
    poll(waited, 2, ms);
    struct signalfd_siginfo info;
    if (descriptor_ >= 0 && read(descriptor_, &info, sizeof info) == sizeof info)
        stopped_ = true;
    return stopped_;
}
