#ifndef TESTS_INTEGRATION_FAILING_SYSTEM_FAILING_CALLS_H
#define TESTS_INTEGRATION_FAILING_SYSTEM_FAILING_CALLS_H

/// A system that fails when a test asks for it: this program has the functions of the C library in
/// its own hands, also for the plugin, Qt and SQLite, and lets one of them fail.
///
/// Only calls made for the driver count: those of the thread that is inside a DriverScope, and of
/// every thread that was started from there. One test at a time; everything here is for a process
/// that was forked for one life of a driver.
namespace failing {

/// A function that can fail and a way in which it does.
struct Failure {
    const char* call;  ///< e.g. "recv"; "malloc" means all functions that return memory
    int error;         ///< errno, or what the function returns where it returns its error
};

/// How all calls behave, beside the one that fails.
enum Mode {
    kPlain,
    kShortPipeReceives,    ///< each recv from a local socket gives one byte
    kShortPipeSends,       ///< each send to a local socket takes one byte
    kShortReceives,        ///< each recv from the network gives at most a message's header
    kOneByteReceives,      ///< each recv from the network gives one byte
    kOneByteSends,         ///< each send to the network takes one byte
    kInterruptedSecond,    ///< every second recv, send, select and connect returns EINTR
    kInterruptedThird,     ///< every third one
    kInterruptedOpenings,  ///< every second open, read and connect returns EINTR
    kShortWrites,          ///< each write to a file takes 100 bytes at most
    kFullDisk,             ///< each write to a file returns ENOSPC
    kNoLinks               ///< each link to a file returns EPERM
};

/// From now on the `number`th such call fails, and so many in all: `times`. 0: none does.
void arm(const Failure& failure, long number, Mode mode = kPlain, int times = 1);
/// From now on none fails.
void disarm();
/// How many such calls there were since arm().
long count();
/// Whether the call that was to fail has been made.
bool hasFailed();

/// While it lives, what the calling thread does is done for the driver.
class DriverScope {
 public:
    DriverScope();
    ~DriverScope();
    DriverScope(const DriverScope&) = delete;
    DriverScope& operator=(const DriverScope&) = delete;
};

}  // namespace failing

#endif
