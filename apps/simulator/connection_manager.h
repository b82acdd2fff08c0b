#ifndef APPS_SIMULATOR_CONNECTION_MANAGER_H
#define APPS_SIMULATOR_CONNECTION_MANAGER_H

#include <utility>
#include <vector>

#include "apps/simulator/cip.h"

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
    uint64_t owner = 0;       ///< number of the TCP connection it was opened on
    int64_t timeoutMs = 0;    ///< without traffic
    int64_t lastMs = 0;       ///< of the latest traffic
    bool toDhpProxy = false;  ///< carries PCCC commands for a DH+ link, no requests
};

/// Forward Open, Forward Close, and the table of open connections. Time is the caller's monotonic
/// clock in milliseconds.
class ConnectionManager {
 public:
    /// At most `limit` connections at once. A `timeoutMs` above 0 takes the place of the time-out
    /// that an originator asks for. `paths` are accepted beside that of the message router.
    ConnectionManager(size_t limit, int64_t timeoutMs, std::vector<Bytes> paths = {})
        : m_limit(limit), m_timeoutMs(timeoutMs), m_paths(std::move(paths)) {}

    /// Whether the path is among those that were named to be accepted.
    bool accepts(ByteView path) const;

    /// Both append their reply data, also that of a refusal.
    CipStatus forwardOpen(uint64_t owner, ByteView data, int64_t nowMs, Bytes& reply);
    CipStatus forwardClose(ByteView data, int64_t nowMs, Bytes& reply);

    /// The connection that messages to this id travel on, marked as used now; null when there is
    /// none, when it has timed out, or when it belongs to another TCP connection.
    const CipConnection* use(uint32_t toTargetId, uint64_t owner, int64_t nowMs);

    /// Drops all connections of a TCP connection, or all there are.
    void release(uint64_t owner);
    void dropAll() { m_connections.clear(); }
    /// Open connections that have not timed out.
    size_t count(int64_t nowMs);

 private:
    void dropExpired(int64_t nowMs);
    const CipConnection* find(const ConnectionTriad& triad) const;

    const size_t m_limit;
    const int64_t m_timeoutMs;
    const std::vector<Bytes> m_paths;
    uint32_t m_lastId = 0x10000000;
    std::vector<CipConnection> m_connections;
};

/// Offset of connection serial number, vendor id and originator serial number in the request data.
const size_t kOpenTriadAt = 1 + 1 + 4 + 4;
const size_t kCloseTriadAt = 1 + 1;
/// Appends the data of a refused request: its triad, as far as it has one.
void putRefusedConnection(Bytes& reply, ByteView data, size_t triadAt);

}  // namespace sim

#endif
