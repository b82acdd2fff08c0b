#include "apps/micro800/recording/story.h"

#include <gtest/gtest.h>

#include "apps/micro800/recording/message_facts.h"
#include "support/hex_bytes.h"

namespace {

// Header, interface handle and time-out, two items: connected address, connected data.
const char kReadCounter[] =
    "70002400 01000000 00000000 0000000000000000 00000000"
    "00000000 0000 0200 a1000400 01020304 b1001000 0100 4c05 9107434f554e54455200 0100";
const char kReadGood[] =
    "70001e00 01000000 00000000 0000000000000000 00000000"
    "00000000 0000 0200 a1000400 01020304 b1000a00 0100 cc000000 c400 2a00";
const char kReadRefused[] =
    "70001a00 01000000 00000000 0000000000000000 00000000"
    "00000000 0000 0200 a1000400 01020304 b1000600 0100 cc000500";
const char kUnregister[] = "66000000 01000000 00000000 0000000000000000 00000000";

CaptureEntry entry(qint64 micros, CaptureEntry::Kind kind, const char* digits) {
    return {micros, kind, QString(), hex(digits)};
}

TEST(MessageText, RequestsAndReplies) {
    EXPECT_EQ(QString("Read Tag COUNTER"), messageText(hex(kReadCounter), false));
    EXPECT_EQ(QString("Read Tag good"), messageText(hex(kReadGood), true));
    EXPECT_EQ(QString("Read Tag refused with status 05"), messageText(hex(kReadRefused), true));
    EXPECT_EQ(QString("UnRegisterSession"), messageText(hex(kUnregister), false));
    EXPECT_EQ(QString("3 bytes of a message"), messageText(hex("700000"), false));
}

TEST(MessageText, AnyPartOfAMessage) {
    for (const char* digits : {kReadCounter, kReadGood, kReadRefused}) {
        const QByteArray whole = hex(digits);
        for (int size = 0; size < whole.size(); ++size) {
            QByteArray part = whole.left(size);
            if (size >= 4) {
                part[2] = char(size - 24);
                part[3] = 0;
            }
            messageText(part, false);
            messageText(part, true);
        }
    }
}

TEST(Story, ARequestWithoutAnAnswer) {
    Capture capture;
    capture.why = "connection-lost";
    capture.detail = "Internal: receive timeout";
    capture.entries << entry(1000, CaptureEntry::kRequest, kReadCounter)
                    << entry(3000, CaptureEntry::kReply, kReadGood)
                    << entry(4000, CaptureEntry::kRequest, kReadCounter)
                    << entry(9000, CaptureEntry::kReply, kReadRefused)
                    << entry(10000, CaptureEntry::kRequest, kReadCounter)
                    << CaptureEntry{310000, CaptureEntry::kEvent, "no whole answer: x",
                                    QByteArray()}
                    << entry(320000, CaptureEntry::kRequest, kUnregister);
    const Story story = storyOf(capture);
    EXPECT_EQ(QString("Read Tag COUNTER"), story.lastRequest);
    EXPECT_EQ(QString("COUNTER"), story.tag);
    EXPECT_EQ(QString(), story.lastAnswer);
    EXPECT_EQ(300000, story.lastTook);
    EXPECT_EQ(2, story.answersBefore);
    EXPECT_EQ(5000, story.longestBefore);
    EXPECT_EQ(3000, story.lastGood);
    const QStringList lines = storyLines(story);
    EXPECT_EQ(QString("  why     the connection was lost: Internal: receive timeout"), lines.at(1));
    EXPECT_EQ(QString("  last    Read Tag COUNTER, no answer for 300.0 ms"), lines.at(2));
}

TEST(Story, AnAnswerThatRefuses) {
    Capture capture;
    capture.entries << entry(1000, CaptureEntry::kRequest, kReadCounter)
                    << entry(3000, CaptureEntry::kReply, kReadRefused);
    const Story story = storyOf(capture);
    EXPECT_EQ(QString("Read Tag refused with status 05"), story.lastAnswer);
    EXPECT_EQ(2000, story.lastTook);
    EXPECT_EQ(0, story.answersBefore);
    EXPECT_EQ(-1, story.lastGood);
}

TEST(Story, Nothing) {
    EXPECT_EQ(-1, storyOf(Capture()).end);
    EXPECT_EQ(QString("  last    no request is in it"), storyLines(storyOf(Capture())).last());
    EXPECT_EQ(QStringList(), timeLines(Capture()));
}

}  // namespace
