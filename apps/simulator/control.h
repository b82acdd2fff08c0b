#ifndef APPS_SIMULATOR_CONTROL_H
#define APPS_SIMULATOR_CONTROL_H

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

#include "apps/simulator/server/server.h"

namespace sim {

/// What commands act on; everything outlives the control channel.
struct ControlTargets {
    TagTable* tags = nullptr;
    DataTable* files = nullptr;
    FaultPlan* faults = nullptr;
    Controller* controller = nullptr;
    Server* server = nullptr;
};

/// Carries out one command line. Returns the line to answer with, "ok" or "error: ...", with the
/// values for `get`. Sets `quit` for the command of that name.
QString runCommand(const QString& line, const ControlTargets& targets, bool* quit);

/// Takes commands line by line from standard input and answers each with a line on standard output.
class Control : public QObject {
    Q_OBJECT

 public:
    explicit Control(const ControlTargets& targets);

 signals:
    /// By command, or because standard input has ended.
    void quit();

 private:
    void readSome();

    const ControlTargets targets;
    QSocketNotifier readable;
    QByteArray text;
};

}  // namespace sim

#endif
