#ifndef APPS_MICRO800_SERVE_TAG_FEED_H
#define APPS_MICRO800_SERVE_TAG_FEED_H

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "apps/micro800/plugin/driver_session.h"
#include "apps/micro800/serve/live/live_model.h"
#include "apps/micro800/serve/routes/write_order.h"

/// The tags that one driver keeps fresh, rows `first` and following of the page.
struct FeedTags {
    int driver = 0;
    int first = 0;
    QVector<TagAddress> addresses;
    QVector<CommunicatorCommand> commands;
};

/// One driver and the thread that asks it for its tags, over and over, and writes what pages ask
/// for. The driver may keep its caller waiting for a second or two; nobody else waits with it.
class TagFeed {
 public:
    /// The feed's reports; called on its thread.
    struct Listener {
        std::function<void(const QString&)> log;  ///< a write and what came of it
        std::function<void()> replyReady;
        std::function<void()> ended;  ///< the driver is gone, the thread about to end
    };
    /// The most writes that wait for a driver.
    static const int kMostWrites = 16;

    /// `session` is open. `model` is not owned.
    TagFeed(std::unique_ptr<DriverSession> session, const FeedTags& tags, int intervalMs,
            LiveModel* model);
    /// Asks the thread to end and waits for it.
    ~TagFeed();
    TagFeed(const TagFeed&) = delete;
    TagFeed& operator=(const TagFeed&) = delete;

    void start(const Listener& listener);
    /// Any thread. Whether this row is one of the feed's.
    bool has(int index) const;
    /// Any thread: the write is carried out before the next read. False when too many wait.
    bool take(const WriteOrder& order);
    /// Any thread; does not wait.
    void askToStop();

 private:
    void run();
    void readRound();
    void read(int tag);
    void writeAll();
    void write(const WriteOrder& order);
    bool nextOrder(WriteOrder* order);
    bool isStopping() const;
    void wait(qint64 until);

    const FeedTags tags;
    const int intervalMs;
    LiveModel* const model;
    Listener listener;

    // of the thread
    std::unique_ptr<DriverSession> session;
    WatchModel watched;
    qint64 countedAt = 0;

    mutable std::mutex mutex;
    std::condition_variable changed;
    // guarded by mutex
    std::deque<WriteOrder> orders;
    bool stopping = false;

    std::thread thread;
};

#endif
