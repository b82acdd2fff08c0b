#ifndef TESTS_SOAK_SOAK_RUN_H
#define TESTS_SOAK_SOAK_RUN_H

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include "integration/driver_rig.h"
#include "integration/write_ledger.h"
#include "soak/call_watch.h"
#include "soak/clock_controller.h"
#include "soak/process_figures.h"
#include "soak/time_oracle.h"
#include "soak/trouble.h"

struct SoakOptions {
    double seconds = 600;
    double troubleSeconds = 10;  ///< a fault so often
    int slackMs = 50;            ///< by which a call may be longer than its bound
    bool warmsUp = true;         ///< every kind of trouble once before anything is measured
};

/// One second of the run.
struct SoakSample {
    ProcessFigures process;
    double longestCallMs = 0;
    double wrong = 0;
};

struct SoakFigures {
    double reads = 0;
    double readsWithoutValue = 0;
    int addressChanges = 0;
    int listChanges = 0;
    int restarts = 0;
    int troubles = 0;
    double wrong = 0;
    QStringList wrongTexts;  ///< the first of them
    QString problem;         ///< why the run could not go on; empty when it did
};

/// A host with one driver, which polls 200 tags while it reads and writes others, and two simulated
/// controllers to which everything happens that can. Every value is judged when it comes, every
/// write against the controllers' logs.
class SoakRun {
 public:
    explicit SoakRun(const SoakOptions& options);

    /// Called once per second with the seconds so far, and with what goes on.
    std::function<void(double, const QString&)> progress;

    /// Runs it all; false when it could not go on, for the reason in the figures.
    bool run();

    const SoakFigures& figures() const { return counted; }
    const std::vector<SoakSample>& samples() const { return taken; }
    const CallWatch& calls() const { return watch; }
    const WriteLedger& writes() const { return ledger; }
    int64_t oldestMs() const { return oracle.oldestMs(); }

 private:
    struct Written {
        int tried = 0;          ///< of both controllers
        int known[2] = {0, 0};  ///< confirmed or seen, by controller
    };

    bool start();
    void warmUp();
    bool turn(int number, double seconds);
    /// Works until so many milliseconds after the run's start.
    void workUntil(double ms);
    void step();
    void readClockTag(int tag);
    void readWritten(int tag);
    void write(int tag);
    void changeList();
    void changeAddress();
    void restart();
    void settleWrites();
    void forgetWritten();
    void sample();
    void noteWrong(const QString& text);
    bool giveUp(const QString& why);
    bool isPolled(int tag) const;
    int pick(int count) { return int(random() % unsigned(count)); }
    ClockController& active() { return *controllers[activeNumber]; }

    const SoakOptions options;
    std::unique_ptr<ClockController> controllers[2];
    int activeNumber = 0;
    qint64 logTaken[2] = {0, 0};
    std::unique_ptr<TestDevice> device;
    std::unique_ptr<DriverInterface> driver;
    std::mt19937 random;
    std::vector<CommunicatorCommand> clockCommands;
    std::vector<CommunicatorCommand> writtenCommands;
    std::vector<Written> written;
    int firstPolled = 0;
    std::vector<int64_t>
        shownUntil;  ///< by tag: a value that it has from an earlier list is gone then
    TimeOracle oracle;
    Trouble trouble;
    QString goingOn;
    CallWatch watch;
    WriteLedger ledger;
    SoakFigures counted;
    std::vector<SoakSample> taken;  ///< of their whole number from the beginning
    size_t samplesTaken = 0;
    bool measures = false;
    int64_t began = 0;
    int64_t nextDirect = 0;
    int64_t nextWrite = 0;
};

#endif
