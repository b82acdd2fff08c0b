#ifndef APPS_MICRO800_SERVE_LIVE_SERVICE_H
#define APPS_MICRO800_SERVE_LIVE_SERVICE_H

#include <QStringList>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "apps/micro800/serve/http/http_server.h"
#include "apps/micro800/serve/live/live_model.h"
#include "apps/micro800/serve/routes/page_routes.h"
#include "apps/micro800/serve/tag_feed.h"
#include "apps/micro800/serve/wake_up.h"
#include "apps/micro800/terminal/console.h"

/// Asks the controller what it is; null when it does not say. On a thread of its own, regularly.
using IdentityQuestion = std::function<QJsonValue()>;

/// The live page while it is served: the drivers' threads, the server's, the one that asks for the
/// identity, and the main one, which ticks.
class LiveService {
 public:
    LiveService(const LiveFacts& facts, const QByteArray& token, Console* console);
    ~LiveService();
    LiveService(const LiveService&) = delete;
    LiveService& operator=(const LiveService&) = delete;

    /// Before run(). Each session is open.
    void addDriver(std::unique_ptr<DriverSession> session, const FeedTags& tags, int intervalMs);
    void setIdentityQuestion(const IdentityQuestion& question);

    /// Serves on this listening socket, which it owns, until a stop signal comes. False when the
    /// server cannot be started. `ready` is called when it can be reached.
    bool run(int socket, const std::function<void()>& ready, QString* problem);

 private:
    class Identity;
    bool takeWrite(const WriteOrder& order);
    void startFeeds();
    void stop();
    void logWrites();

    LiveModel model;
    PageRoutes routes;
    HttpServer server;
    std::vector<std::unique_ptr<TagFeed>> feeds;
    std::unique_ptr<Identity> identity;
    Console* const console;
    WakeUp wakeUp;

    std::mutex mutex;
    std::condition_variable changed;
    // guarded by mutex
    QStringList written;  ///< lines for the log
    bool replyReady = false;
    size_t running = 0;  ///< threads that have not ended
};

#endif
