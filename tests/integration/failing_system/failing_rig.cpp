#include "integration/failing_system/failing_rig.h"

#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

#include "support/app_directory/app_directory.h"
#include "support/sanitizer.h"

namespace {

/// A life that lasts longer hangs.
const unsigned kLongestLifeSeconds = 100;
const int kAtOnce = kLifeSlots;
/// Lives for one call; where it is made more often, they are spread over all its moments. With
/// MICRO800_ALL_FAILURES there is one for each.
const long kMostLives = kSanitized ? 48 : 360;

}  // namespace

void PrintTo(const Call& call, std::ostream* out) {
    *out << call.name;
}

FailingSystem::FailingSystem() : first(lifeTags(false)), second(lifeTags(true)) {
    writeProjectDatabase(lifeDeclarations());
    reports = static_cast<Report*>(mmap(nullptr, kLifeSlots * sizeof(Report),
                                        PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
}

FailingSystem::~FailingSystem() {
    munmap(reports, kLifeSlots * sizeof(Report));
}

/// Lives one life in a process of its own, in this slot.
pid_t FailingSystem::begin(const Lot& lot, int slot) {
    reports[slot] = Report();
    ++lives;
    LifePlace place = {first.port(), second.port(), slot, 1000 + lives, QString()};
    if (lot.records) {
        place.recordings = recordings.filePath(QString::number(lives));
    }
    fflush(stdout);  // or the child writes it once more
    const pid_t child = fork();
    if (child == 0) {
        alarm(kLongestLifeSeconds);
        Report& report = reports[slot];
        failing::arm(lot.failure, lot.number, lot.mode, lot.times);
        const std::string problem = liveOnce(place, lot.mustWork, &report.left);
        report.calls = failing::count();
        report.failed = failing::hasFailed();
        snprintf(report.problem, sizeof report.problem, "%s", problem.c_str());
        if (kSanitized) {
            _exit(0);  // the life has looked for leaks itself
        }
        exit(0);  // by the handlers of the plugin and of Qt; scripts/coverage has one too
    }
    return child;
}

/// Waits for a life to end; what was wrong with it, empty when nothing was.
std::string FailingSystem::end(pid_t child, int slot) {
    int status = 0;
    while (waitpid(child, &status, 0) != child) {
    }
    if (WIFSIGNALED(status)) {
        return WTERMSIG(status) == SIGALRM ? "hangs"
                                           : std::string("dies of ") + strsignal(WTERMSIG(status));
    }
    if (WEXITSTATUS(status) != 0) {
        return "ends with exit code " + std::to_string(WEXITSTATUS(status));
    }
    return reports[slot].problem;
}

FailingSystem::Reports FailingSystem::live(const std::vector<Lot>& lots) {
    Reports all;
    for (size_t at = 0; at < lots.size(); at += kAtOnce) {
        const size_t behind = std::min(lots.size(), at + kAtOnce);
        std::vector<pid_t> children;
        for (size_t i = at; i < behind; ++i) {
            children.push_back(begin(lots[i], static_cast<int>(i - at)));
        }
        for (size_t i = at; i < behind; ++i) {
            const int slot = static_cast<int>(i - at);
            const std::string problem = end(children[i - at], slot);
            const Lot& lot = lots[i];
            EXPECT_EQ("", problem) << lot.failure.call << " number " << lot.number << ", "
                                   << strerror(lot.failure.error) << ", mode " << lot.mode;
            all.push_back(reports[slot]);
        }
    }
    return all;
}

/// How many such calls a life makes when none fails.
long FailingSystem::callsOf(const Lot& lot) {
    EXPECT_EQ("", end(begin(lot, 0), 0)) << lot.failure.call;
    return reports[0].calls;
}

FailingSystem::Reports FailingSystem::failEach(const Call& call, failing::Mode mode, bool records,
                                               int times) {
    const long calls = callsOf(Lot{{call.name, 0}, 0, mode, true, records, 1});
    EXPECT_GT(calls, 0) << "a life makes no such call";
    const char* const all = getenv("MICRO800_ALL_FAILURES");
    const long most = records ? kMostLives / 3 : kMostLives;
    const long limit = all ? calls : most / static_cast<long>(call.errors.size());
    const long step = std::max((calls + limit - 1) / std::max(limit, 1L), 1L);
    std::vector<Lot> lots;
    long first = 0;  // another one for each error
    for (const int error : call.errors) {
        for (long number = 1 + first++ % step; number <= calls; number += step) {
            lots.push_back(Lot{{call.name, error}, number, mode, true, records, times});
        }
    }
    const Reports ended = live(lots);
    const auto failures = std::count_if(ended.begin(), ended.end(),
                                        [](const Report& report) { return report.failed; });
    EXPECT_GT(failures, 0);
    printf("%s: %ld calls in a life, %zu lives, %ld failures\n", call.name, calls, lots.size(),
           static_cast<long>(failures));
    return ended;
}
