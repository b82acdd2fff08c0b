#include "common/process.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

TEST(ProcessIsRunning, ThisProcessAndItsParent) {
    EXPECT_TRUE(ProcessIsRunning(getpid()));
    EXPECT_TRUE(ProcessIsRunning(getppid()));
}

TEST(ProcessIsRunning, SendsTheProcessNoSignal) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    ASSERT_EQ(0, sigprocmask(SIG_SETMASK, &all, &before));
    EXPECT_TRUE(ProcessIsRunning(getpid()));
    sigset_t pending;
    ASSERT_EQ(0, sigpending(&pending));
    EXPECT_TRUE(sigisemptyset(&pending));
    ASSERT_EQ(0, sigprocmask(SIG_SETMASK, &before, nullptr));
}

TEST(ProcessIsRunning, InitCountsWithoutPermissionToo) {
    EXPECT_TRUE(ProcessIsRunning(1));
}

TEST(ProcessIsRunning, AReapedChildIsGone) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        _exit(0);
    }
    EXPECT_TRUE(ProcessIsRunning(child));  // running or waiting to be reaped
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_FALSE(ProcessIsRunning(child));
}

TEST(ProcessIsRunning, LackOfPermissionMeansRunning) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "init is foreign already";
    }
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // As nobody, init may not be signalled; the child's status shows the answer.
        if (setgid(65534) != 0 || setuid(65534) != 0) {
            _exit(3);
        }
        _exit(ProcessIsRunning(1) ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(0, WEXITSTATUS(status));
}

TEST(ProcessIsRunning, NumbersBeyondAProcessIdAreNotCut) {
    EXPECT_FALSE(ProcessIsRunning((1LL << 32) + getpid()));
    EXPECT_FALSE(ProcessIsRunning(0x7FFFFFFFFFFFFFFFLL));
    EXPECT_FALSE(ProcessIsRunning(-0x7FFFFFFFFFFFFFFFLL));
    EXPECT_FALSE(ProcessIsRunning(0x7FFFFFFF));  // above the kernel's largest id
}

}  // namespace
