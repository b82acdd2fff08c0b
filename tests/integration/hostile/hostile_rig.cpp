#include "integration/hostile/hostile_rig.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <chrono>
#include <thread>

#include "support/sanitizer.h"

namespace {

/// How often a good answer may come too late before that is a failure.
const int kLateAnswers = 20;
/// How often a case is played again that failed for want of time.
const int kPatientTries = 5;
/// How much longer than its time-out an access may take. A sanitizer makes all that the program
/// does several times as long.
const int kSlackMs = kSanitized ? 200 : 50;
/// How often an access may meet the worst lateness: the worker takes it, the time-out ends its wait
/// for the controller, and the host takes the answer.
const int kWakes = 3;
/// How long a polled value may take to come back.
const int kRecoveryMs = 20000;
/// The driver waits so long for its worker.
const int kDriverWaitMs = 1000;

QByteArray said(const char* what, const QByteArray& value) {
    return QByteArray(what) + " [" + value.toHex() + ']';
}

/// A write in pieces says after the reason how far it came.
bool isFor(const QByteArray& shown, const QByteArray& reason) {
    return shown == reason || shown.startsWith(reason + "; 0 to ");
}

bool isTimeout(const QByteArray& reason) {
    // The last of them: the answer to an access that the driver no longer waited for.
    return reason == "Internal: timeout" || reason == "Internal: receive timeout" ||
           reason.startsWith("invalid response(") || reason.startsWith("Connection timed out");
}

}  // namespace

HostileRig::HostileRig(const Exchange& of)
    : exchange(of),
      controller(of),
      wasLate(false),
      taken(false),
      longest(0),
      longestOver(0),
      deadline(0) {
    start(kShortTimeoutMs);
}

void HostileRig::start(int timeoutMs) {
    deadline = timeoutMs;
    device.reset(new TestDevice(controller.port(), timeoutMs));
    driver = createDriver();
    if (exchange.isPolled) {
        driver->setSessionCommand(QList<CommunicatorCommand>() << exchange.access);
    }
}

QByteArray HostileRig::play(const HostileCase& hostile) {
    longest = 0;
    QByteArray problem = playOnce(hostile);
    // The machine's trouble or the driver's? With time enough the driver has no excuse.
    for (int tries = 0; !problem.isEmpty() && wasLate && tries < kPatientTries; ++tries) {
        start(kPatientTimeoutMs);
        problem = playOnce(hostile);
        longest = 0;
        start(kShortTimeoutMs);
    }
    // A machine that came late in a way that nobody measured is not late every time.
    for (int tries = 0; problem.isEmpty() && longestOver > kSlackMs && tries < kPatientTries;
         ++tries) {
        problem = playOnce(hostile);
    }
    if (problem.isEmpty() && longestOver > kSlackMs) {
        problem = "an access took " + QByteArray::number(longestOver) + " ms longer than it may";
    }
    return problem;
}

QByteArray HostileRig::playOnce(const HostileCase& hostile) {
    wasLate = false;
    longestOver = 0;
    const QByteArray problem = exchange.isPolled ? playPolled(hostile) : playDirect(hostile);
    return problem.isEmpty() ? afterwards() : problem;
}

/// What V is worth to the access at all other times.
QByteArray HostileRig::goodValue() const {
    const bool isString = exchange.type == 0xDA;
    const int wanted = exchange.access.getDataSize();
    QByteArray value = exchange.value.mid(isString ? 1 : exchange.sliceAt, wanted);
    value.append(wanted - value.size(), '\0');
    return value;
}

HostileRig::Seen HostileRig::access(const CommunicatorCommand& command, const QByteArray& toWrite) {
    machine.reset();
    QElapsedTimer timer;
    timer.start();
    Seen seen = Seen();
    if (toWrite.isEmpty()) {
        seen.value = driver->read(device.get(), command);
        seen.isGood = !seen.value.isEmpty();
    } else {
        seen.isGood = driver->write(device.get(), command, toWrite);
    }
    const int ms = int(timer.elapsed());
    longest = qMax(longest, ms);
    const int late = int(qMax<int64_t>(machine.worstMs(), 0));
    longestOver = qMax(longestOver, ms - deadline - kWakes * late);
    if (driver->hasError()) {
        const QByteArray text = driver->getLastError().toLatin1();
        const QByteArray front = (toWrite.isEmpty() ? QByteArray("read ") : QByteArray("write ")) +
                                 command.address.toLatin1() + "> ";
        seen.reason = text.startsWith(front) ? text.mid(front.size()) : "no access in " + text;
    }
    seen.isLate =
        !seen.isGood && (isTimeout(seen.reason) || (seen.reason.isEmpty() && ms >= kDriverWaitMs));
    return seen;
}

/// The answer to a request that the access itself brings about.
QByteArray HostileRig::playDirect(const HostileCase& hostile) {
    const bool isOpening = exchange.kind == Exchange::kRegister || exchange.kind == Exchange::kOpen;
    const CommunicatorCommand other = dint(kOtherTag);
    if (isOpening) {
        controller.breakConnection();
        // On a busy machine an attempt may end before it comes to that.
        for (int tries = 0; !controller.hasBroken() && tries < kLateAnswers; ++tries) {
            access(other, QByteArray());
        }
    } else {
        const QByteArray problem = goodAgain(other, otherValue(), false);
        if (!problem.isEmpty()) {
            return "before it: " + problem;
        }
    }
    controller.arm(hostile);
    if (exchange.kind == Exchange::kClose) {
        controller.breakConnection();
    }
    return judged(access(exchange.access, exchange.toWrite));
}

/// The answer to a request that the polling makes: reads go on until its consequences are over.
QByteArray HostileRig::playPolled(const HostileCase& hostile) {
    const QByteArray problem = goodAgain(exchange.access, goodValue(), false);
    if (!problem.isEmpty()) {
        return "before it: " + problem;
    }
    controller.arm(hostile);
    QElapsedTimer timer;
    timer.start();
    HostileController::Met met;
    // With the second read after it the value of the first one is in the cache.
    while (!met.served || met.readsSince < 2) {
        if (timer.elapsed() > kRecoveryMs) {
            wasLate = true;
            return "the value does not come back";
        }
        const Seen seen = access(exchange.access, QByteArray());
        met = controller.met();
        const bool isUsual = seen.isGood && seen.value == goodValue();
        const QByteArray wrong = isUsual ? QByteArray() : judged(seen);
        std::this_thread::sleep_for(std::chrono::microseconds(500));
        if (!wrong.isEmpty()) {
            return wrong;
        }
    }
    taken = verdictOf(exchange, met.request, met.sent.stream).isGood;
    return QByteArray();
}

/// What is wrong with the outcome of an access.
QByteArray HostileRig::judged(const Seen& seen) {
    const HostileController::Met met = controller.met();
    if (!met.served) {
        wasLate = wasLate || seen.isLate;
        return "the reply was not asked for; " + said("value", seen.value) + ' ' + seen.reason;
    }
    const Verdict verdict = verdictOf(exchange, met.request, met.sent.stream);
    taken = verdict.isGood;
    if (seen.isGood) {
        return verdict.isGood && seen.value == verdict.value
                   ? QByteArray()
                   : said("value", seen.value) + (verdict.isGood
                                                      ? said(" instead of", verdict.value)
                                                      : " instead of " + verdict.reason);
    }
    if (seen.reason.isEmpty() && seen.isLate) {
        wasLate = true;
        return verdict.isGood ? "no answer within the second" : "";
    }
    if (!isDocumentedReason(seen.reason)) {
        wasLate = seen.isLate;
        return "no documented reason: " + seen.reason;
    }
    const bool isExcused =
        met.sent.mayCutHeader || exchange.isPolled || (met.sent.mayDisturb && exchange.goesOn());
    if (verdict.isGood && !isExcused) {
        wasLate = seen.isLate;
        return seen.reason + said(" instead of", verdict.value);
    }
    if (!isExcused && !verdict.reason.isEmpty() && !isFor(seen.reason, verdict.reason)) {
        wasLate = seen.isLate;
        return seen.reason + " instead of " + verdict.reason;
    }
    return QByteArray();
}

/// Whatever it was, the next good answers are taken, for this tag and the other.
QByteArray HostileRig::afterwards() {
    const bool mayFail = controller.met().sent.mayDisturb;
    CommunicatorCommand command = exchange.access;
    if (!exchange.toWrite.isEmpty()) {
        // One element of what was written in pieces.
        command.unitCount = exchange.type == 0xDA ? command.unitCount : 1;
    }
    QByteArray value = goodValue();
    value.truncate(command.getDataSize());
    QByteArray problem = goodAgain(command, value, mayFail);
    if (problem.isEmpty()) {
        problem = goodAgain(dint(kOtherTag), otherValue(), false);
    }
    return problem.isEmpty() ? problem : "afterwards: " + problem;
}

/// Reads a value that the controller gives. Only a lack of time, or what was still under way, is an
/// excuse for a failure; for a wrong value there is none.
QByteArray HostileRig::goodAgain(const CommunicatorCommand& command, const QByteArray& value,
                                 bool mayFail) {
    // While a worker that polls opens its connection anew, all is refused.
    QElapsedTimer timer;
    timer.start();
    int excuses = mayFail ? 1 : 0;
    int late = 0;
    for (;;) {
        const Seen seen = access(command, QByteArray());
        if (seen.isGood) {
            return seen.value == value ? QByteArray()
                                       : said("value", seen.value) + said(" instead of", value);
        }
        if (exchange.isPolled && timer.elapsed() < kRecoveryMs) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            continue;
        }
        const bool isExcused = seen.isLate ? late++ < kLateAnswers : excuses-- > 0;
        if (!isExcused) {
            wasLate = wasLate || seen.isLate;
            return (seen.reason.isEmpty() ? "nothing" : seen.reason) + said(" instead of", value);
        }
    }
}
