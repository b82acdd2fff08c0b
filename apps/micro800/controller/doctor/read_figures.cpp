#include "apps/micro800/controller/doctor/read_figures.h"

#include <cmath>

namespace {

QString msText(double ms) {
    return QString::number(ms, 'f', 1);
}

double rounded(double ms) {
    return std::round(ms * 1000) / 1000;
}

}  // namespace

void ReadFigures::add(double ms) {
    if (timings.good() > 0) {
        differences += std::fabs(ms - last);
    }
    last = ms;
    timings.add(ms);
}

double ReadFigures::jitter() const {
    return timings.good() > 1 ? differences / (timings.good() - 1) : 0;
}

double ReadFigures::lossPercent() const {
    const int all = good() + lost();
    return all == 0 ? 0 : 100.0 * lost() / all;
}

QString ReadFigures::text() const {
    return QStringLiteral("%1 reads: median %2 ms, p99 %3 ms, jitter %4 ms, loss %5 %")
        .arg(QString::number(good() + lost()), msText(timings.median()),
             msText(timings.percentile(99)), msText(jitter()),
             QString::number(lossPercent(), 'g', 3));
}

QJsonObject ReadFigures::json() const {
    return QJsonObject{{QStringLiteral("reads"), good() + lost()},
                       {QStringLiteral("lost"), lost()},
                       {QStringLiteral("loss_percent"), lossPercent()},
                       {QStringLiteral("median_ms"), rounded(timings.median())},
                       {QStringLiteral("p99_ms"), rounded(timings.percentile(99))},
                       {QStringLiteral("jitter_ms"), rounded(jitter())}};
}
