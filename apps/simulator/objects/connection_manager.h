#ifndef APPS_SIMULATOR_OBJECTS_CONNECTION_MANAGER_H
#define APPS_SIMULATOR_OBJECTS_CONNECTION_MANAGER_H

#include <utility>
#include <vector>

#include "apps/simulator/wire/cip.h"

namespace sim {

/// What identifies a connection for its originator (CIP Networks Library Vol. 1, 3-5.5).
struct ConnectionTriad {
    uint16_t serial = 0;
    uint16_t vendor = 0;
    uint32_t originatorSerial = 0;
    bool operator==(const ConnectionTriad& other) const {
        return serial == other.serial && vendor == other.vendor &&
               originatorSerial == other.originatorSerial;
    }
};

/// One open class 3 connection.
struct CipConnection {
    uint32_t toTargetId = 0;      ///< O->T, chosen here
    uint32_t toOriginatorId = 0;  ///< T->O, chosen by the originator
    ConnectionTriad triad;
    /// Bytes that a message may have in each direction, its sequence count included.
    size_t toTargetSize = 0;
    size_t toOriginatorSize = 0;
    uint64_t owner = 0;         ///< number of the TCP connection it was opened on
    int64_t timeoutMs = 0;      ///< without traffic, once there was some
    int64_t lastMs = 0;         ///< of the latest traffic
    int64_t limitMs = 0;        ///< what may pass since then
    bool toDhpProxy = false;    ///< carries PCCC commands for a DH+ link, no requests
    uint16_t lastSequence = 0;  ///< of the latest message
    Bytes lastAnswer;           ///< to it, after the encapsulation header; empty before the first
};

/// What the size of a connection counts: the sequence count, the head of a reply, and a value
/// after its type. Less is no use; more does not fit the field.
const size_t kLeastConnectionSize = 2 + 4 + 2;
const size_t kLargestConnectionSize = 0x1FF;

struct ConnectionSettings {
    size_t limit = 16;  ///< connections at once
    /// Above 0: idle connections are dropped after this time, regardless of the requested time-out.
    int64_t timeoutMs = 0;
    /// The most that a connection is granted, regardless of the requested size.
    size_t largestSize = kLargestConnectionSize;
    /// A connection outlives the TCP connection it was opened on, until it times out.
    bool keep = false;
    /// Connection and route paths that are accepted beside that of the message router.
    std::vector<Bytes> paths;
};

/// Forward Open, Forward Close, and the table of open connections. Time is the caller's monotonic
/// clock in milliseconds.
class ConnectionManager {
 public:
    explicit ConnectionManager(ConnectionSettings given) : settings(std::move(given)) {}

    /// Whether the path is among those that were named to be accepted.
    bool accepts(ByteView path) const;

    /// Both append their reply data, also that of a refusal.
    CipStatus forwardOpen(uint64_t owner, ByteView data, int64_t nowMs, Bytes* reply);
    CipStatus forwardClose(ByteView data, int64_t nowMs, Bytes* reply);

    /// The connection that messages to this id travel on, marked as used now; null when there is
    /// none, when it has timed out, or when it belongs to another TCP connection.
    const CipConnection* use(uint32_t toTargetId, uint64_t owner, int64_t nowMs);

    /// Keeps what a message was answered with, as long as its connection exists.
    void remember(uint32_t toTargetId, uint16_t sequence, ByteView answer);

    /// A TCP connection has ended: its connections go with it, unless the settings keep them. They
    /// are of no use to anybody then, but count until they time out or are closed.
    void release(uint64_t owner);
    /// Drops all there are.
    void dropAll() { connections.clear(); }
    /// Open connections that have not timed out.
    size_t count(int64_t nowMs);

 private:
    size_t granted(uint16_t parameters) const;
    void dropExpired(int64_t nowMs);
    CipConnection* find(uint32_t toTargetId);
    const CipConnection* find(const ConnectionTriad& triad) const;

    const ConnectionSettings settings;
    uint32_t lastId = 0x10000000;
    std::vector<CipConnection> connections;
};

/// Offset of connection serial number, vendor id and originator serial number in the request data.
const size_t kOpenTriadAt = 1 + 1 + 4 + 4;
const size_t kCloseTriadAt = 1 + 1;
/// Appends the data of a refused request: its triad, as far as it has one.
void putRefusedConnection(Bytes& reply, ByteView data, size_t triadAt);

}  // namespace sim

#endif
