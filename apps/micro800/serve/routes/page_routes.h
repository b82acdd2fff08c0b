#ifndef APPS_MICRO800_SERVE_PAGE_ROUTES_H
#define APPS_MICRO800_SERVE_PAGE_ROUTES_H

#include <QByteArray>
#include <functional>

#include "apps/micro800/serve/http/request_handler.h"
#include "apps/micro800/serve/http/request_target.h"
#include "apps/micro800/serve/live/live_model.h"
#include "apps/micro800/serve/routes/write_order.h"

/// What every path of the server answers. All of it on the server's thread; it shares the model
/// with others.
class PageRoutes : public RequestHandler {
 public:
    /// Takes an order; false when too many wait. Called on the server's thread.
    using WriteTaker = std::function<bool(const WriteOrder&)>;

    /// `model` is not owned. Without a token (empty) everybody may look.
    PageRoutes(LiveModel* model, const QByteArray& token, const WriteTaker& writes);

    bool passesHead(const HttpRequest& head, HttpReply* refusal) override;
    Answer answer(const HttpRequest& request) override;

 private:
    struct Route;
    static const QVector<Route>& routes();
    static const Route* find(const QString& path);

    HttpReply start(const HttpRequest& request, const RequestTarget& target) const;
    Answer tags(const HttpRequest& request, const RequestTarget& target);
    Answer status(const HttpRequest& request, const RequestTarget& target);
    Answer entries(const HttpRequest& request, const RequestTarget& target);
    Answer history(const HttpRequest& request, const RequestTarget& target);
    Answer events(const HttpRequest& request, const RequestTarget& target);
    Answer metrics(const HttpRequest& request, const RequestTarget& target);
    Answer write(const HttpRequest& request, const RequestTarget& target);

    LiveModel* const model;
    const QByteArray token;
    const WriteTaker writes;
};

#endif
