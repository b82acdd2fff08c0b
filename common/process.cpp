#include "common/process.h"

#include <errno.h>
#include <signal.h>
#include <sys/types.h>

bool ProcessIsRunning(long long pid) {
    const pid_t id = static_cast<pid_t>(pid);
    if (id != pid) {
        return false;
    }
    return kill(id, 0) == 0 || errno == EPERM;
}
