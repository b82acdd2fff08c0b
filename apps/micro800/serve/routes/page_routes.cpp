#include "apps/micro800/serve/routes/page_routes.h"

#include <limits>

#include "apps/micro800/serve/help/troubleshooting_page.h"
#include "apps/micro800/serve/http/access_token.h"
#include "apps/micro800/serve/http/json_reply.h"
#include "apps/micro800/serve/http/request_check.h"
#include "apps/micro800/serve/routes/event_stream.h"
#include "apps/micro800/serve/routes/page_files.h"
#include "apps/micro800/serve/routes/write_request.h"

namespace {

const char kTroubleshootingPath[] = "/troubleshooting";
const int kMostPoints = 20000;

Answer done(const HttpReply& reply) {
    Answer answer;
    answer.reply = reply;
    return answer;
}

Answer refusal(int status, const QString& problem) {
    return done(problemReply(status, problem));
}

Answer wrongMethod(const char* allowed) {
    HttpReply reply =
        problemReply(405, QStringLiteral("this path has only %1").arg(QLatin1String(allowed)));
    reply.add("Allow", allowed);
    return done(reply);
}

bool isReading(const HttpRequest& request) {
    return request.method == "GET" || request.method == "HEAD";
}

/// A whole number of the query. False when it is there and none.
bool numberFrom(const RequestTarget& target, const char* name, qint64 byDefault, qint64* number) {
    *number = byDefault;
    const auto found = target.query.constFind(QLatin1String(name));
    if (found == target.query.constEnd()) {
        return true;
    }
    bool isNumber = false;
    *number = found.value().toLongLong(&isNumber);
    return isNumber && *number >= 0;
}

}  // namespace

/// One path of the interface for programs.
struct PageRoutes::Route {
    const char* path;
    const char* method;
    Answer (PageRoutes::*answer)(const HttpRequest&, const RequestTarget&);
};

const QVector<PageRoutes::Route>& PageRoutes::routes() {
    static const QVector<Route> table = {
        {"/api/tags", "GET", &PageRoutes::tags},
        {"/api/status", "GET", &PageRoutes::status},
        {"/api/entries", "GET", &PageRoutes::entries},
        {"/api/history", "GET", &PageRoutes::history},
        {"/api/events", "GET", &PageRoutes::events},
        {"/api/write", "POST", &PageRoutes::write},
        {"/metrics", "GET", &PageRoutes::metrics},
    };
    return table;
}

const PageRoutes::Route* PageRoutes::find(const QString& path) {
    for (const Route& route : routes()) {
        if (path == QLatin1String(route.path)) {
            return &route;
        }
    }
    return nullptr;
}

PageRoutes::PageRoutes(LiveModel* shown, const QByteArray& wantedToken, const WriteTaker& taker)
    : model(shown), token(wantedToken), writes(taker) {}

bool PageRoutes::passesHead(const HttpRequest& head, HttpReply* refusal) {
    return passesHeadCheck(head, refusal);
}

Answer PageRoutes::answer(const HttpRequest& request) {
    RequestTarget target;
    if (!parseRequestTarget(request.target, &target)) {
        return refusal(400, QStringLiteral("the address of the request is broken"));
    }
    const Route* route = find(target.path);
    if (!route) {
        HttpReply reply = start(request, target);
        return reply.status == 200 && !isReading(request) ? wrongMethod("GET, HEAD") : done(reply);
    }
    if (request.method != route->method) {
        return wrongMethod(route->method);
    }
    if (!hasToken(request, token)) {
        return refusal(401, QStringLiteral("open the page by the address with the token that "
                                           "micro800 printed"));
    }
    return (this->*route->answer)(request, target);
}

/// What is the same for everybody: the page itself, its files, and the way in with a token.
HttpReply PageRoutes::start(const HttpRequest& request, const RequestTarget& target) const {
    HttpReply reply;
    const auto given = target.query.constFind(QStringLiteral("token"));
    if (target.path == QLatin1String("/") && given != target.query.constEnd() &&
        isReading(request)) {
        if (!isSameToken(given.value().toUtf8(), token)) {
            return problemReply(401, QStringLiteral("this is not the token"));
        }
        reply.status = 303;
        reply.headers = {{"Location", "/"},
                         {"Cache-Control", "no-store"},
                         {"Set-Cookie", QByteArray(kTokenCookie) + '=' + token +
                                            "; HttpOnly; SameSite=Strict; Path=/"}};
    } else if (target.path == QLatin1String(kTroubleshootingPath)) {
        reply.type = "text/html; charset=utf-8";
        reply.body = troubleshootingPage();
        reply.add("Cache-Control", "no-cache");
    } else if (!pageFileReply(target.path, &reply)) {
        reply = problemReply(404, QStringLiteral("there is nothing at this address"));
    }
    return reply;
}

Answer PageRoutes::tags(const HttpRequest&, const RequestTarget&) {
    return done(jsonReply(200, model->tags()));
}

Answer PageRoutes::status(const HttpRequest&, const RequestTarget&) {
    return done(jsonReply(200, model->status()));
}

Answer PageRoutes::entries(const HttpRequest&, const RequestTarget&) {
    return done(jsonReply(200, model->entries()));
}

Answer PageRoutes::history(const HttpRequest&, const RequestTarget& target) {
    qint64 from = 0;
    qint64 to = 0;
    qint64 points = 0;
    if (!numberFrom(target, "from", 0, &from) ||
        !numberFrom(target, "to", std::numeric_limits<qint64>::max(), &to) ||
        !numberFrom(target, "points", 0, &points) || points > kMostPoints) {
        return refusal(400, QStringLiteral("from, to and points are whole numbers, points up to %1")
                                .arg(kMostPoints));
    }
    QJsonObject found;
    if (!model->history(target.query.value(QStringLiteral("tag")), from, to,
                        static_cast<int>(points), &found)) {
        return refusal(404, QStringLiteral("no such tag on this page"));
    }
    return done(jsonReply(200, found));
}

Answer PageRoutes::events(const HttpRequest& request, const RequestTarget& target) {
    const QByteArray* header = request.header("last-event-id");
    const QString id =
        header ? QString::fromUtf8(*header) : target.query.value(QStringLiteral("lastEventId"));
    Answer answer;
    answer.reply.type = "text/event-stream";
    answer.reply.add("Cache-Control", "no-store");
    answer.stream = std::make_unique<EventStream>(model, id);
    return answer;
}

Answer PageRoutes::metrics(const HttpRequest&, const RequestTarget&) {
    HttpReply reply;
    reply.type = "text/plain; version=0.0.4; charset=utf-8";
    reply.add("Cache-Control", "no-store");
    reply.body = model->metrics();
    return done(reply);
}

Answer PageRoutes::write(const HttpRequest& request, const RequestTarget&) {
    if (!model->facts().allowWrite) {
        return done(writeProblem(403, QStringLiteral("this page was started without "
                                                     "--allow-write")));
    }
    WriteOrder order;
    HttpReply problem;
    if (!parseWriteRequest(request, *model, &order, &problem)) {
        return done(problem);
    }
    order.reply = std::make_shared<DeferredReply>();
    if (!writes(order)) {
        return done(writeProblem(503, QStringLiteral("too many writes are waiting")));
    }
    Answer answer;
    answer.later = order.reply;
    return answer;
}
