#ifndef APPS_MICRO800_TERMINAL_PROGRESS_BAR_H
#define APPS_MICRO800_TERMINAL_PROGRESS_BAR_H

#include <QElapsedTimer>
#include <QString>

#include "apps/micro800/terminal/console.h"

/// How far a long work is, how fast it goes and how long it still takes, in at most `width`
/// characters: "[#######-------------]  512/1500  34 %  158/s  6 s left". The bar itself is left
/// out where the width is too small for one. Without rate and time left before `elapsedMs` is long
/// enough for an estimate.
QString progressText(int done, int total, qint64 elapsedMs, int width);

/// Shows progressText() as the console's status line, a few times per second; nothing where the
/// console shows no status. The line goes with the object.
class ProgressBar {
 public:
    ProgressBar(int total, Console* console);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void setDone(int count);

 private:
    const int total;
    Console* const console;
    QElapsedTimer clock;
    qint64 nextMs = 0;
};

#endif
