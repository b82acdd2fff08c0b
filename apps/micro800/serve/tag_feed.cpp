#include "apps/micro800/serve/tag_feed.h"

#include <algorithm>
#include <chrono>

#include "apps/micro800/base/signals.h"
#include "apps/micro800/serve/routes/write_request.h"

namespace {

const qint64 kCountEveryMs = 1000;

}  // namespace

TagFeed::TagFeed(std::unique_ptr<DriverSession> opened, const FeedTags& fed, int everyMs,
                 LiveModel* shown)
    : tags(fed),
      intervalMs(everyMs),
      model(shown),
      session(std::move(opened)),
      watched(tags.addresses, tags.commands) {}

TagFeed::~TagFeed() {
    askToStop();
    if (thread.joinable()) {
        thread.join();
    }
}

void TagFeed::start(const Listener& told) {
    listener = told;
    const SignalsHeld held;  // the thread inherits them
    thread = std::thread([this] { run(); });
}

bool TagFeed::has(int index) const {
    return index >= tags.first && index < tags.first + tags.addresses.size();
}

bool TagFeed::take(const WriteOrder& order) {
    const std::lock_guard<std::mutex> lock(mutex);
    if (stopping || orders.size() >= kMostWrites) {
        return false;
    }
    orders.push_back(order);
    changed.notify_all();
    return true;
}

void TagFeed::askToStop() {
    const std::lock_guard<std::mutex> lock(mutex);
    stopping = true;
    changed.notify_all();
}

bool TagFeed::isStopping() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return stopping;
}

void TagFeed::run() {
    session->watch(tags.commands.toList());
    qint64 next = model->now();
    while (!isStopping()) {
        readRound();
        if (model->now() - countedAt >= kCountEveryMs) {
            countedAt = model->now();
            model->noteDriver(tags.driver, session->counters());
        }
        next = std::max(next + intervalMs, model->now());
        wait(next);
    }
    session.reset();
    listener.ended();
}

/// Until that time, an order, or the stop.
void TagFeed::wait(qint64 until) {
    std::unique_lock<std::mutex> lock(mutex);
    const auto pause = std::chrono::milliseconds(std::max<qint64>(until - model->now(), 0));
    changed.wait_for(lock, pause, [this] { return stopping || !orders.empty(); });
}

void TagFeed::readRound() {
    for (int i = 0; i < watched.size() && !isStopping(); ++i) {
        writeAll();
        read(i);
    }
}

void TagFeed::read(int tag) {
    const DriverResult result = session->read(watched.tag(tag).command);
    const WatchEvent event = watched.take(tag, result, model->now());
    model->take(tags.first + tag, watched.tag(tag), event);
}

bool TagFeed::nextOrder(WriteOrder* order) {
    const std::lock_guard<std::mutex> lock(mutex);
    if (stopping || orders.empty()) {
        return false;
    }
    *order = orders.front();
    orders.pop_front();
    return true;
}

void TagFeed::writeAll() {
    WriteOrder order;
    while (nextOrder(&order)) {
        write(order);
        listener.replyReady();
    }
}

/// Once: a write that failed may have been carried out all the same.
void TagFeed::write(const WriteOrder& order) {
    const int tag = order.index - tags.first;
    const TagAddress& address = watched.tag(tag).address;
    const QString before = model->valueOf(order.index);
    const DriverResult result = session->write(watched.tag(tag).command, order.bytes);
    const QString outcome = result.ok ? QStringLiteral("done") : result.error;
    const QString step =
        QStringLiteral("%1 -> %2: %3")
            .arg(before.isEmpty() ? QStringLiteral("?") : before, order.text, outcome);
    model->noteWrite(order.index, result.ok, step);
    listener.log(QStringLiteral("write %1 by %2: %3").arg(address.text, order.peer, step));
    if (result.ok) {
        read(tag);
    }
    order.reply->set(result.ok ? writeDone(before, order.text) : writeProblem(502, result.error));
}
