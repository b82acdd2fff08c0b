#ifndef APPS_SIMULATOR_CONTROLLER_H
#define APPS_SIMULATOR_CONTROLLER_H

#include <cstdint>
#include <functional>

#include "apps/simulator/connection_manager.h"
#include "apps/simulator/data_table.h"
#include "apps/simulator/exchange.h"
#include "apps/simulator/identity.h"
#include "apps/simulator/tag_table.h"

namespace sim {

struct ControllerSettings {
    size_t connections = 16;
    /// Above 0: idle connections are dropped after this time, whatever their originators ask for.
    int64_t connectionTimeoutMs = 0;
    /// Connection and route paths that are accepted beside that of the message router.
    std::vector<Bytes> paths;
    TagBehaviour tags;
};

/// The encapsulation session of one TCP connection.
struct EncapSession {
    uint64_t owner = 0;   ///< number of the TCP connection, unique as long as the program runs
    uint32_t handle = 0;  ///< 0 as long as none is registered
    /// Where the peer reaches the controller, for ListIdentity; IPv4 in host order.
    uint32_t address = 0;
    uint16_t port = 0;
};

/// The controller behind its sockets: takes one request frame, gives back one reply frame. Knows no
/// socket and no timer; the clock is handed in. One thread.
class Controller {
 public:
    /// Monotonic milliseconds.
    using Clock = std::function<int64_t()>;

    /// `tags`, `files` and `faults` have to outlive the controller.
    Controller(const ControllerSettings& settings, TagTable& tags, DataTable& files,
               FaultPlan& faults, Clock clock);

    /// Serves the request `frame`: a header and as many bytes as it announces. Leaves the answer,
    /// before any fault that distorts it, and all that is known of the request in `exchange`.
    void serve(EncapSession& session, ByteView frame, Exchange& exchange);
    /// The TCP connection is gone, and its CIP connections with it.
    void disconnected(const EncapSession& session) { m_connections.release(session.owner); }
    /// Drops all CIP connections without a word to their originators.
    void dropConnections() { m_connections.dropAll(); }

 private:
    void dispatch(EncapSession& session, const EncapHeader& header, ByteView body,
                  Exchange& exchange);
    void registerSession(EncapSession& session, ByteView body, Exchange& exchange);
    void list(const EncapSession& session, ByteView body, Exchange& exchange);
    void sendRRData(const EncapSession& session, ByteView body, Exchange& exchange);
    void sendUnitData(const EncapSession& session, ByteView body, Exchange& exchange);
    void answerCip(const EncapSession& session, const CommonPacket& packet, const Bytes& address,
                   const uint16_t* sequence, ByteView request, Exchange& exchange);
    void answerDhp(const CommonPacket& packet, const Bytes& address, uint16_t sequence,
                   ByteView message, Exchange& exchange);
    CipStatus unwrap(CipRequest& request, Exchange& exchange) const;
    CipStatus execute(const EncapSession& session, CipRequest request, Exchange& exchange,
                      Bytes& data);
    CipStatus executeService(const EncapSession& session, const CipRequest& request,
                             Exchange& exchange, Bytes& data);
    CipStatus executeObjectService(const CipRequest& request, Exchange& exchange, Bytes& data);
    CipStatus decodePcccRequest(ByteView data, Exchange& exchange);
    /// Carries the PCCC command out, unless a fault refuses it, and appends its reply.
    static void answerCommand(Exchange& exchange, Bytes& reply);
    CipStatus executeTagService(const CipRequest& request, Exchange& exchange, Bytes& data);
    CipStatus executeForwardOpen(const EncapSession& session, const CipRequest& request,
                                 const Exchange& exchange, Bytes& data);
    void selectFaults(Exchange& exchange);

    const ControllerSettings m_settings;
    TagTable& m_tags;
    DataTable& m_files;
    FaultPlan& m_faults;
    const Clock m_clock;
    const Identity m_identity;
    ConnectionManager m_connections;
    uint32_t m_lastHandle = 0;
    Bytes m_data;  ///< reply data of the service in progress
    Bytes m_addressItem;
};

}  // namespace sim

#endif
