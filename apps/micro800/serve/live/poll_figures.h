#ifndef APPS_MICRO800_SERVE_POLL_FIGURES_H
#define APPS_MICRO800_SERVE_POLL_FIGURES_H

#include <QMap>
#include <QString>
#include <QVariantMap>
#include <QVector>
#include <array>

/// What the drivers have done, added up. Times are milliseconds of one clock that never steps. One
/// thread at a time.
class PollFigures {
 public:
    explicit PollFigures(int drivers) : drivers(drivers) {}

    void noteRead() { ++reads; }
    /// A read that failed with this text.
    void noteFailure(const QString& problem, qint64 now);
    void noteWrite(bool ok) { ++(ok ? writes : failedWrites); }
    /// What a driver has counted so far (docs/architecture.md). True when the connection has come
    /// or gone with it: of several drivers all must be connected.
    bool noteDriver(int driver, const QVariantMap& counters, qint64 now);

    qint64 goodReads() const { return reads; }
    const QMap<QString, qint64>& failuresByKind() const { return failures; }
    qint64 goodWrites() const { return writes; }
    qint64 badWrites() const { return failedWrites; }
    int driverCount() const { return drivers.size(); }
    bool isConnected() const { return connectedAt >= 0; }
    /// -1 when there is no connection.
    qint64 connectedSince() const { return connectedAt; }

    /// Requests to the controller.
    qint64 requests() const;
    double requestsPerSecond() const;
    /// The longest of the last polling pass of each driver.
    double passMilliseconds() const;
    double passMilliseconds(int driver) const { return drivers.at(driver).passMs; }
    int failuresPerMinute(qint64 now) const;

 private:
    struct Driver {
        qint64 requests = 0;
        qint64 countedAt = -1;
        double perSecond = 0;
        double passMs = 0;
        bool connected = false;
    };
    struct Second {
        qint64 second = -1;
        int failures = 0;
    };

    QVector<Driver> drivers;
    QMap<QString, qint64> failures;
    std::array<Second, 60> lastMinute;
    qint64 reads = 0;
    qint64 writes = 0;
    qint64 failedWrites = 0;
    qint64 connectedAt = -1;
};

/// Where a failure came from, from the text that the operator gets: "AB error", "MR error", "EIP
/// error", "PCCC error", "Internal", "system" (its number is in brackets), "no answer", or
/// "driver".
QString failureKind(const QString& problem);

#endif
