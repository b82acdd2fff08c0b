#ifndef APPS_MICRO800_BASE_TIMINGS_H
#define APPS_MICRO800_BASE_TIMINGS_H

#include <QString>
#include <vector>

/// How long a kind of access took, over many of them. Times are milliseconds.
class Timings {
 public:
    void add(double ms) { times.push_back(ms); }
    void addFailure() { ++failureCount; }

    /// Accesses that went well.
    int good() const { return static_cast<int>(times.size()); }
    int failures() const { return failureCount; }

    /// The time that `percent` of the accesses that went well did not exceed (nearest rank, so it
    /// is one of the times); 0 without any. `percent` is above 0 and at most 100.
    double percentile(double percent) const;
    double median() const { return percentile(50); }

    /// "60 reads, 2 failures; median 6.412 ms, p99 7.010 ms" for the plural `what`; without times
    /// only the counts.
    QString summary(const QString& what) const;

 private:
    std::vector<double> times;
    int failureCount = 0;
};

#endif
