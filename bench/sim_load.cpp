// Load on a running simulated controller: requests a second from many connections, and how long
// each request takes. One thread, one outstanding Read Tag request a connection.
//
//   micro800-sim --port 0 --tag T0:DINT=1         prints its port
//   sim_load PORT [CONNECTIONS [SECONDS [TAG]]]   16 connections, 3 seconds, T0

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void giveUp(const char* what) {
    std::perror(what);
    std::exit(1);
}

std::string word(size_t value) {
    return {char(value & 0xFF), char(value >> 8 & 0xFF)};
}

std::string longWord(uint32_t value) {
    return word(value & 0xFFFF) + word(value >> 16);
}

/// Encapsulation header (CIP Networks Library Vol. 2, 2-3) and what follows it.
std::string message(uint16_t command, const std::string& session, const std::string& body) {
    return word(command) + word(body.size()) + session + std::string(16, '\0') + body;
}

/// Interface handle, time-out and the two items of SendRRData and SendUnitData.
std::string items(const std::string& addressItem, uint16_t dataType, const std::string& data) {
    return std::string(6, '\0') + word(2) + addressItem + word(dataType) + word(data.size()) + data;
}

// Header, prefix, item count, connected address item, head of the data item.
const size_t kSequenceAt = 24 + 6 + 2 + 8 + 4;
const size_t kServiceAt = kSequenceAt + 2;
const size_t kStatusAt = kServiceAt + 2;

/// One TCP connection with a session and a class 3 connection on it.
class Client {
 public:
    Client(uint16_t port, uint32_t number, const std::string& tag);
    ~Client() { close(m_socket); }
    Client(const Client&) = delete;

    int socket() const { return m_socket; }
    /// Sends the next read.
    void send();
    /// Takes the answer, which has to be that of the last read; gives back how long it took.
    Clock::duration receive();

 private:
    std::string exchange(const std::string& request);

    int m_socket;
    std::string m_request;
    uint16_t m_sequence = 0;
    Clock::time_point m_sentAt;
};

Client::Client(uint16_t port, uint32_t number, const std::string& tag)
    : m_socket(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int on = 1;
    setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (connect(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        giveUp("connect");
    }
    const std::string session =
        exchange(message(0x65, std::string(4, '\0'), word(1) + word(0))).substr(4, 4);

    const std::string rpi = longWord(2000000) + word(0x43F8);
    const std::string open = std::string("\x54\x02\x20\x06\x24\x01\x05\xF7") +
                             longWord(0x80000002) + longWord(0x80FE0001) + word(2) + word(0x501B) +
                             longWord(number) + std::string("\x02\0\0\0", 4) + rpi + rpi +
                             "\xA3\x02\x20\x02\x24\x01";
    const std::string reply =
        exchange(message(0x6F, session, items(word(0) + word(0), 0xB2, open)));
    if (reply.size() < 52 || reply[42] != 0) {
        std::fprintf(stderr, "sim_load: Forward Open was refused\n");
        std::exit(1);
    }
    std::string path = std::string("\x91") + char(tag.size()) + tag;
    path.resize(path.size() + path.size() % 2);
    const std::string read = word(0) + "\x4C" + char(path.size() / 2) + path + word(1);
    m_request =
        message(0x70, session, items(word(0xA1) + word(4) + reply.substr(44, 4), 0xB1, read));
}

void Client::send() {
    const std::string sequence = word(++m_sequence);
    m_request.replace(kSequenceAt, 2, sequence);
    m_sentAt = Clock::now();
    if (::send(m_socket, m_request.data(), m_request.size(), MSG_NOSIGNAL) < 0) {
        giveUp("send");
    }
}

Clock::duration Client::receive() {
    char reply[1024];
    const ssize_t got = recv(m_socket, reply, sizeof reply, 0);
    if (got <= ssize_t(kStatusAt) || reply[kStatusAt] != 0 ||
        word(m_sequence) != std::string(reply + kSequenceAt, 2)) {
        std::fprintf(stderr, "sim_load: a read failed\n");
        std::exit(1);
    }
    return Clock::now() - m_sentAt;
}

std::string Client::exchange(const std::string& request) {
    char reply[1024];
    if (::send(m_socket, request.data(), request.size(), MSG_NOSIGNAL) < 0) {
        giveUp("send");
    }
    const ssize_t got = recv(m_socket, reply, sizeof reply, 0);
    if (got < 24) {
        giveUp("recv");
    }
    return std::string(reply, size_t(got));
}

using Clients = std::vector<std::unique_ptr<Client>>;

/// Keeps every client's one request going until the time is up.
std::vector<double> run(const Clients& clients, double seconds) {
    std::vector<double> microseconds;
    microseconds.reserve(1 << 22);
    std::vector<pollfd> sockets;
    for (const auto& client : clients) {
        sockets.push_back({client->socket(), POLLIN, 0});
        client->send();
    }
    const Clock::time_point end = Clock::now() + std::chrono::microseconds(int64_t(seconds * 1e6));
    while (Clock::now() < end) {
        if (poll(sockets.data(), sockets.size(), 1000) <= 0) {
            giveUp("no answer");
        }
        for (size_t i = 0; i < sockets.size(); ++i) {
            if (sockets[i].revents != 0) {
                const auto took = clients[i]->receive();
                microseconds.push_back(std::chrono::duration<double, std::micro>(took).count());
                clients[i]->send();
            }
        }
    }
    return microseconds;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: sim_load PORT [CONNECTIONS [SECONDS [TAG]]]\n");
        return 2;
    }
    const uint16_t port = uint16_t(std::atoi(argv[1]));
    const int connections = argc > 2 ? std::atoi(argv[2]) : 16;
    const double seconds = argc > 3 ? std::atof(argv[3]) : 3;
    const std::string tag = argc > 4 ? argv[4] : "T0";
    Clients clients;
    for (int i = 0; i < connections; ++i) {
        clients.push_back(std::make_unique<Client>(port, uint32_t(getpid()) * 1000 + i, tag));
    }
    std::vector<double> took = run(clients, seconds);
    std::sort(took.begin(), took.end());
    const auto part = [&](double p) {
        return took.empty() ? 0 : took[size_t(p * double(took.size() - 1))];
    };
    std::printf("%d connections: %.0f requests/s, median %.1f us, 99 %% within %.1f us\n",
                connections, double(took.size()) / seconds, part(0.5), part(0.99));
    return 0;
}
