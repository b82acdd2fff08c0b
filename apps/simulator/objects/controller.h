#ifndef APPS_SIMULATOR_OBJECTS_CONTROLLER_H
#define APPS_SIMULATOR_OBJECTS_CONTROLLER_H

#include <cstdint>
#include <functional>

#include "apps/simulator/faults/exchange.h"
#include "apps/simulator/objects/connection_manager.h"
#include "apps/simulator/objects/identity.h"
#include "apps/simulator/objects/symbol_object.h"
#include "apps/simulator/pccc/data_table.h"
#include "apps/simulator/tags/tag_table.h"

namespace sim {

struct ControllerSettings {
    ConnectionSettings connections;
    /// Otherwise there is no symbolic addressing: the tag services are not supported.
    bool servesTags = true;
    TagBehaviour tags;
    Identity identity;
    SymbolList symbols = SymbolList::all;
};

/// The encapsulation session of one TCP connection.
struct EncapSession {
    uint64_t owner = 0;   ///< number of the TCP connection, unique as long as the program runs
    uint32_t handle = 0;  ///< 0 as long as none is registered
    /// Where the peer reaches the controller, for ListIdentity; IPv4 in host order.
    uint32_t address = 0;
    uint16_t port = 0;
};

/// The controller without its sockets: takes one request frame, returns one reply frame. Knows no
/// socket and no timer; the clock is handed in. One thread.
class Controller {
 public:
    /// Monotonic milliseconds.
    using Clock = std::function<int64_t()>;

    /// The tables and the plan have to outlive the controller.
    Controller(const ControllerSettings& given, TagTable& tagTable, DataTable& dataTable,
               FaultPlan& faultPlan, Clock monotonicMs);

    /// Serves the request `frame`: a header and as many bytes as it announces. Leaves the answer,
    /// before any fault that distorts it, and all that is known of the request in `exchange`.
    void serve(EncapSession& session, ByteView frame, Exchange& exchange);
    /// The TCP connection is gone, and its CIP connections with it, unless the settings keep them.
    void disconnected(const EncapSession& session) { connections.release(session.owner); }
    /// Drops all CIP connections without a word to their originators.
    void dropConnections() { connections.dropAll(); }

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
    CipStatus unwrap(Exchange& exchange, CipRequest* request) const;
    CipStatus execute(const EncapSession& session, CipRequest request, Exchange& exchange,
                      Bytes* data);
    CipStatus executeService(const EncapSession& session, const CipRequest& request,
                             Exchange& exchange, Bytes* data);
    /// The services of the identity object and of the symbol class.
    CipStatus executeAttributeService(const CipRequest& request, const Exchange& exchange,
                                      Bytes* data);
    CipStatus executeObjectService(const CipRequest& request, Exchange& exchange, Bytes* data);
    CipStatus decodePcccRequest(ByteView data, Exchange& exchange);
    /// Carries the PCCC command out, unless a fault refuses it, and appends its reply of at most so
    /// many bytes.
    static void answerCommand(Exchange& exchange, size_t most, Bytes* reply);
    CipStatus executeTagService(const CipRequest& request, Exchange& exchange, Bytes* data);
    CipStatus executeForwardOpen(const EncapSession& session, const CipRequest& request,
                                 const Exchange& exchange, Bytes* data);
    void selectFaults(Exchange& exchange);

    const ControllerSettings settings;
    TagTable& tags;
    DataTable& files;
    FaultPlan& faults;
    const Clock clock;
    ConnectionManager connections;
    uint32_t lastHandle = 0;
    Bytes serviceData;  ///< reply data of the service in progress
    Bytes addressItem;
};

}  // namespace sim

#endif
