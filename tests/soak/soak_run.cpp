#include "soak/soak_run.h"

#include <QFile>
#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

#include "support/app_directory/app_directory.h"

namespace {

// The session list of 200 tags, of which a few are written as well; the others are read by request.
const int kClock = 215;
const int kPolledClock = 195;
const int kWritten = 10;
/// In a pass the worker and the controller wake once for each of the 200.
const int kWakesAPass = 400;
const int kPolledWritten = 5;

const int kTimeoutMs = 600;
const int kRetries = 1;
const int kReadsAStep = 20;
const int kStepMs = 5;
/// One that slows every answer down makes the values of a pass older the longer it lasts.
const double kLongestTroubleMs = 3000;
/// The worker takes up a list after the request that it is at, and after a farewell.
const int kListMs = 3000;
const int kDirectEveryMs = 50;
const int kWriteEveryMs = 100;
const int kWrittenShift = 20;
const int kMostTexts = 10;
const double kWarmUpSeconds = 0.6;
const double kMs = 1000;

/// Whether the tag is in the list that begins with that one.
bool isInList(int tag, int first) {
    return (tag + kClock - first) % kClock < kPolledClock;
}

QString writtenTag(int tag) {
    return QString("W%1").arg(tag);
}

}  // namespace

SoakRun::SoakRun(const SoakOptions& given)
    : options(given), written(kWritten), shownUntil(kClock, 0) {
    QStringList more;
    for (int tag = 0; tag < kWritten; ++tag) {
        more << "--tag" << writtenTag(tag) + QString(":DINT=%1").arg(tag << kWrittenShift);
        writtenCommands.push_back(dint(writtenTag(tag)));
    }
    for (int number = 0; number < 2; ++number) {
        controllers[number] = std::make_unique<ClockController>(number, kClock, more);
    }
    for (int tag = 0; tag < kClock; ++tag) {
        clockCommands.emplace_back(kUnitDoubleWord, 1, "UDINT0:" + clockTag(tag));
    }
    // All of it now: what the run's own notes take up is not the driver's growth.
    taken.resize(size_t(options.seconds) + 2);
    random.seed(20);
}

bool SoakRun::giveUp(const QString& why) {
    if (counted.problem.isEmpty()) {
        counted.problem = why;
    }
    return false;
}

bool SoakRun::start() {
    writeProjectDatabase(QStringList());
    for (const auto& controller : controllers) {
        if (!controller->start()) {
            return giveUp(QString::fromStdString(controller->error()));
        }
    }
    device = std::make_unique<TestDevice>(active().port(), kTimeoutMs, kRetries);
    driver = createDriver();
    oracle.begin(activeNumber, active().epochMs(), false);
    changeList();
    return true;
}

bool SoakRun::run() {
    if (!start()) {
        return false;
    }
    began = nowMs();
    if (options.warmsUp) {
        warmUp();
    }
    measures = true;
    began = nowMs();
    bool goesOn = counted.problem.isEmpty();
    for (int number = 0; goesOn && nowMs() - began < options.seconds * kMs; ++number) {
        goesOn = turn(number, options.troubleSeconds);
    }
    taken.resize(samplesTaken);
    // Driver and controllers are gone before the logs are read: no write is under way any more.
    driver.reset();
    for (const auto& controller : controllers) {
        controller->kill();
    }
    settleWrites();
    return goesOn;
}

/// Whatever the first of a kind leaves in caches of the system and the libraries is there
/// afterwards.
void SoakRun::warmUp() {
    for (int number = 0; number < Trouble::kinds() && counted.problem.isEmpty(); ++number) {
        turn(number, kWarmUpSeconds);
    }
    counted.troubles = counted.restarts = counted.addressChanges = counted.listChanges = 0;
}

/// One trouble and the quiet after it, with all other changes in between.
bool SoakRun::turn(int number, double seconds) {
    const double start = double(nowMs() - began);
    const auto partOf = [&](double part) { return start + part * seconds * kMs; };
    const int kind = number % Trouble::kinds();
    goingOn = Trouble::name(kind);
    ++counted.troubles;
    if (!trouble.begin(kind, &active())) {
        return giveUp("the simulator does not take " + goingOn);
    }
    workUntil(std::min(partOf(0.3), start + kLongestTroubleMs));
    if (!trouble.end()) {
        return giveUp("the simulator does not end " + goingOn);
    }
    goingOn.clear();
    workUntil(partOf(0.5));
    changeList();
    workUntil(partOf(0.7));
    if (number % 3 == 2) {
        changeAddress();
    }
    workUntil(partOf(0.8));
    if (number % 5 == 4) {
        restart();
    }
    workUntil(partOf(1));
    return counted.problem.isEmpty();
}

void SoakRun::workUntil(double ms) {
    while (double(nowMs() - began) < ms && counted.problem.isEmpty()) {
        step();
        if (measures && nowMs() - began >= int64_t(samplesTaken + 1) * int64_t(kMs)) {
            sample();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(kStepMs));
    }
}

void SoakRun::step() {
    for (int i = 0; i < kReadsAStep; ++i) {
        readClockTag((firstPolled + pick(kPolledClock)) % kClock);
    }
    if (nowMs() >= nextDirect) {
        readClockTag((firstPolled + kPolledClock + pick(kClock - kPolledClock)) % kClock);
        readWritten(pick(kWritten));
        nextDirect = nowMs() + kDirectEveryMs;
    }
    if (nowMs() >= nextWrite) {
        write(pick(kWritten));
        nextWrite = nowMs() + kWriteEveryMs;
    }
}

/// The values of an earlier list may be shown until the worker has come to take up the new one.
bool SoakRun::isPolled(int tag) const {
    return isInList(tag, firstPolled) || nowMs() < shownUntil[size_t(tag)];
}

void SoakRun::readClockTag(int tag) {
    const int64_t from = nowMs();
    watch.begin(kRetries + 1);
    const QByteArray bytes = driver->read(device.get(), clockCommands[size_t(tag)]);
    const bool hasValue = !bytes.isEmpty();
    const bool isDirect = !isPolled(tag);
    watch.end("read", hasValue ? (isDirect ? CallWatch::kAnswered : CallWatch::kCached)
                               : (driver->hasError() ? CallWatch::kRefused : CallWatch::kNoAnswer));
    const int64_t until = nowMs();
    ++counted.reads;
    if (!hasValue) {
        ++counted.readsWithoutValue;
        return;
    }
    uint32_t value = 0;
    memcpy(&value, bytes.constData(), sizeof value);
    oracle.allowPolled(kWakesAPass * watch.machine().meanUs() / 1000);
    const bool lingered = oracle.previousLingers();
    const QString problem = oracle.check(tag, !isDirect, value, from, until);
    if (!problem.isEmpty()) {
        noteWrong(clockTag(tag) + ": " + problem);
    } else if (lingered && !oracle.previousLingers()) {
        forgetWritten();
    }
}

/// Values only grow; the confirmed one and those after it that were tried are possible.
void SoakRun::readWritten(int tag) {
    watch.begin(kRetries + 1);
    const QByteArray bytes = driver->read(device.get(), writtenCommands[size_t(tag)]);
    watch.end("read", !bytes.isEmpty()
                          ? (tag < kPolledWritten ? CallWatch::kCached : CallWatch::kAnswered)
                          : (driver->hasError() ? CallWatch::kRefused : CallWatch::kNoAnswer));
    ++counted.reads;
    if (bytes.isEmpty()) {
        ++counted.readsWithoutValue;
        return;
    }
    int value = 0;
    memcpy(&value, bytes.constData(), sizeof value);
    Written& one = written[size_t(tag)];
    const int number = value & ((1 << kWrittenShift) - 1);
    if (value >> kWrittenShift != tag || number < one.known[activeNumber] || number > one.tried) {
        noteWrong(QString("%1: %2 of tag %3, when %4 to %5 were possible")
                      .arg(writtenTag(tag))
                      .arg(number)
                      .arg(value >> kWrittenShift)
                      .arg(one.known[activeNumber])
                      .arg(one.tried));
    } else if (!oracle.previousLingers()) {
        one.known[activeNumber] = number;
    }
}

void SoakRun::write(int tag) {
    Written& one = written[size_t(tag)];
    ++one.tried;
    const int value = tag << kWrittenShift | one.tried;
    watch.begin(1);
    const bool confirmed =
        driver->write(device.get(), writtenCommands[size_t(tag)], dintBytes(value));
    watch.end("write", confirmed
                           ? CallWatch::kAnswered
                           : (driver->hasError() ? CallWatch::kRefused : CallWatch::kNoAnswer));
    ledger.note(tag, value, confirmed);
    if (confirmed) {
        if (oracle.previousLingers()) {
            oracle.sawPresent();
            forgetWritten();
        }
        one.known[activeNumber] = one.tried;
    }
}

/// What was known of the written tags before the restart says nothing any more.
void SoakRun::forgetWritten() {
    for (Written& one : written) {
        one.known[activeNumber] = 0;
    }
}

void SoakRun::changeList() {
    const int before = firstPolled;
    firstPolled = pick(kClock);
    QList<CommunicatorCommand> list;
    for (int i = 0; i < kPolledClock; ++i) {
        list << clockCommands[size_t((firstPolled + i) % kClock)];
    }
    for (int tag = 0; tag < kPolledWritten; ++tag) {
        list << writtenCommands[size_t(tag)];
    }
    watch.begin(1);
    driver->setSessionCommand(list);
    watch.end("session list", CallWatch::kCached);
    for (int tag = 0; tag < kClock; ++tag) {
        if (isInList(tag, before)) {
            shownUntil[size_t(tag)] = nowMs() + kListMs;
        }
    }
    ++counted.listChanges;
}

void SoakRun::changeAddress() {
    activeNumber = 1 - activeNumber;
    device->device.setPort(active().port());
    bool taken = false;
    for (int tries = 0; tries < 20 && !taken; ++tries) {
        watch.begin(1);
        taken = driver->deviceSettingChanged(&device->device);
        watch.end("address", taken ? CallWatch::kAnswered : CallWatch::kNoAnswer);
    }
    if (!taken) {
        giveUp("the driver does not take another address");
    }
    oracle.begin(activeNumber, active().epochMs(), false);
    ++counted.addressChanges;
}

/// The controller is gone, for a while, and comes back with other values.
void SoakRun::restart() {
    active().kill();
    settleWrites();
    workUntil(double(nowMs() - began) + options.troubleSeconds * kMs / 20);
    if (!active().restart()) {
        giveUp(QString::fromStdString(active().error()));
        return;
    }
    forgetWritten();
    oracle.begin(activeNumber, active().epochMs(), true);
    ++counted.restarts;
}

void SoakRun::settleWrites() {
    for (int number = 0; number < 2; ++number) {
        logTaken[number] = ledger.takeLog(controllers[number]->logPath(), logTaken[number]);
    }
    for (const QString& text : ledger.settle()) {
        noteWrong("write: " + text);
    }
    QFile::remove(active().logPath());  // nobody has it open
    logTaken[activeNumber] = 0;
}

void SoakRun::noteWrong(const QString& text) {
    ++counted.wrong;
    if (counted.wrongTexts.size() < kMostTexts) {
        const QString when = QString::number(double(nowMs() - began) / kMs, 'f', 1);
        counted.wrongTexts << when + " s: " + text + (goingOn.isEmpty() ? "" : ", in " + goingOn);
    }
}

void SoakRun::sample() {
    if (samplesTaken < taken.size()) {
        SoakSample& one = taken[samplesTaken++];
        one.process = processFigures();
        one.longestCallMs = double(watch.takeLongestMs());
        one.wrong = counted.wrong;
        if (progress) {
            progress(double(nowMs() - began) / kMs, goingOn);
        }
    }
}
