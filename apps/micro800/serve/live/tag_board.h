#ifndef APPS_MICRO800_SERVE_TAG_BOARD_H
#define APPS_MICRO800_SERVE_TAG_BOARD_H

#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QVector>

#include "apps/micro800/format/address.h"

/// What a row of the page shows.
enum class TagState {
    kWaiting,  ///< not read yet
    kGood,
    kStale,   ///< read once, but not for a while, and nothing says why
    kFailed,  ///< the last read failed
};

/// One row of the page.
struct BoardTag {
    TagAddress address;
    QString value;        ///< as read and watch print it; of the last good read
    QJsonValue number;    ///< null where JSON has none for the value
    QString problem;      ///< the operator's text, while it fails
    QString help;         ///< a link to what to do about it
    qint64 readAt = -1;   ///< of the last good read, in milliseconds since 1970
    quint64 changed = 0;  ///< period of the last change of value, state or problem
    quint64 seen = 0;     ///< period of the last good read
    TagState state = TagState::kWaiting;
};

/// What the page shows of every tag, and in which period of time it last changed. A page that knows
/// everything up to a period gets what changed since, however long ago that was: nothing is kept
/// for a page that is away. One thread at a time.
class TagBoard {
 public:
    /// A value that was not read for `staleMs` is stale.
    /// Periods are counted from `firstPeriod` on.
    TagBoard(const QVector<TagAddress>& addresses, qint64 staleMs, quint64 firstPeriod = 1);

    int size() const { return rows.size(); }
    const BoardTag& row(int index) const { return rows.at(index); }
    /// -1 when no row has this address.
    int indexOf(const QString& address) const;

    /// A good read. `bytes` are looked at when they are not those of the read before (`isNew`).
    void good(int index, const QByteArray& bytes, bool isNew, qint64 now);
    /// `help` is a link to what to do; empty without one.
    void failed(int index, const QString& problem, const QString& help);

    /// Ends the period, and marks what became stale in it. Returns its number.
    quint64 endPeriod(qint64 now);
    /// The last period that ended.
    quint64 lastPeriod() const { return open - 1; }

    /// Every row with all that never changes.
    QJsonArray all() const;
    /// {"time", "tags", "seen"} of what came after a period; empty when nothing did.
    QJsonObject since(quint64 period, qint64 now) const;

    /// Which rows are in this state.
    int count(TagState state) const;

 private:
    QVector<BoardTag> rows;
    QHash<QString, int> indexes;
    const qint64 staleMs;
    quint64 open;
};

/// "PUMP" of "DINT0:PUMP_SPEED", "DINT0:PUMP.SPEED" and "DINT0:PUMP[3]".
QString groupOf(const TagAddress& address);
/// "waiting", "good", "stale", "failed".
const char* stateName(TagState state);

#endif
