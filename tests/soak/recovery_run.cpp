#include "soak/recovery_run.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

#include "support/app_directory/app_directory.h"

namespace {

const int kTags = 20;
const int kLossMs = 20000;
const int kReturnMs = 30000;

enum Kind { kRefused, kSilent, kDropped, kAddress };
const char* const kDrops[] = {"reset-peers", "close-peers", "drop-connections"};

CommunicatorCommand command(int tag) {
    return CommunicatorCommand(kUnitDoubleWord, 1, "UDINT0:" + clockTag(tag));
}

}  // namespace

RecoveryRun::RecoveryRun(const RecoveryOptions& given)
    : options(given),
      results({{"refused", {}}, {"silent", {}}, {"dropped", {}}, {"another address", {}}}) {
    for (int number = 0; number < 2; ++number) {
        controllers[number] = std::make_unique<ClockController>(number, kTags);
        controllers[number]->setLogging(false);
    }
    random.seed(20);
}

bool RecoveryRun::giveUp(const QString& text) {
    why = text;
    return false;
}

bool RecoveryRun::run() {
    writeProjectDatabase(QStringList());
    for (const auto& controller : controllers) {
        if (!controller->start()) {
            return giveUp(QString::fromStdString(controller->error()));
        }
    }
    device = std::make_unique<TestDevice>(active().port(), options.timeoutMs);
    driver = createDriver();
    oracle.begin(activeNumber, active().epochMs(), false);
    QList<CommunicatorCommand> list;
    for (int tag = 0; tag < kTags; ++tag) {
        list << command(tag);
    }
    driver->setSessionCommand(list);
    for (int number = 0; number < options.cycles; ++number) {
        if (!waitFor([&] { return readsValueSince(0); }, kReturnMs)) {
            return giveUp("no value before a cycle");
        }
        if (!cycle(number)) {
            return false;
        }
        if (progress) {
            progress(number + 1);
        }
    }
    return true;
}

bool RecoveryRun::cycle(int number) {
    const int kind = number % int(results.size());
    if (!goAway(kind, number)) {
        return giveUp(QString("the controller does not go: ") + results[size_t(kind)].name);
    }
    if (kind != kDropped) {
        if (!awaitLoss()) {
            return giveUp(QString("a loss is not noticed: ") + results[size_t(kind)].name);
        }
        // At any moment of what the worker does meanwhile.
        const int away = options.awayMs + int(random() % unsigned(options.timeoutMs));
        std::this_thread::sleep_for(std::chrono::milliseconds(away));
    }
    if (!comeBack(kind)) {
        return giveUp(QString("the controller does not come back: ") + results[size_t(kind)].name);
    }
    const int64_t returned = nowMs();
    if (kind == kAddress && !driver->deviceSettingChanged(&device->device) &&
        !waitFor([&] { return driver->deviceSettingChanged(&device->device); }, kReturnMs)) {
        return giveUp("the driver does not take another address");
    }
    if (!waitFor([&] { return readsValueSince(returned); }, kReturnMs)) {
        return giveUp(QString("no value any more: ") + results[size_t(kind)].name);
    }
    std::vector<double>& sorted = results[size_t(kind)].ms;
    const double took = double(nowMs() - returned);
    sorted.insert(std::upper_bound(sorted.begin(), sorted.end(), took), took);
    return true;
}

bool RecoveryRun::goAway(int kind, int number) {
    switch (kind) {
        case kRefused:
            return active().command("down");
        case kSilent:
            // Its program stands still, or all that it says gets lost.
            hangs = number / int(results.size()) % 2 == 0;
            if (!hangs) {
                return active().command("fault silence@on=any");
            }
            active().hang();
            return true;
        case kDropped:
            return active().command(kDrops[number / int(results.size()) % 3]);
        default:
            active().kill();
            return true;
    }
}

bool RecoveryRun::comeBack(int kind) {
    switch (kind) {
        case kRefused:
            return active().command("up");
        case kSilent:
            if (!hangs) {
                return active().command("fault none");
            }
            active().goOn();
            return true;
        case kDropped:
            return true;
        default:
            activeNumber = 1 - activeNumber;
            device->device.setPort(active().port());
            if (!active().restart()) {
                return false;
            }
            oracle.begin(activeNumber, active().epochMs(), false);
            return true;
    }
}

bool RecoveryRun::awaitLoss() {
    return waitFor(
        [&] {
            readsValueSince(0);
            return driver->hasError();
        },
        kLossMs);
}

bool RecoveryRun::readsValueSince(int64_t ms) {
    const int tag = int(random() % kTags);
    const int64_t from = nowMs();
    const QByteArray bytes = driver->read(device.get(), command(tag));
    if (bytes.isEmpty()) {
        return false;
    }
    uint32_t value = 0;
    memcpy(&value, bytes.constData(), sizeof value);
    const QString wrong = oracle.check(tag, true, value, from, nowMs());
    if (!wrong.isEmpty()) {
        wrongTexts << clockTag(tag) + ": " + wrong;
        return false;
    }
    return oracle.lastMs() >= ms;
}
