#ifndef APPS_MICRO800_BASE_CHILD_PROCESS_H
#define APPS_MICRO800_BASE_CHILD_PROCESS_H

#include <sys/types.h>

#include <QByteArray>
#include <csignal>
#include <vector>

/// What a process ended with.
struct ProcessEnd {
    int exitCode = 0;
    int signal = 0;  ///< that ended it; 0: none did
};

/// A child process that this one represents: what happens to one of them happens to both.
///
/// A signal that somebody sends to this process goes on to the child. One of the terminal reaches
/// the child by itself. When the child is stopped, this process stops as well, so that a shell sees
/// one job. When this process is killed, the child gets SIGTERM.
///
/// For the main thread, and before any other thread runs. While the object lives all signals are
/// held back from the thread.
class ChildProcess {
 public:
    ChildProcess();
    /// Gives the thread its signals again. The child must have been waited for.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Starts `program`, which is looked up in PATH when it has no slash, with these words, its
    /// name first. It gets the signals as this process had them, and every descriptor that is not
    /// close-on-exec. False with errno when it cannot be started.
    bool start(const QByteArray& program, std::vector<QByteArray> words);

    /// Returns when the child has ended.
    ProcessEnd wait();

 private:
    [[noreturn]] void execute(const char* program, char* const* words, int report);
    bool hasEnded(ProcessEnd* end);

    sigset_t maskBefore;
    struct sigaction childActionBefore;
    pid_t pid = -1;
};

/// Ends this process at once the way that one ended, by the same signal if need be, but without a
/// core file of its own.
[[noreturn]] void endLike(const ProcessEnd& end);

#endif
