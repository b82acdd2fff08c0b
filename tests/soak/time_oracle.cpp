#include "soak/time_oracle.h"

#include <algorithm>
#include <chrono>

namespace {

const int kTagShift = 23;
const int kControllerShift = 31;
const uint32_t kTagMask = 0xFF;
const uint32_t kMsMask = (1u << kTagShift) - 1;

/// The two clocks count whole milliseconds, and the start of the controller's is known from the
/// time that a question to it takes.
const int64_t kClockMs = 20;
/// How much older a polled value may be than the call: passes over the list, a request that gets
/// lost, and the connection that is opened anew.
const int64_t kPolledMs = 5000;

}  // namespace

QString clockTag(int tag) {
    return QString("T%1").arg(tag);
}

QStringList clockOptions(int controller, int count) {
    QStringList options("--ramp");
    options << "1";
    for (int tag = 0; tag < count; ++tag) {
        const uint32_t start = uint32_t(controller) << kControllerShift | uint32_t(tag)
                                                                              << kTagShift;
        options << "--tag" << QString("%1:UDINT=%2").arg(clockTag(tag)).arg(start) << "--ramp-tag"
                << clockTag(tag);
    }
    return options;
}

int64_t nowMs() {
    using std::chrono::duration_cast;
    using std::chrono::milliseconds;
    return duration_cast<milliseconds>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

TimeOracle::TimeOracle() : seen(kClockTags, 0) {}

void TimeOracle::begin(int controller, int64_t epochMs, bool mayLinger) {
    previous = present;
    previous.end = nowMs();
    lingers = mayLinger;
    present.controller = controller;
    present.epoch = epochMs;
    std::fill(seen.begin(), seen.end(), 0);
}

QString TimeOracle::check(int tag, bool isPolled, uint32_t value, int64_t fromMs, int64_t untilMs) {
    const int controller = int(value >> kControllerShift);
    const int owner = int(value >> kTagShift & kTagMask);
    const int64_t count = value & kMsMask;
    if (owner != tag) {
        return QString("the value of tag %1").arg(owner);
    }
    const int64_t earliest = fromMs - kClockMs - (isPolled ? kPolledMs + slowerMs : 0);
    const int64_t time = present.epoch + count;
    QString problem = "older than the call allows";
    if (controller != present.controller) {
        problem = "the value of another controller";
    } else if (time > untilMs + kClockMs) {
        problem = "newer than the answer";
    } else if (time < seen[size_t(tag)]) {
        problem = "older than one that was shown before";
    } else if (time >= earliest) {
        seen[size_t(tag)] = time;
        last = time;
        lingers = false;
        oldest = isPolled ? std::max(oldest, fromMs - time) : oldest;
        return QString();
    }
    const int64_t before = previous.epoch + count;
    const bool isOfBefore = lingers && isPolled && controller == previous.controller &&
                            before <= previous.end + kClockMs && before >= earliest;
    return isOfBefore ? QString()
                      : problem + QString(
                                      ": by the controller's clock %1 ms before the call and %2 ms "
                                      "before its end")
                                      .arg(fromMs - time)
                                      .arg(untilMs - time);
}
