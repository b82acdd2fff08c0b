#include "apps/micro800/serve/live_service.h"

#include <unistd.h>

#include <QDateTime>
#include <QStringList>
#include <chrono>

#include "apps/micro800/base/signals.h"

namespace {

const std::chrono::seconds kIdentityEvery(10);
/// A controller that hangs keeps its driver for longer. The system then closes the connection.
const std::chrono::milliseconds kPatience(600);

}  // namespace

/// The thread that asks what the controller is.
class LiveService::Identity {
 public:
    Identity(const IdentityQuestion& asked, LiveModel* told) : question(asked), model(told) {}
    ~Identity() {
        askToStop();
        if (thread.joinable()) {
            thread.join();
        }
    }

    void start(const std::function<void()>& ended) {
        const SignalsHeld held;
        thread = std::thread([this, ended] {
            run();
            ended();
        });
    }
    void askToStop() {
        const std::lock_guard<std::mutex> lock(mutex);
        stopping = true;
        changed.notify_all();
    }

 private:
    void run() {
        std::unique_lock<std::mutex> lock(mutex);
        while (!stopping) {
            lock.unlock();
            model->setIdentity(question());
            lock.lock();
            changed.wait_for(lock, kIdentityEvery, [this] { return stopping; });
        }
    }

    const IdentityQuestion question;
    LiveModel* const model;
    std::mutex mutex;
    std::condition_variable changed;
    bool stopping = false;  // guarded by mutex
    std::thread thread;
};

LiveService::LiveService(const LiveFacts& facts, const QByteArray& token, Console* output)
    : model(facts),
      routes(&model, token, [this](const WriteOrder& order) { return takeWrite(order); }),
      server(&routes, ServerLimits()),
      console(output) {}

LiveService::~LiveService() = default;

void LiveService::addDriver(std::unique_ptr<DriverSession> session, const FeedTags& tags,
                            int intervalMs) {
    feeds.push_back(std::make_unique<TagFeed>(std::move(session), tags, intervalMs, &model));
}

void LiveService::setIdentityQuestion(const IdentityQuestion& question) {
    identity = std::make_unique<Identity>(question, &model);
}

bool LiveService::takeWrite(const WriteOrder& order) {
    for (const auto& feed : feeds) {
        if (feed->has(order.index)) {
            return feed->take(order);
        }
    }
    return false;
}

void LiveService::startFeeds() {
    const auto ended = [this] {
        const std::lock_guard<std::mutex> lock(mutex);
        --running;
        changed.notify_all();
    };
    TagFeed::Listener listener;
    listener.ended = ended;
    listener.log = [this](const QString& line) {
        const std::lock_guard<std::mutex> lock(mutex);
        written << QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs) + QLatin1Char(' ') +
                       line;
        wakeUp.ask();
    };
    listener.replyReady = [this] {
        const std::lock_guard<std::mutex> lock(mutex);
        replyReady = true;
        wakeUp.ask();
    };
    running = feeds.size() + (identity ? 1 : 0);
    for (const auto& feed : feeds) {
        feed->start(listener);
    }
    if (identity) {
        identity->start(ended);
    }
}

void LiveService::logWrites() {
    QStringList lines;
    bool isReady = false;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        lines.swap(written);
        std::swap(isReady, replyReady);
    }
    for (const QString& line : lines) {
        console->error(line);
    }
    if (isReady) {
        server.answersReady();
    }
}

bool LiveService::run(int socket, const std::function<void()>& ready, QString* problem) {
    StopSignals stops;
    if (!server.start(socket, problem)) {
        return false;
    }
    startFeeds();
    ready();
    qint64 next = model.now();
    while (!stops.stopped()) {
        stops.wait(static_cast<int>(qBound<qint64>(0, next - model.now(), kTickMs)),
                   wakeUp.readable());
        wakeUp.take();
        logWrites();
        if (model.now() >= next) {
            model.tick();
            model.setStreams(server.streams());
            server.tick();
            next = std::max(next + kTickMs, model.now());
        }
    }
    stop();
    return true;
}

void LiveService::stop() {
    for (const auto& feed : feeds) {
        feed->askToStop();
    }
    if (identity) {
        identity->askToStop();
    }
    server.stop();
    std::unique_lock<std::mutex> lock(mutex);
    const bool ended = changed.wait_for(lock, kPatience, [this] { return running == 0; });
    lock.unlock();
    logWrites();
    if (!ended) {
        console->flush();
        _exit(kExitOk);
    }
}
