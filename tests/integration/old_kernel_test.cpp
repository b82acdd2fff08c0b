// The plugin on a kernel that does not know SOCK_CLOEXEC, as those before Linux 2.6.27 do not. The
// functions of the C library that open sockets are replaced for the whole process, the plugin file
// included.

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <atomic>

#include "integration/driver_rig.h"
#include "support/app_directory/app_directory.h"

namespace {

std::atomic<bool> oldKernel(false);
std::atomic<int> socketsRefused(0);
std::atomic<int> pairsRefused(0);

/// Whether a kernel of that time refuses the type; counts it there.
bool isRefused(int type, std::atomic<int>* count) {
    if (!oldKernel.load() || (type & (SOCK_CLOEXEC | SOCK_NONBLOCK)) == 0) {
        return false;
    }
    ++*count;
    errno = EINVAL;
    return true;
}

/// The C library's own function, which the one in this program hides.
template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::set<int> socketsAmong(const std::set<int>& descriptors) {
    std::set<int> sockets;
    for (const int fd : descriptors) {
        struct stat status;
        if (fstat(fd, &status) == 0 && S_ISSOCK(status.st_mode)) {
            sockets.insert(fd);
        }
    }
    return sockets;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int socket(int domain, int type,
                                                             int protocol) noexcept {
    return isRefused(type, &socketsRefused)
               ? -1
               : next<int(int, int, int)>("socket")(domain, type, protocol);
}

extern "C" __attribute__((visibility("default"))) int socketpair(int domain, int type, int protocol,
                                                                 int* fds) noexcept {
    return isRefused(type, &pairsRefused)
               ? -1
               : next<int(int, int, int, int*)>("socketpair")(domain, type, protocol, fds);
}

namespace {

TEST(OldKernel, ReadsOverSocketsThatAProgramDoesNotInherit) {
    writeProjectDatabase({});
    Controller controller({"--tag", "COUNTER:DINT=42"});
    TestDevice device(controller.port());
    const std::unique_ptr<DriverInterface> driver = createDriver();
    const std::set<int> before = openDescriptors();

    oldKernel = true;
    const int value = readDint(driver.get(), &device, "COUNTER");
    oldKernel = false;

    EXPECT_EQ(42, value);
    EXPECT_EQ(2, pairsRefused) << "the pipes to the worker";
    EXPECT_EQ(1, socketsRefused) << "the connection to the controller";
    const std::set<int> sockets = socketsAmong(minus(openDescriptors(), before));
    EXPECT_EQ(5u, sockets.size()) << "two ends of two pipes, and the connection";
    for (const int fd : sockets) {
        EXPECT_EQ(FD_CLOEXEC, fcntl(fd, F_GETFD)) << fd;
    }
}

}  // namespace
