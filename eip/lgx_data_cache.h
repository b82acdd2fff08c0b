#ifndef EIP_LGX_DATA_CACHE_H
#define EIP_LGX_DATA_CACHE_H

#include <QByteArray>
#include <QHash>
#include <QString>
#include <mutex>

/// The last values read of the tags that the worker polls, as raw little-endian bytes.
///
/// An entry can be withheld. It stays in the cache then, but value() answers as if it were missing
/// until the next insert().
///
/// Any thread; every operation takes the cache's own mutex, which is a leaf: nothing is called
/// while it is held. What goes in and what comes out shares no storage with the cache.
class LgxDataCache {
 public:
    LgxDataCache();
    ~LgxDataCache();

    /// The key of a tag read with `count` elements, e.g. "Motor_Speed_10".
    static QString keyFrom(const QString& name, int count);

    /// Creates the entry or replaces its bytes; it is no longer withheld.
    void insert(const QString& key, const QByteArray& value);
    /// Copies the whole value into `out`, in the memory that it has when that is enough and not
    /// shared. False, and `out` untouched, when there is no entry, or a withheld one.
    bool value(const QString& key, QByteArray& out) const;
    /// Copies as many bytes as `out` has, from byte `offset` on. False, and `out` untouched, when
    /// there is no entry or a withheld one, the offset is negative, or the slice would end after
    /// the value.
    bool value(const QString& key, QByteArray& out, int offset) const;
    /// Whether there is such an entry, withheld or not.
    bool hasKey(const QString& key) const;
    /// The entry is not served until the next insert(): its last refresh failed.
    void withhold(const QString& key);
    /// No entry is served until its next insert(): all were read before an outage.
    void withholdAll();
    /// Removes every entry.
    void clear();

 private:
    LgxDataCache(const LgxDataCache&) = delete;
    LgxDataCache& operator=(const LgxDataCache&) = delete;

    mutable std::mutex mutex;
    // guarded by mutex; an entry is in one of the two
    QHash<QString, QByteArray> hash;
    QHash<QString, QByteArray> withheld;
};

#endif
