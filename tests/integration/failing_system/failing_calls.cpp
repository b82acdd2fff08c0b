#include "integration/failing_system/failing_calls.h"

#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <execinfo.h>
#include <fcntl.h>
#include <netdb.h>
#include <pthread.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <new>

namespace failing {
namespace {

const size_t kHeaderSize = 24;
const size_t kShortWrite = 100;

// What arm() has set. Constant while the driver's threads run, but for the counters.
const char* armedCall = "";
int armedError = 0;
long armedNumber = 0;
int armedTimes = 1;
Mode armedMode = kPlain;
std::atomic<bool> armed(false);
std::atomic<long> calls(0);
std::atomic<long> interruptible(0);
std::atomic<bool> failed(false);

thread_local int inDriver = 0;

/// Whether this call counts, and is the one that fails; errno is set then.
bool fails(const char* call) {
    if (inDriver == 0 || !armed.load(std::memory_order_acquire) || strcmp(call, armedCall) != 0) {
        return false;
    }
    const long number = calls.fetch_add(1) + 1;
    if (armedNumber == 0 || number < armedNumber || number >= armedNumber + armedTimes) {
        return false;
    }
    failed = true;
    errno = armedError;
    return true;
}

bool hasMode(Mode mode) {
    return inDriver != 0 && armedMode == mode && armed.load(std::memory_order_acquire);
}

/// Whether this call is one of those that a signal interrupts.
bool isInterrupted() {
    const long every = hasMode(kInterruptedSecond) ? 2 : hasMode(kInterruptedThird) ? 3 : 0;
    if (every == 0 || interruptible.fetch_add(1) % every != every - 1) {
        return false;
    }
    errno = EINTR;
    return true;
}

bool isInterruptedOpening() {
    if (!hasMode(kInterruptedOpenings) || interruptible.fetch_add(1) % 2 == 0) {
        return false;
    }
    errno = EINTR;
    return true;
}

bool isLocal(int fd) {
    sockaddr address;
    socklen_t size = sizeof address;
    return getsockname(fd, &address, &size) == 0 && address.sa_family == AF_UNIX;
}

/// Whether the mode is one that refuses each such call; errno is set then.
bool isRefused(Mode mode, int error) {
    if (!hasMode(mode)) {
        return false;
    }
    errno = error;
    return true;
}

/// How many bytes of so many a transfer is about.
size_t transferred(int fd, size_t length, Mode onPipes, Mode onNetwork) {
    if (length < 2 || !(hasMode(onPipes) || hasMode(onNetwork))) {
        return length;
    }
    return hasMode(isLocal(fd) ? onPipes : onNetwork) ? 1 : length;
}

/// Libraries and functions that do not outlive a lack of memory, for any caller: they end the
/// process or leave themselves broken. The destructor of a pattern takes memory, too. The look-ups
/// of names end the process over their configuration; they fail by tests of their own.
const char* const kFragile[] = {"/ld-",         "libQt5Sql.",   "libqsqlite.", "libglib-",
                                "_ZN7QThreadC", "_ZN7QRegExpD", "getaddrinfo", "getprotobyname_r"};

/// Whether memory that is asked for here is the driver's: its code, or SQLite's for it, is on the
/// stack with nothing fragile in between.
bool isTheDriversMemory() {
    void* frames[64];
    const int count = backtrace(frames, 64);
    for (int i = 0; i < count; ++i) {
        Dl_info info;
        if (dladdr(frames[i], &info) == 0 || !info.dli_fname) {
            continue;
        }
        if (strstr(info.dli_fname, "libab_micro800") || strstr(info.dli_fname, "libsqlite3")) {
            return true;
        }
        for (const char* name : kFragile) {
            if (strstr(info.dli_fname, name) ||
                (info.dli_sname && strstr(info.dli_sname, name) == info.dli_sname)) {
                return false;
            }
        }
    }
    return false;
}

/// Whether this call for memory is refused.
bool memoryFails() {
    // Nothing before this line: the loader asks for memory when the sanitizer cannot look at any
    // yet.
    if (inDriver == 0) {
        return false;
    }
    const bool failedBefore = failed;
    if (!fails("malloc")) {
        return false;
    }
    armed = false;  // for what the look at the stack takes
    const bool refused = isTheDriversMemory();
    failed = failedBefore || refused;
    armed = true;
    return refused;
}

/// The function that the one in this program replaces: the sanitizer's where it has one, else the C
/// library's.
template <class Function>
Function* next(const char* name) {
    char sanitizers[64];
    snprintf(sanitizers, sizeof sanitizers, "__interceptor_%s", name);
    void* const found = dlsym(RTLD_DEFAULT, sanitizers);
    return reinterpret_cast<Function*>(found ? found : dlsym(RTLD_NEXT, name));
}

struct ThreadStart {
    void* (*begin)(void*);
    void* argument;
};

void* beginInDriver(void* argument) {
    const ThreadStart start = *static_cast<ThreadStart*>(argument);
    free(argument);
    inDriver = 1;
    void* const result = start.begin(start.argument);
    inDriver = 0;
    return result;
}

}  // namespace

void arm(const Failure& failure, long number, Mode mode, int times) {
    void* frame = nullptr;
    backtrace(&frame, 1);  // the first one loads a library
    armedCall = failure.call;
    armedError = failure.error;
    armedNumber = number;
    armedMode = mode;
    armedTimes = times;
    calls = 0;
    interruptible = 0;
    failed = false;
    armed.store(true, std::memory_order_release);
}

void disarm() {
    armed.store(false, std::memory_order_release);
}

long count() {
    return calls;
}

bool hasFailed() {
    return failed;
}

DriverScope::DriverScope() {
    ++inDriver;
}

DriverScope::~DriverScope() {
    --inDriver;
}

}  // namespace failing

// ---- the functions of the C library -----------------------------------------------------------

using namespace failing;  // NOLINT: for the functions below

extern "C" {

// They are called before dlsym() can be: named for the linker.
#ifdef MICRO800_ASAN
#define MALLOC __interceptor_malloc
#define CALLOC __interceptor_calloc
#define REALLOC __interceptor_realloc
#else
#define MALLOC __libc_malloc
#define CALLOC __libc_calloc
#define REALLOC __libc_realloc
#endif
void* MALLOC(size_t);
void* CALLOC(size_t, size_t);
void* REALLOC(void*, size_t);

#define REPLACED __attribute__((visibility("default")))

REPLACED void* malloc(size_t size) noexcept {
    return memoryFails() ? nullptr : MALLOC(size);
}

REPLACED void* calloc(size_t count, size_t size) noexcept {
    return memoryFails() ? nullptr : CALLOC(count, size);
}

REPLACED void* realloc(void* block, size_t size) noexcept {
    return memoryFails() ? nullptr : REALLOC(block, size);
}

REPLACED int socket(int domain, int type, int protocol) noexcept {
    static auto* const real = next<int(int, int, int)>("socket");
    return fails("socket") ? -1 : real(domain, type, protocol);
}

REPLACED int socketpair(int domain, int type, int protocol, int* fds) noexcept {
    static auto* const real = next<int(int, int, int, int*)>("socketpair");
    return fails("socketpair") ? -1 : real(domain, type, protocol, fds);
}

REPLACED int connect(int fd, const sockaddr* address, socklen_t size) {
    static auto* const real = next<int(int, const sockaddr*, socklen_t)>("connect");
    return fails("connect") || isInterruptedOpening() ? -1 : real(fd, address, size);
}

REPLACED ssize_t send(int fd, const void* bytes, size_t length, int flags) {
    static auto* const real = next<ssize_t(int, const void*, size_t, int)>("send");
    if (fails("send") || isInterrupted()) {
        return -1;
    }
    return real(fd, bytes, transferred(fd, length, kShortPipeSends, kOneByteSends), flags);
}

REPLACED ssize_t recv(int fd, void* bytes, size_t length, int flags) {
    static auto* const real = next<ssize_t(int, void*, size_t, int)>("recv");
    // A wait that stays awake asks over and over: only what it gets counts.
    if ((flags & MSG_DONTWAIT) && real(fd, bytes, length, flags | MSG_PEEK) < 0) {
        return -1;
    }
    if (fails("recv") || isInterrupted()) {
        return -1;
    }
    if (hasMode(kShortReceives) && length > kHeaderSize && !isLocal(fd)) {
        return real(fd, bytes, kHeaderSize, flags);
    }
    return real(fd, bytes, transferred(fd, length, kShortPipeReceives, kOneByteReceives), flags);
}

REPLACED int select(int count, fd_set* readable, fd_set* writable, fd_set* other, timeval* time) {
    static auto* const real = next<int(int, fd_set*, fd_set*, fd_set*, timeval*)>("select");
    return fails("select") || isInterrupted() ? -1 : real(count, readable, writable, other, time);
}

REPLACED int setsockopt(int fd, int level, int option, const void* value, socklen_t size) noexcept {
    static auto* const real = next<int(int, int, int, const void*, socklen_t)>("setsockopt");
    return fails("setsockopt") ? -1 : real(fd, level, option, value, size);
}

REPLACED int getsockopt(int fd, int level, int option, void* value, socklen_t* size) noexcept {
    static auto* const real = next<int(int, int, int, void*, socklen_t*)>("getsockopt");
    return fails("getsockopt") ? -1 : real(fd, level, option, value, size);
}

REPLACED int shutdown(int fd, int how) noexcept {
    static auto* const real = next<int(int, int)>("shutdown");
    return fails("shutdown") ? -1 : real(fd, how);
}

REPLACED int getaddrinfo(const char* host, const char* service, const addrinfo* hints,
                         addrinfo** found) {
    static auto* const real =
        next<int(const char*, const char*, const addrinfo*, addrinfo**)>("getaddrinfo");
    return fails("getaddrinfo") ? armedError : real(host, service, hints, found);
}

REPLACED int getprotobyname_r(const char* name, protoent* entry, char* texts, size_t size,
                              protoent** found) {
    static auto* const real =
        next<int(const char*, protoent*, char*, size_t, protoent**)>("getprotobyname_r");
    return fails("getprotobyname_r") ? armedError : real(name, entry, texts, size, found);
}

REPLACED int sched_getaffinity(pid_t process, size_t size, cpu_set_t* set) noexcept {
    static auto* const real = next<int(pid_t, size_t, cpu_set_t*)>("sched_getaffinity");
    return fails("sched_getaffinity") ? -1 : real(process, size, set);
}

/// The descriptor is closed for any result, as Linux does it.
REPLACED int close(int fd) {
    static auto* const real = next<int(int)>("close");
    const bool failing = fails("close");
    const int reason = errno;
    const int result = real(fd);
    if (failing) {
        errno = reason;
        return -1;
    }
    return result;
}

int openWith(const char* name, const char* path, int flags, mode_t mode) {
    auto* const real = next<int(const char*, int, ...)>(name);
    return fails("open") || isInterruptedOpening() ? -1 : real(path, flags, mode);
}

REPLACED int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return openWith("open", path, flags, mode);
}

REPLACED int open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return openWith("open64", path, flags, mode);
}

int fcntlWith(const char* name, int fd, int command, void* argument) {
    static auto* const real = next<int(int, int, ...)>(name);
    return fails("fcntl") ? -1 : real(fd, command, argument);
}

REPLACED int fcntl(int fd, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    return fcntlWith("fcntl", fd, command, argument);
}

REPLACED int fcntl64(int fd, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    return fcntlWith("fcntl64", fd, command, argument);
}

REPLACED int stat64(const char* path, struct stat64* status) noexcept {
    static auto* const real = next<int(const char*, struct stat64*)>("stat64");
    return fails("stat") ? -1 : real(path, status);
}

REPLACED int lstat64(const char* path, struct stat64* status) noexcept {
    static auto* const real = next<int(const char*, struct stat64*)>("lstat64");
    return fails("stat") ? -1 : real(path, status);
}

REPLACED int fstat64(int fd, struct stat64* status) noexcept {
    static auto* const real = next<int(int, struct stat64*)>("fstat64");
    return fails("stat") ? -1 : real(fd, status);
}

REPLACED int statx(int dir, const char* path, int flags, unsigned mask,
                   struct statx* status) noexcept {
    static auto* const real = next<int(int, const char*, int, unsigned, struct statx*)>("statx");
    return fails("stat") ? -1 : real(dir, path, flags, mask, status);
}

REPLACED int access(const char* path, int how) noexcept {
    static auto* const real = next<int(const char*, int)>("access");
    return fails("access") ? -1 : real(path, how);
}

REPLACED ssize_t readlink(const char* path, char* target, size_t size) noexcept {
    static auto* const real = next<ssize_t(const char*, char*, size_t)>("readlink");
    return fails("readlink") ? -1 : real(path, target, size);
}

REPLACED char* getcwd(char* path, size_t size) noexcept {
    static auto* const real = next<char*(char*, size_t)>("getcwd");
    return fails("getcwd") ? nullptr : real(path, size);
}

REPLACED ssize_t read(int fd, void* bytes, size_t length) {
    static auto* const real = next<ssize_t(int, void*, size_t)>("read");
    return fails("read") || isInterruptedOpening() ? -1 : real(fd, bytes, length);
}

REPLACED ssize_t write(int fd, const void* bytes, size_t length) {
    static auto* const real = next<ssize_t(int, const void*, size_t)>("write");
    if (fails("write") || isRefused(kFullDisk, ENOSPC)) {
        return -1;
    }
    return real(fd, bytes, hasMode(kShortWrites) ? std::min(length, kShortWrite) : length);
}

REPLACED int fsync(int fd) {
    static auto* const real = next<int(int)>("fsync");
    return fails("fsync") ? -1 : real(fd);
}

REPLACED int link(const char* from, const char* to) noexcept {
    static auto* const real = next<int(const char*, const char*)>("link");
    return fails("link") || isRefused(kNoLinks, EPERM) ? -1 : real(from, to);
}

REPLACED int rename(const char* from, const char* to) noexcept {
    static auto* const real = next<int(const char*, const char*)>("rename");
    return fails("rename") ? -1 : real(from, to);
}

REPLACED int unlink(const char* path) noexcept {
    static auto* const real = next<int(const char*)>("unlink");
    return fails("unlink") ? -1 : real(path);
}

REPLACED int mkdir(const char* path, mode_t mode) noexcept {
    static auto* const real = next<int(const char*, mode_t)>("mkdir");
    return fails("mkdir") ? -1 : real(path, mode);
}

REPLACED DIR* opendir(const char* path) {
    static auto* const real = next<DIR*(const char*)>("opendir");
    return fails("opendir") ? nullptr : real(path);
}

REPLACED int setpriority(__priority_which_t which, id_t who, int value) noexcept {
    static auto* const real = next<int(__priority_which_t, id_t, int)>("setpriority");
    return fails("setpriority") ? -1 : real(which, who, value);
}

REPLACED ssize_t pread64(int fd, void* bytes, size_t length, off64_t offset) {
    static auto* const real = next<ssize_t(int, void*, size_t, off64_t)>("pread64");
    return fails("read") || isInterruptedOpening() ? -1 : real(fd, bytes, length, offset);
}

REPLACED void* mmap64(void* at, size_t length, int protection, int flags, int fd,
                      off64_t offset) noexcept {
    static auto* const real = next<void*(void*, size_t, int, int, int, off64_t)>("mmap64");
    return fails("mmap") ? MAP_FAILED : real(at, length, protection, flags, fd, offset);
}

REPLACED int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                            void* (*begin)(void*), void* argument) noexcept {
    static auto* const real =
        next<int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>("pthread_create");
    if (inDriver == 0) {
        return real(thread, attributes, begin, argument);
    }
    if (fails("pthread_create")) {
        return armedError;
    }
    ThreadStart* const start = static_cast<ThreadStart*>(MALLOC(sizeof(ThreadStart)));
    start->begin = begin;
    start->argument = argument;
    const int result = real(thread, attributes, beginInDriver, start);
    if (result != 0) {
        free(start);
    }
    return result;
}

}  // extern "C"

// So that memory of C++ comes from the functions above also where a sanitizer has its own.

REPLACED void* operator new(size_t size) {
    void* const block = malloc(size);
    if (!block) {
        throw std::bad_alloc();
    }
    return block;
}

REPLACED void* operator new[](size_t size) {
    return operator new(size);
}

REPLACED void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return malloc(size);
}

REPLACED void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return malloc(size);
}

REPLACED void operator delete(void* block) noexcept {
    free(block);
}

REPLACED void operator delete[](void* block) noexcept {
    free(block);
}

REPLACED void operator delete(void* block, size_t) noexcept {
    free(block);
}

REPLACED void operator delete[](void* block, size_t) noexcept {
    free(block);
}
