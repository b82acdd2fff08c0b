#ifndef COMMON_PROCESS_H
#define COMMON_PROCESS_H

/// Whether a null signal can be sent to `pid`, or fails only for lack of permission. Zero and
/// negative numbers mean process groups, as kill(2) has it; a number beyond the range of pid_t
/// is never running. Any thread.
bool ProcessIsRunning(long long pid);

#endif
