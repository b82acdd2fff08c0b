// What the system refuses a driver, once and at any moment of its life: the process lives, the
// next try works, nothing is left, and no value is wrong.

#include <errno.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <thread>

#include "integration/failing_system/failing_rig.h"

namespace {

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

class FailingCall : public FailingSystem, public ::testing::WithParamInterface<Call> {};

TEST_P(FailingCall, FailsOnceAtAnyMoment) {
    failEach(GetParam(), failing::kPlain, false);
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
    {"recv", {ECONNRESET, EAGAIN, EINTR, ENOMEM, ENOBUFS}},
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

/// What the driver does about a failure meets the next one.
TEST_F(FailingSystem, LacksMemoryForAWhile) {
    const int kInARow = 40;
    failEach({"malloc", {ENOMEM}}, failing::kPlain, false, kInARow);
    failEach({"malloc", {ENOMEM}}, failing::kPlain, true, kInARow);
}

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
    live({Lot{{"none", 0}, 0, GetParam().mode, GetParam().mustWork, false, 1}});
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
