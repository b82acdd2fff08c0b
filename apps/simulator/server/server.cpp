#include "apps/simulator/server/server.h"

#include <sys/socket.h>

#include <QNetworkDatagram>
#include <algorithm>
#include <cerrno>

namespace sim {

namespace {

const int kBacklog = 128;
/// How long no connection is taken after one could not be: nothing shows when one can be again.
const int kFullMs = 100;

/// The commands that need no session and no stream (Vol. 2, 2-4).
bool isAnsweredByUdp(uint16_t command) {
    return command == kListServices || command == kListIdentity || command == kListInterfaces;
}

}  // namespace

Server::Server(Controller& controller, RequestLog& log) {
    context.controller = &controller;
    context.log = &log;
    context.exchange = &exchange;
    setMaxPendingConnections(kBacklog);
    connect(&discovery, &QUdpSocket::readyRead, this, [this] { answerDatagrams(); });
    whileFull.setSingleShot(true);
    connect(&whileFull, &QTimer::timeout, this, [this] { acceptAgain(); });
}

Server::~Server() {
    closePeers(false);
}

bool Server::start(const QHostAddress& address, quint16 port, QString* problem) {
    if (!listen(address, port)) {
        *problem = QString("%1 port %2: %3").arg(address.toString()).arg(port).arg(errorString());
        return false;
    }
    boundAddress = address;
    boundPort = serverPort();
    // Qt's own way takes no further connection after one that met a full descriptor table, or tries
    // again without a pause.
    pauseAccepting();
    acceptor = std::make_unique<QSocketNotifier>(socketDescriptor(), QSocketNotifier::Read);
    connect(acceptor.get(), &QSocketNotifier::activated, this, [this] { acceptSome(); });
    return true;
}

bool Server::startDiscovery(QString* problem) {
    if (!discovery.bind(boundAddress, boundPort)) {
        *problem = QString("UDP port %1: %2").arg(boundPort).arg(discovery.errorString());
        return false;
    }
    return true;
}

void Server::down() {
    whileFull.stop();
    acceptor.reset();
    close();
    closePeers(false);
}

void Server::closePeers(bool hard) {
    const std::vector<std::unique_ptr<Peer>> leaving = std::move(peers);
    peers.clear();
    for (const std::unique_ptr<Peer>& peer : leaving) {
        peer->disconnect(this);
        peer->close(hard);
    }
}

void Server::acceptSome() {
    for (int i = 0; i < kBacklog; ++i) {
        const int socket = accept4(int(socketDescriptor()), nullptr, nullptr, SOCK_CLOEXEC);
        if (socket >= 0) {
            addPeer(socket);
            continue;
        }
        if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
            acceptor->setEnabled(false);
            whileFull.start(kFullMs);
        }
        return;
    }
}

void Server::acceptAgain() {
    if (acceptor) {
        acceptor->setEnabled(true);
    }
}

void Server::addPeer(int socket) {
    peers.push_back(std::make_unique<Peer>(socket, ++lastPeer, context, nullptr));
    Peer* peer = peers.back().get();
    connect(peer, &Peer::closed, this, [this, peer] {
        const auto found =
            std::find_if(peers.begin(), peers.end(),
                         [peer](const std::unique_ptr<Peer>& one) { return one.get() == peer; });
        if (found != peers.end()) {
            found->release()->deleteLater();
            peers.erase(found);
        }
        acceptAgain();
    });
}

void Server::answerDatagrams() {
    while (discovery.hasPendingDatagrams()) {
        const QNetworkDatagram datagram = discovery.receiveDatagram();
        const QByteArray bytes = datagram.data();
        const ByteView frame(reinterpret_cast<const uint8_t*>(bytes.constData()),
                             size_t(bytes.size()));
        if (frame.size() != kEncapHeaderSize || !isAnsweredByUdp(get16(frame, 0)) ||
            get16(frame, kEncapLengthAt) != 0) {
            continue;
        }
        EncapSession none;
        none.address = boundAddress.toIPv4Address();
        none.port = boundPort;
        context.controller->serve(none, frame, exchange);
        context.log->write("udp", exchange, nullptr);
        if (exchange.reply.empty()) {
            continue;
        }
        // From the address that it listens on; a reply made from the datagram leaves that to the
        // route.
        discovery.writeDatagram(QByteArray(reinterpret_cast<const char*>(exchange.reply.data()),
                                           int(exchange.reply.size())),
                                datagram.senderAddress(), quint16(datagram.senderPort()));
    }
}

}  // namespace sim
