#include "apps/simulator/server.h"

#include <QNetworkDatagram>
#include <algorithm>

namespace sim {

namespace {

const int kBacklog = 128;

}  // namespace

Server::Server(Controller& controller, RequestLog& log) {
    m_context.controller = &controller;
    m_context.log = &log;
    m_context.exchange = &m_exchange;
    setMaxPendingConnections(kBacklog);
    connect(&m_discovery, &QUdpSocket::readyRead, this, [this] { answerDatagrams(); });
}

Server::~Server() {
    closePeers(false);
}

bool Server::start(const QHostAddress& address, quint16 port, QString* error) {
    if (!listen(address, port)) {
        *error = QString("%1 port %2: %3").arg(address.toString()).arg(port).arg(errorString());
        return false;
    }
    m_address = address;
    m_port = serverPort();
    return true;
}

bool Server::startDiscovery(QString* error) {
    if (!m_discovery.bind(m_address, m_port)) {
        *error = QString("UDP port %1: %2").arg(m_port).arg(m_discovery.errorString());
        return false;
    }
    return true;
}

void Server::down() {
    close();
    closePeers(false);
}

void Server::closePeers(bool hard) {
    const std::vector<std::unique_ptr<Peer>> peers = std::move(m_peers);
    m_peers.clear();
    for (const std::unique_ptr<Peer>& peer : peers) {
        peer->disconnect(this);
        peer->close(hard);
    }
}

void Server::incomingConnection(qintptr socket) {
    m_peers.push_back(std::make_unique<Peer>(int(socket), ++m_lastPeer, m_context, nullptr));
    Peer* peer = m_peers.back().get();
    connect(peer, &Peer::closed, this, [this, peer] {
        const auto found =
            std::find_if(m_peers.begin(), m_peers.end(),
                         [peer](const std::unique_ptr<Peer>& one) { return one.get() == peer; });
        if (found != m_peers.end()) {
            found->release()->deleteLater();
            m_peers.erase(found);
        }
    });
}

void Server::answerDatagrams() {
    while (m_discovery.hasPendingDatagrams()) {
        const QNetworkDatagram datagram = m_discovery.receiveDatagram();
        const QByteArray bytes = datagram.data();
        const ByteView frame(reinterpret_cast<const uint8_t*>(bytes.constData()),
                             size_t(bytes.size()));
        if (get16(frame, 0) != kListIdentity || get16(frame, kEncapLengthAt) != 0 ||
            frame.size() != kEncapHeaderSize) {
            continue;
        }
        EncapSession none;
        none.address = m_address.toIPv4Address();
        none.port = m_port;
        m_context.controller->serve(none, frame, m_exchange);
        m_context.log->write("udp", m_exchange, nullptr);
        m_discovery.writeDatagram(datagram.makeReply(QByteArray(
            reinterpret_cast<const char*>(m_exchange.reply.data()), int(m_exchange.reply.size()))));
    }
}

}  // namespace sim
