// The example that shows how to read a tag with the CIP client.

#include <gtest/gtest.h>

#include <QJsonObject>

#include "integration/cli/cli_process.h"
#include "support/simulator_process.h"

namespace {

class ReadTagExample : public testing::Test {
 protected:
    void startController(const QStringList& arguments) {
        controller = std::make_unique<SimulatorProcess>(arguments);
        ASSERT_TRUE(controller->start()) << controller->error();
    }
    static CliResult run(const QStringList& arguments) {
        CliProcess process;
        EXPECT_TRUE(
            process.start(READ_TAG_PROGRAM, arguments, QProcessEnvironment::systemEnvironment()));
        return process.finish();
    }
    CliResult read(const char* tag) const {
        return run({"127.0.0.1", QString::number(controller->port()), tag});
    }
    /// What the controller was asked for, in order.
    std::string requests() const {
        QStringList names;
        for (const QJsonObject& request : controller->log()) {
            const QString service = request.value("service").toString();
            names << (service.isEmpty() ? request.value("command").toString() : service);
        }
        return names.join(' ').toStdString();
    }

    std::unique_ptr<SimulatorProcess> controller;
};

TEST_F(ReadTagExample, ReadsATagAndLeavesNothingOpen) {
    startController({"--tag", "COUNTER:DINT=-42"});
    const CliResult result = read("COUNTER");
    EXPECT_EQ(result.err.toStdString(), "");
    EXPECT_EQ(result.out.toStdString(), "COUNTER = -42\n");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(controller->waitForLog(1, [](const QJsonObject& request) {
        return request.value("command") == "UnRegisterSession";
    }));
    EXPECT_EQ(requests(), "RegisterSession ForwardOpen ReadTag ForwardClose UnRegisterSession");
}

TEST_F(ReadTagExample, SaysWhatWentWrong) {
    startController(
        {"--fault", "refuse-register:2x1@on=register", "--fault", "refuse-open:0113x1@on=open"});
    for (const char* problem :
         {"EIP error: 0002H\n", "MR error: 0001H, 0113H\n", "AB error: 0005H\n"}) {
        const CliResult result = read("COUNTER");
        EXPECT_EQ(result.err.toStdString(), problem);
        EXPECT_EQ(result.out.toStdString(), "");
        EXPECT_EQ(result.exitCode, 1);
    }
    ASSERT_EQ(0, controller->stop());
    const CliResult result = read("COUNTER");
    EXPECT_EQ(result.err.toStdString(), "Connection refused(111)\n");
    EXPECT_EQ(result.exitCode, 1);
}

TEST_F(ReadTagExample, WithoutItsArguments) {
    for (const QStringList& arguments :
         {QStringList(), QStringList{"127.0.0.1", "44818"}, QStringList{"127.0.0.1", "x", "T"}}) {
        const CliResult result = run(arguments);
        EXPECT_EQ(result.err.toStdString(), "HOST PORT TAG?\n");
        EXPECT_EQ(result.exitCode, 1);
    }
}

}  // namespace
