#include "apps/micro800/controller/trace/frame_text.h"

#include <gtest/gtest.h>

#include "support/hex_bytes.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

/// The lines of a message after the encapsulation header's six.
QStringList bodyLines(const QByteArray& message, bool isReply) {
    return frameText(message, isReply).mid(7);
}

TEST(FrameText, NamesTheFieldsOfTheHeader) {
    // Vol. 2, 2-4.4: RegisterSession.
    const QByteArray request =
        hex("65000400 00000000 00000000 0000000000000000 00000000"
            "0100 0000");
    EXPECT_EQ(frameText(request, false),
              QStringList({
                  "> RegisterSession request, 28 bytes",
                  "  0000  command                  65 00                    RegisterSession",
                  "  0002  length                   04 00                    4",
                  "  0004  session handle           00 00 00 00",
                  "  0008  status                   00 00 00 00",
                  "  000c  sender context           00 00 00 00 00 00 00 00",
                  "  0014  options                  00 00 00 00",
                  "  0018  protocol version         01 00                    1",
                  "  001a  option flags             00 00",
              }));
}

TEST(FrameText, ReadTagOverAConnection) {
    const QByteArray request =
        hex("70001e00 11000000 00000000 0000000000000000 00000000"
            "00000000 0300 0200"
            "a1000400 02000080"
            "b1000a00 0700 4c02 9101 4100 0100");
    EXPECT_EQ(bodyLines(request, false),
              QStringList({
                  "  0018  interface handle         00 00 00 00",
                  "  001c  time-out                 03 00                    3",
                  "  001e  item count               02 00                    2",
                  "  0020  item type                a1 00                    connected address",
                  "  0022  item length              04 00                    4",
                  "  0024  connection id            02 00 00 80",
                  "  0028  item type                b1 00                    connected data",
                  "  002a  item length              0a 00                    10",
                  "  002c  sequence count           07 00                    7",
                  "  002e  service                  4c                       Read Tag",
                  "  002f  path size in words       02                       2",
                  "  0030  path                     91 01 41 00              A",
                  "  0034  elements                 01 00                    1",
              }));
}

TEST(FrameText, RepliesOfAController) {
    const QByteArray head =
        hex("70001e00 11000000 00000000 0000000000000000 00000000"
            "00000000 0000 0200 a1000400 01000000");
    EXPECT_EQ(bodyLines(head + hex("b1000c00 0700 cc000000 c400 2a000000"), true).mid(9),
              QStringList({
                  "  002e  reply service            cc                       Read Tag",
                  "  002f  reserved                 00",
                  "  0030  general status           00                       Success",
                  "  0031  additional status size   00                       0",
                  "  0032  data type                c4 00                    DINT",
                  "  0034  data                     2a 00 00 00",
              }));
    EXPECT_EQ(bodyLines(head + hex("b1000800 0700 cc00ff01 0521"), true).mid(11),
              QStringList({
                  "  0030  general status           ff                       Reserved "
                  "Object/Class/services errors",
                  "  0031  additional status size   01                       1",
                  "  0032  additional status        05 21",
              }));
}

/// For any number of bytes, and any announced numbers, every byte is shown once.
TEST(FrameText, EveryBeginningOfAMessageIsShownWhole) {
    const QByteArray whole = hex(
        "6f003e00 11000000 00000000 0000000000000000 00000000"
        "00000000 0300 0200 00000000 b200ff00"
        "5402 20062401 05f7 02000080 0100fe80 0200 1b50 44332211 02 000000 80841e00 f843 80841e00"
        "f843 a3 02 20022401");
    for (int size = 0; size <= whole.size(); ++size) {
        for (const bool isReply : {false, true}) {
            int shown = 0;
            for (const QString& line : frameText(whole.left(size), isReply).mid(1)) {
                shown += line.mid(33, 24).split(' ', Qt::SkipEmptyParts).size();
            }
            EXPECT_EQ(shown, size) << size << isReply;
        }
    }
}

TEST(FrameText, TakesAnyBytes) {
    for (int command = 0; command < 256; ++command) {
        QByteArray message(80, char(0xFF));
        message[0] = char(command);
        message[1] = 0;
        EXPECT_FALSE(frameText(message, command % 2).isEmpty());
    }
}

}  // namespace
