// Whatever the system refuses a driver, once and at any moment of its life: the process lives, the
// next try works, nothing is left, and no value is wrong.

#include <errno.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

#include "integration/driver_rig.h"
#include "integration/failing_system/failing_calls.h"
#include "integration/failing_system/life.h"
#include "support/app_directory/app_directory.h"
#include "support/sanitizer.h"

namespace {

/// A life that lasts longer hangs.
const unsigned kLongestLifeSeconds = 100;
const int kAtOnce = kLifeSlots;
/// Lives for one call; where it is made more often, they are spread over all its moments. With
/// MICRO800_ALL_FAILURES there is one for each.
const long kMostLives = kSanitized ? 48 : 360;

/// The report of a life's process to the test.
struct Report {
    long calls;
    bool failed;
    char problem[400];
};

/// One life to be lived.
struct Lot {
    failing::Failure failure;
    long number;
    failing::Mode mode;
    bool mustWork;
};

class FailingSystem : public ::testing::Test {
 protected:
    FailingSystem() : first(lifeTags(false)), second(lifeTags(true)) {
        writeProjectDatabase(lifeDeclarations());
        reports =
            static_cast<Report*>(mmap(nullptr, kLifeSlots * sizeof(Report), PROT_READ | PROT_WRITE,
                                      MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    }
    ~FailingSystem() override { munmap(reports, kLifeSlots * sizeof(Report)); }

    /// Lives one life in a process of its own, in this slot.
    pid_t begin(const Lot& lot, int slot) {
        reports[slot] = Report();
        const LifePlace place = {first.port(), second.port(), slot, 1000 + ++lives};
        const pid_t child = fork();
        if (child == 0) {
            alarm(kLongestLifeSeconds);
            failing::arm(lot.failure, lot.number, lot.mode);
            const std::string problem = liveOnce(place, lot.mustWork);
            Report& report = reports[slot];
            report.calls = failing::count();
            report.failed = failing::hasFailed();
            snprintf(report.problem, sizeof report.problem, "%s", problem.c_str());
            _exit(0);
        }
        return child;
    }

    /// Waits for a life to end; what was wrong with it, empty when nothing was.
    std::string end(pid_t child, int slot) {
        int status = 0;
        while (waitpid(child, &status, 0) != child) {
        }
        if (WIFSIGNALED(status)) {
            return WTERMSIG(status) == SIGALRM
                       ? "hangs"
                       : std::string("dies of ") + strsignal(WTERMSIG(status));
        }
        if (WEXITSTATUS(status) != 0) {
            return "ends with exit code " + std::to_string(WEXITSTATUS(status));
        }
        return reports[slot].problem;
    }

    /// Lives all of them, some at once. Each is a part of the test.
    void live(const std::vector<Lot>& lots) {
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
                failures += reports[slot].failed;
            }
        }
    }

    /// How many such calls a life makes.
    long callsOf(const failing::Failure& failure) {
        EXPECT_EQ("", end(begin(Lot{failure, 0, failing::kPlain, true}, 0), 0)) << failure.call;
        return reports[0].calls;
    }

    Controller first;
    Controller second;
    Report* reports;
    int lives = 0;
    int failures = 0;  ///< calls that really failed
};

#ifdef MICRO800_ASAN
/// A look for leaks that sees none would let every life pass.
TEST(LeavingMemory, IsSeen) {
    EXPECT_EXIT(_exit(leavesMemory() ? 1 : 0), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(
        {
            // On a thread whose stack is gone afterwards.
            std::thread([] { memset(malloc(77), 1, 77); }).join();
            _exit(leavesMemory() ? 1 : 0);
        },
        ::testing::ExitedWithCode(1), "77 byte");
}
#endif

struct Call {
    const char* name;
    std::vector<int> errors;
};

void PrintTo(const Call& call, std::ostream* out) {
    *out << call.name;
}

class FailingCall : public FailingSystem, public ::testing::WithParamInterface<Call> {};

TEST_P(FailingCall, FailsOnceAtAnyMoment) {
    const Call& call = GetParam();
    const long calls = callsOf({call.name, call.errors.front()});
    ASSERT_GT(calls, 0) << "a life makes no such call";
    const char* const all = getenv("MICRO800_ALL_FAILURES");
    const long limit = all ? calls : kMostLives / static_cast<long>(call.errors.size());
    const long step = std::max((calls + limit - 1) / limit, 1L);
    std::vector<Lot> lots;
    long first = 0;  // another one for each error
    for (const int error : call.errors) {
        for (long number = 1 + first++ % step; number <= calls; number += step) {
            lots.push_back(Lot{{call.name, error}, number, failing::kPlain, true});
        }
    }
    live(lots);
    EXPECT_GT(failures, 0);
    printf("%s: %ld calls in a life, %zu lives, %d failures\n", call.name, calls, lots.size(),
           failures);
}

const Call kCalls[] = {
    {"access", {EACCES}},
    {"close", {EINTR, EIO}},
    {"connect", {ECONNREFUSED, EAGAIN, EINTR, ENETUNREACH}},
    {"fcntl", {EINVAL, EAGAIN, EINTR}},
    {"getaddrinfo", {EAI_MEMORY, EAI_AGAIN}},
    {"getprotobyname_r", {ENOMEM}},
    {"getsockopt", {ENOBUFS}},
    {"malloc", {ENOMEM}},
    {"open", {EMFILE, EINTR, EACCES}},
    {"pthread_create", {EAGAIN}},
    {"read", {EIO, EINTR}},
    {"recv", {ECONNRESET, EAGAIN, EINTR, ENOMEM}},
    {"sched_getaffinity", {EPERM}},
    {"select", {EINTR, ENOMEM, EBADF}},
    {"send", {ECONNRESET, EAGAIN, EINTR, EPIPE}},
    {"setsockopt", {ENOBUFS}},
    {"shutdown", {ENOTCONN}},
    {"socket", {EMFILE, ENOBUFS}},
    {"socketpair", {EMFILE}},
    {"stat", {ENOMEM}},
};

INSTANTIATE_TEST_SUITE_P(All, FailingCall, ::testing::ValuesIn(kCalls),
                         [](const ::testing::TestParamInfo<Call>& info) {
                             return std::string(info.param.name);
                         });

struct Way {
    const char* name;
    failing::Mode mode;
    bool mustWork;
};

void PrintTo(const Way& way, std::ostream* out) {
    *out << way.name;
}

class SystemThat : public FailingSystem, public ::testing::WithParamInterface<Way> {};

TEST_P(SystemThat, DoesLittleAtATime) {
    live({Lot{{"none", 0}, 0, GetParam().mode, GetParam().mustWork}});
}

INSTANTIATE_TEST_SUITE_P(
    All, SystemThat,
    ::testing::Values(Way{"ReceivesAByteFromPipes", failing::kShortPipeReceives, true},
                      Way{"ReceivesAHeaderAtMost", failing::kShortReceives, true},
                      Way{"SendsAByte", failing::kOneByteSends, true},
                      Way{"InterruptsEverySecondOpening", failing::kInterruptedOpenings, true},
                      Way{"InterruptsEveryThirdCall", failing::kInterruptedThird, false},
                      Way{"InterruptsEverySecondCall", failing::kInterruptedSecond, false},
                      Way{"SendsAByteToPipes", failing::kShortPipeSends, false},
                      Way{"ReceivesAByte", failing::kOneByteReceives, false}),
    [](const ::testing::TestParamInfo<Way>& info) { return std::string(info.param.name); });

}  // namespace
