#ifndef APPS_MICRO800_SERVE_LIVE_MODEL_H
#define APPS_MICRO800_SERVE_LIVE_MODEL_H

#include <QByteArray>
#include <QJsonObject>
#include <mutex>
#include <vector>

#include "apps/micro800/base/connection.h"
#include "apps/micro800/serve/help/help_links.h"
#include "apps/micro800/serve/live/event_list.h"
#include "apps/micro800/serve/live/live_clock.h"
#include "apps/micro800/serve/live/poll_figures.h"
#include "apps/micro800/serve/live/tag_board.h"
#include "apps/micro800/serve/live/tag_history.h"
#include "apps/micro800/watch/watch_model.h"

/// What stays the same while the page is served.
struct LiveFacts {
    Connection connection;
    QVector<TagAddress> addresses;
    int drivers = 1;
    bool allowWrite = false;
    qint64 staleMs = 3000;
    HistoryLimits history;
};

/// How often pages are told what is new.
const int kTickMs = 100;

/// Everything that the pages show, between the threads that read, the one that answers requests and
/// the main one. Any thread may call everything; no call waits for a controller or a page.
class LiveModel {
 public:
    explicit LiveModel(const LiveFacts& facts);

    const LiveFacts& facts() const { return known; }
    qint64 now() const { return clock.now(); }

    // ---- what the drivers bring

    /// A read of a tag, as the watch has taken it.
    void take(int index, const WatchedTag& tag, WatchEvent event);
    /// What a driver has counted so far.
    void noteDriver(int driver, const QVariantMap& counters);
    /// What came of a write.
    void noteWrite(int index, bool ok, const QString& text);
    /// What the controller says of itself; null when it says nothing.
    void setIdentity(const QJsonValue& identity);

    /// The main thread, every kTickMs: what came since the last call becomes the next event.
    void tick();

    // ---- what the pages get

    QJsonObject tags() const;
    QJsonObject status() const;
    QJsonObject entries() const;
    /// False when no row has this address. With `points` above 0 there are
    /// at most about so many samples and stretches.
    bool history(const QString& address, qint64 from, qint64 to, int points,
                 QJsonObject* found) const;
    QByteArray metrics() const;
    /// The main thread reports it for the metrics.
    void setStreams(int count);
    /// -1 when no row has this address.
    int indexOf(const QString& address) const;
    /// What a row shows as its value; empty before the first.
    QString valueOf(int index) const;

    // ---- the event stream (HTML, server-sent events)

    /// The period that ended last: a page that asks now begins with it.
    quint64 lastPeriod() const;
    /// The period that a Last-Event-ID names. Periods go on growing over a restart. False when it
    /// is none of this run of the program, or when too much happened since to know it.
    bool periodOf(const QString& eventId, quint64* period) const;
    /// The events since `*period`, which moves on; empty when there is nothing new. Pages that ask
    /// in time share one text.
    QByteArray eventsSince(quint64* period) const;

 private:
    QByteArray buildEvents(quint64 from, quint64 to) const;
    QJsonObject statusLocked() const;
    qint64 historyBytes() const;

    const LiveFacts known;
    const LiveClock clock;
    const quint64 firstPeriod;  ///< above those of any run of the program before this one
    HelpLinks links;

    mutable std::mutex mutex;
    // guarded by mutex
    TagBoard board;
    std::vector<TagHistory> histories;
    EventList list;
    PollFigures figures;
    QJsonValue identity;
    int streams = 0;
    quint64 statusPeriod = 0;  ///< in which the status was last told
    qint64 statusAt = 0;
    quint64 sharedFrom;
    quint64 sharedTo;
    QByteArray shared;  ///< the events between the two
};

#endif
