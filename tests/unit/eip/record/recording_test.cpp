#include "eip/record/recording.h"

#include <gtest/gtest.h>

#include "support/capture_file.h"

namespace {

const int64_t kSecond = 1000000;
const int64_t kWall = 1700000000 * kSecond;
const int kFin = 1;
const int kSyn = 2;
const int kPush = 8;
const int kAck = 16;

/// Records and their recording, with the monotonic clock 500 s behind the time of day.
class RecordingOf : public ::testing::Test {
 protected:
    void add(RecordKind kind, const std::string& data, int64_t at, uint16_t connection = 1,
             int64_t step = 0) {
        RecordView record;
        record.head.time.monotonic = at;
        record.head.time.wall = kWall + at + step;
        record.head.kind = kind;
        record.head.connection = connection;
        record.head.size = uint32_t(data.size());
        record.data = reinterpret_cast<const unsigned char*>(data.data());
        recording.add(record, &bytes);
    }

    const CaptureFile& file() {
        QString problem;
        EXPECT_TRUE(capture.parse(
            QByteArray(reinterpret_cast<const char*>(bytes.data()), int(bytes.size())), &problem))
            << problem.toStdString();
        return capture;
    }

    RecordingOf() : recording(RecordTime{kWall, 0}) { recording.begin("app", "why: x", &bytes); }

    Recording recording;
    std::vector<unsigned char> bytes;
    CaptureFile capture;
};

TEST_F(RecordingOf, Nothing) {
    EXPECT_EQ(0, file().packets.size());
    EXPECT_EQ(QString("why: x"), capture.comment);
    EXPECT_EQ(QString("app"), capture.application);
}

/// The ring has lost what came before.
TEST_F(RecordingOf, AnAnswerToAConnectThatIsNotThereIsNoSegment) {
    add(kRecordConnected, "connected", 1);
    EXPECT_EQ(0, file().packets.size());
}

TEST_F(RecordingOf, AConversation) {
    add(kRecordConnecting, "connect: a", 1);
    add(kRecordConnected, "connected", 2);
    add(kRecordSent, "request", 3);
    add(kRecordReceived, "answer", 4);
    add(kRecordClosed, "closed", 5);
    struct Row {
        quint16 from;
        int flags;
        quint32 sequence;
        quint32 acknowledged;
        const char* payload;
        const char* comment;
        qint64 at;
    };
    const Row rows[] = {
        {49153, kSyn, 0, 0, "", "connect: a", 1},
        {44818, kSyn | kAck, 0, 1, "", "connected", 2},
        {49153, kAck, 1, 1, "", "", 2},
        {49153, kAck | kPush, 1, 1, "request", "", 3},
        {44818, kAck | kPush, 1, 8, "answer", "", 4},
        {49153, kAck | kFin, 8, 7, "", "closed", 5},
    };
    ASSERT_EQ(6, file().packets.size());
    for (int i = 0; i < 6; ++i) {
        const CapturedPacket& packet = capture.packets.at(i);
        EXPECT_EQ(rows[i].from, packet.fromPort) << i;
        EXPECT_EQ(rows[i].from == 44818 ? 0xC0000202 : 0xC0000201, packet.from) << i;
        EXPECT_EQ(rows[i].flags, packet.flags) << i;
        EXPECT_EQ(rows[i].sequence, packet.sequence) << i;
        EXPECT_EQ(rows[i].acknowledged, packet.acknowledged) << i;
        EXPECT_EQ(QByteArray(rows[i].payload), packet.payload) << i;
        EXPECT_EQ(QString(rows[i].comment), packet.comment) << i;
        EXPECT_EQ(kWall + rows[i].at, packet.micros) << i;
        EXPECT_TRUE(packet.checksumsHold) << i;
    }
}

TEST_F(RecordingOf, ALongMessageInSegments) {
    const std::string data = std::string(1460, 'a') + std::string(1460, 'b') + "c";
    add(kRecordReceived, data, 1);
    ASSERT_EQ(3, file().packets.size());
    EXPECT_EQ(kAck, capture.packets.at(0).flags);
    EXPECT_EQ(1461u, capture.packets.at(1).sequence);
    EXPECT_EQ(2921u, capture.packets.at(2).sequence);
    EXPECT_EQ(kAck | kPush, capture.packets.at(2).flags);
    EXPECT_EQ(QByteArray(data.data(), int(data.size())), capture.bytesFromController());
}

TEST_F(RecordingOf, EachConnectionIsAStreamOfItsOwn) {
    add(kRecordSent, "first", 1, 1);
    add(kRecordSent, "second", 2, 2);
    add(kRecordSent, "wraps", 3, 16386);
    ASSERT_EQ(3, file().packets.size());
    EXPECT_EQ(49153, capture.packets.at(0).fromPort);
    EXPECT_EQ(49154, capture.packets.at(1).fromPort);
    EXPECT_EQ(1u, capture.packets.at(1).sequence);
    EXPECT_EQ(49154, capture.packets.at(2).fromPort);
}

TEST_F(RecordingOf, AnEventIsACommentBesideTheConversation) {
    add(kRecordSent, "request", 1);
    add(kRecordEvent, "error text: x", 2);
    add(kRecordReceived, "answer", 3);
    ASSERT_EQ(3, file().packets.size());
    EXPECT_EQ(17, capture.packets.at(1).protocol);
    EXPECT_EQ(9, capture.packets.at(1).fromPort) << "discard, RFC 863";
    EXPECT_EQ(QString("error text: x"), capture.packets.at(1).comment);
    EXPECT_EQ(QByteArray(), capture.packets.at(1).payload);
    EXPECT_TRUE(capture.packets.at(1).checksumsHold);
    EXPECT_EQ(8u, capture.packets.at(2).acknowledged);
}

/// The clock was set by an hour between the second and the third record.
TEST_F(RecordingOf, ASetClockIsToldAndTimesDoNotStep) {
    add(kRecordEvent, "a", -3 * kSecond, 1, -3600 * kSecond);
    add(kRecordEvent, "b", -2 * kSecond, 1, -3600 * kSecond);
    add(kRecordEvent, "c", -1 * kSecond);
    EXPECT_EQ((QStringList() << "clock: the time of day was -3600 s from the times shown here"
                             << "a"
                             << "b"
                             << "clock: the time of day was +0 s from the times shown here"
                             << "c"),
              file().comments());
    EXPECT_EQ(kWall - 3 * kSecond, capture.packets.at(1).micros);
    EXPECT_EQ(kWall - 2 * kSecond, capture.packets.at(2).micros);
    EXPECT_EQ(kWall - 1 * kSecond, capture.packets.at(4).micros);
}

}  // namespace
