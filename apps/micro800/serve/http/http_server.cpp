#include "apps/micro800/serve/http/http_server.h"

#ifdef MICRO800_HAVE_HTTP

#include <microhttpd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <algorithm>
#include <cstring>
#include <mutex>
#include <vector>

#include "apps/micro800/base/signals.h"
#include "apps/micro800/serve/http/http_exchange.h"
#include "apps/micro800/serve/http/json_reply.h"
#include "apps/micro800/serve/http/listen_address.h"
#include "apps/micro800/serve/http/request_check.h"

namespace {

/// Of the library, for the head of a request and the reply's: it refuses what does not fit.
const size_t kConnectionMemory = 32 * 1024;
const size_t kStreamBlock = 16 * 1024;

struct ResponseEnd {
    void operator()(MHD_Response* response) const { MHD_destroy_response(response); }
};
using Response = std::unique_ptr<MHD_Response, ResponseEnd>;

void addHeaders(MHD_Response* response, const HttpReply& reply) {
    for (const QVector<HttpHeader>& headers : {securityHeaders(), reply.headers}) {
        for (const HttpHeader& header : headers) {
            MHD_add_response_header(response, header.name.constData(), header.value.constData());
        }
    }
    if (!reply.type.isEmpty()) {
        MHD_add_response_header(response, "Content-Type", reply.type.constData());
    }
}

MHD_Result queue(MHD_Connection* connection, const HttpReply& reply) {
    const Response response(MHD_create_response_from_buffer(
        static_cast<size_t>(reply.body.size()), const_cast<char*>(reply.body.constData()),
        MHD_RESPMEM_MUST_COPY));
    if (!response) {
        return MHD_NO;
    }
    addHeaders(response.get(), reply);
    return MHD_queue_response(connection, static_cast<unsigned>(reply.status), response.get());
}

MHD_Result takeHeader(void* headers, MHD_ValueKind, const char* name, size_t nameSize,
                      const char* value, size_t valueSize) {
    const HttpHeader header = {QByteArray(name, static_cast<int>(nameSize)).toLower(),
                               QByteArray(value, static_cast<int>(valueSize))};
    static_cast<QVector<HttpHeader>*>(headers)->append(header);
    return MHD_YES;
}

HttpLink* linkOf(MHD_Connection* connection) {
    const MHD_ConnectionInfo* info =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
    return info ? static_cast<HttpLink*>(info->socket_context) : nullptr;
}

}  // namespace

/// The library's calls come on its thread; all others on any.
class HttpServer::Engine {
 public:
    Engine(RequestHandler* answerer, const ServerLimits& allowed)
        : handler(answerer), limits(allowed) {
        clock.start();
    }
    ~Engine() { stop(); }

    bool start(int socket, QString* problem);
    void stop();
    void tick();
    void wake(HttpLink::State state);
    int streams() const;

 private:
    static MHD_Result onRequest(void* engine, MHD_Connection* connection, const char* url,
                                const char* method, const char* version, const char* upload,
                                size_t* uploadSize, void** context);
    static void* onTarget(void* engine, const char* target, MHD_Connection* connection);
    static void onCompleted(void* engine, MHD_Connection* connection, void** context,
                            MHD_RequestTerminationCode code);
    static void onConnection(void* engine, MHD_Connection* connection, void** context,
                             MHD_ConnectionNotificationCode code);

    MHD_Result takeHead(HttpLink* link, const char* method);
    MHD_Result takeBody(HttpLink* link, const char* bytes, size_t* size);
    MHD_Result answer(HttpLink* link);
    MHD_Result stream(HttpLink* link, const HttpReply& head);
    MHD_Result waitForReply(HttpLink* link);
    bool suspend(HttpLink* link);
    ssize_t pull(HttpLink* link, char* buffer, size_t most);
    void enter(HttpLink* link, HttpLink::State state);
    bool isTooSlow(const HttpLink& link, qint64 now) const;

    RequestHandler* const handler;
    const ServerLimits limits;
    QElapsedTimer clock;
    MHD_Daemon* daemon = nullptr;

    mutable std::mutex mutex;
    // guarded by mutex
    std::vector<std::unique_ptr<HttpLink>> links;
    bool stopping = false;
};

bool HttpServer::Engine::start(int socket, QString* problem) {
    const SignalsHeld held;  // the thread inherits them
    daemon = MHD_start_daemon(
        MHD_USE_EPOLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr, nullptr, &onRequest,
        this, MHD_OPTION_LISTEN_SOCKET, socket, MHD_OPTION_CONNECTION_LIMIT,
        static_cast<unsigned>(limits.connections), MHD_OPTION_CONNECTION_MEMORY_LIMIT,
        kConnectionMemory, MHD_OPTION_STRICT_FOR_CLIENT, 1, MHD_OPTION_URI_LOG_CALLBACK, &onTarget,
        this, MHD_OPTION_NOTIFY_COMPLETED, &onCompleted, this, MHD_OPTION_NOTIFY_CONNECTION,
        &onConnection, this, MHD_OPTION_END);
    if (!daemon) {
        close(socket);
        *problem = QStringLiteral("the server of the live page cannot be started");
    }
    return daemon != nullptr;
}

void HttpServer::Engine::stop() {
    if (!daemon) {
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(mutex);
        stopping = true;
        // The library ends no connection that is suspended.
        for (const auto& link : links) {
            if (link->isSuspended) {
                link->isSuspended = false;
                MHD_resume_connection(link->connection);
            }
        }
    }
    MHD_stop_daemon(daemon);
    daemon = nullptr;
}

void HttpServer::Engine::wake(HttpLink::State state) {
    const std::lock_guard<std::mutex> lock(mutex);
    for (const auto& link : links) {
        if (link->isSuspended && link->state == state) {
            link->isSuspended = false;
            link->since = clock.elapsed();
            MHD_resume_connection(link->connection);
        }
    }
}

bool HttpServer::Engine::isTooSlow(const HttpLink& link, qint64 now) const {
    const qint64 passed = now - link.since;
    switch (link.state) {
        case HttpLink::State::kReceiving:
            return passed > limits.requestMs;
        case HttpLink::State::kAnswering:
            return !link.isSuspended && passed > limits.answerMs;
        case HttpLink::State::kStreaming:
            return !link.isSuspended && passed > limits.stalledMs;
    }
    return false;
}

void HttpServer::Engine::tick() {
    wake(HttpLink::State::kStreaming);
    const qint64 now = clock.elapsed();
    const std::lock_guard<std::mutex> lock(mutex);
    for (const auto& link : links) {
        if (isTooSlow(*link, now)) {
            // The library sees the end and closes the socket itself.
            shutdown(link->socket, SHUT_RDWR);
        }
    }
}

int HttpServer::Engine::streams() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return static_cast<int>(std::count_if(links.begin(), links.end(), [](const auto& link) {
        return link->state == HttpLink::State::kStreaming;
    }));
}

// ---- a connection ------------------------------------------------------------------------------

void HttpServer::Engine::onConnection(void* engine, MHD_Connection* connection, void** context,
                                      MHD_ConnectionNotificationCode code) {
    auto* self = static_cast<Engine*>(engine);
    const std::lock_guard<std::mutex> lock(self->mutex);
    if (code == MHD_CONNECTION_NOTIFY_CLOSED) {
        const auto isIt = [context](const auto& link) { return link.get() == *context; };
        self->links.erase(std::remove_if(self->links.begin(), self->links.end(), isIt),
                          self->links.end());
        *context = nullptr;
        return;
    }
    auto link = std::make_unique<HttpLink>();
    link->connection = connection;
    link->since = self->clock.elapsed();
    const MHD_ConnectionInfo* socket =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    link->socket = socket ? socket->connect_fd : -1;
    link->request.local = localEndOf(link->socket);
    const MHD_ConnectionInfo* peer =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
    link->request.peer = peer ? endText(peer->client_addr) : QString();
    *context = link.get();
    self->links.push_back(std::move(link));
}

void HttpServer::Engine::enter(HttpLink* link, HttpLink::State state) {
    const std::lock_guard<std::mutex> lock(mutex);
    link->state = state;
    link->since = clock.elapsed();
}

/// Suspends the connection until wake(). False when the server is about to stop.
bool HttpServer::Engine::suspend(HttpLink* link) {
    const std::lock_guard<std::mutex> lock(mutex);
    if (stopping) {
        return false;
    }
    link->isSuspended = true;
    MHD_suspend_connection(link->connection);
    return true;
}

// ---- a request ---------------------------------------------------------------------------------

/// The target as it came: after this the library has decoded it.
void* HttpServer::Engine::onTarget(void*, const char* target, MHD_Connection* connection) {
    if (HttpLink* link = linkOf(connection)) {
        link->forgetRequest();
        link->request.target = target;
    }
    return nullptr;
}

void HttpServer::Engine::onCompleted(void* engine, MHD_Connection* connection, void**,
                                     MHD_RequestTerminationCode) {
    if (HttpLink* link = linkOf(connection)) {
        static_cast<Engine*>(engine)->enter(link, HttpLink::State::kReceiving);
        link->forgetRequest();
    }
}

MHD_Result HttpServer::Engine::onRequest(void* engine, MHD_Connection* connection, const char*,
                                         const char* method, const char*, const char* upload,
                                         size_t* uploadSize, void**) {
    auto* self = static_cast<Engine*>(engine);
    HttpLink* link = linkOf(connection);
    if (!link) {
        return MHD_NO;
    }
    if (!link->hasHead) {
        return self->takeHead(link, method);
    }
    if (*uploadSize > 0) {
        return self->takeBody(link, upload, uploadSize);
    }
    return link->later ? self->waitForReply(link) : self->answer(link);
}

MHD_Result HttpServer::Engine::takeHead(HttpLink* link, const char* method) {
    link->hasHead = true;
    HttpRequest& request = link->request;
    request.method = method;
    MHD_get_connection_values_n(link->connection, MHD_HEADER_KIND, &takeHeader, &request.headers);
    HttpReply refusal;
    if (handler->passesHead(request, &refusal)) {
        return MHD_YES;
    }
    enter(link, HttpLink::State::kAnswering);
    return queue(link->connection, refusal);
}

MHD_Result HttpServer::Engine::takeBody(HttpLink* link, const char* bytes, size_t* size) {
    QByteArray& body = link->request.body;
    if (*size > static_cast<size_t>(kLargestBody - body.size())) {
        return MHD_NO;
    }
    body.append(bytes, static_cast<int>(*size));
    *size = 0;
    return MHD_YES;
}

MHD_Result HttpServer::Engine::answer(HttpLink* link) {
    Answer found = handler->answer(link->request);
    if (found.later) {
        link->later = std::move(found.later);
        enter(link, HttpLink::State::kAnswering);
        return waitForReply(link);
    }
    if (found.stream && streams() < limits.streams) {
        link->source = std::move(found.stream);
        return stream(link, found.reply);
    }
    enter(link, HttpLink::State::kAnswering);
    return queue(
        link->connection,
        found.stream ? problemReply(503, QStringLiteral("too many pages are open")) : found.reply);
}

MHD_Result HttpServer::Engine::waitForReply(HttpLink* link) {
    HttpReply reply;
    if (link->later->take(&reply)) {
        enter(link, HttpLink::State::kAnswering);
        return queue(link->connection, reply);
    }
    return suspend(link) ? MHD_YES : MHD_NO;
}

// ---- a stream ----------------------------------------------------------------------------------

MHD_Result HttpServer::Engine::stream(HttpLink* link, const HttpReply& head) {
    struct Closure {
        Engine* engine;
        HttpLink* link;
    };
    const auto read = [](void* closure, uint64_t, char* buffer, size_t most) {
        const auto* both = static_cast<Closure*>(closure);
        return both->engine->pull(both->link, buffer, most);
    };
    const auto forget = [](void* closure) { delete static_cast<Closure*>(closure); };
    auto closure = std::make_unique<Closure>(Closure{this, link});
    const Response response(MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, kStreamBlock, read,
                                                              closure.get(), forget));
    if (!response) {
        return MHD_NO;
    }
    closure.release();  // the response's
    addHeaders(response.get(), head);
    enter(link, HttpLink::State::kStreaming);
    return MHD_queue_response(link->connection, static_cast<unsigned>(head.status), response.get());
}

ssize_t HttpServer::Engine::pull(HttpLink* link, char* buffer, size_t most) {
    if (link->pieceSent == link->piece.size()) {
        link->piece = link->source->next();
        link->pieceSent = 0;
    }
    enter(link, HttpLink::State::kStreaming);
    const int left = link->piece.size() - link->pieceSent;
    if (left == 0) {
        return suspend(link) ? 0 : static_cast<ssize_t>(MHD_CONTENT_READER_END_OF_STREAM);
    }
    const int size = static_cast<int>(std::min(most, static_cast<size_t>(left)));
    std::memcpy(buffer, link->piece.constData() + link->pieceSent, static_cast<size_t>(size));
    link->pieceSent += size;
    return size;
}

// ---- the server --------------------------------------------------------------------------------

bool HttpServer::isThere() {
    return true;
}

HttpServer::HttpServer(RequestHandler* handler, const ServerLimits& limits)
    : engine(std::make_unique<Engine>(handler, limits)) {}

HttpServer::~HttpServer() = default;

bool HttpServer::start(int socket, QString* problem) {
    return engine->start(socket, problem);
}

void HttpServer::stop() {
    engine->stop();
}

void HttpServer::tick() {
    engine->tick();
}

void HttpServer::answersReady() {
    engine->wake(HttpLink::State::kAnswering);
}

int HttpServer::streams() const {
    return engine->streams();
}

#else  // without the library

class HttpServer::Engine {};

bool HttpServer::isThere() {
    return false;
}

HttpServer::HttpServer(RequestHandler*, const ServerLimits&) {}

HttpServer::~HttpServer() = default;

bool HttpServer::start(int, QString* problem) {
    *problem = QStringLiteral("this build has no live page");
    return false;
}

void HttpServer::stop() {}

void HttpServer::tick() {}

void HttpServer::answersReady() {}

int HttpServer::streams() const {
    return 0;
}

#endif
