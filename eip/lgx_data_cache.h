#ifndef EIP_LGX_DATA_CACHE_H
#define EIP_LGX_DATA_CACHE_H

#include <QByteArray>
#include <QHash>
#include <QString>
#include <mutex>

/// The last values read of the tags that the worker polls, as raw little-endian bytes.
///
/// Any thread; every operation takes the cache's own mutex, which is a leaf: nothing is called
/// while it is held. What goes in and what comes out shares no storage with the cache.
class LgxDataCache {
 public:
    LgxDataCache();
    ~LgxDataCache();

    /// The key of a tag read with `count` elements, e.g. "Motor_Speed_10".
    static QString keyFrom(const QString& name, int count);

    /// Creates the entry or replaces its bytes.
    void insert(const QString& key, const QByteArray& value);
    /// Copies the whole value into `out`. False, and `out` untouched, when there is none.
    bool value(const QString& key, QByteArray& out) const;
    /// Copies as many bytes as `out` has, from byte `offset` on. False, and `out` untouched, when
    /// there is no such entry, the offset is negative or the slice would end behind the value.
    bool value(const QString& key, QByteArray& out, int offset) const;
    bool hasKey(const QString& key) const;
    /// Removes every entry.
    void clear();

 private:
    LgxDataCache(const LgxDataCache&) = delete;
    LgxDataCache& operator=(const LgxDataCache&) = delete;

    mutable std::mutex mutex;
    QHash<QString, QByteArray> hash;  // guarded by mutex
};

#endif
