#ifndef APPS_SIMULATOR_SERVER_PEER_H
#define APPS_SIMULATOR_SERVER_PEER_H

#include <QElapsedTimer>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <deque>
#include <map>
#include <string>

#include "apps/simulator/faults/delivery.h"
#include "apps/simulator/objects/controller.h"
#include "apps/simulator/server/request_log.h"

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
    Peer(int descriptor, uint64_t number, const PeerContext& common, QObject* parent);
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
    /// Keeps an answer back for so long.
    void hold(int ms, std::deque<Segment> segments);
    void awaitHeld();
    void releaseHeld();
    void sendPlain(const Bytes& reply);
    void queue(std::deque<Segment> segments);
    void pump();
    /// False when the socket took no more for now, or is closed.
    bool sendFront();
    bool isBusy() const;

    const PeerContext& context;
    int socket;
    EncapSession session;
    std::string name;
    QSocketNotifier readable;
    QSocketNotifier writable;
    QTimer delay;     ///< runs while the controller works on the front request
    QTimer pause;     ///< runs before the front segment
    QTimer holdTime;  ///< runs until the first held answer is due
    QElapsedTimer clock;

    Bytes in;
    size_t inSize = 0;  ///< bytes of in that are in use
    std::deque<Segment> out;
    size_t outSent = 0;  ///< bytes of the front segment that are out
    size_t outBytes = 0;
    std::multimap<qint64, std::deque<Segment>> held;  ///< by the time of the clock they are due
    bool delayOver = false;
};

}  // namespace sim

#endif
