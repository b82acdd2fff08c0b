#ifndef APPS_MICRO800_SERVE_EVENT_LIST_H
#define APPS_MICRO800_SERVE_EVENT_LIST_H

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QVector>
#include <deque>

enum class EntryKind { kFailure, kRecovery, kWrite, kConnection };

/// Something that happened, for a person to read.
struct Entry {
    qint64 time = 0;  ///< milliseconds since 1970
    EntryKind kind = EntryKind::kFailure;
    QString address;  ///< empty when it is about more than one tag, or none
    QString text;
    QString help;  ///< a link to what to do; empty without one
};

QJsonObject entryJson(const Entry& entry);

/// The last things that happened. When the connection goes, every tag fails at once: failures of
/// one period with the same reason become one entry. One thread at a time.
class EventList {
 public:
    /// The most that are kept.
    static constexpr int kMost = 500;

    /// Of the period that goes on.
    void add(const Entry& entry) { waiting.append(entry); }
    /// Ends the period: what was added belongs to it.
    void endPeriod(quint64 period);

    /// The oldest first.
    QJsonArray all() const;
    /// What came after a period. False when some of it is no longer kept.
    bool since(quint64 period, QVector<Entry>* found) const;

 private:
    struct Kept {
        quint64 period;
        Entry entry;
    };
    std::deque<Kept> kept;
    QVector<Entry> waiting;
    quint64 lastDropped = 0;  ///< period of the last entry that is no longer kept
};

#endif
