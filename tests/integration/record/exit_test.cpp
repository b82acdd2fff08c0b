// A program of its own: what ends here is a process that loaded the plugin itself.

#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QFile>
#include <QLibrary>

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

/// A disk that hangs: the file that the recording goes to is a pipe that nobody reads yet.
int endWithAHungDisk(quint16 port, const QString& folder) {
    const QByteArray part =
        QFile::encodeName(QString("%1/.micro800-%2-0.part").arg(folder).arg(getpid()));
    if (mkfifo(part.constData(), 0600) != 0) {
        return 2;
    }
    TestDevice device(port);
    QLibrary library(pluginFile());
    typedef DriverInterface* (*Create)();
    const Create create = reinterpret_cast<Create>(library.resolve("CreateDriver"));
    std::unique_ptr<DriverInterface> driver(create());
    readDint(driver.get(), &device, "D");
    driver.reset();
    // The host unloads the plugin; then the disk comes back.
    if (!library.unload()) {
        return 3;
    }
    QFile disk(QFile::decodeName(part));
    if (!disk.open(QIODevice::ReadOnly) || disk.readAll().isEmpty()) {
        return 4;
    }
    return waitFor([&] { return !QFile::exists(disk.fileName()); }) ? 0 : 5;
}

/// The driver's end waits a second for it and no longer, and what hangs can go on when it may.
TEST_F(RecordingAtExit, DiskThatHangsHoldsNobodyUp) {
    Controller simulator({"--tag", "D:DINT=42"});
    const pid_t child = fork();
    if (child == 0) {
        alarm(60);
        const int result = endWithAHungDisk(simulator.port(), folder.path());
        exit(HasFailure() ? 1 : result);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

}  // namespace
