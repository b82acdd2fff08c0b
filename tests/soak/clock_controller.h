#ifndef TESTS_SOAK_CLOCK_CONTROLLER_H
#define TESTS_SOAK_CLOCK_CONTROLLER_H

#include <QStringList>
#include <cstdint>

#include "support/reserved_port.h"
#include "support/simulator_process.h"

/// A simulated controller whose values count milliseconds (time_oracle.h), and that can go away in
/// several ways.
class ClockController {
 public:
    /// `number` is 0 or 1; it has so many tags that count, and what the further options say.
    ClockController(int number, int clockTags, const QStringList& options = QStringList());

    /// Each false with the reason in error().
    bool start();
    bool restart();

    /// When its values began to count, by nowMs().
    int64_t epochMs() const { return epoch; }
    int number() const { return ownNumber; }
    quint16 port() const { return simulator.port(); }
    QString logPath() const { return simulator.logPath(); }
    void setLogging(bool on) { simulator.setLogging(on); }
    std::string error() const { return simulator.error(); }

    /// A command of the simulator's standard input; false when it is not answered with "ok".
    bool command(const QString& line);
    void kill() { simulator.kill(); }
    /// It keeps its sockets and answers nothing until it may go on.
    void hang();
    void goOn();

 private:
    bool readClock();

    const int ownNumber;
    const ReservedPort
        reserved;  ///< it comes back there, and a driver that asks meanwhile is refused
    SimulatorProcess simulator;
    int64_t epoch = 0;
};

#endif
