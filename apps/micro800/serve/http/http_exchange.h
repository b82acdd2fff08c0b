#ifndef APPS_MICRO800_SERVE_HTTP_EXCHANGE_H
#define APPS_MICRO800_SERVE_HTTP_EXCHANGE_H

#include <QByteArray>
#include <QElapsedTimer>
#include <memory>

#include "apps/micro800/serve/http/request_handler.h"

struct MHD_Connection;

/// One TCP connection and the request that it is at. Belongs to the server's table of connections;
/// the fields of the second part are guarded by that table's mutex.
struct HttpLink {
    enum class State { kReceiving, kAnswering, kStreaming };

    // ---- the server's thread alone
    MHD_Connection* connection = nullptr;
    HttpRequest request;
    bool hasHead = false;  ///< the head of the request was looked at
    std::shared_ptr<DeferredReply> later;
    std::unique_ptr<EventSource> source;
    QByteArray piece;  ///< of the stream, being sent
    int pieceSent = 0;

    // ---- guarded
    int socket = -1;
    State state = State::kReceiving;
    qint64 since = 0;  ///< when the state began, or the stream's reader last made room
    bool isSuspended = false;

    /// Forgets the request; the connection may bring another one.
    void forgetRequest() {
        const QString local = request.local;
        const QString peer = request.peer;
        request = HttpRequest();
        request.local = local;
        request.peer = peer;
        hasHead = false;
        later.reset();
        source.reset();
        piece.clear();
        pieceSent = 0;
    }
};

#endif
