#ifndef APPS_MICRO800_SERVE_HTTP_SERVER_H
#define APPS_MICRO800_SERVE_HTTP_SERVER_H

#include <QString>
#include <memory>

#include "apps/micro800/serve/http/request_handler.h"

/// How much the server lets others take.
struct ServerLimits {
    int connections = 256;
    int streams = 64;
    int requestMs = 10000;  ///< from a connection's beginning, or its last answer, to a request
    int answerMs = 60000;   ///< for the reader of an answer
    int stalledMs = 10000;  ///< for the reader of a stream to make room
};

/// Speaks HTTP with browsers, on one thread of its own (libmicrohttpd). What comes is checked for
/// its size here and handed to the handler; what the handler answers is sent.
///
/// The server waits for no client: tick() cuts one that does not send or read within the limits.
class HttpServer {
 public:
    /// Whether this build has a server.
    static bool isThere();

    /// `handler` is not owned and must outlive the object.
    HttpServer(RequestHandler* handler, const ServerLimits& limits);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// Serves on this listening socket, which is the server's from now on also when it fails.
    bool start(int socket, QString* problem);
    /// Ends every connection. Takes no longer than the handler.
    void stop();

    /// The main thread, regularly: has the streams look for what is new and cuts the slow.
    void tick();
    /// Any thread: answers that were not ready are asked for again.
    void answersReady();
    /// Any thread.
    int streams() const;

 private:
    class Engine;
    std::unique_ptr<Engine> engine;
};

#endif
