// How a process ends that has the plugin loaded. ctest runs every test in a process of its own, and
// what is proved here is that process's exit code: a crash in a handler of exit() comes after the
// test's own result.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QFile>
#include <QPluginLoader>
#include <QSqlDatabase>

#include "integration/driver_rig.h"
#include "support/app_directory/app_directory.h"

namespace {

/// Outlives main(), like a driver in a static object of the runtime.
std::unique_ptr<DriverInterface> globalDriver;
std::unique_ptr<Controller> globalController;
std::unique_ptr<TestDevice> globalDevice;

class End : public ::testing::Test {
 protected:
    void SetUp() override {
        writeProjectDatabase(QStringList() << "DINT0:ARR[0..9]");
        globalController.reset(new Controller({"--tag", "D:DINT=42", "--tag", "E:DINT=43"}));
        globalDevice.reset(new TestDevice(globalController->port(), 500));
    }

    /// The worker polls D, and the connection is open.
    void use(DriverInterface* driver) {
        driver->setSessionCommand(QList<CommunicatorCommand>() << dint("D"));
        EXPECT_EQ(42, readDint(driver, globalDevice.get(), "D"));
        EXPECT_EQ(43, readDint(driver, globalDevice.get(), "E"));
    }

    static DriverInterface* instanceOf(QPluginLoader* loader) {
        return qobject_cast<DriverInterface*>(loader->instance());
    }
};

TEST_F(End, InstanceNeverUnloadedAndNeverUsed) {
    QPluginLoader loader(pluginFile());
    ASSERT_TRUE(instanceOf(&loader)) << loader.errorString().toStdString();
}

TEST_F(End, InstanceNeverUnloadedAfterUse) {
    QPluginLoader loader(pluginFile());
    DriverInterface* const driver = instanceOf(&loader);
    ASSERT_TRUE(driver) << loader.errorString().toStdString();
    use(driver);
}

TEST_F(End, InstanceNeverUnloadedWhileTheControllerIsSilent) {
    QPluginLoader loader(pluginFile());
    DriverInterface* const driver = instanceOf(&loader);
    ASSERT_TRUE(driver) << loader.errorString().toStdString();
    use(driver);
    ASSERT_EQ("ok", globalController->command("fault silence"));
}

TEST_F(End, GlobalHolderOfAnUnusedDriver) {
    globalDriver = createDriver();
    ASSERT_TRUE(globalDriver);
}

TEST_F(End, GlobalHolderOfAUsedDriver) {
    globalDriver = createDriver();
    use(globalDriver.get());
}

TEST_F(End, GlobalHolderOfTheInstance) {
    QPluginLoader loader(pluginFile());
    globalDriver.reset(instanceOf(&loader));
    ASSERT_TRUE(globalDriver) << loader.errorString().toStdString();
    use(globalDriver.get());
}

/// The declarations could not be read: the driver keeps its database open for the next attempt.
TEST_F(End, GlobalHolderOfADriverWithAnOpenDatabase) {
    {
        const QString path = writeProjectDatabase(QStringList());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    }
    globalDriver = createDriver();
    EXPECT_TRUE(globalDriver->read(globalDevice.get(), dint("D")).isEmpty());
    EXPECT_EQ(QString("failed to initialize array definition table"), globalDriver->getLastError());
    EXPECT_EQ(1, QSqlDatabase::connectionNames().size());
}

TEST_F(End, ExitInTheMiddleOfMain) {
    globalDriver = createDriver();
    use(globalDriver.get());
    exit(HasFailure() ? 1 : 0);
}

TEST_F(End, UnloadTwice) {
    QPluginLoader loader(pluginFile());
    DriverInterface* const driver = instanceOf(&loader);
    ASSERT_TRUE(driver) << loader.errorString().toStdString();
    use(driver);
    EXPECT_TRUE(loader.unload());
    EXPECT_FALSE(loader.unload());
}

TEST_F(End, LoadUseUnloadThreeTimes) {
    for (int round = 0; round < 3; ++round) {
        QPluginLoader loader(pluginFile());
        DriverInterface* const driver = instanceOf(&loader);
        ASSERT_TRUE(driver) << loader.errorString().toStdString();
        use(driver);
        EXPECT_TRUE(loader.unload());
    }
}

/// A process that the runtime forks to start a program, and that ends with exit() because it
/// cannot, destroys its copy of the drivers. The threads and the controller are those of the
/// parent.
TEST_F(End, ForkedProcessEndsAndLeavesTheParentsWorker) {
    globalDriver = createDriver();
    use(globalDriver.get());
    const pid_t child = fork();
    if (child == 0) {
        globalController.release();  // the parent ends it
        alarm(60);                   // a wait that nothing ends ends here
        globalDriver.reset();
        _exit(HasFailure() ? 1 : 0);  // no leak detector: what it would find is the parent's
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    EXPECT_EQ(43, readDint(globalDriver.get(), globalDevice.get(), "E"));
    EXPECT_EQ(1, globalController->connectionsOpened());
}

/// However many drivers there are: they stop beside each other. The handlers run in a child, whose
/// end is timed.
TEST_F(End, ManyDriversWaitTogether) {
    const int kDrivers = 24;
    const int kLongestMs = 12000;  // one after the other they would take 24 s
    ASSERT_EQ("ok", globalController->command("fault silence"));
    const TestDevice device(globalController->port(), 60000);
    QElapsedTimer ending;
    int pipe[2];
    ASSERT_EQ(0, ::pipe(pipe));
    const pid_t child = fork();
    if (child == 0) {
        for (int i = 0; i < kDrivers; ++i) {
            DriverInterface* const driver = createDriver().release();
            driver->setSessionCommand(QList<CommunicatorCommand>() << dint("D"));
            TestDevice own = device;
            driver->read(&own, CommunicatorCommand(7, 1, "DINT0:D"));
        }
        globalController.release();  // the parent ends it
        // All of them wait for an answer that does not come.
        const bool ready = write(pipe[1], "x", 1) == 1;
        exit(ready ? 0 : 1);
    }
    char byte = 0;
    ASSERT_EQ(1, ::read(pipe[0], &byte, 1));
    ending.start();
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    EXPECT_LT(ending.elapsed(), kLongestMs);
    close(pipe[0]);
    close(pipe[1]);
}

/// The declarations are read once: afterwards Qt's list of connections is as it was before.
TEST_F(End, NoConnectionStaysInTheListOfTheDatabaseClasses) {
    const std::unique_ptr<DriverInterface> driver = createDriver();
    use(driver.get());
    EXPECT_EQ(QStringList(), QSqlDatabase::connectionNames());
}

}  // namespace
