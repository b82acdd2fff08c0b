#ifndef APPS_SIMULATOR_SERVER_H
#define APPS_SIMULATOR_SERVER_H

#include <QHostAddress>
#include <QTcpServer>
#include <QUdpSocket>
#include <memory>
#include <vector>

#include "apps/simulator/peer.h"

namespace sim {

/// Listens for EtherNet/IP and keeps the TCP connections. Runs on the event loop of its thread.
class Server : private QTcpServer {
    Q_OBJECT

 public:
    /// Both outlive the server.
    Server(Controller& controller, RequestLog& log);
    ~Server() override;

    /// What the controller takes for every request from now on.
    void setDelay(int ms) { m_context.delayMs = ms; }

    /// Port 0 takes any free one. False with the reason in `error`.
    bool start(const QHostAddress& address, quint16 port, QString* error);
    /// Answers ListIdentity on the UDP port of the same number. False with the reason in `error`.
    bool startDiscovery(QString* error);
    quint16 port() const { return m_port; }

    /// Out of reach: connections are refused and the open ones closed, until up().
    void down();
    bool up(QString* error) { return isListening() || start(m_address, m_port, error); }
    /// Closes all TCP connections, with a RST when `hard`.
    void closePeers(bool hard);

 private:
    void incomingConnection(qintptr socket) override;
    void answerDatagrams();

    Exchange m_exchange;
    PeerContext m_context;
    QHostAddress m_address;
    quint16 m_port = 0;
    QUdpSocket m_discovery;
    std::vector<std::unique_ptr<Peer>> m_peers;
    uint64_t m_lastPeer = 0;
};

}  // namespace sim

#endif
