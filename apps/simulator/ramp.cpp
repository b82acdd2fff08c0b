#include "apps/simulator/ramp.h"

#include <utility>

namespace sim {

Ramp::Ramp(std::vector<Tag*> tags, int periodMs) : m_tags(std::move(tags)), m_periodMs(periodMs) {
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(periodMs);
    connect(&m_timer, &QTimer::timeout, this, [this] { advanceTo(m_elapsed.elapsed()); });
}

void Ramp::start() {
    m_elapsed.start();
    m_timer.start();
}

void Ramp::advanceTo(qint64 elapsedMs) {
    for (; m_steps < elapsedMs / m_periodMs; ++m_steps) {
        for (Tag* tag : m_tags) {
            for (size_t i = 0; i < tag->count(); ++i) {
                countUp(tag->type(), tag->bytes(i));
            }
        }
    }
}

}  // namespace sim
