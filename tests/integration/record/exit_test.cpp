// A program of its own: what ends here is a process that loaded the plugin itself.

#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include "integration/record/record_rig.h"

namespace {

class RecordingAtExit : public RecordTest {};

/// The runtime never unloads the plugin nor deletes its driver.
TEST_F(RecordingAtExit, IsWritten) {
    Controller simulator({"--tag", "D:DINT=42"});
    const pid_t child = fork();
    if (child == 0) {
        TestDevice device(simulator.port(), 400);
        DriverInterface* const driver = createDriver().release();
        readDint(driver, &device, "D");
        exit(HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    ASSERT_EQ(1, recordings().size());
    EXPECT_TRUE(recordings().first().endsWith("-end.pcapng"));
    expectSound(recordings().first());
}

}  // namespace
