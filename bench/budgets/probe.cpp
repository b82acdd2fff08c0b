// What is measured: some accesses of each kind through the plugin file, on one processor, where no
// wait begins awake.
//
//   budget_probe PORT    against the simulator there; it has the tags T0 to T9
//
// Prints for each kind its name, how many there were, and what all of them together counted.

#include <sched.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

#include <QCoreApplication>
#include <QVariantMap>
#include <cstdio>
#include <cstdlib>

#include "bench/bench_rig.h"
#include "bench/budgets/accesses.h"
#include "bench/budgets/counted.h"

namespace {

const int kPolledTags = 9;
const int kDirectReads = 200;
const int kWrites = 100;
const int kCachedReads = 2000;
const int kPolledReads = 300;
const int kWaitUs = 2000;
const int kStartTries = 10;
const int kFailedPercent = 5;

void mark(int number) {
    close(number);
}

/// One kind of access, from the first to the last.
class Phase {
 public:
    explicit Phase(Access kind) : access(kind), before(countedSoFar()) { CALLGRIND_ZERO_STATS; }

    /// Ends it. `own`: what other threads did meanwhile is not of these accesses; `others`: what
    /// this thread did is not.
    enum Whose { all, own, others };
    void end(long times, Whose whose) const {
        CALLGRIND_DUMP_STATS_AT(kAccessNames[access]);
        const Counted now = countedSoFar();
        const long ownAllocations = now.ownAllocations - before.ownAllocations;
        const long ownClockReads = now.ownClockReads - before.ownClockReads;
        long allocations = now.allocations - before.allocations;
        long clockReads = now.clockReads - before.clockReads;
        if (whose == own) {
            allocations = ownAllocations;
            clockReads = ownClockReads;
        } else if (whose == others) {
            allocations -= ownAllocations;
            clockReads -= ownClockReads;
        }
        std::printf("%s\t%ld\t%ld\t%ld\n", kAccessNames[access], times, allocations, clockReads);
    }

 private:
    const Access access;
    const Counted before;
};

/// Makes an access that many times. On a machine that is very busy some get no answer in time; when
/// that is more than a few, the program ends.
template <typename Operation>
void repeat(Access access, int times, Phase::Whose whose, Operation operation) {
    const Phase phase(access);
    int failed = 0;
    for (int i = 0; i < times; ++i) {
        mark(beginMark(access));
        failed += operation() ? 0 : 1;
        mark(endMark(access));
    }
    phase.end(times, whose);
    if (failed > times * kFailedPercent / 100) {
        std::fprintf(stderr, "budget_probe: %d of %d failed: %s\n", failed, times,
                     kAccessNames[access]);
        std::exit(1);
    }
}

QVariantMap countersOf(DriverInterface* driver) {
    return driver->getThisObject()->property("counters").toMap();
}

long requestsOf(DriverInterface* driver) {
    return countersOf(driver).value("requests").toInt();
}

/// Waits until every tag of the session has been read once.
void awaitFirstPass(DriverInterface* driver) {
    while (countersOf(driver).value("passes").toMap().value("count").toInt() < 1) {
        usleep(kWaitUs);
    }
}

void polledReads(DriverInterface* driver) {
    const long before = requestsOf(driver);
    const Phase phase(kPolledRead);
    CALLGRIND_TOGGLE_COLLECT;  // of this thread
    mark(beginMark(kPolledRead));
    long reads = 0;
    while (reads < kPolledReads) {
        usleep(kWaitUs);
        reads = requestsOf(driver) - before;
    }
    mark(endMark(kPolledRead));
    CALLGRIND_TOGGLE_COLLECT;
    phase.end(reads, Phase::others);
}

void stayOnOneProcessor() {
    cpu_set_t processors;
    if (sched_getaffinity(0, sizeof processors, &processors) != 0) {
        return;
    }
    int first = 0;
    while (first < CPU_SETSIZE - 1 && !CPU_ISSET(first, &processors)) {
        ++first;
    }
    CPU_ZERO(&processors);
    CPU_SET(first, &processors);
    sched_setaffinity(0, sizeof processors, &processors);
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        return 2;
    }
    stayOnOneProcessor();
    makeProject({"DINT0:RECIPE[0..9]"});
    LoopbackDevice device(static_cast<quint16>(std::atoi(argv[1])));
    const CommunicatorCommand polled = dintCommand("T0");
    const CommunicatorCommand direct = dintCommand("T9");
    const QByteArray value(4, 1);
    QList<CommunicatorCommand> session;
    for (int i = 0; i < kPolledTags; ++i) {
        session << dintCommand(QString("T%1").arg(i));
    }

    std::unique_ptr<DriverInterface> driver;
    const auto read = [&](const CommunicatorCommand& command) {
        return driver->read(&device, command).size() == 4;
    };
    repeat(kStartUp, 1, Phase::all, [&] {
        driver = newDriver();
        int tries = 1;
        while (!read(direct) && tries < kStartTries) {
            ++tries;
        }
        return tries < kStartTries;
    });
    repeat(kDirectRead, kDirectReads, Phase::all, [&] { return read(direct); });
    repeat(kWrite, kWrites, Phase::all, [&] { return driver->write(&device, direct, value); });
    driver->setSessionCommand(session);
    awaitFirstPass(driver.get());
    read(polled);  // the first one works the address out
    repeat(kCachedRead, kCachedReads, Phase::own, [&] { return read(polled); });
    polledReads(driver.get());
    return 0;
}
