#ifndef APPS_SIMULATOR_TAGS_RAMP_H
#define APPS_SIMULATOR_TAGS_RAMP_H

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <vector>

#include "apps/simulator/tags/tag_table.h"

namespace sim {

/// Lets numeric values count up, so that one can see how fresh a value is.
class Ramp : public QObject {
    Q_OBJECT

 public:
    /// Adds 1 to every element of the tags once in `periodMs`. The tags have to outlive the ramp;
    /// those of type BOOL and STRING stay constant.
    Ramp(std::vector<Tag*> tags, int periodMs);

    void start();
    /// Makes the steps that are due after this time since the start.
    void advanceTo(qint64 elapsedMs);
    /// Makes those that are due now, as the timer would.
    void catchUp() { advanceTo(elapsed.elapsed()); }

 private:
    const std::vector<Tag*> rising;
    const int stepMs;
    QTimer timer;
    QElapsedTimer elapsed;
    qint64 steps = 0;
};

}  // namespace sim

#endif
