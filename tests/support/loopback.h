#ifndef TESTS_SUPPORT_LOOPBACK_H
#define TESTS_SUPPORT_LOOPBACK_H

#include <arpa/inet.h>
#include <dirent.h>
#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <set>
#include <string>
#include <thread>

/// How long a test waits for what must come.
const int kSoonMs = 10000;

class Stopwatch {
 public:
    Stopwatch() : start(std::chrono::steady_clock::now()) {}
    long ms() const {
        return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                     std::chrono::steady_clock::now() - start)
                                     .count());
    }

 private:
    std::chrono::steady_clock::time_point start;
};

/// A thread that runs one call, and whether it is blocked in it. Signals reach it.
class BlockingCall {
 public:
    explicit BlockingCall(const std::function<void()>& call) : tid(0) {
        struct sigaction action = {};
        action.sa_handler = [](int) {};  // no SA_RESTART: what blocks returns EINTR
        sigaction(SIGUSR1, &action, &old);
        thread = std::thread([this, call] {
            tid = gettid();
            call();
        });
    }
    ~BlockingCall() {
        join();
        sigaction(SIGUSR1, &old, nullptr);
    }

    void join() {
        if (thread.joinable()) {
            thread.join();
        }
    }

    /// Waits until the call sleeps in the kernel; false when it ended instead.
    bool isAsleep() const {
        while (tid == 0) {
            std::this_thread::yield();
        }
        for (char state = 'R'; state != 'S'; std::this_thread::yield()) {
            std::ifstream stat("/proc/self/task/" + std::to_string(tid) + "/stat");
            std::string text;
            if (!std::getline(stat, text) || text.rfind(')') == std::string::npos) {
                return false;
            }
            state = text[text.rfind(')') + 2];
            if (state == 'Z' || state == 'X') {
                return false;
            }
        }
        return true;
    }

    void signal() { pthread_kill(thread.native_handle(), SIGUSR1); }

 private:
    std::atomic<pid_t> tid;
    std::thread thread;
    struct sigaction old;
};

/// Descriptors that are open in this process.
inline std::set<int> openDescriptors() {
    std::set<int> found;
    DIR* dir = opendir("/proc/self/fd");
    while (const dirent* entry = readdir(dir)) {
        const int fd = atoi(entry->d_name);
        if (entry->d_name[0] != '.' && fd != dirfd(dir)) {
            found.insert(fd);
        }
    }
    closedir(dir);
    return found;
}

inline std::set<int> minus(const std::set<int>& all, const std::set<int>& known) {
    std::set<int> rest(all);
    for (int fd : known) {
        rest.erase(fd);
    }
    return rest;
}

/// An encapsulated message: `length` as in the header, then the bytes of `body`.
inline std::string message(const std::string& body, int length = -1) {
    const size_t said = length < 0 ? body.size() : static_cast<size_t>(length);
    std::string header(24, '\0');
    header[0] = 0x70;
    header[2] = static_cast<char>(said & 0xFF);
    header[3] = static_cast<char>(said >> 8);
    header[4] = 0x11;
    header[23] = 0x23;
    return header + body;
}

/// A listener on loopback, on a port of the system's choice, and the one connection it took.
class LoopbackServer {
 public:
    explicit LoopbackServer(int backlog = 5) : listener(-1), peer(-1), tcpPort(0) {
        listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address = sockaddr_in();
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        EXPECT_EQ(0, bind(listener, reinterpret_cast<sockaddr*>(&address), size));
        EXPECT_EQ(0, listen(listener, backlog));
        EXPECT_EQ(0, getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size));
        tcpPort = ntohs(address.sin_port);
    }
    ~LoopbackServer() {
        hangUp();
        close(listener);
    }
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    unsigned short port() const { return tcpPort; }

    /// Takes the connection that is waiting or comes soon.
    bool accept(int ms = kSoonMs) {
        hangUp();
        if (!readable(listener, ms)) {
            return false;
        }
        peer = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        return peer >= 0;
    }

    bool send(const std::string& bytes) {
        return ::send(peer, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(bytes.size());
    }

    /// Waits until the other side's system has all that was sent.
    bool delivered() {
        const Stopwatch watch;
        int onTheWay = 1;
        while (ioctl(peer, SIOCOUTQ, &onTheWay) == 0 && onTheWay > 0 && watch.ms() < kSoonMs) {
            usleep(100);
        }
        return onTheWay == 0;
    }

    /// Exactly so many bytes, fewer when they do not come.
    std::string receive(size_t count, int ms = kSoonMs) {
        std::string bytes;
        while (bytes.size() < count && readable(peer, ms)) {
            char piece[4096];
            const ssize_t got = recv(peer, piece, std::min(sizeof piece, count - bytes.size()), 0);
            if (got < 1) {
                break;
            }
            bytes.append(piece, static_cast<size_t>(got));
        }
        return bytes;
    }

    /// Whether the connection's other side closed it, soon.
    bool peerClosed() {
        char byte;
        return readable(peer, kSoonMs) && recv(peer, &byte, 1, MSG_DONTWAIT) < 1;
    }

    void hangUp() {
        if (peer >= 0) {
            close(peer);
        }
        peer = -1;
    }

    /// Hangs up with a reset instead of an orderly end.
    void reset() {
        const linger hard = {1, 0};
        setsockopt(peer, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
        hangUp();
    }

 private:
    static bool readable(int fd, int ms) {
        pollfd wait = {fd, POLLIN, 0};
        return poll(&wait, 1, ms) == 1;
    }

    int listener;
    int peer;
    unsigned short tcpPort;
};

/// A host that does not answer: its queue of connections is full and nobody empties it.
class DeafServer {
 public:
    DeafServer() : server(0) {
        for (int& filler : fillers) {
            filler = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
            sockaddr_in address = sockaddr_in();
            address.sin_family = AF_INET;
            address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
            address.sin_port = htons(server.port());
            (void)!::connect(filler, reinterpret_cast<sockaddr*>(&address), sizeof address);
        }
    }
    ~DeafServer() {
        for (int filler : fillers) {
            close(filler);
        }
    }
    unsigned short port() const { return server.port(); }

 private:
    LoopbackServer server;
    int fillers[4];
};

#endif
