#include "apps/micro800/serve/live/live_model.h"

#include <algorithm>
#include <limits>

#include "apps/micro800/format/escape.h"
#include "apps/micro800/serve/live/metrics_text.h"

namespace {

const qint64 kStatusMs = 1000;

QByteArray event(const char* name, const QJsonObject& data) {
    return QByteArray("event: ") + name + "\ndata: " + jsonText(data) + "\n\n";
}

QJsonValue timeOrNull(qint64 time) {
    return time < 0 ? QJsonValue() : QJsonValue(time);
}

QJsonArray sampleRows(const QVector<Sample>& samples) {
    QJsonArray rows;
    for (const Sample& sample : samples) {
        const QJsonValue value = sample.isGap() ? QJsonValue() : QJsonValue(sample.value);
        rows.append(QJsonArray{sample.time, value});
    }
    return rows;
}

QJsonArray thinnedRows(const QVector<Extremes>& stretches) {
    QJsonArray rows;
    for (const Extremes& one : stretches) {
        const QJsonValue least = one.isGap() ? QJsonValue() : QJsonValue(one.least);
        const QJsonValue greatest = one.isGap() ? QJsonValue() : QJsonValue(one.greatest);
        rows.append(QJsonArray{one.time, least, greatest});
    }
    return rows;
}

double rounded(double value) {
    return std::round(value * 10) / 10;
}

}  // namespace

LiveModel::LiveModel(const LiveFacts& facts)
    : known(facts),
      firstPeriod(static_cast<quint64>(clock.now() / kTickMs)),
      board(facts.addresses, facts.staleMs, firstPeriod),
      histories(static_cast<size_t>(facts.addresses.size()), TagHistory(facts.history)),
      figures(facts.drivers),
      sharedFrom(firstPeriod - 1),
      sharedTo(firstPeriod - 1) {}

void LiveModel::take(int index, const WatchedTag& tag, WatchEvent watched) {
    const qint64 time = now();
    const QString help = links.linkFor(tag.address.text, tag.error);
    const std::lock_guard<std::mutex> lock(mutex);
    if (!tag.last.ok) {
        figures.noteFailure(tag.error, time);
        board.failed(index, tag.error, help);
        histories[static_cast<size_t>(index)].addGap(time);
        if (watched == WatchEvent::kError) {
            list.add({time, EntryKind::kFailure, tag.address.text, tag.error, help});
        }
        return;
    }
    figures.noteRead();
    if (board.row(index).state == TagState::kFailed) {
        list.add({time, EntryKind::kRecovery, tag.address.text, QStringLiteral("is read again"),
                  QString()});
    }
    board.good(index, tag.bytes, watched == WatchEvent::kValue, time);
    if (tag.address.type->kind != ValueKind::kString) {
        const QJsonValue number = board.row(index).number;
        histories[static_cast<size_t>(index)].add(
            time, number.isDouble() ? number.toDouble() : std::numeric_limits<double>::infinity());
    }
}

void LiveModel::noteDriver(int driver, const QVariantMap& counters) {
    const qint64 time = now();
    const std::lock_guard<std::mutex> lock(mutex);
    if (figures.noteDriver(driver, counters, time)) {
        const QString text = figures.isConnected() ? QStringLiteral("connected to %1 port %2")
                                                   : QStringLiteral("lost %1 port %2");
        list.add({time, EntryKind::kConnection, QString(),
                  text.arg(known.connection.host, QString::number(known.connection.port)),
                  QString()});
    }
}

void LiveModel::noteWrite(int index, bool ok, const QString& text) {
    const qint64 time = now();
    const std::lock_guard<std::mutex> lock(mutex);
    figures.noteWrite(ok);
    list.add({time, EntryKind::kWrite, known.addresses.at(index).text, text, QString()});
}

void LiveModel::setIdentity(const QJsonValue& told) {
    const std::lock_guard<std::mutex> lock(mutex);
    identity = told;
}

void LiveModel::tick() {
    const qint64 time = now();
    const std::lock_guard<std::mutex> lock(mutex);
    const quint64 before = board.lastPeriod();
    const quint64 period = board.endPeriod(time);
    list.endPeriod(period);
    if (time - statusAt >= kStatusMs) {
        statusAt = time;
        statusPeriod = period;
    }
    shared = buildEvents(before, period);
    sharedFrom = before;
    sharedTo = period;
}

QJsonObject LiveModel::tags() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return {{QStringLiteral("time"), now()},
            {QStringLiteral("lastEventId"), QString::number(board.lastPeriod())},
            {QStringLiteral("tags"), board.all()}};
}

qint64 LiveModel::historyBytes() const {
    qint64 bytes = 0;
    for (const TagHistory& history : histories) {
        bytes += history.bytes();
    }
    return bytes;
}

QJsonObject LiveModel::statusLocked() const {
    const qint64 time = now();
    const Connection& connection = known.connection;
    const QJsonObject controller = {{QStringLiteral("host"), connection.host},
                                    {QStringLiteral("port"), connection.port},
                                    {QStringLiteral("identity"), identity}};
    const qint64 limit = TagHistory::mostBytes(known.history) * board.size();
    const QJsonObject history = {
        {QStringLiteral("hours"), static_cast<double>(known.history.thinnedMs) / 3600000},
        {QStringLiteral("bytes"), historyBytes()},
        {QStringLiteral("limitBytes"), limit}};
    return {
        {QStringLiteral("time"), time},
        {QStringLiteral("version"), QLatin1String(MICRO800_VERSION)},
        {QStringLiteral("controller"), controller},
        {QStringLiteral("connected"), figures.isConnected()},
        {QStringLiteral("connectedSince"), timeOrNull(figures.connectedSince())},
        {QStringLiteral("drivers"), known.drivers},
        {QStringLiteral("pollsPerSecond"), rounded(figures.requestsPerSecond())},
        {QStringLiteral("passMilliseconds"), rounded(figures.passMilliseconds())},
        {QStringLiteral("failuresPerMinute"), figures.failuresPerMinute(time)},
        {QStringLiteral("allowWrite"), known.allowWrite},
        {QStringLiteral("history"), history},
    };
}

QJsonObject LiveModel::status() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return statusLocked();
}

QJsonObject LiveModel::entries() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return {{QStringLiteral("time"), now()}, {QStringLiteral("entries"), list.all()}};
}

bool LiveModel::history(const QString& address, qint64 from, qint64 to, int points,
                        QJsonObject* found) const {
    QVector<Sample> samples;
    QVector<Extremes> thinned;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        const int index = board.indexOf(address);
        if (index < 0) {
            return false;
        }
        samples = histories.at(static_cast<size_t>(index)).samples(from, to);
        thinned = histories.at(static_cast<size_t>(index)).thinned(from, to);
    }
    const int all = samples.size() + thinned.size();
    if (points > 0 && all > points) {
        samples = fewer(samples, std::max(points * samples.size() / all, 2));
        thinned = fewer(thinned, std::max(points * thinned.size() / all, 2));
    }
    *found = {{QStringLiteral("address"), address},
              {QStringLiteral("samples"), sampleRows(samples)},
              {QStringLiteral("thinned"), thinnedRows(thinned)}};
    return true;
}

void LiveModel::setStreams(int count) {
    const std::lock_guard<std::mutex> lock(mutex);
    streams = count;
}

QByteArray LiveModel::metrics() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return metricsText(board, figures, {historyBytes(), streams, now()});
}

int LiveModel::indexOf(const QString& address) const {
    const std::lock_guard<std::mutex> lock(mutex);
    return board.indexOf(address);
}

QString LiveModel::valueOf(int index) const {
    const std::lock_guard<std::mutex> lock(mutex);
    return board.row(index).value;
}

quint64 LiveModel::lastPeriod() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return board.lastPeriod();
}

bool LiveModel::periodOf(const QString& id, quint64* period) const {
    bool isNumber = false;
    *period = id.toULongLong(&isNumber);
    const std::lock_guard<std::mutex> lock(mutex);
    QVector<Entry> ignored;
    return isNumber && *period >= firstPeriod - 1 && *period <= board.lastPeriod() &&
           list.since(*period, &ignored);
}

/// The id goes with the last event of a period: a page that got only a part of them asks for all of
/// them again.
QByteArray LiveModel::buildEvents(quint64 from, quint64 to) const {
    QByteArray events;
    int last = 0;  // where the last event begins
    const auto append = [&](const char* name, const QJsonObject& data) {
        last = events.size();
        events += event(name, data);
    };
    QVector<Entry> entries;
    list.since(from, &entries);
    for (const Entry& entry : entries) {
        append("entry", entryJson(entry));
    }
    if (statusPeriod > from) {
        append("status", statusLocked());
    }
    const QJsonObject values = board.since(from, now());
    if (!values.isEmpty()) {
        append("values", values);
    }
    if (!events.isEmpty()) {
        events.insert(last, "id: " + QByteArray::number(to) + '\n');
    }
    return events;
}

QByteArray LiveModel::eventsSince(quint64* period) const {
    const std::lock_guard<std::mutex> lock(mutex);
    const quint64 from = *period;
    if (from == sharedTo) {
        return QByteArray();
    }
    *period = sharedTo;
    return from == sharedFrom ? shared : buildEvents(from, sharedTo);
}
