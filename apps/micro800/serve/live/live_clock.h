#ifndef APPS_MICRO800_SERVE_LIVE_CLOCK_H
#define APPS_MICRO800_SERVE_LIVE_CLOCK_H

#include <QDateTime>
#include <QElapsedTimer>

/// Milliseconds since 1970, as the system's clock was set at the start. It never steps, so that a
/// trend never runs backwards. Any thread.
class LiveClock {
 public:
    LiveClock() : start(QDateTime::currentMSecsSinceEpoch()) { timer.start(); }
    qint64 now() const { return start + timer.elapsed(); }

 private:
    const qint64 start;
    QElapsedTimer timer;
};

#endif
