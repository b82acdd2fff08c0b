#include "apps/micro800/base/timings.h"

#include <algorithm>
#include <cmath>

double Timings::percentile(double percent) const {
    if (times.empty()) {
        return 0;
    }
    const double rank = std::ceil(percent / 100 * static_cast<double>(times.size()));
    std::vector<double> sorted = times;
    const auto place = sorted.begin() + static_cast<std::ptrdiff_t>(std::max(rank, 1.0)) - 1;
    std::nth_element(sorted.begin(), place, sorted.end());
    return *place;
}

QString Timings::summary(const QString& what) const {
    QString text =
        QStringLiteral("%1 %2, %3 failures")
            .arg(QString::number(good() + failures()), what, QString::number(failures()));
    if (good() > 0) {
        text +=
            QStringLiteral("; median %1 ms, p99 %2 ms")
                .arg(QString::number(median(), 'f', 3), QString::number(percentile(99), 'f', 3));
    }
    return text;
}
