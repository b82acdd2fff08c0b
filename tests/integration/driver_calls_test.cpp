// The driver's own operations, which the plugin file does not export.

#include <gtest/gtest.h>

#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"
#include "integration/driver_rig.h"
#include "support/app_directory/app_directory.h"

namespace {

class DriverCalls : public ::testing::Test {
 protected:
    DriverCalls() : simulator({"--tag", "D:DINT=42", "--tag", "E:DINT=43"}) {
        writeProjectDatabase(QStringList());
        device.reset(new TestDevice(simulator.port()));
    }

    Controller simulator;
    std::unique_ptr<TestDevice> device;
    DriverABMicro800Eth driver;
};

TEST_F(DriverCalls, OneAttemptOfAReadIsServedByTheCacheOrTheController) {
    ASSERT_EQ(43, readDint(&driver, device.get(), "E"));
    EXPECT_EQ(dintBytes(42), driver.readData(dint("D")));
    EXPECT_EQ(1, simulator.countRequests("D"));
    driver.setSessionCommand(QList<CommunicatorCommand>() << dint("D"));
    ASSERT_TRUE(waitFor([&] { return simulator.countRequests("D") > 2; }));
    const int kReads = 20000;
    for (int i = 0; i < kReads; ++i) {
        ASSERT_EQ(dintBytes(42), driver.readData(dint("D")));
    }
    // Only the polling pass asked the controller meanwhile.
    EXPECT_LT(simulator.countRequests("D"), kReads / 4);
}

/// The worker answers no list with the id 0: the driver would wait in vain.
TEST_F(DriverCalls, AListNeverGoesOutWithTheIdZero) {
    ASSERT_EQ(43, readDint(&driver, device.get(), "E"));
    while (driver.nextTID(1) != 0xFFFF) {
    }
    QList<CommunicatorCommand> list;
    list << dint("D");
    EXPECT_TRUE(driver.sendSetSessionCmd(list));
    EXPECT_EQ(1, driver.tid(1));
    EXPECT_TRUE(waitFor([&] { return simulator.countRequests("D") > 0; }));
}

}  // namespace
