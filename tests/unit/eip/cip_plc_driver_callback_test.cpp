#include "eip/cip_plc_driver_callback.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "unit/common/debug_lines.h"
#include "unit/eip/pipe_client.h"

namespace {

/// A receiver, and the driver's end of its pipes.
class Receiver : public ::testing::Test {
 protected:
    Receiver() : client(receiver) {}

    /// The driver sends a line, the worker takes it.
    void serve(const std::string& line, int pipe = 0) {
        client.send(line, pipe);
        receiver.serverPipeOnReceive(pipe);
    }

    bool hasAny() {
        return receiver.hasDriverSetSessionCmd() || receiver.hasDriverReadCmd() ||
               receiver.hasDriverReadArrayElementCmd() || receiver.hasDriverIpSettingChangedCmd() ||
               receiver.hasDriverWriteCmd();
    }

    CipPlcDriverCallback receiver;
    PipeClient client;
};

/// The fields that every command begins with, open to the test.
class Origin : public CipPlcDriverCallback {
 public:
    using CipPlcDriverCallback::parseOrigin;
};

TEST(CommandOrigin, NeedsPipeAndId) {
    int pipe = 7;
    unsigned short tid = 8;
    for (const QStringList& fields : {QStringList(), QStringList("0"), QStringList({"x", "0001"}),
                                      QStringList({"0", "XYZ"}), QStringList({"", ""})}) {
        EXPECT_FALSE(Origin::parseOrigin(fields, &pipe, &tid)) << fields.join('|').toStdString();
    }
    EXPECT_EQ(7, pipe);
    EXPECT_EQ(8, tid);
    EXPECT_TRUE(Origin::parseOrigin(QStringList({"1", "00FF"}), &pipe, &tid));
    EXPECT_EQ(1, pipe);
    EXPECT_EQ(0xFF, tid);
}

// ---- memory runs out -----------------------------------------------------------------------

TEST_F(Receiver, FailsWhatIsNotAnswered) {
    for (const char* line :
         {"02\t0001\tA\t1\n", "04\t0001\tARR\t[1]\tC4\t1\t10\t4\n", "05\t0001\t10.0.0.1\t1\n"}) {
        serve(line);
        ASSERT_TRUE(hasAny()) << line;
        receiver.failUnanswered();
        EXPECT_FALSE(hasAny()) << line;
        EXPECT_EQ(std::string("8") + line[1] + "\t0001\tnot enough memory\n", client.answer(0));
        receiver.failUnanswered();
        EXPECT_EQ("", client.answer(0)) << "an answer once only";
    }
}

TEST_F(Receiver, FailsASessionListOnItsPipe) {
    client.send("01\t0007\tA\t1\n", 1);
    ASSERT_TRUE(receiver.recvCmd(1));
    receiver.failUnanswered();
    EXPECT_EQ("81\t0007\n", client.answer(1));
    EXPECT_EQ("", client.answer(0));
}

TEST_F(Receiver, FailsASessionListWithoutAnIdWithoutAnAnswer) {
    client.send("01\t0000\tA\t1\n", 1);
    ASSERT_TRUE(receiver.recvCmd(1));
    receiver.failUnanswered();
    EXPECT_EQ("", client.answer(1));
}

// ---- receiving a line ----------------------------------------------------------------------

TEST_F(Receiver, HasNothingPendingAtFirst) {
    EXPECT_FALSE(hasAny());
    receiver.clearDriverSetSessionCmd();
    receiver.clearDriverReadCmd();
    receiver.clearDriverReadArrayElementCmd();
    receiver.clearDriverIpSettingChangedCmd();
    receiver.clearDriverWriteCmd();
    EXPECT_FALSE(hasAny());
}

TEST_F(Receiver, TakesOneLineAtATime) {
    client.send("02\t0001\tA\t1\n04\t0002\tARR\t[1]\tC4\t1\t10\t4\n");
    EXPECT_TRUE(receiver.recvCmd(0));
    EXPECT_TRUE(receiver.recvCmd(0));
    EXPECT_FALSE(receiver.recvCmd(0));
    EXPECT_FALSE(receiver.recvCmd(1));
}

TEST_F(Receiver, ServesQueuedLinesOneByOne) {
    client.send("02\t0001\tA\t1\n");
    client.send("04\t0002\tARR\t[1]\tC4\t1\t10\t4\n");
    receiver.serverPipeOnReceive(0);
    EXPECT_TRUE(receiver.hasDriverReadCmd());
    EXPECT_FALSE(receiver.hasDriverReadArrayElementCmd());
    receiver.serverPipeOnReceive(0);
    EXPECT_TRUE(receiver.hasDriverReadArrayElementCmd());
}

TEST_F(Receiver, DoesNotLookIntoTheNextLine) {
    const std::string next = "02\t0001\tA\t1\n";
    for (const char* line : {"\n", "\t \n", "07\n", "0\n"}) {
        client.send(line + next);
        DebugLines lines;
        receiver.serverPipeOnReceive(0);
        EXPECT_FALSE(hasAny());
        EXPECT_EQ(QStringList(QString("../eip/cip_plc_driver_callback:409:") + line),
                  lines.taken());
        receiver.serverPipeOnReceive(0);
        EXPECT_TRUE(receiver.hasDriverReadCmd());
        receiver.clearDriverReadCmd();
    }
}

TEST_F(Receiver, IsCalledFromWithinTheTransportsWaits) {
    client.send("02\t0001\tA\t1\n", 1);
    receiver.sleep(10000);
    EXPECT_TRUE(receiver.hasDriverReadCmd());
    client.send("05\t0001\t10.0.0.1\t1\n", 0);
    receiver.emptyRxBuffer();
    EXPECT_TRUE(receiver.hasDriverIpSettingChangedCmd());
}

TEST_F(Receiver, DropsALineWithoutAnEnd) {
    serve("02\t0001\tA\t1");
    EXPECT_FALSE(hasAny());
    serve("02\t0002\tB\t1\n");
    ASSERT_TRUE(receiver.hasDriverReadCmd());
    int pipe = -1;
    unsigned short tid = 0;
    EXPECT_EQ(QString("B"), receiver.driverReadCmd(pipe, tid, nullptr).name);
    EXPECT_EQ(2, tid);
}

TEST_F(Receiver, TakesALineOfExactlyTheBuffer) {
    const std::string longest = "01\t0001\t" + std::string(4096 - 8 - 3, 'A') + "\t1\n";
    ASSERT_EQ(4096u, longest.size());
    serve(longest, 1);
    EXPECT_EQ("01\t0001\n", client.answer(1));
    const QList<LgxReadCmd> list = receiver.driverSetSessionCmd(nullptr);
    ASSERT_EQ(1, list.size());
    EXPECT_EQ(4085, list.at(0).name.size());
}

TEST_F(Receiver, LosesALineLongerThanTheBufferAndNothingElse) {
    // What follows the buffer's end looks like a command and must not become one.
    const std::string tooLong = "01\t0001\t" + std::string(4096 - 8, 'A') + "\n";
    ASSERT_EQ(4097u, tooLong.size());
    serve(tooLong);
    serve(std::string(4096, ' ') + "03\t0001\tT\tC4\t01000000\n");
    serve(std::string(4096, 'F') + "\n");
    EXPECT_FALSE(hasAny());
    serve("02\t0002\tB\t1\n");
    EXPECT_TRUE(receiver.hasDriverReadCmd());
    EXPECT_EQ("", client.answer(0));
}

TEST_F(Receiver, LineOfHexDigitsOnlyIsNoCommand) {
    DebugLines lines;
    serve(std::string(4095, 'F') + "\n");
    EXPECT_FALSE(hasAny());
    EXPECT_EQ(1, lines.taken().size());
}

TEST_F(Receiver, ReportsUnknownCodesOnly) {
    const struct {
        const char* line;
        const char* text;
    } rows[] = {{"07\t0001\n", "../eip/cip_plc_driver_callback:409:07\t0001\n"},
                {"00\t0001\n", "../eip/cip_plc_driver_callback:409:00\t0001\n"},
                {"82\t0001\tA\t1\n", "../eip/cip_plc_driver_callback:409:82\t0001\tA\t1\n"},
                {"\t \t\n", "../eip/cip_plc_driver_callback:409:\t \t\n"},
                {"\n", "../eip/cip_plc_driver_callback:409:\n"},
                {"xyz\n", "../eip/cip_plc_driver_callback:409:xyz\n"}};
    for (const auto& row : rows) {
        DebugLines lines;
        serve(row.line);
        EXPECT_EQ(QStringList(QString::fromLatin1(row.text)), lines.taken());
        EXPECT_FALSE(hasAny());
        EXPECT_EQ("", client.answer(0));
    }
}

TEST_F(Receiver, ReadsTheCodeAsANumber) {
    const char* reads[] = {"02\t0001\tA\t1\n",   "2\t0001\tA\t1\n",    "  02\t0001\tA\t1\n",
                           "\t02\t0001\tA\t1\n", "0002\t0001\tA\t1\n", "102\t0001\tA\t1\n",
                           "02x\t0001\tA\t1\n"};
    for (const char* line : reads) {
        DebugLines lines;
        serve(line);
        EXPECT_TRUE(receiver.hasDriverReadCmd()) << line;
        EXPECT_TRUE(lines.taken().isEmpty()) << line;
        receiver.clearDriverReadCmd();
    }
}

// ---- read ----------------------------------------------------------------------------------

TEST_F(Receiver, KeepsAReadUntilItIsCleared) {
    serve("02\t1A2B\tMotor_Speed\t10\n", 1);
    int pipe = -1;
    unsigned short tid = 0;
    bool ok = false;
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(receiver.hasDriverReadCmd());
        const LgxReadCmd command = receiver.driverReadCmd(pipe, tid, &ok);
        EXPECT_TRUE(ok);
        EXPECT_EQ(1, pipe);
        EXPECT_EQ(0x1A2B, tid);
        EXPECT_EQ(QString("Motor_Speed"), command.name);
        EXPECT_EQ(10, command.count);
    }
    EXPECT_EQ("", client.answer(1));
    receiver.clearDriverReadCmd();
    EXPECT_FALSE(receiver.hasDriverReadCmd());
    pipe = 7;
    tid = 8;
    const LgxReadCmd none = receiver.driverReadCmd(pipe, tid, &ok);
    EXPECT_FALSE(ok);
    EXPECT_TRUE(none.name.isEmpty());
    EXPECT_EQ(0, none.count);
    EXPECT_EQ(7, pipe);
    EXPECT_EQ(8, tid);
}

TEST_F(Receiver, TakesFieldsApartAtTabs) {
    const struct {
        const char* line;
        const char* name;
        int count;
    } rows[] = {{"02\t0001\tA\t1\n", "A", 1},
                {"\t 02\t\t0001\t\t\tA\t1\t \n", "A", 1},
                {"02\t0001\tA B\t1\r\n", "A B", 1},
                {"02\t0001\tGRID[2,3]\t2147483647\n", "GRID[2,3]", INT_MAX},
                {"02\t0001\tA\t-2147483648\n", "A", INT_MIN},
                {"02\t0001\t\xE4\t0\n", "\xE4", 0}};
    for (const auto& row : rows) {
        serve(row.line);
        int pipe = -1;
        unsigned short tid = 0;
        bool ok = false;
        const LgxReadCmd command = receiver.driverReadCmd(pipe, tid, &ok);
        EXPECT_TRUE(ok) << row.line;
        EXPECT_EQ(QString::fromLatin1(row.name), command.name) << row.line;
        EXPECT_EQ(row.count, command.count) << row.line;
        receiver.clearDriverReadCmd();
    }
}

TEST_F(Receiver, DropsAReadThatDoesNotParse) {
    for (const char* line :
         {"02\n", "02\t0001\n", "02\t0001\tA\n", "02\t0001\tA\t1\t2\n", "02\t0001\t\t1\n",
          "02\tXYZ\tA\t1\n", "02\t10000\tA\t1\n", "02\t-1\tA\t1\n", "02\t0001\tA\tx\n",
          "02\t0001\tA\t1.5\n", "02\t0001\tA\t0x10\n", "02\t0001\tA\t2147483648\n",
          "02\t0001\tA\t-2147483649\n", "02\t0001\tA\t1 2\n"}) {
        serve(line);
        EXPECT_FALSE(receiver.hasDriverReadCmd()) << line;
        EXPECT_EQ("", client.answer(0)) << line;
    }
}

TEST_F(Receiver, LaterReadReplacesTheEarlier) {
    serve("02\t0001\tA\t1\n");
    serve("02\t0002\tB\t2\n");
    int pipe = -1;
    unsigned short tid = 0;
    const LgxReadCmd command = receiver.driverReadCmd(pipe, tid, nullptr);
    EXPECT_EQ(QString("B"), command.name);
    EXPECT_EQ(2, tid);
    receiver.clearDriverReadCmd();
    EXPECT_FALSE(receiver.hasDriverReadCmd());
    // A malformed one takes the earlier with it.
    serve("02\t0003\tA\t1\n");
    serve("02\t0004\tB\n");
    EXPECT_FALSE(receiver.hasDriverReadCmd());
}

TEST_F(Receiver, AnswersAReadOfACachedNameAtOnce) {
    receiver.cacheInsert("A", QByteArray::fromHex("2a00ff"));
    receiver.cacheInsert("E", QByteArray());
    serve("02\t1A2B\tA\t1\n");
    EXPECT_EQ("02\t1A2B\t2a00ff\n", client.answer(0));
    EXPECT_FALSE(receiver.hasDriverReadCmd());
    serve("02\t0002\tA\t99\n", 1);
    EXPECT_EQ("02\t0002\t2a00ff\n", client.answer(1));
    serve("02\t0003\tE\t1\n");
    EXPECT_EQ("02\t0003\t00\n", client.answer(0));
    // The name unchanged, not the key made of name and count.
    receiver.cacheInsert("B_1", QByteArray("x"));
    serve("02\t0004\tB\t1\n");
    EXPECT_EQ("", client.answer(0));
    EXPECT_TRUE(receiver.hasDriverReadCmd());
}

// ---- read array elements -------------------------------------------------------------------

struct ArrayElements {
    int pipe = -1;
    unsigned short tid = 0;
    QString arrayName = "#";
    QString indexText = "#";
    _LGX_Data_Type type = LGX_TYPE_BOOL;
    int elementCount = -7;
    int arraySize = -8;
    int byteOffset = -9;

    bool take(CipPlcDriverCallback& receiver) {
        return receiver.driverReadArrayElementsCmd(pipe, tid, arrayName, indexText, type,
                                                   elementCount, arraySize, byteOffset);
    }
};

TEST_F(Receiver, KeepsAReadOfArrayElements) {
    serve("04\tFFFF\tARR\t[3,4]\tDA\t2\t100\t-12\n", 1);
    ASSERT_TRUE(receiver.hasDriverReadArrayElementCmd());
    ArrayElements command;
    ASSERT_TRUE(command.take(receiver));
    EXPECT_EQ(1, command.pipe);
    EXPECT_EQ(0xFFFF, command.tid);
    EXPECT_EQ(QString("ARR"), command.arrayName);
    EXPECT_EQ(QString("[3,4]"), command.indexText);
    EXPECT_EQ(LGX_TYPE_SHORT_STRING, command.type);
    EXPECT_EQ(2, command.elementCount);
    EXPECT_EQ(100, command.arraySize);
    EXPECT_EQ(-12, command.byteOffset);
    EXPECT_EQ("", client.answer(1));
    receiver.clearDriverReadArrayElementCmd();
    EXPECT_FALSE(receiver.hasDriverReadArrayElementCmd());
    EXPECT_FALSE(command.take(receiver));
}

TEST_F(Receiver, DropsArrayElementsWithAnotherFieldCount) {
    for (const char* line :
         {"04\n", "04\t0001\tARR\t[3]\tC4\t2\t100\n", "04\t0001\tARR\t[3]\tC4\t2\t100\t12\t1\n",
          "04\t0001\tARR\t\tC4\t2\t100\t12\n"}) {
        serve(line);
        EXPECT_FALSE(receiver.hasDriverReadArrayElementCmd()) << line;
    }
}

TEST_F(Receiver, TellsArrayElementsThatDoNotParse) {
    for (const char* line :
         {"04\tXYZ\tARR\t[3]\tC4\t2\t100\t12\n", "04\t12345\tARR\t[3]\tC4\t2\t100\t12\n",
          "04\t0001\tARR\t[3]\tXX\t2\t100\t12\n", "04\t0001\tARR\t[3]\t100\t2\t100\t12\n",
          "04\t0001\tARR\t[3]\t-1\t2\t100\t12\n", "04\t0001\tARR\t[3]\tC4\tx\t100\t12\n",
          "04\t0001\tARR\t[3]\tC4\t2\tx\t12\n", "04\t0001\tARR\t[3]\tC4\t2\t100\tx\n",
          "04\t0001\tARR\t[3]\tC4\t2147483648\t100\t12\n"}) {
        serve(line);
        EXPECT_TRUE(receiver.hasDriverReadArrayElementCmd()) << line;
        ArrayElements command;
        EXPECT_FALSE(command.take(receiver)) << line;
        EXPECT_EQ(-1, command.pipe) << line;
        EXPECT_EQ(0, command.tid) << line;
        EXPECT_EQ(QString("#"), command.arrayName) << line;
        EXPECT_EQ(QString("#"), command.indexText) << line;
        EXPECT_EQ(LGX_TYPE_BOOL, command.type) << line;
        EXPECT_EQ(-7, command.elementCount) << line;
    }
}

// ---- address change ------------------------------------------------------------------------

TEST_F(Receiver, KeepsAnAddressChange) {
    serve("05\t0001\t192.168.1.20\t44818\n");
    ASSERT_TRUE(receiver.hasDriverIpSettingChangedCmd());
    int pipe = -1;
    unsigned short tid = 0;
    unsigned short port = 0;
    QString ip;
    ASSERT_TRUE(receiver.driverIpSettingChangedCmd(pipe, tid, ip, port));
    EXPECT_EQ(0, pipe);
    EXPECT_EQ(1, tid);
    EXPECT_EQ(QString("192.168.1.20"), ip);
    EXPECT_EQ(44818, port);
    EXPECT_EQ("", client.answer(0));
    receiver.clearDriverIpSettingChangedCmd();
    EXPECT_FALSE(receiver.hasDriverIpSettingChangedCmd());
    EXPECT_FALSE(receiver.driverIpSettingChangedCmd(pipe, tid, ip, port));
}

TEST_F(Receiver, TellsAnAddressChangeThatDoesNotParse) {
    for (const char* line : {"05\t0001\t10.0.0.1\t65536\n", "05\t0001\t10.0.0.1\t-1\n",
                             "05\t0001\t10.0.0.1\tAF\n", "05\tX\t10.0.0.1\t1\n"}) {
        serve(line);
        EXPECT_TRUE(receiver.hasDriverIpSettingChangedCmd()) << line;
        int pipe = -1;
        unsigned short tid = 9;
        unsigned short port = 8;
        QString ip("#");
        EXPECT_FALSE(receiver.driverIpSettingChangedCmd(pipe, tid, ip, port)) << line;
        EXPECT_EQ(-1, pipe) << line;
        EXPECT_EQ(9, tid) << line;
        EXPECT_EQ(8, port) << line;
        EXPECT_EQ(QString("#"), ip) << line;
    }
    for (const char* line : {"05\t0001\t10.0.0.1\n", "05\t0001\t10.0.0.1\t1\t2\n"}) {
        serve(line);
        EXPECT_FALSE(receiver.hasDriverIpSettingChangedCmd()) << line;
    }
}

// ---- write slot ----------------------------------------------------------------------------

TEST_F(Receiver, HasAnEmptyWriteSlot) {
    DebugLines lines;
    serve("03\t0001\tT\tC4\t01000000\n");
    EXPECT_FALSE(receiver.hasDriverWriteCmd());
    EXPECT_EQ("", client.answer(0));
    EXPECT_TRUE(lines.taken().isEmpty());
}

// ---- set session ---------------------------------------------------------------------------

TEST_F(Receiver, ConfirmsASessionList) {
    serve("01\t1A2B\tB\t10\tA[1]\t1\tB\t-2\n", 1);
    EXPECT_EQ("01\t1A2B\n", client.answer(1));
    ASSERT_TRUE(receiver.hasDriverSetSessionCmd());
    bool ok = false;
    const QList<LgxReadCmd> list = receiver.driverSetSessionCmd(&ok);
    EXPECT_TRUE(ok);
    ASSERT_EQ(3, list.size());
    EXPECT_EQ(QString("B"), list.at(0).name);
    EXPECT_EQ(10, list.at(0).count);
    EXPECT_EQ(QString("A[1]"), list.at(1).name);
    EXPECT_EQ(1, list.at(1).count);
    EXPECT_EQ(-2, list.at(2).count);
    ok = false;
    const QHash<QString, int> hash = receiver.driverSetSessionCmd2(&ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(2, hash.size());
    EXPECT_EQ(-2, hash.value("B"));
    EXPECT_EQ(1, hash.value("A[1]"));
    receiver.clearDriverSetSessionCmd();
    EXPECT_FALSE(receiver.hasDriverSetSessionCmd());
    EXPECT_TRUE(receiver.driverSetSessionCmd(&ok).isEmpty());
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_TRUE(receiver.driverSetSessionCmd2(&ok).isEmpty());
    EXPECT_FALSE(ok);
}

TEST_F(Receiver, RefusesAnOddNumberOfFields) {
    serve("01\t0001\tA\t1\n", 1);
    EXPECT_EQ("01\t0001\n", client.answer(1));
    serve("01\t0002\tA\t1\tB\n", 1);
    EXPECT_EQ("81\t0002\n", client.answer(1));
    EXPECT_FALSE(receiver.hasDriverSetSessionCmd());
}

TEST_F(Receiver, DoesNotAnswerASessionListThatIsTooShort) {
    for (const char* line : {"01\n", "01\t0001\n", "01\t0001\tA\n", "01\t0001\t\tA\t\n"}) {
        serve(line);
        EXPECT_FALSE(receiver.hasDriverSetSessionCmd()) << line;
        EXPECT_EQ("", client.answer(0)) << line;
    }
}

TEST_F(Receiver, StoresASessionListWithoutAnIdButDoesNotAnswerIt) {
    for (const char* line :
         {"01\t0000\tA\t1\n", "01\tXYZ\tA\t1\n", "01\t10000\tA\t1\n", "01\t-1\tA\t1\n"}) {
        serve(line);
        EXPECT_TRUE(receiver.hasDriverSetSessionCmd()) << line;
        EXPECT_EQ("", client.answer(0)) << line;
        receiver.clearDriverSetSessionCmd();
    }
    serve("01\t0000\tA\t1\tB\n");
    EXPECT_FALSE(receiver.hasDriverSetSessionCmd());
    EXPECT_EQ("", client.answer(0));
}

TEST_F(Receiver, TellsASessionListWhoseCountsDoNotParse) {
    serve("01\t0001\tA\t1\tB\tx\tC\t1\n");
    EXPECT_EQ("01\t0001\n", client.answer(0));
    EXPECT_TRUE(receiver.hasDriverSetSessionCmd());
    bool ok = true;
    EXPECT_TRUE(receiver.driverSetSessionCmd(&ok).isEmpty());
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_TRUE(receiver.driverSetSessionCmd2(&ok).isEmpty());
    EXPECT_FALSE(ok);
    EXPECT_TRUE(receiver.driverSetSessionCmd(nullptr).isEmpty());
}

// ---- answers -------------------------------------------------------------------------------

TEST_F(Receiver, SendsEachAnswerOnItsPipe) {
    for (int pipe = 0; pipe < 2; ++pipe) {
        EXPECT_TRUE(receiver.sendSetSessionRsp(pipe, 0x1A2B, true));
        EXPECT_EQ("01\t1A2B\n", client.answer(pipe));
        EXPECT_TRUE(receiver.sendSetSessionRsp(pipe, 1, false));
        EXPECT_EQ("81\t0001\n", client.answer(pipe));
        EXPECT_TRUE(receiver.sendDriverReadRsp(pipe, 1, QByteArray::fromHex("0a1b")));
        EXPECT_EQ("02\t0001\t0a1b\n", client.answer(pipe));
        EXPECT_TRUE(receiver.sendDriverReadFailRsp(pipe, 1, "no\nway"));
        EXPECT_EQ("82\t0001\tno way\n", client.answer(pipe));
        EXPECT_TRUE(receiver.sendDriverWriteOkRsp(pipe, 1));
        EXPECT_EQ("03\t0001\n", client.answer(pipe));
        EXPECT_TRUE(receiver.sendDriverWriteFailRsp(pipe, 1, "no"));
        EXPECT_EQ("83\t0001\tno\n", client.answer(pipe));
        EXPECT_TRUE(receiver.sendDriverWriteFailRsp(pipe, 1, QString()));
        EXPECT_EQ("83\t0001\t\n", client.answer(pipe));
        EXPECT_TRUE(receiver.sendDriverReadArrayElementRsp(pipe, 1, QByteArray()));
        EXPECT_EQ("04\t0001\t00\n", client.answer(pipe));
        EXPECT_TRUE(receiver.sendDriverReadArrayElementFailRsp(pipe, 1, "no"));
        EXPECT_EQ("84\t0001\tno\n", client.answer(pipe));
        EXPECT_TRUE(receiver.sendDriverIpSettingChangedOkRsp(pipe, 1));
        EXPECT_EQ("05\t0001\n", client.answer(pipe));
        EXPECT_TRUE(receiver.sendDriverIpSettingChangedFailRsp(pipe, 1, QString()));
        EXPECT_EQ("85\t0001\t\n", client.answer(pipe));
    }
}

TEST_F(Receiver, SendsNothingThatDoesNotFitALine) {
    EXPECT_TRUE(receiver.sendDriverReadRsp(0, 1, QByteArray(2043, 'x')));
    EXPECT_EQ(4095u, client.answer(0).size());
    EXPECT_FALSE(receiver.sendDriverReadRsp(0, 1, QByteArray(2044, 'x')));
    EXPECT_FALSE(receiver.sendDriverReadArrayElementRsp(0, 1, QByteArray(100000, 'x')));
    EXPECT_FALSE(receiver.sendDriverReadFailRsp(0, 1, QString(5000, 'x')));
    EXPECT_EQ("", client.answer(0));
}

TEST_F(Receiver, TellsAnAnswerThatCouldNotBeSent) {
    bool sent = true;
    for (int i = 0; sent && i < 100000; ++i) {
        sent = receiver.sendDriverReadRsp(0, 1, QByteArray(2000, 'x'));
    }
    EXPECT_FALSE(sent);
    EXPECT_FALSE(receiver.sendDriverReadRsp(0, 1, QByteArray(2000, 'x')));
    EXPECT_TRUE(receiver.sendDriverReadRsp(1, 1, QByteArray(2000, 'x')));
}

// ---- memory that runs out ------------------------------------------------------------------

TEST_F(Receiver, FailsNothingWhenNoLineCame) {
    receiver.failUnanswered();
    EXPECT_EQ("", client.answer(0));
    EXPECT_EQ("", client.answer(1));
}

TEST_F(Receiver, FailsTheLineOfEachPipeThatHasNoAnswerYet) {
    serve("02\t1A2B\tA\t1\n");
    client.send("01\t00C4\tA\t1\n", 1);
    ASSERT_TRUE(receiver.recvCmd(1));
    receiver.failUnanswered();
    EXPECT_EQ("82\t1A2B\tnot enough memory\n", client.answer(0));
    EXPECT_EQ("81\t00C4\n", client.answer(1)) << "a list has no text";
    EXPECT_FALSE(receiver.hasDriverReadCmd()) << "not to be carried out later";
    receiver.failUnanswered();
    EXPECT_EQ("", client.answer(0)) << "and only once";
    EXPECT_EQ("", client.answer(1));
}

TEST_F(Receiver, FailsNoLineThatHasItsAnswer) {
    serve("02\t0001\tA\t1\n");
    EXPECT_TRUE(receiver.sendDriverReadRsp(0, 1, QByteArray(1, '\x01')));
    serve("01\t0002\tA\t1\n", 1);
    EXPECT_NE("", client.answer(0));
    EXPECT_EQ("01\t0002\n", client.answer(1));
    receiver.failUnanswered();
    EXPECT_EQ("", client.answer(0));
    EXPECT_EQ("", client.answer(1));
}

TEST_F(Receiver, FailsNoListThatWantsNoAnswer) {
    client.send("01\t0000\tA\t1\n", 1);
    ASSERT_TRUE(receiver.recvCmd(1));
    receiver.failUnanswered();
    EXPECT_EQ("", client.answer(1));
}

TEST_F(Receiver, TellsAnAnswerThatDoesNotFitItsLine) {
    EXPECT_FALSE(receiver.sendDriverReadRsp(0, 1, QByteArray(5000, 'x')));
    EXPECT_EQ("", client.answer(0));
}

// ---- cache ---------------------------------------------------------------------------------

TEST_F(Receiver, ForwardsToItsCache) {
    EXPECT_FALSE(receiver.cacheContains("A_1"));
    receiver.cacheInsert("A_1", QByteArray("0123"));
    EXPECT_TRUE(receiver.cacheContains("A_1"));
    QByteArray out;
    EXPECT_TRUE(receiver.cacheValue("A_1", out));
    EXPECT_EQ(QByteArray("0123"), out);
    out = QByteArray(2, '#');
    EXPECT_TRUE(receiver.cacheValue("A_1", out, 2));
    EXPECT_EQ(QByteArray("23"), out);
    EXPECT_FALSE(receiver.cacheValue("A_1", out, 3));
    receiver.cacheClear();
    EXPECT_FALSE(receiver.cacheContains("A_1"));
    EXPECT_FALSE(receiver.cacheValue("A_1", out));
}

}  // namespace
