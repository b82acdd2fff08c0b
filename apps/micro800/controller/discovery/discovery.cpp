#include "apps/micro800/controller/discovery/discovery.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <cerrno>
#include <cstring>
#include <memory>

#include "apps/micro800/base/problem.h"
#include "eip/cip/encap_header.h"

namespace {

const int kRounds = 2;
const size_t kLargestDatagram = 65536;

/// Bytes 0 and 1 of the sender context: the longest a device may put its answer off by, in
/// milliseconds (Vol. 2, 2-4.2.3). 0 would let it take two seconds.
const unsigned kShortestDelayMs = 500;

class Descriptor {
 public:
    explicit Descriptor(int fd) : number(fd) {}
    ~Descriptor() {
        if (number >= 0) {
            close(number);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    const int number;
};

/// One socket and where it sends to.
struct Target {
    QString name;  ///< of the interface, or the address
    in_addr from;  ///< the socket's own address; INADDR_ANY for the system's choice
    in_addr to;
    std::shared_ptr<Descriptor> socket;
};

QString systemText() {
    return QString::fromLocal8Bit(strerror(errno));
}

QString addressText(const in_addr& address) {
    char text[INET_ADDRSTRLEN];
    return QLatin1String(inet_ntop(AF_INET, &address, text, sizeof text));
}

in_addr addressOf(const sockaddr* address) {
    sockaddr_in copy;
    std::memcpy(&copy, address, sizeof copy);
    return copy.sin_addr;
}

bool isWanted(const ifaddrs& entry, const QStringList& names) {
    const unsigned needed = IFF_UP | IFF_BROADCAST;
    return entry.ifa_addr && entry.ifa_addr->sa_family == AF_INET &&
           (entry.ifa_flags & needed) == needed && entry.ifa_broadaddr &&
           (names.isEmpty() || names.contains(QString::fromLocal8Bit(entry.ifa_name)));
}

bool addInterfaces(const QStringList& names, QVector<Target>* targets, QString* problem) {
    ifaddrs* first = nullptr;
    if (getifaddrs(&first) != 0) {
        return fail(
            problem,
            QStringLiteral("the network interfaces cannot be listed: %1").arg(systemText()));
    }
    const std::unique_ptr<ifaddrs, void (*)(ifaddrs*)> list(first, freeifaddrs);
    QStringList found;
    for (const ifaddrs* entry = first; entry; entry = entry->ifa_next) {
        if (isWanted(*entry, names)) {
            found << QString::fromLocal8Bit(entry->ifa_name);
            targets->append(
                {found.last(), addressOf(entry->ifa_addr), addressOf(entry->ifa_broadaddr), {}});
        }
    }
    for (const QString& name : names) {
        if (!found.contains(name)) {
            return fail(problem, QStringLiteral("interface %1: there is none of that name that is "
                                                "up, has an IPv4 address and can broadcast")
                                     .arg(name));
        }
    }
    return true;
}

bool addBroadcasts(const QStringList& addresses, QVector<Target>* targets, QString* problem) {
    for (const QString& text : addresses) {
        Target target = {text, {}, {}, {}};
        if (inet_pton(AF_INET, text.toLatin1().constData(), &target.to) != 1) {
            return fail(problem, QStringLiteral("%1: not an IPv4 address").arg(text));
        }
        targets->append(target);
    }
    return true;
}

bool openSocket(Target* target, QString* problem) {
    target->socket =
        std::make_shared<Descriptor>(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const int fd = target->socket->number;
    const int on = 1;
    sockaddr_in own = {};
    own.sin_family = AF_INET;
    own.sin_addr = target->from;
    const bool ready = fd >= 0 && setsockopt(fd, SOL_SOCKET, SO_BROADCAST, &on, sizeof on) == 0 &&
                       bind(fd, reinterpret_cast<sockaddr*>(&own), sizeof own) == 0;
    return ready || fail(problem, QStringLiteral("%1: %2").arg(target->name, systemText()));
}

_Encap_Header makeRequest(int timeoutMs) {
    _Encap_Header request;
    const unsigned half = unsigned(timeoutMs) / kRounds;
    _InitHeader(&request, 0, qBound(kShortestDelayMs, half, 0xFFFFu), 0);
    _SetEncapCommand(&request, ENCAP_LIST_IDENTITY);
    return request;
}

bool sendTo(const Target& target, const DiscoveryPlan& plan, const TraceSink& trace,
            QString* problem) {
    const _Encap_Header request = makeRequest(plan.timeoutMs);
    sockaddr_in to = {};
    to.sin_family = AF_INET;
    to.sin_port = htons(plan.port);
    to.sin_addr = target.to;
    if (trace) {
        trace(QStringLiteral("> to %1 port %2").arg(addressText(target.to)).arg(plan.port));
        traceMessage(trace, false,
                     QByteArray(reinterpret_cast<const char*>(&request), sizeof request));
    }
    const ssize_t sent = sendto(target.socket->number, &request, sizeof request, 0,
                                reinterpret_cast<sockaddr*>(&to), sizeof to);
    return sent == ssize_t(sizeof request) ||
           fail(problem, QStringLiteral("%1: %2").arg(target.name, systemText()));
}

/// Takes what lies in a socket.
void receiveFrom(const Target& target, const TraceSink& trace, const AnswerSink& answer) {
    QByteArray bytes(int(kLargestDatagram), '\0');
    for (;;) {
        sockaddr_in from = {};
        socklen_t size = sizeof from;
        const ssize_t got = recvfrom(target.socket->number, bytes.data(), kLargestDatagram, 0,
                                     reinterpret_cast<sockaddr*>(&from), &size);
        if (got < 0) {
            return;
        }
        const QByteArray datagram = bytes.left(int(got));
        const QString sender = addressText(from.sin_addr);
        if (trace) {
            trace(QStringLiteral("< from %1 port %2").arg(sender).arg(ntohs(from.sin_port)));
            traceMessage(trace, true, datagram);
        }
        const auto* reply = reinterpret_cast<const _Encap_Header*>(datagram.constData());
        CipIdentity identity;
        const bool isWhole = got >= kEncapHeaderSize &&
                             got - kEncapHeaderSize >= _GetEncapLength(reply) &&
                             _GetEipStatus(reply) == 0;
        if (isWhole && DecodeIdentity(reply, &identity)) {
            answer(sender, identity);
        }
    }
}

/// Waits and hands on until `untilMs` on the clock.
void receiveUntil(qint64 untilMs, const QElapsedTimer& clock, const QVector<Target>& targets,
                  const TraceSink& trace, const AnswerSink& answer) {
    QVector<pollfd> waited;
    for (const Target& target : targets) {
        waited.append({target.socket->number, POLLIN, 0});
    }
    for (qint64 left = untilMs; left > 0; left = untilMs - clock.elapsed()) {
        poll(waited.data(), nfds_t(waited.size()), int(left));
        for (const Target& target : targets) {
            receiveFrom(target, trace, answer);
        }
    }
}

}  // namespace

bool discover(const DiscoveryPlan& plan, const TraceSink& trace, const AnswerSink& answer,
              QString* problem) {
    QVector<Target> targets;
    const bool wantsInterfaces = plan.broadcasts.isEmpty() || !plan.interfaces.isEmpty();
    if (!addBroadcasts(plan.broadcasts, &targets, problem) ||
        (wantsInterfaces && !addInterfaces(plan.interfaces, &targets, problem))) {
        return false;
    }
    if (targets.isEmpty()) {
        return fail(problem,
                    QStringLiteral("no network interface is up that can broadcast; plug the cable "
                                   "in, or name an address with --broadcast"));
    }
    QVector<Target> ready;
    for (Target& target : targets) {
        if (openSocket(&target, problem)) {
            ready.append(target);
        }
    }
    QElapsedTimer clock;
    clock.start();
    bool anySent = false;
    for (int round = 1; round <= kRounds; ++round) {
        for (const Target& target : ready) {
            anySent = sendTo(target, plan, trace, problem) || anySent;
        }
        receiveUntil(qint64(plan.timeoutMs) * round / kRounds, clock, ready, trace, answer);
    }
    return anySent;
}
