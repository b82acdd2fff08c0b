#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QSqlDatabase>
#include <QStringList>
#include <thread>

#include "common/device_setting.h"
#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"
#include "support/app_directory/app_directory.h"

namespace {

TEST(StartUp, TransactionIdsCountAPipeAndWrap) {
    DriverABMicro800Eth driver;
    EXPECT_EQ(0, driver.tid(0));
    EXPECT_EQ(1, driver.nextTID(0));
    EXPECT_EQ(1, driver.tid(0));
    EXPECT_EQ(0, driver.tid(1));
    for (int i = 2; i <= 65535; ++i) {
        driver.nextTID(0);
    }
    EXPECT_EQ(65535, driver.tid(0));
    EXPECT_EQ(0, driver.nextTID(0));
    EXPECT_EQ(1, driver.nextTID(1));
}

TEST(StartUp, AddressChangeBeforeTheFirstReadIsOnlyKept) {
    DriverABMicro800Eth driver;
    DeviceSetting setting(device_type(32), "COM2", 9600, 8, 0, 0);
    setting.socketList.append(qMakePair(QString("127.0.0.1"), quint16(44818)));
    EXPECT_TRUE(driver.deviceSettingChanged(&setting));
    EXPECT_FALSE(driver.hasError());
}

TEST(StartUp, TheConnectionToTheDatabaseIsMadeOnce) {
    writeProjectDatabase(QStringList("DINT0:ARR[0..9]"));
    {
        DriverABMicro800Eth driver;
        EXPECT_TRUE(driver.createDBConnection());
        EXPECT_TRUE(driver.createDBConnection());
        EXPECT_EQ(1, QSqlDatabase::connectionNames().size());
    }
    EXPECT_EQ(0, QSqlDatabase::connectionNames().size());
}

/// What the driver has running belongs to the process that it was made in.
TEST(StartUp, TheEndOfAForkedProcessEndsNothing) {
    writeProjectDatabase(QStringList("DINT0:ARR[0..9]"));
    DriverABMicro800Eth driver;
    ASSERT_TRUE(driver.createDBConnection());
    const pid_t child = fork();
    if (child == 0) {
        exit(0);
    }
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(0, WEXITSTATUS(status));
    EXPECT_EQ(1, QSqlDatabase::connectionNames().size());
}

TEST(StartUp, TheInstanceOfAPluginIsMadeAnewOnlyWhenItWasDeleted) {
    QObject* const first = DriverABMicro800Eth::pluginInstance();
    ASSERT_NE(nullptr, first);
    EXPECT_EQ(first, DriverABMicro800Eth::pluginInstance());
    delete first;
    const std::unique_ptr<QObject> second(DriverABMicro800Eth::pluginInstance());
    EXPECT_NE(nullptr, qobject_cast<DriverInterface*>(second.get()));
}

TEST(StartUp, EveryDriverHasAConnectionNameOfItsOwn) {
    // Every thread's generator starts alike: without care the drivers of two threads would share
    // one database connection.
    writeProjectDatabase(QStringList("DINT0:ARR[0..9]"));
    bool first = false;
    bool second = false;
    int names = 0;
    std::thread([&] {
        DriverABMicro800Eth one;
        first = one.createDBConnection();
        std::thread([&] {
            DriverABMicro800Eth two;
            second = two.createDBConnection();
            names = QSqlDatabase::connectionNames().size();
        }).join();
    }).join();
    EXPECT_TRUE(first);
    EXPECT_TRUE(second);
    EXPECT_EQ(2, names);
    EXPECT_EQ(0, QSqlDatabase::connectionNames().size());
}

}  // namespace
