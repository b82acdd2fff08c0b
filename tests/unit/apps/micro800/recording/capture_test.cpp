#include "apps/micro800/recording/capture.h"

#include <gtest/gtest.h>

#include "apps/micro800/recording/story.h"

namespace {

QByteArray number(quint32 value) {
    QByteArray bytes;
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.append(char(value >> shift));
    }
    return bytes;
}

QByteArray padded(QByteArray bytes) {
    while (bytes.size() % 4 != 0) {
        bytes.append('\0');
    }
    return bytes;
}

QByteArray comment(const QByteArray& text) {
    return QByteArray("\x01\x00", 2) + number(quint32(text.size())).left(2) + padded(text) +
           number(0);
}

QByteArray block(quint32 type, const QByteArray& body) {
    const QByteArray length = number(quint32(body.size() + 12));
    return number(type) + length + body + length;
}

QByteArray section(const QByteArray& text) {
    return block(0x0A0D0D0A,
                 number(0x1A2B3C4D) + number(1) + QByteArray(8, '\xFF') + comment(text));
}

/// A TCP segment between port 50000 and the controller.
QByteArray segment(bool toController, const QByteArray& data) {
    QByteArray packet(40, '\0');
    packet[0] = 0x45;
    packet[9] = 6;
    const QByteArray panel = QByteArray::fromHex("c350");
    const QByteArray controller = QByteArray::fromHex("af12");
    packet.replace(20, 4, toController ? panel + controller : controller + panel);
    return packet + data;
}

QByteArray packet(quint32 micros, const QByteArray& bytes,
                  const QByteArray& options = QByteArray()) {
    const QByteArray size = number(quint32(bytes.size()));
    return block(6, number(0) + number(0) + number(micros) + size + size + padded(bytes) + options);
}

/// An encapsulated message with `size` bytes after its header.
QByteArray message(char command, int size) {
    return QByteArray(1, command) + QByteArray(1, '\0') + QByteArray(1, char(size)) +
           QByteArray(21, '\0') + QByteArray(size, 'x');
}

TEST(Capture, ReasonEventsAndMessages) {
    const QByteArray request = message(0x65, 4);
    const QByteArray reply = message(0x70, 30);
    Capture capture;
    QString problem;
    ASSERT_TRUE(parseCapture(section("why: dump\ndetail: x y\nother: z") +
                                 packet(10, segment(true, request), comment("asked")) +
                                 packet(20, segment(false, reply.left(7))) +
                                 packet(30, segment(false, reply.mid(7) + reply)) +
                                 packet(40, segment(false, "rest")),
                             &capture, &problem))
        << problem.toStdString();
    EXPECT_EQ(QString("dump"), capture.why);
    EXPECT_EQ(QString("x y"), capture.detail);
    ASSERT_EQ(5, capture.entries.size());
    EXPECT_EQ(QString("asked"), capture.entries.at(0).text);
    EXPECT_EQ(CaptureEntry::kRequest, capture.entries.at(1).kind);
    EXPECT_EQ(request, capture.entries.at(1).bytes);
    EXPECT_EQ(10, capture.entries.at(1).micros);
    EXPECT_EQ(reply, capture.entries.at(2).bytes);
    EXPECT_EQ(30, capture.entries.at(2).micros);
    EXPECT_EQ(reply, capture.entries.at(3).bytes);
    EXPECT_EQ(QByteArray("rest"), capture.entries.at(4).bytes);
}

/// A damaged time is one that a calendar has, and the time since the entry before is one as well.
TEST(Capture, TimesBeyondEveryCalendar) {
    QByteArray wild = packet(10, segment(true, message(0x65, 4)));
    wild.replace(12, 8, QByteArray(4, '\xFF') + QByteArray(4, '\xFF'));
    QByteArray wilder = wild;
    wilder.replace(12, 4, QByteArray("\x00\x00\x00\x80", 4));
    Capture capture;
    QString problem;
    ASSERT_TRUE(parseCapture(
        section("why: dump") + packet(0, segment(true, message(0x66, 0))) + wild + wilder, &capture,
        &problem));
    ASSERT_EQ(3, capture.entries.size());
    EXPECT_EQ(0, capture.entries.at(0).micros);
    EXPECT_EQ(253402300799999999, capture.entries.at(1).micros);
    EXPECT_EQ(253402300799999999, capture.entries.at(2).micros);
    EXPECT_EQ(3, timeLines(capture).size());
}

/// Cut anywhere, and with any byte changed, it is refused or read; nothing is read past its end.
TEST(Capture, DamagedInAnyWay) {
    const QByteArray whole =
        section("why: x") + packet(1, segment(true, message(0x65, 4)), comment("text"));
    Capture capture;
    QString problem;
    EXPECT_TRUE(parseCapture(whole, &capture, &problem)) << problem.toStdString();
    for (int size = 0; size < whole.size(); ++size) {
        parseCapture(whole.left(size), &capture, &problem);
    }
    for (int at = 0; at < whole.size(); ++at) {
        for (const int change : {0x01, 0x80, 0xFF}) {
            QByteArray changed = whole;
            changed[at] = char(changed.at(at) ^ change);
            parseCapture(changed, &capture, &problem);
        }
    }
    EXPECT_FALSE(parseCapture(whole.left(whole.size() - 1), &capture, &problem));
    EXPECT_EQ(QString("it is damaged at byte %1").arg(section("why: x").size()), problem);
    EXPECT_FALSE(parseCapture(QByteArray(100, 'x'), &capture, &problem));
    EXPECT_EQ(QString("it is not a recording"), problem);
}

}  // namespace
