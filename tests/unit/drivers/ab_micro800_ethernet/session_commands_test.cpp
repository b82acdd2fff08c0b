#include <gtest/gtest.h>

#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"

namespace {

TEST(SessionCommands, BeforeTheWorkerRunsTheyAreOnlyKept) {
    DriverABMicro800Eth driver;
    QList<CommunicatorCommand> list;
    driver.setSessionCommand(list);
    list.append(CommunicatorCommand(3, 1, "DINT0:A"));
    driver.setSessionCommand(list);
    driver.clearSessionCommand();
    EXPECT_FALSE(driver.hasError());
}

}  // namespace
