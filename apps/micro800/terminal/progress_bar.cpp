#include "apps/micro800/terminal/progress_bar.h"

#include <QStringList>

namespace {

const qint64 kIntervalMs = 100;
const qint64 kEstimateAfterMs = 500;
const int kSmallestBar = 10;
const int kLargestBar = 40;
const int kBrackets = 2;
const int kGap = 2;
const qint64 kMsPerSecond = 1000;
const qint64 kSecondsPerMinute = 60;
const qint64 kMinutesPerHour = 60;

QString timeText(qint64 seconds) {
    if (seconds < kSecondsPerMinute) {
        return QStringLiteral("%1 s").arg(seconds);
    }
    const qint64 minutes = seconds / kSecondsPerMinute;
    if (minutes < kMinutesPerHour) {
        return QStringLiteral("%1 min %2 s").arg(minutes).arg(seconds % kSecondsPerMinute);
    }
    return QStringLiteral("%1 h %2 min")
        .arg(minutes / kMinutesPerHour)
        .arg(minutes % kMinutesPerHour);
}

QString figures(int done, int total, qint64 elapsedMs) {
    QStringList parts;
    parts << QStringLiteral("%1/%2").arg(done).arg(total)
          << QStringLiteral("%1 %").arg(qint64(done) * 100 / total);
    if (done > 0 && elapsedMs >= kEstimateAfterMs) {
        const qint64 leftMs = elapsedMs * (total - done) / done;
        parts << QStringLiteral("%1/s").arg(done * kMsPerSecond / elapsedMs)
              << QStringLiteral("%1 left").arg(
                     timeText((leftMs + kMsPerSecond - 1) / kMsPerSecond));
    }
    return parts.join(QLatin1String("  "));
}

}  // namespace

QString progressText(int done, int total, qint64 elapsedMs, int width) {
    if (total < 1) {
        return QString();
    }
    const int reached = qBound(0, done, total);
    const QString text = figures(reached, total, elapsedMs);
    const int room = qMin(width - text.size() - kGap - kBrackets, kLargestBar);
    if (room < kSmallestBar) {
        return text.left(qMax(width, 0));
    }
    const int filled = int(qint64(room) * reached / total);
    return QStringLiteral("[%1%2]  %3")
        .arg(QString(filled, QLatin1Char('#')), QString(room - filled, QLatin1Char('-')), text);
}

ProgressBar::ProgressBar(int count, Console* target) : total(count), console(target) {
    clock.start();
}

ProgressBar::~ProgressBar() {
    console->setStatus(QString());
}

void ProgressBar::setDone(int count) {
    const qint64 now = clock.elapsed();
    if (console->showsStatus() && now >= nextMs) {
        nextMs = now + kIntervalMs;
        console->setStatus(progressText(count, total, now, console->statusWidth()));
    }
}
