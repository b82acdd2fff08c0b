#ifndef APPS_SIMULATOR_RAMP_H
#define APPS_SIMULATOR_RAMP_H

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <vector>

#include "apps/simulator/tag_table.h"

namespace sim {

/// Lets numeric values count up, so that one can see how fresh a value is.
class Ramp : public QObject {
    Q_OBJECT

 public:
    /// Adds 1 to every element of the tags once in `periodMs`. The tags have to outlive the ramp;
    /// those of type BOOL and STRING stand still.
    Ramp(std::vector<Tag*> tags, int periodMs);

    void start();
    /// Makes the steps that are due after this time since the start.
    void advanceTo(qint64 elapsedMs);

 private:
    const std::vector<Tag*> m_tags;
    const int m_periodMs;
    QTimer m_timer;
    QElapsedTimer m_elapsed;
    qint64 m_steps = 0;
};

}  // namespace sim

#endif
