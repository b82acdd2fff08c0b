#include "eip/record/flight_recorder.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <QDir>
#include <QTemporaryDir>
#include <cstring>
#include <functional>

#include "support/capture_file.h"
#include "support/hex_bytes.h"
#include "unit/eip/record/failing_new.h"

namespace {

const unsigned long kLong = 20000;

/// A recorder that has a folder, and what it wrote there by its end.
class FlightRecorderOn : public ::testing::Test {
 protected:
    FlightRecorderOn() {
        RecordSettings settings;
        settings.folder = dir.path().toStdString();
        recorder.reset(new FlightRecorder(settings));
    }

    QStringList names() const { return QDir(dir.path()).entryList(QDir::Files, QDir::Name); }

    /// The comments of the only recording, after the recorder's end.
    QStringList commentsAtTheEnd() {
        recorder->start();
        recorder->end(kLong);
        EXPECT_EQ(1, names().size());
        QString problem;
        EXPECT_TRUE(capture.read(dir.path() + '/' + names().value(0), &problem))
            << problem.toStdString();
        return capture.comments();
    }

    void send(const char* digits, bool whole = true) {
        const QByteArray bytes = hex(digits);
        recorder->sent(reinterpret_cast<const _Encap_Header*>(bytes.constData()), whole);
    }
    void receive(const char* digits) {
        const QByteArray bytes = hex(digits);
        recorder->received(reinterpret_cast<const _Encap_Header*>(bytes.constData()));
    }

    QTemporaryDir dir;
    std::unique_ptr<FlightRecorder> recorder;
    CaptureFile capture;
};

const char kRegister[] = "65000400 00000000 00000000 0000000000000000 00000000 01000000";
const char kRegistered[] = "65000400 01000000 00000000 0000000000000000 00000000 01000000";

TEST(FlightRecorder, OffItCountsAndWritesNothing) {
    FlightRecorder recorder{RecordSettings()};
    EXPECT_FALSE(recorder.isOn());
    recorder.start();
    const QByteArray bytes = hex(kRegister);
    recorder.sent(reinterpret_cast<const _Encap_Header*>(bytes.constData()), true);
    recorder.received(reinterpret_cast<const _Encap_Header*>(bytes.constData()));
    recorder.receivedPart("", 0, true);
    recorder.thrownAway("", 0);
    recorder.connecting("a", 1);
    recorder.connectFailed("x");
    recorder.connected();
    recorder.opened();
    recorder.openFailed("x", true);
    recorder.lost("x");
    recorder.closed();
    recorder.addressChanged("a", 1);
    recorder.sessionList("A", 1);
    recorder.asked("read", "A");
    recorder.answered("read", "A", 4, 70);
    recorder.errorText("x");
    recorder.passed(5);
    recorder.end(0);
    const LiveFigures figures = recorder.figures();
    EXPECT_EQ(1u, figures.requests);
    EXPECT_EQ(1u, figures.answers);
    EXPECT_EQ(1u, figures.timeouts);
    EXPECT_EQ(1u, figures.connects);
    EXPECT_EQ(1u, figures.connectFailures);
    EXPECT_EQ(1u, figures.opens);
    EXPECT_EQ(1u, figures.losses);
    EXPECT_EQ(1u, figures.errorTexts);
    EXPECT_EQ(1u, figures.hostCalls);
    EXPECT_EQ(70u, figures.longestHostWait);
    EXPECT_EQ(5u, figures.passLast);
    EXPECT_EQ(0u, recorder.recordings().written);
}

TEST_F(FlightRecorderOn, NothingHappened) {
    recorder->start();
    recorder->end(kLong);
    EXPECT_EQ(QStringList(), names());
}

TEST_F(FlightRecorderOn, AReadFromTheQuestionToTheAnswer) {
    recorder->start();
    recorder->asked("read", "DINT0:A");
    recorder->connecting("10.0.0.1", 44818);
    recorder->connected();
    send(kRegister);
    receive(kRegistered);
    recorder->opened();
    recorder->answered("read", "DINT0:A", 4, 12345);
    recorder->closed();
    const QStringList comments = commentsAtTheEnd();
    ASSERT_EQ(6, comments.size()) << comments.join('\n').toStdString();
    EXPECT_EQ("read asked: DINT0:A", comments.at(0));
    EXPECT_EQ("connect: 10.0.0.1:44818", comments.at(1));
    EXPECT_TRUE(comments.at(2).startsWith("connected: after "));
    EXPECT_EQ("opened: 10.0.0.1:44818", comments.at(3));
    EXPECT_EQ("read answered: DINT0:A: 4 bytes after 12.3 ms", comments.at(4));
    EXPECT_EQ("closed", comments.at(5));
    EXPECT_EQ(hex(kRegister), capture.bytesToController());
    EXPECT_EQ(hex(kRegistered), capture.bytesFromController());
    EXPECT_TRUE(names().first().endsWith("-end.pcapng"));
    EXPECT_TRUE(capture.comment.startsWith("why: end\nmonotonic: "));
    EXPECT_EQ(1u, recorder->recordings().written);
}

/// More than the writer keeps in memory before it writes.
TEST_F(FlightRecorderOn, ALongRecordingIsWhole) {
    const int kMessages = 3000;
    for (int i = 0; i < kMessages; ++i) {
        send(kRegister);
    }
    EXPECT_EQ(QStringList(), commentsAtTheEnd());
    EXPECT_EQ(hex(kRegister).size() * kMessages, capture.bytesToController().size());
    EXPECT_TRUE(capture.bytesToController().endsWith(hex(kRegister)));
}

/// The disk takes a part of what the writer hands it first.
TEST_F(FlightRecorderOn, ALongRecordingThatDoesNotFitIsLost) {
    for (int i = 0; i < 3000; ++i) {
        send(kRegister);
    }
    rlimit old;
    ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &old));
    rlimit small = old;
    small.rlim_cur = 1000;
    const sighandler_t handler = signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &small));
    recorder->start();
    recorder->end(kLong);
    setrlimit(RLIMIT_FSIZE, &old);
    signal(SIGXFSZ, handler);
    EXPECT_EQ(QStringList(), QDir(dir.path()).entryList(QDir::Files | QDir::Hidden));
    EXPECT_EQ(1u, recorder->recordings().failed);
    EXPECT_EQ("can not write a recording to " + dir.path().toStdString() + "/: File too large",
              recorder->recordings().problem);
}

/// An event is lost without memory for its text; the driver goes on, and so does the recorder.
TEST_F(FlightRecorderOn, EventsWithoutMemoryAreLost) {
    const QString reason("a reason with more letters than a text keeps without memory");
    const std::function<void()> events[] = {
        [&] { recorder->asked("read", reason); },
        [&] { recorder->answered("read", reason, 4, 5); },
        [&] { recorder->errorText(reason); },
        [&] { send(kRegister, false); },
        [&] { recorder->receivedPart("x", 1, false); },
        [&] { recorder->thrownAway("x", 1); },
        [&] { recorder->connected(); },
        [&] { recorder->connectFailed(reason); },
        [&] { recorder->opened(); },
        [&] { recorder->openFailed(reason, true); },
        [&] { recorder->lost(reason); },
        [&] { recorder->addressChanged("10.0.0.1", 44818); },
        [&] { recorder->sessionList(reason, 1); },
    };
    recorder->connecting("10.0.0.1", 44818);
    for (const auto& event : events) {
        const FailingNew noMemory;
        EXPECT_NO_THROW(event());
        EXPECT_TRUE(noMemory.hasFailed()) << "event " << &event - events;
    }
    recorder->asked("read", "DINT0:A");
    EXPECT_EQ(QStringList("read asked: DINT0:A"), commentsAtTheEnd().mid(0, 1));
}

/// The attempts to open go on; the first failure has been recorded.
TEST_F(FlightRecorderOn, AFurtherFailureToOpenIsNoNews) {
    recorder->addressChanged("10.0.0.1", 44818);
    recorder->openFailed("refused", false);
    EXPECT_EQ(QStringList("address changed: 10.0.0.1:44818"), commentsAtTheEnd());
    EXPECT_TRUE(names().first().endsWith("-end.pcapng"));
}

TEST_F(FlightRecorderOn, ALossIsWrittenWithItsReason) {
    send(kRegister);
    recorder->lost("Internal: receive timeout");
    recorder->start();
    recorder->end(kLong);
    ASSERT_EQ(1, names().size());
    EXPECT_TRUE(names().first().endsWith("-connection-lost.pcapng"));
    QString problem;
    ASSERT_TRUE(capture.read(dir.path() + '/' + names().first(), &problem));
    EXPECT_TRUE(capture.comment.startsWith(
        "why: connection-lost\ndetail: Internal: receive timeout\nmonotonic: "));
    EXPECT_EQ(QStringList("connection lost: Internal: receive timeout"), capture.comments());
}

TEST_F(FlightRecorderOn, AnErrorTextIsWrittenOnce) {
    recorder->errorText("read A> AB error: 0005H");
    recorder->errorText("read A> AB error: 0005H");
    recorder->start();
    recorder->end(kLong);
    const QStringList written = names();
    ASSERT_EQ(2, written.size()) << written.join(' ').toStdString();
    // The names sort by the second, and then by the reason.
    EXPECT_EQ(1, written.filter("-end.pcapng").size()) << written.join(' ').toStdString();
    EXPECT_EQ(1, written.filter("-error-text.pcapng").size()) << written.join(' ').toStdString();
}

/// The operator's text for a lost connection is the reason of the loss after the address.
TEST_F(FlightRecorderOn, TheTextOfALossIsNoFurtherReason) {
    recorder->lost("Internal: receive timeout");
    recorder->errorText("read A> Internal: receive timeout");
    recorder->start();
    recorder->end(kLong);
    const QStringList written = names();
    ASSERT_EQ(2, written.size()) << written.join(' ').toStdString();
    EXPECT_TRUE(written.at(0).endsWith("-connection-lost.pcapng"));
    EXPECT_TRUE(written.at(1).endsWith("-end.pcapng"));
}

/// A controller that refuses every connection at once, thousands of times per second.
TEST_F(FlightRecorderOn, FailedConnectsDoNotPushTheRestOut) {
    recorder->asked("read", "DINT0:A");
    for (int i = 0; i < 100000; ++i) {
        recorder->connecting("10.0.0.1", 44818);
        recorder->connectFailed("Connection refused(111)");
    }
    recorder->connecting("10.0.0.1", 44818);
    recorder->connectFailed("No route to host(113)");
    EXPECT_EQ((QStringList() << "read asked: DINT0:A"
                             << "connect: 10.0.0.1:44818"
                             << "connect failed: Connection refused(111)"
                             << "connect failed: Connection refused(111), so far 1 times more"
                             << "connect failed: Connection refused(111), so far 10 times more"
                             << "connect failed: Connection refused(111), so far 100 times more"
                             << "connect failed: Connection refused(111), so far 1000 times more"
                             << "connect failed: Connection refused(111), so far 10000 times more"
                             << "connect failed: 99999 times more"
                             << "connect: 10.0.0.1:44818"
                             << "connect failed: No route to host(113)"),
              commentsAtTheEnd());
    EXPECT_EQ(100001u, recorder->figures().connectFailures);
}

TEST_F(FlightRecorderOn, WhatIsNotWholeIsTold) {
    send(kRegister, false);
    recorder->receivedPart("abc", 3, true);
    recorder->receivedPart("", 0, false);
    recorder->thrownAway("late", 4);
    EXPECT_EQ((QStringList() << "request not sent: the connection did not take all of it"
                             << "no whole answer: the time was up after 3 bytes"
                             << "no whole answer: the connection ended after 0 bytes"
                             << "thrown away: 4 bytes that came unasked"),
              commentsAtTheEnd());
    EXPECT_EQ(QByteArray("abclate"), capture.bytesFromController());
}

TEST_F(FlightRecorderOn, HostileTextStaysInItsLine) {
    recorder->asked("read", QString::fromUtf8("A\n\x1b[2J\x7f\xc2\x9b\xc3\xa4"));
    recorder->addressChanged("10.0.0.2\r", 1);
    recorder->sessionList(QString(5000, 'x'), 9);
    const QStringList comments = commentsAtTheEnd();
    ASSERT_EQ(3, comments.size());
    EXPECT_EQ(QString::fromUtf8("read asked: A  [2J  \xc3\xa4"), comments.at(0));
    EXPECT_EQ(QString("address changed: 10.0.0.2 :1"), comments.at(1));
    EXPECT_EQ(1024, comments.at(2).size());
}

TEST_F(FlightRecorderOn, ASignalFileIsObeyed) {
    recorder->start();
    recorder->asked("read", "DINT0:A");
    QFile signal(dir.path() + "/dump");
    ASSERT_TRUE(signal.open(QIODevice::WriteOnly));
    while (recorder->recordings().written == 0) {
        QThread::msleep(10);
    }
    ASSERT_EQ(1, names().size());
    EXPECT_TRUE(names().first().endsWith("-dump.pcapng"));
}

TEST(FlightRecorder, AFolderThatCannotBeWrittenCostsTheRecording) {
    RecordSettings settings;
    settings.folder = "/proc/no/such/folder";
    FlightRecorder recorder(settings);
    recorder.start();
    recorder.lost("x");
    recorder.end(kLong);
    EXPECT_EQ(0u, recorder.recordings().written);
    EXPECT_EQ(1u, recorder.recordings().failed);
    EXPECT_EQ("can not write to /proc/no/such/folder/: No such file or directory",
              recorder.recordings().problem);
}

TEST(FlightRecorder, NeverStartedEndsAtOnce) {
    QTemporaryDir dir;
    RecordSettings settings;
    settings.folder = dir.path().toStdString();
    FlightRecorder recorder(settings);
    recorder.lost("x");
    recorder.end(0);
    EXPECT_EQ(QStringList(), QDir(dir.path()).entryList(QDir::Files));
}

}  // namespace
