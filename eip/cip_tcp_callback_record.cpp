// The transport's events for the recorder, when there is one.

#include "eip/cip_tcp_callback.h"
#include "eip/cip_tcp_callback_impl.h"
#include "eip/record/flight_recorder.h"

void CipTcpCallback::setRecorder(FlightRecorder* recorder) {
    d->recorder = recorder;
}

void CipTcpCallback::Impl::noteConnecting(const char* host, unsigned short port) {
    if (recorder) {
        recorder->connecting(QString::fromLatin1(host), port);
    }
}

void CipTcpCallback::Impl::noteConnected(bool connected) {
    if (!recorder) {
        return;
    }
    if (connected) {
        recorder->connected();
    } else {
        recorder->connectFailed(errnoText());
    }
}

void CipTcpCallback::Impl::noteClosed() {
    if (recorder) {
        recorder->closed();
    }
}

void CipTcpCallback::Impl::noteSent(const _Encap_Header* request, bool whole) {
    if (recorder) {
        recorder->sent(request, whole);
    }
}

void CipTcpCallback::Impl::noteReply(const _Encap_Header* reply) {
    if (recorder) {
        recorder->received(reply);
    }
}

void CipTcpCallback::Impl::noteNoReply(const void* bytes, const Part& part) {
    if (recorder) {
        recorder->receivedPart(bytes, part.bytes, !part.ended);
    }
}

void CipTcpCallback::Impl::noteThrownAway(const void* bytes, size_t size) {
    if (recorder) {
        recorder->thrownAway(bytes, size);
    }
}
