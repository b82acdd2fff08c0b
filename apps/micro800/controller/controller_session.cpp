#include "apps/micro800/controller/controller_session.h"

#include <QElapsedTimer>
#include <algorithm>
#include <random>

#include "apps/micro800/base/host_lookup.h"
#include "apps/micro800/base/problem.h"
#include "eip/cip/cip_error.h"
#include "eip/cip/logix_messages.h"
#include "eip/cip/logix_tag_read.h"
#include "eip/plc_connection.h"

namespace {

const int kTypeSize = 2;
const int kWordSize = 2;
const int kGeneralStatusMask = 0xFF;
const int kExtendedStatusMask = 0xFFFF;
const double kNsPerUs = 1000;

/// What the client recorded.
QString recordedError() {
    return QLatin1String(cip_err_msg());
}

/// A message-router reply inside a connected data item, measured.
struct ReplyView {
    const _MR_Reply* head = nullptr;
    const unsigned char* data = nullptr;  ///< after head and additional status
    int size = 0;                         ///< bytes of the data
};

ReplyView viewReply(const _Eip_Item* item) {
    ReplyView view;
    view.head = _GetService_Reply(item, 0);
    if (view.head) {
        const int headSize = kMRReplyHeadSize + kWordSize * view.head->additionalStatusSize;
        view.data = reinterpret_cast<const unsigned char*>(view.head) + headSize;
        view.size = _GetService_ReplySize(item, 0) - headSize;
    }
    return view;
}

/// What the client recorded of a read that failed.
void takeFailure(TagReply* reply) {
    const bool refused = cip_err_type() == CIP_ERR_AB;
    reply->kind = refused ? TagReply::Kind::kRefused : TagReply::Kind::kNone;
    reply->status = refused ? cip_errno() & kGeneralStatusMask : 0;
    reply->extended = refused ? cip_ext_errno() & kExtendedStatusMask : 0;
    reply->error = recordedError();
}

/// A type that the plugin could not decode is told here all the same.
void takeReadReply(const _Eip_Item* item, TagReply* reply) {
    const ReplyView view = viewReply(item);
    if (!view.head || view.head->service != (LGX_SERVICE_READ_TAG | kReplyServiceBit)) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        reply->error = recordedError();
        return;
    }
    if (_GetLGXStatusWord(view.head) != 0) {
        CIPERROR(CIP_ERR_AB, _GetLGXStatusWord(view.head), _GetExtendedStatus(view.head));
        takeFailure(reply);
        return;
    }
    reply->kind = TagReply::Kind::kValue;
    reply->type = view.data[0] | view.data[1] << 8;
    reply->data = QByteArray(reinterpret_cast<const char*>(view.data) + kTypeSize,
                             std::max(view.size - kTypeSize, 0));
}

}  // namespace

ControllerSession::ControllerSession(const Connection& wanted, const TraceSink& trace)
    : endpoint(wanted), transport(trace), session(nullptr, DeleteSession) {
    const auto timeoutMs = static_cast<unsigned long>(endpoint.timeoutMs);
    session.reset(NewSession(timeoutMs, &transport));
}

ControllerSession::~ControllerSession() {
    close();
}

bool ControllerSession::failed() {
    text = recordedError();
    return false;
}

QString ControllerSession::endpointText() const {
    return QStringLiteral("%1 port %2").arg(endpoint.host).arg(endpoint.port);
}

bool ControllerSession::connect(const QString& address) {
    const auto timeoutMs = static_cast<unsigned long>(endpoint.timeoutMs);
    if (transport.connect(address.toLatin1().constData(), endpoint.port, timeoutMs)) {
        return true;
    }
    text = transport.lastError();
    return false;
}

bool ControllerSession::identify(CipIdentity* identity) {
    ++requestCount;
    const cip::MallocPtr<_Encap_Header> reply(_ListIdentity(session.get()));
    return (reply && DecodeIdentity(reply.get(), identity)) || failed();
}

bool ControllerSession::registerSession() {
    ++requestCount;
    isRegistered = _RegisterSession(session.get()) == 0;
    return isRegistered || failed();
}

bool ControllerSession::openConnection() {
    ++requestCount;
    // No panel and no other program has the same.
    std::random_device random;
    const uint32_t originatorSerial = random();
    connection = openPlcConnection(session.get(), originatorSerial, nullptr, 0);
    return connection || failed();
}

bool ControllerSession::openUnconnected(QString* problem) {
    QString address;
    if (!lookUpHost(endpoint.host, &address, problem)) {
        return false;
    }
    if (!connect(address)) {
        return fail(problem,
                    QStringLiteral("nothing answers at %1: %2; check address, port and cable, and "
                                   "that the controller has power")
                        .arg(endpointText(), text));
    }
    return registerSession() ||
           fail(problem, QStringLiteral("%1 opens no session: %2; 'micro800 doctor --host %3' says "
                                        "what it means")
                             .arg(endpointText(), text, endpoint.host));
}

bool ControllerSession::open(QString* problem) {
    return openUnconnected(problem) &&
           (openConnection() ||
            fail(problem, QStringLiteral("%1 opens no connection: %2; 'micro800 doctor --host %3' "
                                         "says what it means")
                              .arg(endpointText(), text, endpoint.host)));
}

void ControllerSession::close() {
    session->timeoutMs = std::min(session->timeoutMs, kFarewellMs);
    if (connection) {
        _Forward_Close(connection);
        connection = nullptr;
    }
    if (isRegistered) {
        _UnRegisterSession(session.get());
        isRegistered = false;
    }
    transport.disconnect();
    session->timeoutMs = static_cast<uint32_t>(endpoint.timeoutMs);
}

/// Sends one request over the connection; a reply that came is in `item` and still to be judged.
TagReply ControllerSession::exchange(const void* request, int size,
                                     cip::MallocPtr<_Eip_Item>* item) {
    TagReply reply;
    item->reset();
    if (!request || !connection) {
        reply.error = recordedError();
        return reply;
    }
    QElapsedTimer clock;
    clock.start();
    ++requestCount;
    reply.requests = 1;
    item->reset(_ConnectedSend(session.get(), connection, request, size));
    reply.microseconds = static_cast<double>(clock.nsecsElapsed()) / kNsPerUs;
    if (!*item) {
        reply.error = recordedError();
    }
    return reply;
}

TagReply ControllerSession::read(const QByteArray& name) {
    int size = 0;
    const cip::MallocPtr<unsigned char> request(
        _BuildLgxReadDataRequest(name.constData(), 1, &size));
    cip::MallocPtr<_Eip_Item> item;
    TagReply reply = exchange(request.get(), size, &item);
    if (item) {
        takeReadReply(item.get(), &reply);
    }
    return reply;
}

TagReply ControllerSession::readWhole(const QByteArray& name, int count) {
    LgxTagRead steps(name.constData(), static_cast<uint16_t>(count));
    TagReply whole;
    LgxProgress progress = LgxProgress::more;
    while (progress == LgxProgress::more) {
        int size = 0;
        const cip::MallocPtr<unsigned char> request(steps.nextRequest(&size));
        cip::MallocPtr<_Eip_Item> item;
        const TagReply piece = exchange(request.get(), size, &item);
        whole.requests += piece.requests;
        whole.microseconds += piece.microseconds;
        progress = item ? steps.accept(item.get()) : LgxProgress::failed;
    }
    if (progress == LgxProgress::failed) {
        takeFailure(&whole);
        return whole;
    }
    const std::unique_ptr<_LGX_Read, void (*)(_LGX_Read*)> value(steps.release(), _FreeLGXRead);
    whole.kind = TagReply::Kind::kValue;
    whole.type = value->type;
    whole.data = GetLGXValueAsByteArray(value.get());
    return whole;
}

ObjectReply ControllerSession::object(int service, const QByteArray& path, const QByteArray& data) {
    ObjectReply reply;
    int size = 0;
    ++requestCount;
    const cip::MallocPtr<_MR_Reply> answer(
        _SendMRRequest(session.get(), static_cast<uint8_t>(service), path.constData(), path.size(),
                       data.constData(), data.size(), &size));
    if (!answer) {
        reply.error = recordedError();
        return reply;
    }
    reply.answered = true;
    reply.status = answer->generalStatus;
    if (reply.status != 0) {
        reply.error = recordedError();
    }
    const unsigned char* from = _GetMRData(answer.get());
    const auto head = static_cast<int>(from - reinterpret_cast<const unsigned char*>(answer.get()));
    reply.data = QByteArray(reinterpret_cast<const char*>(from), std::max(size - head, 0));
    return reply;
}
