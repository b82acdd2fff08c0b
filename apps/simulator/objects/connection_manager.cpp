#include "apps/simulator/objects/connection_manager.h"

#include <algorithm>

namespace sim {

namespace {

/// What a connection has at least until its first message (Vol. 1, 3-4.5.2): its originator may
/// need longer for that than for all later ones.
const int64_t kLeastFirstTimeoutMs = 10000;

/// The connection path that always leads somewhere: the message router, class 2, instance 1.
const uint8_t kRouterPath[] = {0x20, 0x02, 0x24, 0x01};
/// What a path to a DH+ proxy ends with: class A6, an instance for channel A and one for B,
/// connection point 1.
const uint8_t kDhpProxyA[] = {0x20, 0xA6, 0x24, 0x01, 0x2C, 0x01};
const uint8_t kDhpProxyB[] = {0x20, 0xA6, 0x24, 0x02, 0x2C, 0x01};

const uint8_t kTransportClassMask = 0x0F;
const uint8_t kTransportClass3 = 3;
/// Multipliers 4 << 0 to 4 << 7; greater ones are reserved.
const uint8_t kMaxTimeoutMultiplier = 7;
/// Fields of the network connection parameters (Vol. 1, 3-5.5.1.1).
const uint16_t kSizeMask = kLargestConnectionSize;
const uint16_t kOwnerAndTypeMask = 0xE000;
const uint16_t kPointToPoint = 0x4000;

bool takeTriad(ByteReader& reader, ConnectionTriad* triad) {
    return reader.take16(&triad->serial) && reader.take16(&triad->vendor) &&
           reader.take32(&triad->originatorSerial);
}

/// Forward Open request (Vol. 1, 3-5.5.2): priority/tick, ticks, O->T id, T->O id, triad, time-out
/// multiplier, 3 reserved, O->T RPI and parameters, T->O RPI and parameters, transport, path.
struct OpenRequest {
    uint32_t toTargetId = 0;
    uint32_t toOriginatorId = 0;
    ConnectionTriad triad;
    uint8_t multiplier = 0;
    uint32_t toTargetRpiUs = 0;
    uint32_t toOriginatorRpiUs = 0;
    uint16_t toTargetParameters = 0;
    uint16_t toOriginatorParameters = 0;
    uint8_t transport = 0;
    ByteView path;
};

CipStatus takePath(ByteReader& reader, uint8_t words, ByteView* path) {
    if (!reader.take(size_t(words) * 2, path)) {
        return kNotEnoughData;
    }
    return reader.left() == 0 ? kSuccess : kTooMuchData;
}

CipStatus decodeOpen(ByteView data, OpenRequest* request) {
    ByteReader reader(data);
    uint8_t words = 0;
    if (!reader.skip(1 + 1) || !reader.take32(&request->toTargetId) ||
        !reader.take32(&request->toOriginatorId) || !takeTriad(reader, &request->triad) ||
        !reader.take8(&request->multiplier) || !reader.skip(3) ||
        !reader.take32(&request->toTargetRpiUs) || !reader.take16(&request->toTargetParameters) ||
        !reader.take32(&request->toOriginatorRpiUs) ||
        !reader.take16(&request->toOriginatorParameters) || !reader.take8(&request->transport) ||
        !reader.take8(&words)) {
        return kNotEnoughData;
    }
    return takePath(reader, words, &request->path);
}

template <size_t N>
bool endsWith(ByteView path, const uint8_t (&end)[N]) {
    return path.size() >= N && std::equal(end, end + N, path.data() + (path.size() - N));
}

bool isRouterPath(ByteView path) {
    return path.size() == sizeof kRouterPath && endsWith(path, kRouterPath);
}

bool leadsToDhpProxy(ByteView path) {
    return endsWith(path, kDhpProxyA) || endsWith(path, kDhpProxyB);
}

size_t sizeOf(uint16_t parameters) {
    return parameters & kSizeMask;
}

/// What a connection of class 3 is in both directions, and of one owner.
bool isPointToPoint(uint16_t parameters) {
    return (parameters & kOwnerAndTypeMask) == kPointToPoint;
}

CipStatus checkOpen(const OpenRequest& request, bool isPathKnown) {
    if ((request.transport & kTransportClassMask) != kTransportClass3) {
        return CipStatus(kConnectionFailure, kTransportNotSupported);
    }
    if (!isPathKnown) {
        return CipStatus(kConnectionFailure, kPortNotAvailable);
    }
    if (request.multiplier > kMaxTimeoutMultiplier || !isPointToPoint(request.toTargetParameters) ||
        !isPointToPoint(request.toOriginatorParameters)) {
        return CipStatus(kConnectionFailure, kInvalidParameters);
    }
    if (sizeOf(request.toTargetParameters) < kLeastConnectionSize ||
        sizeOf(request.toOriginatorParameters) < kLeastConnectionSize) {
        return CipStatus(kConnectionFailure, kInvalidConnectionSize);
    }
    if (request.toTargetRpiUs == 0 || request.toOriginatorRpiUs == 0) {
        return CipStatus(kConnectionFailure, kIntervalNotSupported);
    }
    return kSuccess;
}

void putTriad(Bytes& reply, const ConnectionTriad& triad) {
    put16(reply, triad.serial);
    put16(reply, triad.vendor);
    put32(reply, triad.originatorSerial);
}

int64_t timeoutOf(const OpenRequest& request) {
    return (int64_t(4) << request.multiplier) * request.toTargetRpiUs / 1000;
}

}  // namespace

void putRefusedConnection(Bytes& reply, ByteView data, size_t triadAt) {
    ConnectionTriad triad;
    ByteReader reader(data);
    if (reader.skip(triadAt) && takeTriad(reader, &triad)) {
        putTriad(reply, triad);
        put8(reply, 0);  // remaining path size
        put8(reply, 0);  // reserved
    }
}

CipStatus ConnectionManager::forwardOpen(uint64_t owner, ByteView data, int64_t nowMs,
                                         Bytes* reply) {
    dropExpired(nowMs);
    OpenRequest request;
    CipStatus status = decodeOpen(data, &request);
    if (status.ok()) {
        status = checkOpen(request, isRouterPath(request.path) || accepts(request.path));
    }
    if (status.ok() && find(request.triad)) {
        status = CipStatus(kConnectionFailure, kConnectionInUse);
    }
    if (status.ok() && connections.size() >= settings.limit) {
        status = CipStatus(kConnectionFailure, kOutOfConnections);
    }
    if (!status.ok()) {
        putRefusedConnection(*reply, data, kOpenTriadAt);
        return status;
    }
    CipConnection connection;
    connection.toTargetId = ++lastId;
    connection.toOriginatorId = request.toOriginatorId;
    connection.triad = request.triad;
    connection.toTargetSize = granted(request.toTargetParameters);
    connection.toOriginatorSize = granted(request.toOriginatorParameters);
    connection.owner = owner;
    connection.timeoutMs = settings.timeoutMs > 0 ? settings.timeoutMs : timeoutOf(request);
    connection.lastMs = nowMs;
    connection.limitMs = settings.timeoutMs > 0
                             ? settings.timeoutMs
                             : std::max(connection.timeoutMs, kLeastFirstTimeoutMs);
    connection.toDhpProxy = leadsToDhpProxy(request.path);
    connections.push_back(connection);

    put32(*reply, connection.toTargetId);
    put32(*reply, connection.toOriginatorId);
    putTriad(*reply, connection.triad);
    put32(*reply, request.toTargetRpiUs);  // actual packet intervals: as asked for
    put32(*reply, request.toOriginatorRpiUs);
    put8(*reply, 0);  // application reply size
    put8(*reply, 0);  // reserved
    return kSuccess;
}

CipStatus ConnectionManager::forwardClose(ByteView data, int64_t nowMs, Bytes* reply) {
    dropExpired(nowMs);
    // Priority/tick, ticks, triad, path size in words, reserved, path (Vol. 1, 3-5.5.3).
    ByteReader reader(data);
    ConnectionTriad triad;
    uint8_t words = 0;
    ByteView path;
    CipStatus status = kNotEnoughData;
    if (reader.skip(1 + 1) && takeTriad(reader, &triad) && reader.take8(&words) && reader.skip(1)) {
        status = takePath(reader, words, &path);
    }
    const CipConnection* connection = find(triad);
    if (status.ok() && !connection) {
        status = CipStatus(kConnectionFailure, kTargetConnectionNotFound);
    }
    if (!status.ok()) {
        putRefusedConnection(*reply, data, kCloseTriadAt);
        return status;
    }
    connections.erase(connections.begin() + (connection - connections.data()));
    putTriad(*reply, triad);
    put8(*reply, 0);  // application reply size
    put8(*reply, 0);  // reserved
    return kSuccess;
}

const CipConnection* ConnectionManager::use(uint32_t toTargetId, uint64_t owner, int64_t nowMs) {
    dropExpired(nowMs);
    CipConnection* connection = find(toTargetId);
    if (!connection || connection->owner != owner) {
        return nullptr;
    }
    connection->lastMs = nowMs;
    connection->limitMs = connection->timeoutMs;
    return connection;
}

void ConnectionManager::remember(uint32_t toTargetId, uint16_t sequence, ByteView answer) {
    if (CipConnection* connection = find(toTargetId)) {
        connection->lastSequence = sequence;
        connection->lastAnswer.clear();
        putBytes(connection->lastAnswer, answer);
    }
}

size_t ConnectionManager::granted(uint16_t parameters) const {
    return std::min(sizeOf(parameters), settings.largestSize);
}

bool ConnectionManager::accepts(ByteView path) const {
    return std::any_of(settings.paths.begin(), settings.paths.end(), [path](const Bytes& one) {
        return one.size() == path.size() && std::equal(one.begin(), one.end(), path.data());
    });
}

void ConnectionManager::release(uint64_t owner) {
    if (settings.keep) {
        return;
    }
    connections.erase(
        std::remove_if(connections.begin(), connections.end(),
                       [owner](const CipConnection& one) { return one.owner == owner; }),
        connections.end());
}

size_t ConnectionManager::count(int64_t nowMs) {
    dropExpired(nowMs);
    return connections.size();
}

void ConnectionManager::dropExpired(int64_t nowMs) {
    connections.erase(std::remove_if(connections.begin(), connections.end(),
                                     [nowMs](const CipConnection& one) {
                                         return nowMs - one.lastMs > one.limitMs;
                                     }),
                      connections.end());
}

CipConnection* ConnectionManager::find(uint32_t toTargetId) {
    for (CipConnection& connection : connections) {
        if (connection.toTargetId == toTargetId) {
            return &connection;
        }
    }
    return nullptr;
}

const CipConnection* ConnectionManager::find(const ConnectionTriad& triad) const {
    for (const CipConnection& connection : connections) {
        if (connection.triad == triad) {
            return &connection;
        }
    }
    return nullptr;
}

}  // namespace sim
