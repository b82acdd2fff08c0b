#include "bench/delay_relay.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

sockaddr_in loopback(quint16 port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// Hands on what is there; false at the end of the connection.
bool handOn(int from, int to, long delayMicros) {
    char bytes[4096];
    const ssize_t got = recv(from, bytes, sizeof bytes, 0);
    const timespec delay = {delayMicros / 1000000, delayMicros % 1000000 * 1000};
    if (got > 0 && delayMicros > 0) {
        nanosleep(&delay, nullptr);
    }
    return got > 0 && send(to, bytes, size_t(got), MSG_NOSIGNAL) == got;
}

[[noreturn]] void relay(int listener, quint16 target, long delayMicros) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    prctl(PR_SET_TIMERSLACK, 1000);
    const int on = 1;
    const sockaddr_in address = loopback(target);
    const int client = accept(listener, nullptr, nullptr);
    const int server = socket(AF_INET, SOCK_STREAM, 0);
    setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    setsockopt(server, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    bool open = connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    while (open) {
        pollfd ends[] = {{client, POLLIN, 0}, {server, POLLIN, 0}};
        open = poll(ends, 2, -1) > 0 && (ends[0].revents == 0 || handOn(client, server, 0)) &&
               (ends[1].revents == 0 || handOn(server, client, delayMicros));
    }
    _exit(0);
}

}  // namespace

DelayRelay::DelayRelay(quint16 target, long delayMicros) : process(-1), ownPort(0) {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback(0);
    sockaddr* const any = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof address;
    if (bind(listener, any, size) == 0 && listen(listener, 1) == 0 &&
        getsockname(listener, any, &size) == 0) {
        ownPort = ntohs(address.sin_port);
        process = fork();
    }
    if (process == 0) {
        relay(listener, target, delayMicros);
    }
    close(listener);
    if (process < 0) {
        std::perror("driver_bench: relay");
        std::exit(1);
    }
}

DelayRelay::~DelayRelay() {
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
}
