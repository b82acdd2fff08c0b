#include "apps/micro800/terminal/progress_bar.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

#include <QElapsedTimer>

#include "unit/apps/micro800/qt_printers.h"

namespace {

TEST(ProgressText, RateAndTimeLeft) {
    EXPECT_EQ(progressText(0, 1500, 0, 80), "[" + QString(40, '-') + "]  0/1500  0 %");
    EXPECT_EQ(progressText(750, 1500, 5000, 80),
              "[" + QString(20, '#') + QString(20, '-') + "]  750/1500  50 %  150/s  5 s left");
    EXPECT_EQ(progressText(1500, 1500, 10000, 80),
              "[" + QString(40, '#') + "]  1500/1500  100 %  150/s  0 s left");
    EXPECT_EQ(progressText(1, 1500, 1000, 80),
              "[" + QString(40, '-') + "]  1/1500  0 %  1/s  24 min 59 s left");
    EXPECT_EQ(progressText(1, 15000, 1000, 80).section("  ", -1), QString("4 h 9 min left"));
}

TEST(ProgressText, FitsTheTerminal) {
    EXPECT_EQ(progressText(750, 1500, 5000, 50),
              QString("[#######--------]  750/1500  50 %  150/s  5 s left"));
    EXPECT_EQ(progressText(750, 1500, 5000, 40), QString("750/1500  50 %  150/s  5 s left"));
    EXPECT_EQ(progressText(750, 1500, 5000, 10), QString("750/1500  "));
    EXPECT_EQ(progressText(0, 0, 5000, 80), QString());
    EXPECT_EQ(progressText(9, 3, 0, 20), QString("3/3  100 %"));
}

/// A terminal as the error stream, a file as the other.
class ProgressOnATerminal : public testing::Test {
 protected:
    ProgressOnATerminal() : before(qgetenv("TERM")), master(posix_openpt(O_RDWR | O_NOCTTY)) {
        grantpt(master);
        unlockpt(master);
        err = fopen(ptsname(master), "w");
        out = tmpfile();
    }
    ~ProgressOnATerminal() override {
        for (FILE* file : {err, out}) {
            if (file) {
                fclose(file);
            }
        }
        close(master);
        qputenv("TERM", before);
    }
    void SetUp() override { ASSERT_TRUE(err && out) << "no terminal"; }

    /// What the terminal got, once it is as much as that, or no more comes. The system hands it on
    /// in its own time.
    QByteArray shown(int expected) {
        QByteArray all;
        pollfd ready = {master, POLLIN, 0};
        while (poll(&ready, 1, all.size() < expected ? kLimitMs : kQuietMs) > 0) {
            char text[4096];
            const ssize_t got = read(master, text, sizeof text);
            if (got < 1) {
                break;
            }
            all.append(text, int(got));
        }
        return all;
    }
    void expectShown(const QByteArray& text) { EXPECT_EQ(shown(text.size()), text); }

    static const int kLimitMs = 5000;
    static const int kQuietMs = 20;

    const QByteArray before;
    const int master;
    FILE* err;
    FILE* out;
};

TEST_F(ProgressOnATerminal, TheLineGoesBeforeOtherOutput) {
    qputenv("TERM", "xterm");
    Console console(out, err);
    {
        ProgressBar bar(4, &console);
        bar.setDone(1);
        expectShown("\r[##########------------------------------]  1/4  25 %\033[K");
        console.error("broken");
        expectShown("\r\033[Kbroken\r\n");
        console.setStatus("again");
        expectShown("\ragain\033[K");
    }
    expectShown("\r\033[K");
}

TEST_F(ProgressOnATerminal, NoSecondLineBeforeAWhile) {
    qputenv("TERM", "xterm");
    Console console(out, err);
    ProgressBar bar(4, &console);
    QElapsedTimer clock;
    clock.start();
    bar.setDone(1);
    bar.setDone(2);
    const bool soon = clock.elapsed() < 100;
    const QByteArray first("\r[##########------------------------------]  1/4  25 %\033[K");
    const QByteArray all = shown(first.size());
    EXPECT_TRUE(all.startsWith(first)) << all.constData();
    EXPECT_TRUE(all == first || !soon) << all.constData();
}

TEST_F(ProgressOnATerminal, NoneOnATerminalThatCannotTakeALineBack) {
    for (const char* terminal : {"dumb", ""}) {
        qputenv("TERM", terminal);
        Console console(out, err);
        ProgressBar(4, &console).setDone(1);
        expectShown(QByteArray());
    }
}

TEST(Progress, NoneInAFile) {
    qputenv("TERM", "xterm");
    FILE* out = tmpfile();
    FILE* err = tmpfile();
    Console console(out, err);
    EXPECT_FALSE(console.showsStatus());
    ProgressBar(4, &console).setDone(1);
    fflush(err);
    EXPECT_EQ(ftell(err), 0);
    fclose(out);
    fclose(err);
}

}  // namespace
