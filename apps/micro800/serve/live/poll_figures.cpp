#include "apps/micro800/serve/live/poll_figures.h"

#include <QRegularExpression>
#include <algorithm>

namespace {

const qint64 kSecondMs = 1000;
/// A rate over less time than this jumps about.
const qint64 kShortestRateMs = 500;

}  // namespace

QString failureKind(const QString& problem) {
    const QString reason = problem.mid(problem.indexOf(QLatin1String("> ")) + 1).trimmed();
    for (const char* start :
         {"AB error", "MR error", "EIP error", "PCCC error", "Internal", "no answer"}) {
        if (reason.startsWith(QLatin1String(start))) {
            return QLatin1String(start);
        }
    }
    static const QRegularExpression number(QStringLiteral(R"(\([0-9]+\)$)"));
    return number.match(reason).hasMatch() ? QStringLiteral("system") : QStringLiteral("driver");
}

void PollFigures::noteFailure(const QString& problem, qint64 now) {
    ++failures[failureKind(problem)];
    const qint64 second = now / kSecondMs;
    Second& slot = lastMinute[static_cast<size_t>(second) % lastMinute.size()];
    if (slot.second != second) {
        slot = {second, 0};
    }
    ++slot.failures;
}

bool PollFigures::noteDriver(int index, const QVariantMap& counters, qint64 now) {
    const auto number = [&](const char* key) {
        return counters.value(QLatin1String(key)).toLongLong();
    };
    Driver& driver = drivers[index];
    const qint64 requests = number("requests");
    const qint64 passed = now - driver.countedAt;
    if (driver.countedAt < 0) {
        driver.countedAt = now;
        driver.requests = requests;
    } else if (passed >= kShortestRateMs) {
        driver.perSecond = static_cast<double>((requests - driver.requests) * kSecondMs) /
                           static_cast<double>(passed);
        driver.countedAt = now;
        driver.requests = requests;
    }
    const QVariantMap passes = counters.value(QStringLiteral("passes")).toMap();
    driver.passMs = passes.value(QStringLiteral("last_ms")).toDouble();
    driver.connected = number("opens") > number("connections_lost");

    const bool before = isConnected();
    const bool all = std::all_of(drivers.begin(), drivers.end(),
                                 [](const Driver& one) { return one.connected; });
    if (all != before) {
        connectedAt = all ? now : -1;
    }
    return all != before;
}

qint64 PollFigures::requests() const {
    qint64 sum = 0;
    for (const Driver& driver : drivers) {
        sum += driver.requests;
    }
    return sum;
}

double PollFigures::requestsPerSecond() const {
    double sum = 0;
    for (const Driver& driver : drivers) {
        sum += driver.perSecond;
    }
    return sum;
}

double PollFigures::passMilliseconds() const {
    double longest = 0;
    for (const Driver& driver : drivers) {
        longest = std::max(longest, driver.passMs);
    }
    return longest;
}

int PollFigures::failuresPerMinute(qint64 now) const {
    int sum = 0;
    for (const Second& slot : lastMinute) {
        if (slot.second >= 0 && now / kSecondMs - slot.second < 60) {
            sum += slot.failures;
        }
    }
    return sum;
}
