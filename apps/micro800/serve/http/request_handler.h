#ifndef APPS_MICRO800_SERVE_REQUEST_HANDLER_H
#define APPS_MICRO800_SERVE_REQUEST_HANDLER_H

#include <memory>

#include "apps/micro800/serve/http/deferred_reply.h"
#include "apps/micro800/serve/http/http_message.h"

/// The body of a reply without an end.
class EventSource {
 public:
    virtual ~EventSource() = default;
    /// What is to be sent next; empty when there is nothing now. On the server's thread.
    virtual QByteArray next() = 0;
};

/// What a request gets: the reply, or one of the other two in its place.
struct Answer {
    HttpReply reply;
    std::unique_ptr<EventSource> stream;   ///< goes on after the head of `reply`
    std::shared_ptr<DeferredReply> later;  ///< there is no reply yet
};

/// Who answers. The calls come on the server's thread, one at a time, and must not wait.
class RequestHandler {
 public:
    virtual ~RequestHandler() = default;
    /// With the head alone, before any of the body is taken. False with the answer in place of the
    /// rest.
    virtual bool passesHead(const HttpRequest& head, HttpReply* refusal) = 0;
    virtual Answer answer(const HttpRequest& request) = 0;
};

#endif
