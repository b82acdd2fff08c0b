#include "apps/simulator/server/peer.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QHostAddress>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace sim {

namespace {

/// Two of the largest frames, so that one can arrive while another is served.
const size_t kInCapacity = 2 * (kEncapHeaderSize + kEncapMaxBody);
/// A peer that does not read its answers gets no further ones beyond this.
const size_t kMaxOutBytes = 1 << 20;
/// Nor beyond this number of answers that a fault delays.
const size_t kMaxHeld = 1024;

/// An end of the connection: getpeername or getsockname.
using GetName = int (*)(int, sockaddr*, socklen_t*);

bool endPoint(GetName get, int socket, QHostAddress* host, uint16_t* port) {
    sockaddr_storage address;
    socklen_t size = sizeof address;
    if (get(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        return false;
    }
    host->setAddress(reinterpret_cast<sockaddr*>(&address));
    *port =
        ntohs(address.ss_family == AF_INET6 ? reinterpret_cast<sockaddr_in6*>(&address)->sin6_port
                                            : reinterpret_cast<sockaddr_in*>(&address)->sin_port);
    return true;
}

std::string peerName(int socket) {
    QHostAddress host;
    uint16_t port = 0;
    if (!endPoint(getpeername, socket, &host, &port)) {
        return "?";
    }
    return host.toString().toStdString() + ":" + std::to_string(port);
}

}  // namespace

Peer::Peer(int descriptor, uint64_t number, const PeerContext& common, QObject* parent)
    : QObject(parent),
      context(common),
      socket(descriptor),
      name(peerName(descriptor)),
      readable(descriptor, QSocketNotifier::Read),
      writable(descriptor, QSocketNotifier::Write),
      in(kInCapacity) {
    session.owner = number;
    QHostAddress local;
    if (endPoint(getsockname, descriptor, &local, &session.port)) {
        session.address = local.toIPv4Address();
    }
    fcntl(socket, F_SETFL, fcntl(socket, F_GETFL) | O_NONBLOCK);
    fcntl(socket, F_SETFD, FD_CLOEXEC);
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    writable.setEnabled(false);
    delay.setSingleShot(true);
    delay.setTimerType(Qt::PreciseTimer);
    pause.setSingleShot(true);
    pause.setTimerType(Qt::PreciseTimer);
    holdTime.setSingleShot(true);
    holdTime.setTimerType(Qt::PreciseTimer);
    clock.start();
    connect(&readable, &QSocketNotifier::activated, this, [this] { readSome(); });
    connect(&writable, &QSocketNotifier::activated, this, [this] { pump(); });
    connect(&pause, &QTimer::timeout, this, [this] { pump(); });
    connect(&holdTime, &QTimer::timeout, this, [this] { releaseHeld(); });
    connect(&delay, &QTimer::timeout, this, [this] {
        delayOver = true;
        serveRequests();
    });
}

Peer::~Peer() {
    close(false);
}

void Peer::close(bool hard) {
    if (socket < 0) {
        return;
    }
    readable.setEnabled(false);
    writable.setEnabled(false);
    delay.stop();
    pause.stop();
    holdTime.stop();
    out.clear();
    held.clear();
    if (hard) {
        const linger none = {1, 0};
        setsockopt(socket, SOL_SOCKET, SO_LINGER, &none, sizeof none);
    }
    ::close(socket);
    socket = -1;
    context.controller->disconnected(session);
    emit closed();
}

bool Peer::isBusy() const {
    return delay.isActive() || outBytes > kMaxOutBytes || held.size() >= kMaxHeld;
}

void Peer::readSome() {
    if (inSize == in.size()) {
        readable.setEnabled(false);  // until a request is served
        return;
    }
    const ssize_t got = recv(socket, in.data() + inSize, in.size() - inSize, 0);
    if (got > 0) {
        inSize += size_t(got);
        serveRequests();
    } else if (got == 0 || (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR)) {
        close(false);
    }
}

bool Peer::frameReady(size_t* size) const {
    if (inSize < kEncapHeaderSize) {
        return false;
    }
    *size = kEncapHeaderSize + get16(in, kEncapLengthAt);
    return *size <= inSize;
}

void Peer::serveRequests() {
    size_t size = 0;
    while (socket >= 0 && !isBusy() && frameReady(&size)) {
        if (context.delayMs > 0 && !delayOver) {
            delay.start(context.delayMs);
            return;
        }
        delayOver = false;
        serveFrame(size);
    }
    if (socket >= 0 && inSize < in.size() && !readable.isEnabled()) {
        readable.setEnabled(true);
    }
}

void Peer::serveFrame(size_t size) {
    Exchange& exchange = *context.exchange;
    context.controller->serve(session, ByteView(in.data(), size), exchange);
    answer(exchange);
    inSize -= size;
    std::memmove(in.data(), in.data() + size, inSize);
    if (exchange.closeTcp) {
        close(false);
    }
}

void Peer::answer(Exchange& exchange) {
    if (exchange.faults.empty()) {
        context.log->write(name, exchange, nullptr);
        if (!exchange.reply.empty()) {
            sendPlain(exchange.reply);
        }
        return;
    }
    Delivery delivery;
    applyFaults(exchange, &delivery);
    context.log->write(name, exchange, &delivery);
    if (delivery.holdMs > 0) {
        hold(delivery.holdMs, std::move(delivery.segments));
    } else {
        queue(std::move(delivery.segments));
    }
}

void Peer::hold(int ms, std::deque<Segment> segments) {
    held.emplace(clock.elapsed() + ms, std::move(segments));
    awaitHeld();
}

void Peer::awaitHeld() {
    if (!held.empty()) {
        holdTime.start(int(std::max<qint64>(held.begin()->first - clock.elapsed(), 0)));
    }
}

void Peer::releaseHeld() {
    while (!held.empty() && held.begin()->first <= clock.elapsed()) {
        std::deque<Segment> segments = std::move(held.begin()->second);
        held.erase(held.begin());
        queue(std::move(segments));
    }
    awaitHeld();
    serveRequests();
}

void Peer::sendPlain(const Bytes& reply) {
    size_t sent = 0;
    if (out.empty()) {
        const ssize_t now = send(socket, reply.data(), reply.size(), MSG_NOSIGNAL);
        sent = now > 0 ? size_t(now) : 0;
    }
    if (sent < reply.size()) {
        Segment rest;
        rest.bytes.assign(reply.begin() + long(sent), reply.end());
        queue({rest});
    }
}

void Peer::queue(std::deque<Segment> segments) {
    if (socket < 0) {
        return;
    }
    const bool idle = out.empty();
    for (Segment& segment : segments) {
        outBytes += segment.bytes.size();
        out.push_back(std::move(segment));
    }
    if (idle) {
        pump();
    }
}

void Peer::pump() {
    const bool wasBusy = isBusy();
    writable.setEnabled(false);
    while (socket >= 0 && !out.empty()) {
        Segment& front = out.front();
        if (front.waitMs > 0) {
            pause.start(front.waitMs);
            front.waitMs = 0;
            return;
        }
        if (!sendFront()) {
            return;
        }
    }
    if (wasBusy && !isBusy()) {
        serveRequests();
    }
}

bool Peer::sendFront() {
    Segment& front = out.front();
    while (outSent < front.bytes.size()) {
        const ssize_t now =
            send(socket, front.bytes.data() + outSent, front.bytes.size() - outSent, MSG_NOSIGNAL);
        if (now > 0) {
            outSent += size_t(now);
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            writable.setEnabled(true);
            return false;
        } else if (errno != EINTR) {
            close(false);
            return false;
        }
    }
    const AfterSegment after = front.after;
    outBytes -= front.bytes.size();
    outSent = 0;
    out.pop_front();
    if (after != AfterSegment::keep) {
        close(after == AfterSegment::reset);
        return false;
    }
    return true;
}

}  // namespace sim
