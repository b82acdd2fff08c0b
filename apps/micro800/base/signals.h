#ifndef APPS_MICRO800_BASE_SIGNALS_H
#define APPS_MICRO800_BASE_SIGNALS_H

#include <csignal>

/// Whether this process ignores the signal, as it may have been started to. Even so a signal that
/// is blocked reaches a thread that waits for it.
bool isIgnored(int number);

/// Holds every signal back from the calling thread while it lives, but those that report a fault
/// of the program.
///
/// Threads inherit the mask. The driver starts its worker thread inside a read or write: called
/// under this guard, the worker never sees a signal, so that Ctrl-C or a change of the terminal's
/// size cannot interrupt its wait for the controller.
class SignalsHeld {
 public:
    SignalsHeld();
    ~SignalsHeld();
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
    sigset_t before;
};

/// Turns SIGINT, SIGTERM and SIGHUP into something to wait for, for as long as it lives; those that
/// this process ignores stay ignored. One at a time; on the main thread, before any other thread
/// runs.
class StopSignals {
 public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    /// Waits until a stop signal came, `alsoDescriptor` (ignored when negative) is readable, or
    /// `ms` have passed. True when a stop signal has come, now or earlier.
    bool wait(int ms, int alsoDescriptor = -1);
    bool stopped() const { return signalled; }

 private:
    /// Takes one signal that has come; false when there is none.
    bool take();

    sigset_t before;
    int descriptor;
    bool signalled = false;
};

#endif
