#include "apps/micro800/controller/trace/traced_transport.h"

#include <QByteArray>

#include "apps/micro800/controller/trace/frame_text.h"
#include "eip/cip/encap_header.h"

namespace {

QByteArray bytesOf(const _Encap_Header* message) {
    return QByteArray(reinterpret_cast<const char*>(message),
                      kEncapHeaderSize + _GetEncapLength(message));
}

}  // namespace

void traceMessage(const TraceSink& trace, bool isReply, const QByteArray& message) {
    if (!trace) {
        return;
    }
    for (const QString& line : frameText(message, isReply)) {
        trace(line);
    }
}

int TracedTransport::sendData(const _Encap_Header* request) {
    if (trace) {
        traceMessage(trace, false, bytesOf(request));
    }
    const int sent = CipTcpCallback::sendData(request);
    if (trace && sent <= 0) {
        trace(QStringLiteral("! it could not be sent"));
    }
    return sent;
}

_Encap_Header* TracedTransport::recvData(int timeoutMs) {
    _Encap_Header* reply = CipTcpCallback::recvData(timeoutMs);
    if (trace && reply) {
        traceMessage(trace, true, bytesOf(reply));
    } else if (trace) {
        trace(QStringLiteral("! no reply"));
    }
    return reply;
}
