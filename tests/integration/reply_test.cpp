// Answers that say what is wanted in another way than the simulator does, as controllers have it.

#include <gtest/gtest.h>

#include "integration/driver_rig.h"
#include "integration/scripted_controller.h"
#include "support/app_directory/app_directory.h"

namespace {

QByteArray hex(const char* text) {
    return QByteArray::fromHex(text);
}

/// A controller that answers every tag request with one reply.
ScriptedController::Service always(const char* reply) {
    return [reply](const QByteArray&) { return hex(reply); };
}

const char kReadReply[] = "cc000000c4002a000000";  // a DINT, 42

class Reply : public ::testing::Test {
 protected:
    void SetUp() override { writeProjectDatabase(QStringList()); }

    QByteArray read(const ScriptedController& controller, const char* address = "DINT0:D",
                    int kind = kUnitDoubleWord, unsigned count = 1) {
        TestDevice device(controller.port(), 1000);
        if (!driver) {
            driver = createDriver();
        }
        return driver->read(&device, CommunicatorCommand(kind, count, address));
    }

    std::unique_ptr<DriverInterface> driver;
};

TEST_F(Reply, WithAnItemOfTheControllersOwn) {
    const ScriptedController controller(always(kReadReply), [](QByteArray answer) {
        answer[2] = static_cast<char>(answer.at(2) + 20);
        answer[30] = 3;  // items
        return answer + hex("00801000"
                            "0002af12c0a80114"
                            "0000000000000000");
    });
    EXPECT_EQ(dintBytes(42), read(controller));
    EXPECT_EQ(dintBytes(42), read(controller));
    EXPECT_FALSE(driver->hasError());
}

TEST_F(Reply, OfAnotherInterfaceHandle) {
    const ScriptedController controller(always(kReadReply), [](QByteArray answer) {
        answer[24] = 1;
        return answer;
    });
    EXPECT_EQ(dintBytes(42), read(controller));
}

TEST_F(Reply, WithAStatusBesideTheData) {
    const ScriptedController controller(always(kReadReply), [](QByteArray answer) {
        answer[8] = 1;
        return answer;
    });
    EXPECT_EQ(dintBytes(42), read(controller));
    EXPECT_FALSE(driver->hasError());
}

TEST_F(Reply, WithAnotherAddressItemIsRefused) {
    const ScriptedController controller(always(kReadReply), [](QByteArray answer) {
        answer[32] = 0;
        return answer;
    });
    EXPECT_TRUE(read(controller).isEmpty());
    EXPECT_EQ(QString("read DINT0:D> Internal: invalid reply"), driver->getLastError());
}

TEST_F(Reply, WithBytesOrElementsTooMany) {
    const ScriptedController oddBytes(always("cc000000c4002a000000ff"));
    EXPECT_EQ(dintBytes(42), read(oddBytes));
    driver.reset();
    const ScriptedController elements(always("cc000000c4002a0000002b0000002c000000"));
    EXPECT_EQ(dintBytes(42), read(elements));
    EXPECT_EQ(hex("2a0000002b000000"), read(elements, "DINT0:A[1]", kUnitDoubleWord, 2));
    EXPECT_FALSE(driver->hasError());
}

TEST_F(Reply, WithFewerElementsIsRefused) {
    const ScriptedController controller(always("cc000000c4002a0000002b0000"));
    EXPECT_EQ(dintBytes(42), read(controller));
    EXPECT_TRUE(read(controller, "DINT0:A[1]", kUnitDoubleWord, 2).isEmpty());
    EXPECT_EQ(QString("read DINT0:A[1]> Internal: invalid reply"), driver->getLastError());
}

/// A value that cannot be decoded is an error of that tag alone.
TEST_F(Reply, StringLongerThanItsData) {
    Controller simulator(
        {"--tag", "D:DINT=42", "--tag", "N:STRING=abc", "--fault", "string-length-past-end@tag=N"});
    TestDevice device(simulator.port(), 1000);
    driver = createDriver();
    driver->setSessionCommand(QList<CommunicatorCommand>()
                              << dint("D") << CommunicatorCommand(kUnitBlock, 3, "STRING0:N"));
    EXPECT_EQ(42, readDint(driver.get(), &device, "D"));
    ASSERT_TRUE(waitFor([&] { return simulator.countRequests("N") >= 3; }));
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(42, readDint(driver.get(), &device, "D"));
    }
    EXPECT_TRUE(driver->read(&device, CommunicatorCommand(kUnitBlock, 3, "STRING0:N")).isEmpty());
    EXPECT_EQ(QString("read STRING0:N> Internal: unknown error"), driver->getLastError());
}

}  // namespace
