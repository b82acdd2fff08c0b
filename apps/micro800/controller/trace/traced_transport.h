#ifndef APPS_MICRO800_CONTROLLER_TRACE_TRACED_TRANSPORT_H
#define APPS_MICRO800_CONTROLLER_TRACE_TRACED_TRANSPORT_H

#include <QString>
#include <functional>

#include "eip/cip_tcp_callback.h"

/// Takes the lines of a trace; an empty function wants none.
typedef std::function<void(const QString& line)> TraceSink;

/// The transport to a controller, which can show every message that it carries (frame_text.h).
class TracedTransport : public CipTcpCallback {
 public:
    explicit TracedTransport(const TraceSink& sink) : trace(sink) {}

    _Encap_Header* recvData(int timeoutMs) override;
    int sendData(const _Encap_Header* request) override;

 private:
    const TraceSink trace;
};

/// The lines of a message under the heading "> " or "< ".
void traceMessage(const TraceSink& trace, bool isReply, const QByteArray& message);

#endif
