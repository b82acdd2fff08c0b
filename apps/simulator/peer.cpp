#include "apps/simulator/peer.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QHostAddress>
#include <cerrno>
#include <cstring>
#include <utility>

namespace sim {

namespace {

/// Two of the largest frames, so that one can come in while another is served.
const size_t kInCapacity = 2 * (kEncapHeaderSize + kEncapMaxBody);
/// A peer that does not read its answers gets no further ones beyond this.
const size_t kMaxOutBytes = 1 << 20;

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

Peer::Peer(int socket, uint64_t number, const PeerContext& context, QObject* parent)
    : QObject(parent),
      m_context(context),
      m_socket(socket),
      m_name(peerName(socket)),
      m_readable(socket, QSocketNotifier::Read),
      m_writable(socket, QSocketNotifier::Write),
      m_in(kInCapacity) {
    m_session.owner = number;
    QHostAddress local;
    if (endPoint(getsockname, socket, &local, &m_session.port)) {
        m_session.address = local.toIPv4Address();
    }
    fcntl(m_socket, F_SETFL, fcntl(m_socket, F_GETFL) | O_NONBLOCK);
    fcntl(m_socket, F_SETFD, FD_CLOEXEC);
    const int on = 1;
    setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    m_writable.setEnabled(false);
    m_delay.setSingleShot(true);
    m_delay.setTimerType(Qt::PreciseTimer);
    m_pause.setSingleShot(true);
    m_pause.setTimerType(Qt::PreciseTimer);
    connect(&m_readable, &QSocketNotifier::activated, this, [this] { readSome(); });
    connect(&m_writable, &QSocketNotifier::activated, this, [this] { pump(); });
    connect(&m_pause, &QTimer::timeout, this, [this] { pump(); });
    connect(&m_delay, &QTimer::timeout, this, [this] {
        m_delayOver = true;
        serveRequests();
    });
}

Peer::~Peer() {
    close(false);
}

void Peer::close(bool hard) {
    if (m_socket < 0) {
        return;
    }
    m_readable.setEnabled(false);
    m_writable.setEnabled(false);
    m_delay.stop();
    m_pause.stop();
    m_out.clear();
    if (hard) {
        const linger none = {1, 0};
        setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &none, sizeof none);
    }
    ::close(m_socket);
    m_socket = -1;
    m_context.controller->disconnected(m_session);
    emit closed();
}

bool Peer::isBusy() const {
    return m_delay.isActive() || m_outBytes > kMaxOutBytes;
}

void Peer::readSome() {
    if (m_inSize == m_in.size()) {
        m_readable.setEnabled(false);  // until a request is served
        return;
    }
    const ssize_t got = recv(m_socket, m_in.data() + m_inSize, m_in.size() - m_inSize, 0);
    if (got > 0) {
        m_inSize += size_t(got);
        serveRequests();
    } else if (got == 0 || (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR)) {
        close(false);
    }
}

bool Peer::frameReady(size_t* size) const {
    if (m_inSize < kEncapHeaderSize) {
        return false;
    }
    *size = kEncapHeaderSize + get16(m_in, kEncapLengthAt);
    return *size <= m_inSize;
}

void Peer::serveRequests() {
    size_t size = 0;
    while (m_socket >= 0 && !isBusy() && frameReady(&size)) {
        if (m_context.delayMs > 0 && !m_delayOver) {
            m_delay.start(m_context.delayMs);
            return;
        }
        m_delayOver = false;
        serveFrame(size);
    }
    if (m_socket >= 0 && m_inSize < m_in.size() && !m_readable.isEnabled()) {
        m_readable.setEnabled(true);
    }
}

void Peer::serveFrame(size_t size) {
    Exchange& exchange = *m_context.exchange;
    m_context.controller->serve(m_session, ByteView(m_in.data(), size), exchange);
    answer(exchange);
    m_inSize -= size;
    std::memmove(m_in.data(), m_in.data() + size, m_inSize);
    if (exchange.closeTcp) {
        close(false);
    }
}

void Peer::answer(Exchange& exchange) {
    if (exchange.faults.empty()) {
        m_context.log->write(m_name, exchange, nullptr);
        if (!exchange.reply.empty()) {
            sendPlain(exchange.reply);
        }
        return;
    }
    Delivery delivery;
    applyFaults(exchange, delivery);
    m_context.log->write(m_name, exchange, &delivery);
    if (delivery.holdMs > 0) {
        QTimer::singleShot(delivery.holdMs, Qt::PreciseTimer, this,
                           [this, segments = std::move(delivery.segments)] { queue(segments); });
    } else {
        queue(std::move(delivery.segments));
    }
}

void Peer::sendPlain(const Bytes& reply) {
    size_t sent = 0;
    if (m_out.empty()) {
        const ssize_t now = send(m_socket, reply.data(), reply.size(), MSG_NOSIGNAL);
        sent = now > 0 ? size_t(now) : 0;
    }
    if (sent < reply.size()) {
        Segment rest;
        rest.bytes.assign(reply.begin() + long(sent), reply.end());
        queue({rest});
    }
}

void Peer::queue(std::deque<Segment> segments) {
    if (m_socket < 0) {
        return;
    }
    const bool idle = m_out.empty();
    for (Segment& segment : segments) {
        m_outBytes += segment.bytes.size();
        m_out.push_back(std::move(segment));
    }
    if (idle) {
        pump();
    }
}

void Peer::pump() {
    const bool wasBusy = isBusy();
    m_writable.setEnabled(false);
    while (m_socket >= 0 && !m_out.empty()) {
        Segment& front = m_out.front();
        if (front.waitMs > 0) {
            m_pause.start(front.waitMs);
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
    Segment& front = m_out.front();
    while (m_outSent < front.bytes.size()) {
        const ssize_t now = send(m_socket, front.bytes.data() + m_outSent,
                                 front.bytes.size() - m_outSent, MSG_NOSIGNAL);
        if (now > 0) {
            m_outSent += size_t(now);
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            m_writable.setEnabled(true);
            return false;
        } else if (errno != EINTR) {
            close(false);
            return false;
        }
    }
    const AfterSegment after = front.after;
    m_outBytes -= front.bytes.size();
    m_outSent = 0;
    m_out.pop_front();
    if (after != AfterSegment::keep) {
        close(after == AfterSegment::reset);
        return false;
    }
    return true;
}

}  // namespace sim
