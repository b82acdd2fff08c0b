#ifndef TESTS_SOAK_RECOVERY_RUN_H
#define TESTS_SOAK_RECOVERY_RUN_H

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include "integration/driver_rig.h"
#include "soak/clock_controller.h"
#include "soak/time_oracle.h"

struct RecoveryOptions {
    int cycles = 500;
    int timeoutMs = 1000;  ///< the device's
    int awayMs = 300;      ///< how long the controller stays away once that was noticed
};

/// How a controller goes away.
struct RecoveryKind {
    const char* name;
    std::vector<double>
        ms;  ///< from its return to the first value that it had after that, in order
};

/// One driver that polls, and a controller that goes away and comes back.
class RecoveryRun {
 public:
    explicit RecoveryRun(const RecoveryOptions& options);

    /// Called after each cycle with their number so far.
    std::function<void(int)> progress;

    /// Runs it all; false when it could not go on, for the reason in problem().
    bool run();

    const std::vector<RecoveryKind>& kinds() const { return results; }
    /// Values that were not right.
    const QStringList& wrong() const { return wrongTexts; }
    QString problem() const { return why; }

 private:
    bool cycle(int number);
    bool goAway(int kind, int number);
    bool comeBack(int kind);
    bool awaitLoss();
    /// Reads once; true for a value that the controller had at this time or later.
    bool readsValueSince(int64_t ms);
    bool giveUp(const QString& text);
    ClockController& active() { return *controllers[activeNumber]; }

    const RecoveryOptions options;
    std::unique_ptr<ClockController> controllers[2];
    int activeNumber = 0;
    bool hangs = false;  ///< the silent controller is stopped
    std::unique_ptr<TestDevice> device;
    std::unique_ptr<DriverInterface> driver;
    std::mt19937 random;
    TimeOracle oracle;
    std::vector<RecoveryKind> results;
    QStringList wrongTexts;
    QString why;
};

#endif
