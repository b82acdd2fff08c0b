#include "drivers/ab_micro800_ethernet/micro800_driver_callback.h"

#include <gtest/gtest.h>

#include "unit/eip/pipe_client.h"

namespace {

class WriteReceiver : public ::testing::Test {
 protected:
    WriteReceiver() : client(receiver) {}

    /// Over the base class, as the worker has it.
    void serve(const std::string& line, int pipe = 0) {
        client.send(line, pipe);
        CipTcpCallback& transport = receiver;
        transport.serverPipeOnReceive(pipe);
    }

    Micro800DriverCallback receiver;
    PipeClient client;
};

TEST_F(WriteReceiver, KeepsAWriteUntilItIsCleared) {
    EXPECT_FALSE(receiver.hasDriverWriteCmd());
    serve("03\t1A2B\tTEMP[1]\tC4\t0A1bff00\n", 1);
    CipPlcDriverCallback& base = receiver;
    ASSERT_TRUE(base.hasDriverWriteCmd());
    int pipe = -1;
    unsigned short tid = 0;
    bool ok = false;
    for (int i = 0; i < 2; ++i) {
        const LgxMicro800WriteCmd command = receiver.driverWriteCmd(pipe, tid, &ok);
        EXPECT_TRUE(ok);
        EXPECT_EQ(1, pipe);
        EXPECT_EQ(0x1A2B, tid);
        EXPECT_EQ(QString("TEMP[1]"), command.name);
        EXPECT_EQ(LGX_TYPE_DINT, command.type);
        EXPECT_EQ(QByteArray("\x0a\x1b\xff\x00", 4), command.data);
    }
    EXPECT_EQ("", client.answer(1));
    base.clearDriverWriteCmd();
    EXPECT_FALSE(receiver.hasDriverWriteCmd());
}

TEST_F(WriteReceiver, HasNoneAtFirst) {
    int pipe = 5;
    unsigned short tid = 6;
    bool ok = true;
    const LgxMicro800WriteCmd none = receiver.driverWriteCmd(pipe, tid, &ok);
    EXPECT_FALSE(ok);
    EXPECT_TRUE(none.name.isEmpty());
    EXPECT_EQ(0, static_cast<int>(none.type));
    EXPECT_TRUE(none.data.isEmpty());
    EXPECT_EQ(5, pipe);
    EXPECT_EQ(6, tid);
    receiver.driverWriteCmd(pipe, tid, nullptr);
    receiver.clearDriverWriteCmd();
}

TEST_F(WriteReceiver, DropsAnotherFieldCount) {
    // The last is the form that larger controllers take.
    for (const char* line : {"03\n", "03\t0001\tT\tC4\n", "03\t0001\tT\tDA\t\n",
                             "03\t0001\tT\tC4\t01\t1\n", "03\t0001\tT\tC4\t01000000\t1\t0\n"}) {
        serve("03\t0009\tEARLIER\tC4\t01000000\n");
        serve(line);
        EXPECT_FALSE(receiver.hasDriverWriteCmd()) << line;
        EXPECT_EQ("", client.answer(0)) << line;
    }
}

TEST_F(WriteReceiver, TellsAWriteThatDoesNotParse) {
    for (const char* line :
         {"03\tXYZ\tT\tC4\t01\n", "03\t10000\tT\tC4\t01\n", "03\t-1\tT\tC4\t01\n",
          "03\t0001\tT\tXX\t01\n", "03\t0001\tT\t1C4\t01\n", "03\t0001\tT\t-1\t01\n"}) {
        serve(line);
        EXPECT_TRUE(receiver.hasDriverWriteCmd()) << line;
        int pipe = 5;
        unsigned short tid = 6;
        bool ok = true;
        const LgxMicro800WriteCmd command = receiver.driverWriteCmd(pipe, tid, &ok);
        EXPECT_FALSE(ok) << line;
        EXPECT_TRUE(command.name.isEmpty()) << line;
        EXPECT_EQ(0, static_cast<int>(command.type)) << line;
        EXPECT_EQ(5, pipe) << line;
        EXPECT_EQ(6, tid) << line;
    }
}

TEST_F(WriteReceiver, TakesWhatTheDriverPacks) {
    char line[kPipeLineSize];
    QByteArray all;
    for (int byte = 0; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    const int length = LgxDriverPackMicro800WriteCmd(line, sizeof line, 0xFFFF, "TEXT",
                                                     LGX_TYPE_SHORT_STRING, all);
    ASSERT_GT(length, 0);
    serve(std::string(line, static_cast<size_t>(length)));
    int pipe = -1;
    unsigned short tid = 0;
    bool ok = false;
    const LgxMicro800WriteCmd command = receiver.driverWriteCmd(pipe, tid, &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(0xFFFF, tid);
    EXPECT_EQ(LGX_TYPE_SHORT_STRING, command.type);
    EXPECT_EQ(all, command.data);
}

TEST_F(WriteReceiver, StillTakesTheOtherCommands) {
    serve("02\t0001\tA\t1\n");
    serve("03\t0002\tT\tC4\t01000000\n");
    EXPECT_TRUE(receiver.hasDriverReadCmd());
    EXPECT_TRUE(receiver.hasDriverWriteCmd());
    receiver.clearDriverWriteCmd();
    EXPECT_TRUE(receiver.hasDriverReadCmd());
}

TEST_F(WriteReceiver, LaterWriteReplacesTheEarlier) {
    serve("03\t0001\tA\tC4\t01000000\n");
    serve("03\t0002\tB\tC3\t0200\n");
    int pipe = -1;
    unsigned short tid = 0;
    EXPECT_EQ(QString("B"), receiver.driverWriteCmd(pipe, tid, nullptr).name);
    EXPECT_EQ(2, tid);
}

}  // namespace
