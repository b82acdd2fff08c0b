#include "apps/simulator/tags/ramp.h"

#include <utility>

namespace sim {

Ramp::Ramp(std::vector<Tag*> tags, int periodMs) : rising(std::move(tags)), stepMs(periodMs) {
    timer.setTimerType(Qt::PreciseTimer);
    timer.setInterval(periodMs);
    connect(&timer, &QTimer::timeout, this, [this] { catchUp(); });
}

void Ramp::start() {
    elapsed.start();
    timer.start();
}

void Ramp::advanceTo(qint64 elapsedMs) {
    for (; steps < elapsedMs / stepMs; ++steps) {
        for (Tag* tag : rising) {
            for (size_t i = 0; i < tag->count(); ++i) {
                countUp(tag->type(), tag->bytes(i));
            }
        }
    }
}

}  // namespace sim
