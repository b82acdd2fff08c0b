#ifndef APPS_SIMULATOR_PEER_H
#define APPS_SIMULATOR_PEER_H

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <deque>
#include <string>

#include "apps/simulator/controller.h"
#include "apps/simulator/delivery.h"
#include "apps/simulator/request_log.h"

namespace sim {

/// What all peers of a server share; everything outlives them.
struct PeerContext {
    Controller* controller = nullptr;
    RequestLog* log = nullptr;
    Exchange* exchange = nullptr;  ///< buffers of the request in progress
    int delayMs = 0;               ///< what the controller takes for a request
};

/// One TCP connection: takes requests off the socket, has them served one after the other, and
/// sends the answers. The socket is read and written directly, since the way through a buffering
/// socket class would cost more than serving the request.
class Peer : public QObject {
    Q_OBJECT

 public:
    /// Takes over the connected socket. `number` is unique in this run.
    Peer(int socket, uint64_t number, const PeerContext& context, QObject* parent);
    ~Peer() override;

    /// Closes the connection, with a RST when `hard`.
    void close(bool hard);

 signals:
    /// The connection is gone; the object may be deleted later.
    void closed();

 private:
    void readSome();
    void serveRequests();
    bool frameReady(size_t* size) const;
    void serveFrame(size_t size);
    void answer(Exchange& exchange);
    void sendPlain(const Bytes& reply);
    void queue(std::deque<Segment> segments);
    void pump();
    /// False when the socket took no more for now, or is closed.
    bool sendFront();
    bool isBusy() const;

    const PeerContext& m_context;
    int m_socket;
    EncapSession m_session;
    std::string m_name;
    QSocketNotifier m_readable;
    QSocketNotifier m_writable;
    QTimer m_delay;  ///< runs while the controller works on the front request
    QTimer m_pause;  ///< runs before the front segment

    Bytes m_in;
    size_t m_inSize = 0;  ///< bytes of m_in that hold something
    std::deque<Segment> m_out;
    size_t m_outSent = 0;  ///< bytes of the front segment that are out
    size_t m_outBytes = 0;
    bool m_delayOver = false;
};

}  // namespace sim

#endif
