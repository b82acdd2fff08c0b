// The simulated controller as a program.

#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <chrono>
#include <cstdio>
#include <memory>

#include "apps/simulator/control.h"
#include "apps/simulator/options.h"
#include "apps/simulator/server/server.h"
#include "apps/simulator/tags/ramp.h"

namespace {

const int kExitFailure = 1;
const int kExitUsage = 2;

int g_signalPipe[2];

void onSignal(int) {
    const char byte = 0;
    const ssize_t ignored = write(g_signalPipe[1], &byte, 1);
    static_cast<void>(ignored);
}

/// SIGINT and SIGTERM reach the event loop as a readable descriptor.
std::unique_ptr<QSocketNotifier> quitOnSignals() {
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_signalPipe) != 0) {
        return nullptr;
    }
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    auto notifier = std::make_unique<QSocketNotifier>(g_signalPipe[0], QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, qApp, &QCoreApplication::quit);
    return notifier;
}

int64_t monotonicMs() {
    using std::chrono::duration_cast;
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return duration_cast<std::chrono::milliseconds>(now).count();
}

int complain(const QString& what, int code) {
    std::fprintf(stderr, "micro800-sim: %s\n", qPrintable(what));
    return code;
}

/// Prints to standard output; the exit code.
int tell(const QString& text) {
    if (std::fputs(qPrintable(text), stdout) >= 0 && std::fflush(stdout) == 0) {
        return 0;
    }
    return complain("the output could not be written", kExitFailure);
}

std::vector<sim::Tag*> rampTags(const sim::Options& options, sim::TagTable& table) {
    std::vector<sim::Tag*> tags;
    for (const QString& name : options.rampTags) {
        tags.push_back(table.findAnyCase(name.toStdString()));
    }
    if (tags.empty()) {
        for (size_t i = 0; i < table.size(); ++i) {
            tags.push_back(&table.at(i));
        }
    }
    return tags;
}

int run(const sim::Options& options) {
    sim::TagTable table;
    sim::DataTable files;
    sim::FaultPlan faults;
    sim::RequestLog log;
    QString problem;
    if (!loadTags(options, table, &problem) || !loadFiles(options, files, &problem)) {
        return complain(problem, kExitUsage);
    }
    for (const QString& fault : options.faults) {
        faults.add(fault, &problem);
    }
    if (!options.log.isEmpty() && !log.open(options.log, &problem)) {
        return complain(problem, kExitFailure);
    }
    std::unique_ptr<sim::Ramp> ramp;
    // A request over a connection finds the values of its moment, also where the timer is late.
    const auto clock = [&ramp] {
        if (ramp) {
            ramp->catchUp();
        }
        return monotonicMs();
    };
    sim::Controller controller(options.controller, table, files, faults, clock);
    sim::Server server(controller, log);
    server.setDelay(options.delayMs);
    if (!server.start(options.address, options.port, &problem) ||
        (options.discovery && !server.startDiscovery(&problem))) {
        return complain(problem, kExitFailure);
    }
    if (options.rampMs > 0) {
        ramp = std::make_unique<sim::Ramp>(rampTags(options, table), options.rampMs);
        ramp->start();
    }
    std::unique_ptr<sim::Control> control;
    if (options.control) {
        control = std::make_unique<sim::Control>(
            sim::ControlTargets{&table, &files, &faults, &controller, &server});
        QObject::connect(control.get(), &sim::Control::quit, qApp, &QCoreApplication::quit,
                         Qt::QueuedConnection);
    }
    const std::unique_ptr<QSocketNotifier> stopSignals = quitOnSignals();
    const int told = tell(QString("%1\n").arg(server.port()));
    return told == 0 ? QCoreApplication::exec() : told;
}

}  // namespace

int main(int argc, char** argv) {
    // Qt's own event dispatcher is one or two microseconds a request faster than the one on GLib.
    qputenv("QT_NO_GLIB", "1");
    QCoreApplication application(argc, argv);
    sim::Options options;
    QString text;
    switch (sim::parseOptions(QCoreApplication::arguments(), &options, &text)) {
        case sim::ParseResult::exitOk:
            return tell(text);
        case sim::ParseResult::exitUsage:
            return complain(text + "\nTry 'micro800-sim --help'.", kExitUsage);
        case sim::ParseResult::run:
            break;
    }
    return run(options);
}
