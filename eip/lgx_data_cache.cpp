#include "eip/lgx_data_cache.h"

#include <cstring>
#include <utility>

LgxDataCache::LgxDataCache() {}

LgxDataCache::~LgxDataCache() {}

QString LgxDataCache::keyFrom(const QString& name, int count) {
    // Appended, never substituted: a name may contain a '%'.
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
    if (!withheld.isEmpty()) {
        withheld.remove(ownKey);
    }
}

bool LgxDataCache::value(const QString& key, QByteArray& out) const {
    std::lock_guard<std::mutex> lock(mutex);
    const QHash<QString, QByteArray>::const_iterator entry = hash.constFind(key);
    if (entry == hash.constEnd()) {
        return false;
    }
    // Into the memory that it has, where that is enough and nobody else's.
    out.resize(entry->size());
    if (!out.isEmpty()) {
        std::memcpy(out.data(), entry->constData(), static_cast<size_t>(out.size()));
    }
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
    return hash.contains(key) || withheld.contains(key);
}

void LgxDataCache::withhold(const QString& key) {
    std::lock_guard<std::mutex> lock(mutex);
    const QHash<QString, QByteArray>::iterator entry = hash.find(key);
    if (entry != hash.end()) {
        withheld.insert(entry.key(), *entry);
        hash.erase(entry);
    }
}

void LgxDataCache::withholdAll() {
    std::lock_guard<std::mutex> lock(mutex);
    if (withheld.isEmpty()) {
        std::swap(hash, withheld);
        return;
    }
    for (QHash<QString, QByteArray>::const_iterator entry = hash.constBegin();
         entry != hash.constEnd(); ++entry) {
        withheld.insert(entry.key(), *entry);
    }
    hash.clear();
}

void LgxDataCache::clear() {
    // Freed when the lock is gone.
    QHash<QString, QByteArray> old;
    QHash<QString, QByteArray> oldWithheld;
    std::lock_guard<std::mutex> lock(mutex);
    std::swap(hash, old);
    std::swap(withheld, oldWithheld);
}
