#include "soak/clock_controller.h"

#include <signal.h>

#include <algorithm>
#include <limits>

#include "soak/time_oracle.h"

namespace {

const int kClockReadings = 5;
const uint32_t kMsMask = (1u << 23) - 1;

}  // namespace

ClockController::ClockController(int number, int clockTags, const QStringList& options)
    : ownNumber(number), simulator(clockOptions(number, clockTags) + options) {}

bool ClockController::start() {
    return simulator.start(reserved.port()) && readClock();
}

bool ClockController::restart() {
    return simulator.restart() && readClock();
}

/// The quickest of some answers is the nearest to the truth.
bool ClockController::readClock() {
    epoch = std::numeric_limits<int64_t>::max();
    for (int i = 0; i < kClockReadings; ++i) {
        const QString answer = QString::fromStdString(simulator.command("get " + clockTag(0)));
        if (!answer.startsWith("ok ")) {
            return false;
        }
        epoch = std::min(epoch, nowMs() - int64_t(answer.mid(3).toUInt() & kMsMask));
    }
    return true;
}

bool ClockController::command(const QString& line) {
    return simulator.command(line) == "ok";
}

void ClockController::hang() {
    ::kill(simulator.pid(), SIGSTOP);
}

void ClockController::goOn() {
    ::kill(simulator.pid(), SIGCONT);
}
