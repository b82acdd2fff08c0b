// The services of the controller: message-router requests, and where each goes.

#include "apps/simulator/objects/controller.h"
#include "apps/simulator/objects/identity_object.h"
#include "apps/simulator/objects/symbol_object.h"
#include "apps/simulator/pccc/execute_pccc.h"
#include "apps/simulator/wire/unconnected_send.h"

namespace sim {

namespace {

/// Read Tag Fragmented has the code of Unconnected Send: only the path shows which of them it is.
bool isTagService(uint8_t service, const RequestPath& path) {
    return readsTag(service) ? service == kReadTag || path.classId == 0 : writesTag(service);
}

bool isIdentityService(uint8_t service, const RequestPath& path) {
    return path.classId == kIdentityClass &&
           (service == kGetAttributesAll || service == kGetAttributeList ||
            service == kGetAttributeSingle);
}

bool isSymbolService(uint8_t service, const RequestPath& path) {
    return path.classId == kSymbolClass && service == kGetInstanceAttributeList;
}

bool isKnownService(uint8_t service, const RequestPath& path) {
    return isTagService(service, path) || isIdentityService(service, path) ||
           isSymbolService(service, path) || service == kForwardOpen || service == kForwardClose ||
           service == kExecutePccc;
}

/// Whether the path names a tag or one of the objects that there are.
bool leadsToAnObject(const RequestPath& path) {
    switch (path.classId) {
        case 0:
        case kIdentityClass:
        case kMessageRouterClass:
        case kConnectionManagerClass:
        case kPcccClass:
        case kSymbolClass:
            return true;
        default:
            return false;
    }
}

bool isConnectionManager(const RequestPath& path) {
    return path.classId == kConnectionManagerClass && path.instanceId == 1;
}

bool isPcccRequest(uint8_t service, const RequestPath& path) {
    return service == kExecutePccc && path.classId == kPcccClass && path.instanceId == 1;
}

size_t roomBehind(size_t head, size_t room) {
    return room > head ? room - head : 0;
}

/// Reads the path of a request for a service that there is.
CipStatus readPath(const CipRequest& request, RequestPath* path) {
    const bool readable = !request.pathTooLong && parseRequestPath(request.path, path);
    if (readable && !leadsToAnObject(*path)) {
        return kPathDestinationUnknown;
    }
    if (!isKnownService(request.service, *path)) {
        return kServiceNotSupported;
    }
    if (!readable) {
        return request.pathTooLong ? kPathSizeInvalid : kPathSegmentError;
    }
    return kSuccess;
}

}  // namespace

/// The request inside an Unconnected Send takes the place of the request.
CipStatus Controller::unwrap(Exchange& exchange, CipRequest* request) const {
    if (request->service != kUnconnectedSend || request->pathTooLong ||
        !parseRequestPath(request->path, &exchange.path) || !isConnectionManager(exchange.path)) {
        return kSuccess;
    }
    UnconnectedSend wrapped;
    const CipStatus status = decodeUnconnectedSend(request->data, &wrapped);
    if (!status.ok()) {
        return status;
    }
    exchange.unconnectedSend = true;
    exchange.route = wrapped.route;
    if (!wrapped.route.empty() && !connections.accepts(wrapped.route)) {
        return CipStatus(kConnectionFailure, kPortNotAvailable);
    }
    CipRequest embedded;
    if (!decodeCipRequest(wrapped.message, &embedded)) {
        return kNotEnoughData;
    }
    *request = embedded;
    return kSuccess;
}

CipStatus Controller::execute(const EncapSession& session, CipRequest request, Exchange& exchange,
                              Bytes* data) {
    CipStatus status = unwrap(exchange, &request);
    exchange.service = request.service;
    if (status.ok()) {
        status = readPath(request, &exchange.path);
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
        put8(*data, uint8_t(exchange.route.size() / 2));  // remaining path size: all of it
    }
    return status.ok() ? executeService(session, request, exchange, data) : status;
}

CipStatus Controller::executeService(const EncapSession& session, const CipRequest& request,
                                     Exchange& exchange, Bytes* data) {
    if (isTagService(request.service, exchange.path)) {
        if (!settings.servesTags) {
            return kServiceNotSupported;
        }
        return executeTagService(request, exchange, data);
    }
    if (isIdentityService(request.service, exchange.path) ||
        isSymbolService(request.service, exchange.path)) {
        return executeAttributeService(request, exchange, data);
    }
    if (request.service == kExecutePccc) {
        return executeObjectService(request, exchange, data);
    }
    if (!isConnectionManager(exchange.path)) {
        return kPathDestinationUnknown;
    }
    return request.service == kForwardOpen ? executeForwardOpen(session, request, exchange, data)
                                           : connections.forwardClose(request.data, clock(), data);
}

CipStatus Controller::executeAttributeService(const CipRequest& request, const Exchange& exchange,
                                              Bytes* data) {
    const RequestPath& path = exchange.path;
    if (path.classId == kSymbolClass) {
        return getInstanceAttributeList(tags, settings.symbols, path.instanceId, request.data,
                                        exchange.room, data);
    }
    return path.instanceId == 1 ? getIdentityAttributes(settings.identity, request.service,
                                                        path.attributeId, request.data, data)
                                : kPathDestinationUnknown;
}

/// The service whose meaning depends on the class.
CipStatus Controller::executeObjectService(const CipRequest& request, Exchange& exchange,
                                           Bytes* data) {
    if (exchange.hasPccc) {
        putBytes(*data, exchange.requestor);
        answerCommand(exchange, roomBehind(exchange.requestor.size(), exchange.room), data);
        return kSuccess;
    }
    if (exchange.path.classId == kSymbolClass && exchange.path.instanceId == 0) {
        return listSymbolInstances(tags, settings.symbols, request.data, data);
    }
    return kPathDestinationUnknown;
}

CipStatus Controller::decodePcccRequest(ByteView data, Exchange& exchange) {
    ExecutePcccRequest request;
    const CipStatus status = decodeExecutePccc(data, &request);
    if (!status.ok()) {
        return status;
    }
    if (!decodePccc(request.command, files, &exchange.pccc)) {
        return kNotEnoughData;
    }
    exchange.requestor = request.requestor;
    exchange.hasPccc = true;
    return kSuccess;
}

CipStatus Controller::executeTagService(const CipRequest& request, Exchange& exchange,
                                        Bytes* data) {
    if (!exchange.path.isSymbolic()) {
        return kPathDestinationUnknown;
    }
    const TagRequest access = {request.service, exchange.path, request.data, exchange.room};
    if (readsTag(request.service)) {
        return readTag(tags, settings.tags, access, data, &exchange.access);
    }
    ByteReader reader(request.data);
    // Type and count; of a piece its offset.
    if (reader.skip(2 + 2 + (request.service == kWriteTagFragmented ? 4 : 0))) {
        exchange.written = reader.rest();
    }
    return writeTag(tags, settings.tags, access, &exchange.access);
}

CipStatus Controller::executeForwardOpen(const EncapSession& session, const CipRequest& request,
                                         const Exchange& exchange, Bytes* data) {
    if (const Fault* fault = exchange.fault(FaultKind::refuseOpen)) {
        putRefusedConnection(*data, request.data, kOpenTriadAt);
        return CipStatus(kConnectionFailure, uint16_t(fault->parameter));
    }
    return connections.forwardOpen(session.owner, request.data, clock(), data);
}

void Controller::answerCommand(Exchange& exchange, size_t most, Bytes* reply) {
    if (const Fault* fault = exchange.fault(FaultKind::pcccStatus)) {
        exchange.pccc.file = nullptr;
        exchange.pccc.status.sts = uint8_t(fault->parameter);
        exchange.pccc.status.ext = fault->parameter2 < 0 ? 0 : uint8_t(fault->parameter2);
    }
    answerPccc(most, &exchange.pccc, reply);
}

}  // namespace sim
