// A driver for hours: scripts/soak runs it.

#include <stdlib.h>
#include <unistd.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <cmath>
#include <cstdio>

#include "soak/recovery_run.h"
#include "soak/report.h"
#include "soak/soak_run.h"
#include "support/app_directory/app_directory.h"

namespace {

enum ExitCode { kGood = 0, kBad = 1, kUsage = 2 };

const int kUsualMinutes = 10;
/// Below that a warm-up of half a minute makes no sense.
const double kShortRunSeconds = 60;

/// The line that shows the progress of the run to a reader.
void showProgress(const QString& text) {
    if (isatty(STDERR_FILENO)) {
        std::fprintf(stderr, "\r\033[K%s", qPrintable(text));
    }
}

/// A number that is more than 0; false, with the reason told, for anything else.
bool readNumber(const QString& text, const char* what, double* number) {
    bool ok = false;
    *number = text.toDouble(&ok);
    if (!ok || !std::isfinite(*number) || *number <= 0) {
        std::fprintf(stderr, "driver_soak: '%s' is no %s\n", qPrintable(text), what);
        return false;
    }
    return true;
}

int soak(const SoakOptions& options, const QString& samplesPath, bool asJson) {
    SoakRun run(options);
    run.progress = [&](double seconds, const QString& goingOn) {
        showProgress(QString("%1 of %2 s, %3 reads, %4 wrong, longest call %5 ms  %6")
                         .arg(int(seconds))
                         .arg(int(options.seconds))
                         .arg(run.figures().reads, 0, 'f', 0)
                         .arg(run.figures().wrong, 0, 'f', 0)
                         .arg(run.calls().longestMs())
                         .arg(goingOn));
    };
    const bool whole = run.run();
    showProgress("");
    if (!samplesPath.isEmpty()) {
        QFile file(samplesPath);
        if (!file.open(QIODevice::WriteOnly) || file.write(samplesText(run.samples())) < 0) {
            std::fprintf(stderr, "driver_soak: cannot write %s\n", qPrintable(samplesPath));
            return kBad;
        }
    }
    const Report report = soakReport(run, options);
    std::fputs(asJson ? report.json().constData() : report.text().constData(), stdout);
    return whole && report.isGood() ? kGood : kBad;
}

int recover(const RecoveryOptions& options, double limitMs, bool asJson) {
    RecoveryRun run(options);
    run.progress = [&](int cycles) {
        showProgress(QString("cycle %1 of %2").arg(cycles).arg(options.cycles));
    };
    const bool whole = run.run();
    showProgress("");
    const Report report = recoveryReport(run, limitMs);
    std::fputs(asJson ? report.json().constData() : report.text().constData(), stdout);
    return whole && report.isGood() ? kGood : kBad;
}

int runSoak(int, char**) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "One driver polls 200 tags and reads and writes others while everything happens to its "
        "controllers that "
        "can.\nExit code 1: a wrong value, a call that was too long, something that grows.");
    parser.addHelpOption();
    parser.addOption({"every", "A fault every SECONDS (10).", "SECONDS", "10"});
    parser.addOption({"slack", "A call may be longer than its bound by so much (50).", "MS", "50"});
    parser.addOption({"samples", "What was measured each second goes to FILE.", "FILE"});
    parser.addOption({"json", "One JSON object instead of the table."});
    parser.addOption(
        {"recovery", "Instead: a controller goes away and comes back so often.", "CYCLES"});
    parser.addOption({"timeout", "Time-out of the device in --recovery (1000).", "MS", "1000"});
    parser.addOption({"limit", "A good value within so long in --recovery (2000).", "MS", "2000"});
    parser.addPositionalArgument("minutes", "How long, in minutes (10).", "[MINUTES]");
    parser.process(QCoreApplication::arguments());
    const QStringList words = parser.positionalArguments();
    double minutes = kUsualMinutes;
    double every = 0;
    double slack = 0;
    double cycles = 1;
    double timeout = 0;
    double limit = 0;
    if (words.size() > 1 ||
        (!words.isEmpty() && !readNumber(words.first(), "number of minutes", &minutes)) ||
        !readNumber(parser.value("every"), "number of seconds", &every) ||
        !readNumber(parser.value("slack"), "number of milliseconds", &slack) ||
        (parser.isSet("recovery") &&
         !readNumber(parser.value("recovery"), "number of cycles", &cycles)) ||
        !readNumber(parser.value("timeout"), "number of milliseconds", &timeout) ||
        !readNumber(parser.value("limit"), "number of milliseconds", &limit)) {
        std::fprintf(stderr, "Try 'driver_soak --help'.\n");
        return kUsage;
    }
    if (parser.isSet("recovery")) {
        RecoveryOptions options;
        options.cycles = int(cycles);
        options.timeoutMs = int(timeout);
        return recover(options, limit, parser.isSet("json"));
    }
    SoakOptions options;
    options.seconds = minutes * 60;
    options.troubleSeconds = every;
    options.slackMs = int(slack);
    options.warmsUp = options.seconds >= kShortRunSeconds;
    return soak(options, parser.value("samples"), parser.isSet("json"));
}

/// The allocator hands every byte back that the program hands back to it: what it keeps for the
/// next time is no growth of the driver, and comes in steps that hide a small one. Takes effect in
/// the program that is started anew.
void keepNothingInTheAllocator() {
    setenv("GLIBC_TUNABLES",
           "glibc.malloc.tcache_count=0:glibc.malloc.arena_max=1:glibc.malloc.mxfast=0:"
           "glibc.malloc.trim_threshold=131072",
           1);
}

}  // namespace

int main(int argc, char** argv) {
    keepNothingInTheAllocator();
    return runInOwnAppDirectory(argc, argv, runSoak);
}
