#include "eip/lgx_data_cache.h"

#include <cstring>
#include <utility>

LgxDataCache::LgxDataCache() {}

LgxDataCache::~LgxDataCache() {}

QString LgxDataCache::keyFrom(const QString& name, int count) {
    // Appended, never substituted: a name may hold a '%'.
    const QString number = QString::number(count);
    QString key;
    key.reserve(name.size() + 1 + number.size());
    key += name;
    key += QLatin1Char('_');
    key += number;
    return key;
}

void LgxDataCache::insert(const QString& key, const QByteArray& value) {
    const QString ownKey(key.constData(), key.size());
    const QByteArray ownValue(value.constData(), value.size());
    std::lock_guard<std::mutex> lock(mutex);
    hash.insert(ownKey, ownValue);
}

bool LgxDataCache::value(const QString& key, QByteArray& out) const {
    std::lock_guard<std::mutex> lock(mutex);
    const QHash<QString, QByteArray>::const_iterator entry = hash.constFind(key);
    if (entry == hash.constEnd()) {
        return false;
    }
    out = QByteArray(entry->constData(), entry->size());
    return true;
}

bool LgxDataCache::value(const QString& key, QByteArray& out, int offset) const {
    std::lock_guard<std::mutex> lock(mutex);
    const QHash<QString, QByteArray>::const_iterator entry = hash.constFind(key);
    if (entry == hash.constEnd() || offset < 0 || out.size() > entry->size() - offset) {
        return false;
    }
    if (!out.isEmpty()) {
        std::memcpy(out.data(), entry->constData() + offset, static_cast<size_t>(out.size()));
    }
    return true;
}

bool LgxDataCache::hasKey(const QString& key) const {
    std::lock_guard<std::mutex> lock(mutex);
    return hash.contains(key);
}

void LgxDataCache::clear() {
    QHash<QString, QByteArray> old;  // freed when the lock is gone
    std::lock_guard<std::mutex> lock(mutex);
    std::swap(hash, old);
}
