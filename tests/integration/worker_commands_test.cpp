// The worker's command handlers against a controller, one call at a time on the test's thread: what
// they answer, what they report to the loop, and what they leave of the connection.

#include <gtest/gtest.h>

#include <mutex>

#include "integration/clock_jump.h"
#include "integration/scripted_controller.h"
#include "integration/worker_rig.h"
#include "support/reserved_port.h"

namespace {

class WorkerCommands : public WorkerSteps {};

// ---- reads -------------------------------------------------------------------------------------

TEST_F(WorkerCommands, ReadOfATagNamesIt) {
    start({"--tag", "D:DINT=42"});
    const Outcome outcome = read("02\t0001\tD\t1\n");
    EXPECT_TRUE(outcome.served);
    EXPECT_FALSE(outcome.broken);
    EXPECT_EQ(QString("D"), outcome.name);
    EXPECT_EQ(QByteArray("02\t0001\t2a000000\n"), outcome.answer);
    QByteArray value;
    EXPECT_FALSE(worker->cacheValue("D_1", value));
}

TEST_F(WorkerCommands, ReadFromTheCacheNamesNothing) {
    start({"--tag", "D:DINT=42"});
    worker->receiver()->cacheInsert("D_1", QByteArray::fromHex("07000000"));
    const Outcome outcome = read("02\t0002\tD\t1\n");
    EXPECT_TRUE(outcome.served);
    EXPECT_TRUE(outcome.name.isEmpty());
    EXPECT_EQ(QByteArray("02\t0002\t07000000\n"), outcome.answer);
    EXPECT_FALSE(open());
}

/// While no connection is open an entry is as good as it was; after the next opening it is older
/// than the outage.
TEST_F(WorkerCommands, EntryFromBeforeAnOutageIsServedOnlyUntilTheNextOpening) {
    start({"--tag", "D:DINT=42", "--tag", "E:DINT=43"});
    ASSERT_TRUE(worker->openConnection());
    worker->receiver()->cacheInsert("D_1", QByteArray::fromHex("07000000"));
    ASSERT_EQ("ok", simulator->command("fault resetx1"));
    EXPECT_EQ(QByteArray("82\t0001\tInternal: receive error\n"), read("02\t0001\tE\t1\n").answer);
    EXPECT_FALSE(open());
    EXPECT_EQ(QByteArray("02\t0002\t07000000\n"), read("02\t0002\tD\t1\n").answer);
    EXPECT_FALSE(open());
    EXPECT_EQ(QByteArray("02\t0003\t2b000000\n"), read("02\t0003\tE\t1\n").answer);
    EXPECT_TRUE(open());
    EXPECT_EQ(QByteArray("02\t0004\t2a000000\n"), read("02\t0004\tD\t1\n").answer);
}

/// A tag that the controller refuses is not served from the cache by the worker either.
TEST_F(WorkerCommands, EntryWhoseRefreshFailedIsNotServed) {
    start({"--tag", "D:DINT=42", "--fault", "status:05@tag=D"});
    worker->receiver()->cacheInsert("D_1", QByteArray::fromHex("07000000"));
    ASSERT_TRUE(worker->openConnection());
    bool broken = true;
    EXPECT_FALSE(worker->updateCache("D", 1, &broken));
    EXPECT_FALSE(broken);
    EXPECT_EQ(QByteArray("82\t0001\tAB error: 0005H\n"), read("02\t0001\tD\t1\n").answer);
    EXPECT_TRUE(worker->receiver()->cacheContains("D_1"));
}

TEST_F(WorkerCommands, RefusedReadKeepsTheConnection) {
    start({"--tag", "D:DINT=42"});
    const Outcome outcome = read("02\t0003\tNOPE\t1\n");
    EXPECT_FALSE(outcome.served);
    EXPECT_FALSE(outcome.broken);
    EXPECT_TRUE(outcome.name.isEmpty());
    EXPECT_EQ(QByteArray("82\t0003\tAB error: 0005H\n"), outcome.answer);
    EXPECT_TRUE(open());
    EXPECT_FALSE(worker->hasErr());
}

TEST_F(WorkerCommands, BrokenReadClosesTheConnection) {
    start({"--tag", "D:DINT=42", "--fault", "resetx1@tag=D"});
    const Outcome outcome = read("02\t0004\tD\t1\n");
    EXPECT_FALSE(outcome.served);
    EXPECT_TRUE(outcome.broken);
    EXPECT_EQ(QByteArray("82\t0004\tInternal: receive error\n"), outcome.answer);
    EXPECT_FALSE(open());
    // Nothing is polled: the flag would only fail the next request untried.
    EXPECT_FALSE(worker->hasErr());
    EXPECT_EQ(QString("Internal: receive error"), worker->errStr());
}

TEST_F(WorkerCommands, ReadWithoutAControllerIsBroken) {
    const ReservedPort nobody;
    worker.reset(new OpenWorker(nobody.port()));
    const Outcome outcome = read("02\t0005\tD\t1\n");
    EXPECT_FALSE(outcome.served);
    EXPECT_TRUE(outcome.broken);
    EXPECT_EQ(QByteArray("82\t0005\tConnection refused(111)\n"), outcome.answer);
}

TEST_F(WorkerCommands, ReadThatDoesNotParseGetsNoAnswer) {
    start({"--tag", "D:DINT=42"});
    const Outcome outcome = read("02\t0006\tD\tmany\n");
    EXPECT_FALSE(outcome.served);
    EXPECT_FALSE(outcome.broken);
    EXPECT_TRUE(outcome.answer.isEmpty());
    EXPECT_FALSE(worker->receiver()->hasDriverReadCmd());
    EXPECT_FALSE(open());
}

TEST_F(WorkerCommands, TellsHowManyBytesOfAnAnswerCame) {
    start({});
    worker->receiver()->setClientPipeRxTimeout(0, 20);
    char line[16];
    int received = 7;
    EXPECT_FALSE(worker->recvRsp(0, line, sizeof line, &received));
    EXPECT_EQ(0, received);
    ASSERT_EQ(1, worker->receiver()->sendServerPipe(0, "\n", 1));
    EXPECT_TRUE(worker->recvRsp(0, line, sizeof line, &received));
    EXPECT_EQ(1, received);
}

TEST_F(WorkerCommands, OutParametersMayBeNull) {
    start({"--tag", "D:DINT=42", "--tag", "A:DINT[0..2]=1,2,3"});
    take("02\t0007\tD\t1\n");
    EXPECT_TRUE(worker->processDriverReadCmd(nullptr, nullptr));
    EXPECT_EQ(QByteArray("02\t0007\t2a000000\n"), answer());
    take("04\t0008\tA\t[1]\tC4\t1\t3\t4\n");
    EXPECT_TRUE(worker->processDriverReadArrayElementCmd(nullptr, nullptr));
    EXPECT_EQ(QByteArray("04\t0008\t02000000\n"), answer());
    take("03\t0009\tD\tC4\t01000000\n");
    EXPECT_TRUE(worker->processDriverWriteCmd(nullptr, nullptr));
    EXPECT_EQ(QByteArray("03\t0009\n"), answer());
    const ReservedPort nobody;
    worker.reset(new OpenWorker(nobody.port()));
    take("03\t000A\tD\tC4\t01000000\n");
    EXPECT_FALSE(worker->processDriverWriteCmd(nullptr, nullptr));
    EXPECT_EQ(QByteArray("83\t000A\tConnection refused(111)\n"), answer());
}

TEST_F(WorkerCommands, ElementsOfAnArrayThatIsNotPolledAreReadAlone) {
    start({"--tag", "A:DINT[0..4]=1,2,3,4,5"});
    const Outcome outcome = readElements("04\t000A\tA\t[3]\tC4\t2\t5\t12\n");
    EXPECT_TRUE(outcome.served);
    EXPECT_TRUE(outcome.name.isEmpty());
    EXPECT_EQ(QByteArray("04\t000A\t0400000005000000\n"), outcome.answer);
    EXPECT_EQ(1, simulator->countRequests("A[3]"));
}

TEST_F(WorkerCommands, MoreThanAnAnswerCarriesIsRefusedUnsent) {
    start({"--tag", "BIG:DINT[0..999]"});
    const Outcome outcome = readElements("04\t000E\tBIG\t[0]\tC4\t600\t1000\t0\n");
    EXPECT_FALSE(outcome.served);
    EXPECT_FALSE(outcome.broken);
    EXPECT_EQ(QByteArray("84\t000E\tInternal: buffer too small\n"), outcome.answer);
    EXPECT_TRUE(simulator->requests().isEmpty());
}

TEST_F(WorkerCommands, RefusedElementsKeepTheConnection) {
    start({"--tag", "A:DINT[0..4]"});
    const Outcome outcome = readElements("04\t000B\tA\t[4]\tC4\t2\t5\t16\n");
    EXPECT_FALSE(outcome.served);
    EXPECT_FALSE(outcome.broken);
    EXPECT_EQ(QByteArray("84\t000B\tAB error: 01FFH, 2105H\n"), outcome.answer);
    EXPECT_TRUE(open());
}

TEST_F(WorkerCommands, BrokenElementReadClosesTheConnection) {
    start({"--tag", "A:DINT[0..4]", "--fault", "wrong-sequencex1@tag=A"});
    const Outcome outcome = readElements("04\t000C\tA\t[0]\tC4\t1\t5\t0\n");
    EXPECT_FALSE(outcome.served);
    EXPECT_TRUE(outcome.broken);
    EXPECT_EQ(QByteArray("84\t000C\tInternal: unsolicited message\n"), outcome.answer);
    EXPECT_FALSE(open());
}

TEST_F(WorkerCommands, ElementsWithoutAControllerAreBroken) {
    const ReservedPort nobody;
    worker.reset(new OpenWorker(nobody.port()));
    const Outcome outcome = readElements("04\t000D\tA\t[0]\tC4\t1\t5\t0\n");
    EXPECT_TRUE(outcome.broken);
    EXPECT_EQ(QByteArray("84\t000D\tConnection refused(111)\n"), outcome.answer);
}

TEST_F(WorkerCommands, ElementReadThatDoesNotParseGetsNoAnswer) {
    start({"--tag", "A:DINT[0..4]=1,2,3,4,5"});
    for (const char* line : {"04\t0011\tA\t[3]\tC4\tx\t5\t12\n", "04\t0011\tA\t[3]\tC4\t1\tx\t12\n",
                             "04\t0011\tA\t[3]\tC4\t1\t5\tx\n", "04\t0011\tA\t[3]\tXX\t1\t5\t12\n",
                             "04\tXYZ\tA\t[3]\tC4\t1\t5\t12\n"}) {
        const Outcome outcome = readElements(line);
        EXPECT_FALSE(outcome.served) << line;
        EXPECT_FALSE(outcome.broken) << line;
        EXPECT_TRUE(outcome.name.isEmpty()) << line;
        EXPECT_TRUE(outcome.answer.isEmpty()) << line;
        EXPECT_FALSE(worker->receiver()->hasDriverReadArrayElementCmd()) << line;
    }
    EXPECT_FALSE(open());
}

/// A polled tag whose refresh is refused is answered with the reason, never with an empty value.
TEST_F(WorkerCommands, RefusedUpdateOfAPolledTagIsAFailure) {
    start({"--tag", "A:DINT[0..4]=1,2,3,4,5", "--fault", "status:05@on=read"});
    poll("01\t0001\tA[4]\t1\n");
    Outcome outcome = readElements("04\t0012\tA\t[4]\tC4\t1\t5\t16\n");
    EXPECT_FALSE(outcome.served);
    EXPECT_FALSE(outcome.broken);
    EXPECT_TRUE(outcome.name.isEmpty());
    EXPECT_EQ(QByteArray("84\t0012\tAB error: 0005H\n"), outcome.answer);

    outcome = read("02\t0013\tA[4]\t1\n");
    EXPECT_FALSE(outcome.served);
    EXPECT_EQ(QByteArray("82\t0013\tAB error: 0005H\n"), outcome.answer);

    poll("01\t0002\tA\t5\n");
    outcome = readElements("04\t0014\tA\t[4]\tC4\t1\t5\t16\n");
    EXPECT_FALSE(outcome.served);
    EXPECT_EQ(QByteArray("84\t0014\tAB error: 0005H\n"), outcome.answer);
    EXPECT_EQ(3, simulator->requests().size()) << "each of them asked the controller";
}

/// An offset outside the polled array, which is read all the same.
TEST_F(WorkerCommands, ElementOutsideAPolledArrayIsAFailure) {
    start({"--tag", "A:DINT[0..4]=1,2,3,4,5"});
    poll("01\t0001\tA\t5\n");
    const Outcome outcome = readElements("04\t0015\tA\t[9]\tC4\t1\t5\t36\n");
    EXPECT_FALSE(outcome.served);
    EXPECT_FALSE(outcome.broken);
    EXPECT_EQ(QByteArray("84\t0015\tinvalid array element\n"), outcome.answer);
}

TEST_F(WorkerCommands, CacheIsFilledByUpdatesOnly) {
    start({"--tag", "A:DINT[0..1]=1,2"});
    ASSERT_TRUE(worker->openConnection());
    bool broken = true;
    EXPECT_EQ(QByteArray::fromHex("0100000002000000"), worker->readFromPLC("A", 2, &broken));
    EXPECT_FALSE(broken);
    QByteArray value;
    EXPECT_FALSE(worker->cacheValue("A_2", value));
    EXPECT_TRUE(worker->updateCache("A", 2, &broken));
    EXPECT_TRUE(worker->cacheValue("A_2", value));
    EXPECT_EQ(QByteArray::fromHex("0100000002000000"), value);
}

/// A tag whose polled value is shorter than the elements that are asked for.
TEST_F(WorkerCommands, ShorterValueOfAPolledElementIsNotServed) {
    start({"--tag", "A:DINT[0..4]=1,2,3,4,5"});
    worker->receiver()->cacheInsert("A[3]_2", QByteArray::fromHex("09000000"));
    const Outcome outcome = readElements("04\t0030\tA\t[3]\tC4\t2\t5\t12\n");
    EXPECT_TRUE(outcome.served);
    EXPECT_EQ(QByteArray("04\t0030\t0400000005000000\n"), outcome.answer);
}

TEST_F(WorkerCommands, PolledElementIsRefreshedByItsRead) {
    start({"--tag", "A:DINT[0..4]=1,2,3,4,5"});
    poll("01\t0001\tA[4]\t1\n");
    const Outcome outcome = readElements("04\t0031\tA\t[4]\tC4\t1\t5\t16\n");
    EXPECT_TRUE(outcome.served);
    EXPECT_EQ(QString("A[4]"), outcome.name);
    EXPECT_EQ(QByteArray("04\t0031\t05000000\n"), outcome.answer);
    EXPECT_EQ("05000000", cached("A[4]_1"));
    EXPECT_EQ(1, simulator->countRequests("A[4]"));
}

TEST_F(WorkerCommands, BrokenUpdateNeedsNobodyToHearOfIt) {
    start({"--tag", "D:DINT=42", "--fault", "resetx1@tag=D"});
    ASSERT_TRUE(worker->openConnection());
    EXPECT_FALSE(worker->updateCache("D", 1, nullptr));
    EXPECT_FALSE(open());
    EXPECT_EQ(QString("Internal: receive error"), worker->errStr());
}

// ---- opening and stopping ----------------------------------------------------------------------

/// The records of a connection whose socket is gone are not those of the next one.
TEST_F(WorkerCommands, OpeningAfterAResetTakesThePlaceOfTheOneBefore) {
    start({"--tag", "D:DINT=42"});
    ASSERT_TRUE(worker->openConnection());
    ASSERT_EQ("ok", simulator->command("reset-peers"));
    EXPECT_TRUE(worker->openConnection()) << worker->errStr().toStdString();
    EXPECT_TRUE(open());
    EXPECT_EQ(2, simulator->connectionsOpened());
    EXPECT_EQ(QByteArray("02\t0040\t2a000000\n"), read("02\t0040\tD\t1\n").answer);
}

/// The controller drops a connection without traffic after 2 s by 16. A request over it would be
/// lost together with its time-out.
TEST_F(WorkerCommands, ConnectionThatWasIdleForTooLongIsOpenedAnew) {
    start({"--tag", "D:DINT=42", "--tag", "E:DINT=43"});
    EXPECT_EQ(QByteArray("02\t0041\t2a000000\n"), read("02\t0041\tD\t1\n").answer);
    jumpClock(28);
    worker->receiver()->cacheInsert("E_1", QByteArray::fromHex("07000000"));
    EXPECT_EQ(QByteArray("02\t0042\t2a000000\n"), read("02\t0042\tD\t1\n").answer);
    EXPECT_EQ(1, simulator->connectionsOpened());
    jumpClock(31);
    EXPECT_EQ(QByteArray("02\t0043\t2a000000\n"), read("02\t0043\tD\t1\n").answer);
    EXPECT_EQ(2, simulator->connectionsOpened());
    // What was read before may be another controller's.
    EXPECT_EQ("none", cached("E_1"));
}

TEST_F(WorkerCommands, StoppedWorkerOpensNothing) {
    start({"--tag", "D:DINT=42"});
    worker->stop();
    EXPECT_FALSE(worker->openConnection());
    EXPECT_FALSE(open());
    EXPECT_EQ(QByteArray(), worker->errStr().toLatin1()) << "a stop is no failure";
    EXPECT_TRUE(simulator->log().isEmpty());
}

/// The answer to a command that a stop overtakes is not awaited.
TEST_F(WorkerCommands, StoppedWorkerRefreshesNothing) {
    start({"--tag", "D:DINT=42"});
    ASSERT_TRUE(worker->openConnection());
    worker->receiver()->cacheInsert("D_1", QByteArray::fromHex("07000000"));
    worker->stop();
    bool broken = true;
    EXPECT_FALSE(worker->updateCache("D", 1, &broken));
    EXPECT_FALSE(broken);
    EXPECT_TRUE(worker->readFromPLC("D", 1, &broken).isEmpty());
    EXPECT_EQ("07000000", cached("D_1"));
    EXPECT_TRUE(worker->errStr().isEmpty());
    EXPECT_TRUE(simulator->requests().isEmpty());
}

/// A controller in slot 0 of a rack, behind a bridge: port segment 01 00 before the path of the
/// message router, 20 02 24 01.
TEST(WorkerRoute, GoesBeforeThePathOfTheMessageRouter) {
    QByteArray open;
    std::mutex mutex;  // guards open
    ScriptedController bridge(ScriptedController::Script{[&](const QByteArray& request) {
        // Encapsulation command, then the service behind header, prefix, item count and items.
        const int command = request.at(0);
        if (command == 0x6F && request.size() > 40 && request.at(40) == 0x54) {
            const std::lock_guard<std::mutex> lock(mutex);
            open = request.mid(40);
        }
        ScriptedController::Answer answer;
        if (command == 0x65) {
            answer.pieces << QByteArray::fromHex(
                "65000400 01000000 00000000 0000000000000000 00000000 01000000");
        } else {
            answer.hangsUp = true;
        }
        return answer;
    }});
    CipPlcDriverCallback receiver;
    EipWorker worker(&receiver, "127.0.0.1", bridge.port(), 400, {0x01, 0x00});
    EXPECT_FALSE(worker.openConnection());
    const std::lock_guard<std::mutex> lock(mutex);
    ASSERT_FALSE(open.isEmpty());
    // Path size in words, then the path, at the end of the request.
    EXPECT_EQ(QByteArray("03010020022401"), open.right(7).toHex());
}

TEST_F(WorkerCommands, SessionListThatDoesNotParseChangesNothing) {
    start({"--tag", "D:DINT=42"});
    poll("01\t0001\tD\t1\n");
    take("01\t0002\tE\tmany\n", 1);
    worker->receiver()->cacheInsert("D_1", QByteArray::fromHex("07000000"));
    EXPECT_FALSE(worker->takeSessionList());
    EXPECT_EQ("07000000", cached("D_1"));
    worker->pollSession();
    EXPECT_EQ("2a000000", cached("D_1"));
    EXPECT_EQ(0, simulator->countRequests("E"));
}

// ---- writes ------------------------------------------------------------------------------------

TEST_F(WorkerCommands, WriteOfATagNamesIt) {
    start({"--tag", "D:DINT=0"});
    const Outcome outcome = write("03\t0010\tD\tC4\t2a000000\n");
    EXPECT_TRUE(outcome.served);
    EXPECT_FALSE(outcome.broken);
    EXPECT_EQ(QString("D"), outcome.name);
    EXPECT_EQ(QByteArray("03\t0010\n"), outcome.answer);
    EXPECT_EQ("ok 42", simulator->command("get D"));
    EXPECT_EQ(1, simulator->countRequests("D"));
}

TEST_F(WorkerCommands, WriteOfAnElementThatIsNotCachedNamesTheElement) {
    start({"--tag", "A:DINT[0..3]"});
    const Outcome outcome = write("03\t0011\tA[2]\tC4\t2a000000\n");
    EXPECT_TRUE(outcome.served);
    EXPECT_EQ(QString("A[2]"), outcome.name);
    EXPECT_EQ(QByteArray("03\t0011\n"), outcome.answer);
}

TEST_F(WorkerCommands, SizeThatIsNoWholeNumberOfElementsIsRefusedUnsent) {
    start({"--tag", "I:INT=7"});
    for (const char* bytes : {"01", "010203"}) {
        const Outcome outcome = write((std::string("03\t0012\tI\tC3\t") + bytes + "\n").c_str());
        EXPECT_FALSE(outcome.served);
        EXPECT_FALSE(outcome.broken);
        EXPECT_EQ(QByteArray("83\t0012\tinvalid data size\n"), outcome.answer);
    }
    EXPECT_EQ(0, simulator->countRequests("I"));
    EXPECT_TRUE(open());
}

TEST_F(WorkerCommands, TypeWithoutASizeIsRefusedUnsent) {
    start({"--tag", "D:DINT=0"});
    EXPECT_EQ(QByteArray("83\t0013\tinvalid data size\n"),
              write("03\t0013\tD\t00\t2a000000\n").answer);
    EXPECT_EQ(0, simulator->countRequests("D"));
}

/// A value without a single hexadecimal digit is the one empty value that a line can carry.
TEST_F(WorkerCommands, EmptyShortStringIsSent) {
    start({"--tag", "NAME:STRING=old"});
    EXPECT_EQ(QByteArray("03\t0014\n"), write("03\t0014\tNAME\tDA\t-\n").answer);
    ASSERT_EQ(1, simulator->countRequests("NAME"));
    // Service, path, type DA, one element, length byte 0.
    EXPECT_EQ(QByteArray("4d0391044e414d45da00010000"),
              Controller::rawRequest(simulator->requests().last()).mid(46).toHex());
}

TEST_F(WorkerCommands, RefusedWriteKeepsTheConnection) {
    start({"--tag", "I:INT=7"});
    const Outcome outcome = write("03\t0015\tI\tC4\t2a000000\n");
    EXPECT_FALSE(outcome.served);
    EXPECT_FALSE(outcome.broken);
    EXPECT_TRUE(outcome.name.isEmpty());
    EXPECT_EQ(QByteArray("83\t0015\tAB error: 01FFH, 2107H\n"), outcome.answer);
    EXPECT_TRUE(open());
    EXPECT_FALSE(worker->hasErr());
}

TEST_F(WorkerCommands, BrokenWriteClosesTheConnection) {
    start({"--tag", "D:DINT=0", "--fault", "silencex1@tag=D"});
    const Outcome outcome = write("03\t0016\tD\tC4\t2a000000\n");
    EXPECT_FALSE(outcome.served);
    EXPECT_TRUE(outcome.broken);
    EXPECT_EQ(QByteArray("83\t0016\tInternal: receive timeout\n"), outcome.answer);
    EXPECT_FALSE(open());
    EXPECT_EQ(1, simulator->countRequests("D"));
}

TEST_F(WorkerCommands, WriteWithoutAControllerIsBroken) {
    const ReservedPort nobody;
    worker.reset(new OpenWorker(nobody.port()));
    const Outcome outcome = write("03\t0017\tD\tC4\t2a000000\n");
    EXPECT_FALSE(outcome.served);
    EXPECT_TRUE(outcome.broken);
    EXPECT_EQ(QByteArray("83\t0017\tConnection refused(111)\n"), outcome.answer);
}

TEST_F(WorkerCommands, WriteThatDoesNotParseGetsNoAnswer) {
    start({"--tag", "D:DINT=0"});
    for (const char* line : {"03\t0018\tD\tXY\t2a000000\n", "03\tXYZ\tD\tC4\t2a000000\n",
                             "03\t0018\tD\tC4\t2a000000\t1\t1\n", "03\t0018\tD\tC4\n"}) {
        const Outcome outcome = write(line);
        EXPECT_FALSE(outcome.served) << line;
        EXPECT_FALSE(outcome.broken) << line;
        EXPECT_TRUE(outcome.answer.isEmpty()) << line;
    }
    EXPECT_EQ(0, simulator->countRequests("D"));
}

/// The host gets to know the value that the controller has now, never the one from before.
TEST_F(WorkerCommands, CachedArrayIsReadAnewBeforeTheWriteIsConfirmed) {
    start({"--tag", "A:DINT[0..3]=1,2,3,4"});
    // Without a session list an entry of count 0 is the entry that the base name means.
    worker->receiver()->cacheInsert("A_0", QByteArray());
    const Outcome outcome = write("03\t0019\tA[2]\tC4\t2a000000\n");
    // A read of no elements is refused; the write itself has happened.
    EXPECT_FALSE(outcome.served);
    EXPECT_TRUE(outcome.name.isEmpty());
    EXPECT_TRUE(outcome.answer.startsWith("83\t0019\t")) << outcome.answer.constData();
    EXPECT_EQ("ok 42", simulator->command("get A[2]"));
    EXPECT_EQ(1, simulator->countRequests("A[2]"));
}

// ---- change of address -------------------------------------------------------------------------

TEST_F(WorkerCommands, AddressChangeTakesTheNextRequestToTheNewController) {
    start({"--tag", "D:DINT=1"});
    Controller other({"--tag", "D:DINT=2"});
    EXPECT_EQ(QByteArray("02\t0020\t01000000\n"), read("02\t0020\tD\t1\n").answer);
    worker->receiver()->cacheInsert("X_1", QByteArray("x"));
    take(QString("05\t0021\t127.0.0.1\t%1\n").arg(other.port()).toLatin1().constData());
    EXPECT_TRUE(worker->processDriverIpSettingChangedCmd());
    EXPECT_EQ(QByteArray("05\t0021\n"), answer());
    EXPECT_FALSE(open());
    QByteArray value;
    EXPECT_FALSE(worker->cacheValue("X_1", value));
    EXPECT_EQ(QByteArray("02\t0022\t02000000\n"), read("02\t0022\tD\t1\n").answer);
}

TEST_F(WorkerCommands, AddressChangeThatDoesNotParseIsDropped) {
    start({"--tag", "D:DINT=1"});
    take("05\t0023\t127.0.0.1\t70000\n");
    EXPECT_FALSE(worker->processDriverIpSettingChangedCmd());
    EXPECT_FALSE(worker->receiver()->hasDriverIpSettingChangedCmd());
    EXPECT_TRUE(answer().isEmpty());
    EXPECT_EQ(QByteArray("02\t0024\t01000000\n"), read("02\t0024\tD\t1\n").answer);
}

}  // namespace
