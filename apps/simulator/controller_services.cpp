// The services of the controller: message-router requests, and where each goes.

#include "apps/simulator/controller.h"
#include "apps/simulator/execute_pccc.h"
#include "apps/simulator/symbol_object.h"
#include "apps/simulator/unconnected_send.h"

namespace sim {

namespace {

bool isTagService(uint8_t service) {
    return service == kReadTag || service == kWriteTag;
}

bool isKnownService(uint8_t service) {
    return isTagService(service) || service == kForwardOpen || service == kForwardClose ||
           service == kExecutePccc;
}

bool isConnectionManager(const RequestPath& path) {
    return path.classId == kConnectionManagerClass && path.instanceId == 1;
}

bool isPcccRequest(uint8_t service, const RequestPath& path) {
    return service == kExecutePccc && path.classId == kPcccClass && path.instanceId == 1;
}

/// Reads the path of a request for a service that there is.
CipStatus readPath(const CipRequest& request, RequestPath& path) {
    const bool readable = !request.pathTooLong && parseRequestPath(request.path, path);
    if (!isKnownService(request.service)) {
        return kServiceNotSupported;
    }
    if (!readable) {
        return request.pathTooLong ? kPathSizeInvalid : kPathSegmentError;
    }
    return kSuccess;
}

}  // namespace

/// The request inside an Unconnected Send takes the place of the request.
CipStatus Controller::unwrap(CipRequest& request, Exchange& exchange) const {
    if (request.service != kUnconnectedSend || request.pathTooLong ||
        !parseRequestPath(request.path, exchange.path) || !isConnectionManager(exchange.path)) {
        return kSuccess;
    }
    UnconnectedSend wrapped;
    const CipStatus status = decodeUnconnectedSend(request.data, wrapped);
    if (!status.ok()) {
        return status;
    }
    exchange.unconnectedSend = true;
    exchange.route = wrapped.route;
    if (!wrapped.route.empty() && !m_connections.accepts(wrapped.route)) {
        return CipStatus(kConnectionFailure, kPortNotAvailable);
    }
    CipRequest embedded;
    if (!decodeCipRequest(wrapped.message, embedded)) {
        return kNotEnoughData;
    }
    request = embedded;
    return kSuccess;
}

CipStatus Controller::execute(const EncapSession& session, CipRequest request, Exchange& exchange,
                              Bytes& data) {
    CipStatus status = unwrap(request, exchange);
    exchange.service = request.service;
    if (status.ok()) {
        status = readPath(request, exchange.path);
    }
    if (status.ok() && isPcccRequest(request.service, exchange.path)) {
        status = decodePcccRequest(request.data, exchange);
    }
    selectFaults(exchange);
    if (const Fault* fault = exchange.fault(FaultKind::status)) {
        return fault->parameter2 < 0
                   ? CipStatus(uint8_t(fault->parameter))
                   : CipStatus(uint8_t(fault->parameter), uint16_t(fault->parameter2));
    }
    if (!status.ok() && exchange.service == kUnconnectedSend && status.hasExtended) {
        put8(data, uint8_t(exchange.route.size() / 2));  // remaining path size: all of it
    }
    return status.ok() ? executeService(session, request, exchange, data) : status;
}

CipStatus Controller::executeService(const EncapSession& session, const CipRequest& request,
                                     Exchange& exchange, Bytes& data) {
    if (isTagService(request.service)) {
        return executeTagService(request, exchange, data);
    }
    if (request.service == kExecutePccc) {
        return executeObjectService(request, exchange, data);
    }
    if (!isConnectionManager(exchange.path)) {
        return kPathDestinationUnknown;
    }
    return request.service == kForwardOpen
               ? executeForwardOpen(session, request, exchange, data)
               : m_connections.forwardClose(request.data, m_clock(), data);
}

/// The service whose meaning depends on the class.
CipStatus Controller::executeObjectService(const CipRequest& request, Exchange& exchange,
                                           Bytes& data) {
    if (exchange.hasPccc) {
        putBytes(data, exchange.requestor);
        answerCommand(exchange, data);
        return kSuccess;
    }
    if (exchange.path.classId == kSymbolClass && exchange.path.instanceId == 0) {
        return listSymbolInstances(m_tags, request.data, data);
    }
    return kPathDestinationUnknown;
}

CipStatus Controller::decodePcccRequest(ByteView data, Exchange& exchange) {
    ExecutePcccRequest request;
    const CipStatus status = decodeExecutePccc(data, request);
    if (!status.ok()) {
        return status;
    }
    if (!decodePccc(request.command, m_files, exchange.pccc)) {
        return kNotEnoughData;
    }
    exchange.requestor = request.requestor;
    exchange.hasPccc = true;
    return kSuccess;
}

CipStatus Controller::executeTagService(const CipRequest& request, Exchange& exchange,
                                        Bytes& data) {
    if (!exchange.path.isSymbolic()) {
        return kPathDestinationUnknown;
    }
    if (request.service == kReadTag) {
        return readTag(m_tags, m_settings.tags, exchange.path, request.data, data, exchange.access);
    }
    ByteReader reader(request.data);
    if (reader.skip(2 + 2)) {  // type, count
        exchange.written = reader.rest();
    }
    return writeTag(m_tags, m_settings.tags, exchange.path, request.data, exchange.access);
}

CipStatus Controller::executeForwardOpen(const EncapSession& session, const CipRequest& request,
                                         const Exchange& exchange, Bytes& data) {
    if (const Fault* fault = exchange.fault(FaultKind::refuseOpen)) {
        putRefusedConnection(data, request.data, kOpenTriadAt);
        return CipStatus(kConnectionFailure, uint16_t(fault->parameter));
    }
    return m_connections.forwardOpen(session.owner, request.data, m_clock(), data);
}

void Controller::answerCommand(Exchange& exchange, Bytes& reply) {
    if (const Fault* fault = exchange.fault(FaultKind::pcccStatus)) {
        exchange.pccc.file = nullptr;
        exchange.pccc.status.sts = uint8_t(fault->parameter);
        exchange.pccc.status.ext = fault->parameter2 < 0 ? 0 : uint8_t(fault->parameter2);
    }
    answerPccc(exchange.pccc, reply);
}

}  // namespace sim
