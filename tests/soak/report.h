#ifndef TESTS_SOAK_REPORT_H
#define TESTS_SOAK_REPORT_H

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <vector>

#include "soak/recovery_run.h"
#include "soak/soak_run.h"

/// What a run came to: rows of a table, the same as JSON, and what is wrong.
class Report {
 public:
    void row(const QString& what, const QString& figure, const QString& toReach = QString());
    void value(const QString& key, const QJsonValue& value) { object.insert(key, value); }
    void wrong(const QString& text) { failures << text; }

    bool isGood() const { return failures.isEmpty(); }
    const QStringList& problems() const { return failures; }
    QByteArray text() const;
    QByteArray json() const;

 private:
    QByteArray table;
    QJsonObject object;
    QStringList failures;
};

Report soakReport(const SoakRun& run, const SoakOptions& options);
Report recoveryReport(const RecoveryRun& run, double limitMs);

/// How a process grows, and what of that is wrong; nothing when the samples are too few to tell.
struct Growth {
    Slope resident;
    Slope heap;
    QStringList problems;
};

/// Of these samples, one a second, at least 20.
Growth growthOf(const std::vector<SoakSample>& samples);

/// A line a second: seconds, resident KB, heap KB, descriptors, threads, longest call in ms, wrong
/// values so far.
QByteArray samplesText(const std::vector<SoakSample>& samples);

#endif
