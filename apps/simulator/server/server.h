#ifndef APPS_SIMULATOR_SERVER_SERVER_H
#define APPS_SIMULATOR_SERVER_SERVER_H

#include <QHostAddress>
#include <QSocketNotifier>
#include <QTcpServer>
#include <QTimer>
#include <QUdpSocket>
#include <memory>
#include <vector>

#include "apps/simulator/server/peer.h"

namespace sim {

/// Listens for EtherNet/IP and keeps the TCP connections. Runs on the event loop of its thread.
class Server : private QTcpServer {
    Q_OBJECT

 public:
    /// Both outlive the server.
    Server(Controller& controller, RequestLog& log);
    ~Server() override;

    /// What the controller takes for every request from now on.
    void setDelay(int ms) { context.delayMs = ms; }

    /// Port 0 takes any free one. False with the reason in `problem`.
    bool start(const QHostAddress& address, quint16 port, QString* problem);
    /// Answers the list commands on the UDP port of the same number. False with the reason in
    /// `problem`.
    bool startDiscovery(QString* problem);
    quint16 port() const { return boundPort; }

    /// Out of reach: connections are refused and the open ones closed, until up().
    void down();
    bool up(QString* problem) { return isListening() || start(boundAddress, boundPort, problem); }
    /// Closes all TCP connections, with a RST when `hard`.
    void closePeers(bool hard);

 private:
    /// Takes the connections that wait, as far as there are descriptors for them.
    void acceptSome();
    void acceptAgain();
    void addPeer(int socket);
    void answerDatagrams();

    Exchange exchange;
    PeerContext context;
    QHostAddress boundAddress;
    quint16 boundPort = 0;
    std::unique_ptr<QSocketNotifier> acceptor;  ///< while it listens
    QTimer whileFull;                           ///< runs while there is no descriptor to be had
    QUdpSocket discovery;
    std::vector<std::unique_ptr<Peer>> peers;
    uint64_t lastPeer = 0;
};

}  // namespace sim

#endif
