// Whole messages, against real sockets on loopback.

#include "eip/cip_tcp_callback.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <atomic>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "eip/cip/cip_error.h"
#include "eip/cip/encap_header.h"
#include "unit/eip/tcp_transport.h"

namespace {

const _Encap_Header* header(const std::string& bytes) {
    return reinterpret_cast<const _Encap_Header*>(bytes.data());
}

void expectError(int type, int number) {
    EXPECT_EQ(type, cip_err_type());
    EXPECT_EQ(number, cip_errno());
    EXPECT_EQ(0, cip_ext_errno());
}

/// The contents of the record before a call that must not touch it.
void markError() {
    CIPERROR(CIP_ERR_AB, 0x77, 0x88);
}

void expectErrorUntouched() {
    EXPECT_EQ(CIP_ERR_AB, cip_err_type());
    EXPECT_EQ(0x77, cip_errno());
    EXPECT_EQ(0x88, cip_ext_errno());
}

// ---- sendData ------------------------------------------------------------------------------

TEST_F(Connected, SendsHeaderAndBody) {
    for (const std::string& body : {std::string(), std::string("abc"), std::string(1000, 'x')}) {
        const std::string request = message(body);
        EXPECT_EQ(int(request.size()), transport.sendData(header(request)));
        EXPECT_EQ(request, server.receive(request.size()));
    }
}

TEST_F(Connected, SendsTheLargestBody) {
    const std::string request = message(std::string(0xFFFF, 'y'));
    std::string got;
    std::thread peer([&] { got = server.receive(request.size()); });
    EXPECT_EQ(24 + 0xFFFF, transport.sendData(header(request)));
    peer.join();
    EXPECT_EQ(request, got);
}

TEST(TcpSend, GoesOnInPiecesWhenTheSystemTakesNoMore) {
    LoopbackServer server;
    Transport transport;
    const std::set<int> before = openDescriptors();
    ASSERT_EQ(1, transport.connect("127.0.0.1", server.port(), kSoonMs));
    const int sock = *minus(openDescriptors(), before).begin();
    ASSERT_TRUE(server.accept());
    const int small = 4096;
    ASSERT_EQ(0, setsockopt(sock, SOL_SOCKET, SO_SNDBUF, &small, sizeof small));
    transport.setTxTimeout(kSoonMs);

    std::string body;
    for (int i = 0; i < 0xFFFF; ++i) {
        body += static_cast<char>(i % 251);
    }
    const std::string request = message(body);
    int sent = 0;
    BlockingCall sender([&] { sent = transport.sendData(header(request)); });
    EXPECT_TRUE(request == server.receive(request.size()));
    sender.join();
    EXPECT_EQ(24 + 0xFFFF, sent);
}

TEST_F(Connected, ThrowsAStaleReplyAway) {
    ASSERT_TRUE(server.send(message("late") + message("later")));
    ASSERT_TRUE(server.delivered());
    const std::string request = message("now");
    EXPECT_EQ(int(request.size()), transport.sendData(header(request)));
    ASSERT_EQ(request, server.receive(request.size()));
    ASSERT_TRUE(server.send(message("answer")));
    EXPECT_EQ(message("answer"), receive(transport));
}

/// What came in together with a reply is as stale as what still lies in the socket.
TEST_F(Connected, ThrowsAwayWhatCameWithAReply) {
    ASSERT_TRUE(server.send(message("first") + message("unasked")));
    EXPECT_EQ(message("first"), receive(transport));
    const std::string request = message("now");
    EXPECT_EQ(int(request.size()), transport.sendData(header(request)));
    ASSERT_EQ(request, server.receive(request.size()));
    ASSERT_TRUE(server.send(message("answer") + message("unasked")));
    EXPECT_EQ(message("answer"), receive(transport));
    transport.emptyRxBuffer();
    EXPECT_FALSE(transport.awaitData(20));
}

TEST_F(Connected, NothingOfAnOldConnectionComesInTheNextOne) {
    ASSERT_TRUE(server.send(message("first") + message("unasked")));
    EXPECT_EQ(message("first"), receive(transport));
    transport.disconnect();
    ASSERT_EQ(1, transport.connect("127.0.0.1", server.port(), kSoonMs));
    ASSERT_TRUE(server.accept());
    ASSERT_TRUE(server.send(message("new")));
    EXPECT_EQ(message("new"), receive(transport));
}

TEST_F(Connected, EmptiesPieceByPiece) {
    ASSERT_TRUE(server.send(std::string(30 * 1400 + 7, 's')));
    ASSERT_TRUE(server.delivered());
    markError();
    transport.emptyRxBuffer();
    expectErrorUntouched();
    ASSERT_TRUE(server.send(message("fresh")));
    EXPECT_EQ(message("fresh"), receive(transport));
}

/// A peer that never stops sending keeps the worker for a bounded time.
TEST_F(Connected, EmptyingEndsWhenThePeerNeverDoes) {
    std::atomic<bool> stop(false);
    std::thread flood([&] {
        const std::string much(256 * 1024, 's');
        while (!stop && server.send(much)) {
        }
    });
    const Stopwatch watch;
    for (int i = 0; i < 20; ++i) {
        transport.emptyRxBuffer();
    }
    EXPECT_LT(watch.ms(), kSoonMs);
    EXPECT_TRUE(transport.isConnected());
    stop = true;
    transport.disconnect();  // ends a send that waits
    flood.join();
}

TEST_F(Connected, EmptyingServesThePipes) {
    transport.emptyRxBuffer();
    EXPECT_TRUE(transport.served.empty());
    ASSERT_EQ(2, transport.sendClientPipe(1, "b\n", 2));
    transport.emptyRxBuffer();
    EXPECT_EQ(std::vector<int>({1}), transport.served);
}

TEST_F(Connected, SendServesThePipesAndSendsAllTheSame) {
    transport.onPipe = [&](int pipe) { transport.take(pipe); };
    ASSERT_EQ(2, transport.sendClientPipe(0, "a\n", 2));
    const std::string request = message("abc");
    EXPECT_EQ(int(request.size()), transport.sendData(header(request)));
    EXPECT_EQ(std::vector<int>({0}), transport.served);
    EXPECT_EQ(request, server.receive(request.size()));
}

TEST_F(Connected, SendToAPeerThatDoesNotReadGivesUpAfterItsTime) {
    transport.setTxTimeout(100);
    const std::string request = message(std::string(0xFFFF, 'z'));
    markError();
    int sent = 1;
    Stopwatch watch;
    for (int i = 0; sent > 0 && i < 1000; ++i) {  // until both socket buffers are full
        watch = Stopwatch();
        sent = transport.sendData(header(request));
    }
    EXPECT_EQ(0, sent);
    EXPECT_GE(watch.ms(), 99);
    EXPECT_LT(watch.ms(), kSoonMs);
    expectErrorUntouched();

    // Now every send waits, and serves the commands that come meanwhile.
    transport.onPipe = [&](int pipe) { transport.take(pipe); };
    transport.setTxTimeout(kSoonMs);
    BlockingCall sender([&] { sent = transport.sendData(header(request)); });
    EXPECT_TRUE(sender.isAsleep());
    EXPECT_EQ(2, transport.sendClientPipe(1, "a\n", 2));
    EXPECT_TRUE(sender.isAsleep());
    server.reset();
    sender.join();
    EXPECT_EQ(0, sent);
    EXPECT_EQ(std::vector<int>({1}), transport.served);
}

/// A handler that gives the connection up in the middle of a request.
TEST_F(Connected, SendEndsWithItsTimeWhenAHandlerDisconnects) {
    transport.onPipe = [&](int pipe) {
        transport.take(pipe);
        transport.disconnect();
    };
    transport.setTxTimeout(500);
    const std::string request = message(std::string(0xFFFF, 'z'));
    // The peer reads nothing: a send that sleeps has filled both buffers, as a rule with a part.
    int sent = 1;
    BlockingCall sender([&] {
        while (sent > 0) {
            sent = transport.sendData(header(request));
        }
    });
    for (int looks = 0; looks < 100; ++looks) {  // not only until the next piece leaves
        EXPECT_TRUE(sender.isAsleep());
    }
    EXPECT_EQ(2, transport.sendClientPipe(0, "a\n", 2));
    sender.join();
    EXPECT_EQ(0, sent);
    EXPECT_FALSE(transport.isConnected());
    EXPECT_EQ(std::vector<int>({0}), transport.served);
}

TEST_F(Connected, SendToAPeerThatIsGoneRaisesNoSignal) {
    server.reset();
    const std::string request = message("abc");
    markError();
    int sent = 1;
    for (int i = 0; sent > 0 && i < 1000; ++i) {
        sent = transport.sendData(header(request));
    }
    EXPECT_EQ(0, sent);
    EXPECT_EQ(0, transport.sendData(header(request)));  // SIGPIPE would end the program
    expectErrorUntouched();
}

TEST(TcpSend, WithoutAConnectionFailsAfterItsTime) {
    Transport transport;
    transport.setTxTimeout(50);
    const std::string request = message("abc");
    markError();
    const Stopwatch watch;
    EXPECT_EQ(0, transport.sendData(header(request)));
    EXPECT_GE(watch.ms(), 49);
    expectErrorUntouched();
}

// ---- recvData ------------------------------------------------------------------------------

TEST_F(Connected, ReceivesWholeMessages) {
    for (const std::string& body : {std::string(), std::string("\0\n\xFF", 3),
                                    std::string(511, 'x'), std::string(0xFFFF, 'y')}) {
        std::thread peer([&] { EXPECT_TRUE(server.send(message(body))); });
        EXPECT_EQ(message(body), receive(transport));
        peer.join();
    }
    expectError(0, 0);
}

TEST_F(Connected, BodyOfNoBytesIsNotWaitedFor) {
    ASSERT_TRUE(server.send(message("")));
    const Stopwatch watch;
    EXPECT_EQ(message(""), receive(transport, kSoonMs));
    EXPECT_LT(watch.ms(), kSoonMs / 2);
}

TEST_F(Connected, LeavesTheNextMessageAlone) {
    ASSERT_TRUE(server.send(message("first") + message("second!")));
    EXPECT_EQ(message("first"), receive(transport));
    EXPECT_EQ(message("second!"), receive(transport));
}

TEST_F(Connected, TakesTheNextMessageFromBothPlaces) {
    const std::string second = message("second");
    for (size_t cut = 24; cut <= second.size(); ++cut) {
        ASSERT_TRUE(server.send(message("first") + second.substr(0, cut)));
        EXPECT_EQ(message("first"), receive(transport));
        ASSERT_TRUE(cut == second.size() || server.send(second.substr(cut)));
        EXPECT_EQ(second, receive(transport)) << cut;
    }
}

TEST_F(Connected, PutsATornReplyTogether) {
    const std::string reply = message("abcdefgh");
    for (size_t cut = 24; cut <= reply.size(); ++cut) {
        // One byte a segment from the cut on; each is sent when the one before was asked for.
        size_t at = cut;
        ASSERT_TRUE(server.send(reply.substr(0, cut)));
        std::thread peer([&] {
            while (at < reply.size()) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
                EXPECT_TRUE(server.send(reply.substr(at++, 1)));
            }
        });
        EXPECT_EQ(reply, receive(transport)) << cut;
        peer.join();
    }
}

TEST_F(Connected, ShortHeaderIsNoReply) {
    for (size_t size = 1; size < 24; ++size) {
        markError();
        ASSERT_TRUE(server.send(message("").substr(0, size)));
        EXPECT_EQ("", receive(transport)) << size;
        expectError(CIP_ERR_INTERNAL, CIP_INTERNAL_RECEIVE_ERROR);
        EXPECT_STREQ("Internal: receive error", cip_err_msg());
    }
}

TEST(TcpReceive, PeerThatClosesAtAnyByteGivesNoReply) {
    LoopbackServer server;
    const std::string reply = message("abcdef");
    for (size_t size = 0; size < reply.size(); ++size) {
        Transport transport;
        ASSERT_EQ(1, transport.connect("127.0.0.1", server.port(), kSoonMs));
        ASSERT_TRUE(server.accept());
        ASSERT_TRUE(size == 0 || server.send(reply.substr(0, size)));
        server.hangUp();
        markError();
        const Stopwatch watch;
        EXPECT_EQ("", receive(transport)) << size;
        EXPECT_LT(watch.ms(), kSoonMs / 2) << size;
        expectError(CIP_ERR_INTERNAL,
                    size < 24 ? CIP_INTERNAL_RECEIVE_ERROR : CIP_INTERNAL_RECEIVE_TIMEOUT);
        // The socket stays until the worker disconnects.
        EXPECT_TRUE(transport.isConnected());
    }
}

TEST_F(Connected, ResetGivesNoReply) {
    server.reset();
    markError();
    EXPECT_EQ("", receive(transport));
    expectError(CIP_ERR_INTERNAL, CIP_INTERNAL_RECEIVE_ERROR);
}

TEST_F(Connected, SilenceGivesATimeout) {
    for (int ms : {60, 0, -1}) {
        markError();
        const Stopwatch watch;
        EXPECT_EQ("", receive(transport, ms));
        EXPECT_GE(watch.ms(), ms);
        EXPECT_LT(watch.ms(), kSoonMs);
        expectError(CIP_ERR_INTERNAL, CIP_INTERNAL_RECEIVE_TIMEOUT);
        EXPECT_STREQ("Internal: receive timeout", cip_err_msg());
    }
}

TEST_F(Connected, AwaitsDataAndLeavesIt) {
    EXPECT_FALSE(transport.awaitData(20));
    expectError(CIP_ERR_INTERNAL, CIP_INTERNAL_RECEIVE_TIMEOUT);
    const std::string reply = message("abc");
    ASSERT_TRUE(server.send(reply));
    EXPECT_TRUE(transport.awaitData(kSoonMs));
    EXPECT_TRUE(transport.awaitData(0)) << "it is still there";
    EXPECT_EQ(reply, receive(transport, 0));
}

/// Without time, bytes that can be sent at once are sent, and nothing is waited for.
TEST_F(Connected, SendsWithoutTimeWhatNeedsNoWaiting) {
    transport.setTxTimeout(0);
    const std::string request = message("abc");
    EXPECT_EQ(int(request.size()), transport.sendData(header(request)));
    EXPECT_EQ(request, server.receive(request.size()));
    const std::string large = message(std::string(0xFFFF, 'y'));
    const Stopwatch watch;
    int sent = 1;
    for (int i = 0; i < 1000 && sent > 0; ++i) {
        sent = transport.sendData(header(large));
    }
    EXPECT_EQ(0, sent) << "nobody reads";
    EXPECT_LT(watch.ms(), kSoonMs);
}

TEST_F(Connected, BodyThatDoesNotComeGivesATimeout) {
    for (size_t got : {size_t(0), size_t(1), size_t(99)}) {
        ASSERT_TRUE(server.send(message(std::string(got, 'x'), 100)));
        markError();
        const Stopwatch watch;
        EXPECT_EQ("", receive(transport, 60));
        EXPECT_GE(watch.ms(), 59);
        EXPECT_LT(watch.ms(), kSoonMs);
        expectError(CIP_ERR_INTERNAL, CIP_INTERNAL_RECEIVE_TIMEOUT);
        transport.emptyRxBuffer();
    }
}

TEST_F(Connected, BodyHasTheWholeTimeAgain) {
    // A machine that comes half a second late is given another try.
    std::string got;
    for (int i = 0; i < 5 && got.empty(); ++i) {
        transport.emptyRxBuffer();
        // Header after most of the time, body after most of it again.
        std::thread peer([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(700));
            EXPECT_TRUE(server.send(message("", 3)));
            std::this_thread::sleep_for(std::chrono::milliseconds(700));
            EXPECT_TRUE(server.send("abc"));
            EXPECT_TRUE(server.delivered());
        });
        got = receive(transport, 1200);
        peer.join();
    }
    EXPECT_EQ(message("abc"), got);
}

TEST_F(Connected, CommandIsServedBeforeTheReplyIsRead) {
    std::string command;
    transport.onPipe = [&](int pipe) {
        command = transport.take(pipe);
        // Only now does the reply come: it must still be received.
        EXPECT_TRUE(server.send(message("reply")));
    };
    ASSERT_EQ(5, transport.sendClientPipe(0, "cmd1\n", 5));
    EXPECT_EQ(message("reply"), receive(transport));
    EXPECT_EQ("cmd1\n", command);

    transport.served.clear();
    transport.onPipe = [&](int pipe) { command = transport.take(pipe); };
    ASSERT_TRUE(server.send(message("reply2")));
    ASSERT_EQ(5, transport.sendClientPipe(1, "cmd2\n", 5));
    EXPECT_EQ(message("reply2"), receive(transport));
    // Both were there: the command first.
    EXPECT_EQ(std::vector<int>({1}), transport.served);
    EXPECT_EQ("cmd2\n", command);
}

TEST_F(Connected, CommandIsServedWhileTheBodyIsAwaited) {
    transport.onPipe = [&](int pipe) {
        transport.take(pipe);
        if (transport.served.size() == 1) {
            EXPECT_TRUE(server.send(message("", 4)));  // the header
        } else {
            EXPECT_TRUE(server.send("body"));
        }
    };
    ASSERT_EQ(2, transport.sendClientPipe(0, "a\n", 2));
    std::thread driver([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_EQ(2, transport.sendClientPipe(1, "b\n", 2));
    });
    EXPECT_EQ(message("body"), receive(transport));
    driver.join();
    EXPECT_EQ(std::vector<int>({0, 1}), transport.served);
}

TEST_F(Connected, PipeThatNobodyReadsEndsTheWaitWithoutARecord) {
    ASSERT_EQ(2, transport.sendClientPipe(0, "a\n", 2));
    markError();
    const Stopwatch watch;
    EXPECT_EQ("", receive(transport, 60));
    EXPECT_LT(watch.ms(), kSoonMs);
    // Each round counts as at least a millisecond.
    EXPECT_GE(transport.served.size(), 1u);
    EXPECT_LE(transport.served.size(), 61u);
    expectErrorUntouched();
}

/// The body and a command arrive in one round: the reply is whole, and the command is the next
/// wait's.
TEST_F(Connected, CommandThatComesWithTheRestOfTheBodyIsLeftForTheNextWait) {
    ASSERT_TRUE(server.send(message("", 4)));  // the header
    transport.onPipe = [&](int pipe) {
        if (transport.served.size() < 2) {
            return;  // left unread, so that the wait for the body is served it again
        }
        EXPECT_EQ("a\n", transport.take(pipe));
        EXPECT_TRUE(server.send("body"));
        EXPECT_TRUE(server.delivered());
        EXPECT_EQ(2, transport.sendClientPipe(1, "b\n", 2));
    };
    ASSERT_EQ(2, transport.sendClientPipe(0, "a\n", 2));
    EXPECT_EQ(message("body"), receive(transport));
    EXPECT_EQ(std::vector<int>({0, 0}), transport.served);
    transport.onPipe = [&](int pipe) { EXPECT_EQ("b\n", transport.take(pipe)); };
    transport.sleep(kSoonMs);
    EXPECT_EQ(std::vector<int>({0, 0, 1}), transport.served);
}

/// A connection that ends within the body ends the wait at once: nothing more can come.
TEST_F(Connected, EndWithinTheBodyEndsTheWait) {
    for (const bool reset : {false, true}) {
        transport.disconnect();
        const std::set<int> before = openDescriptors();
        ASSERT_EQ(1, transport.connect("127.0.0.1", server.port(), kSoonMs));
        const std::set<int> sockets = minus(openDescriptors(), before);
        ASSERT_EQ(1u, sockets.size());
        ASSERT_TRUE(server.accept());
        transport.served.clear();
        transport.onPipe = [&](int) {
            if (transport.served.size() == 2) {  // the wait for the body
                reset ? server.reset() : server.hangUp();
                pollfd end = {*sockets.begin(), POLLIN, 0};
                EXPECT_EQ(1, poll(&end, 1, kSoonMs));
            }
        };
        ASSERT_TRUE(server.send(message("part", 100)));
        ASSERT_TRUE(server.delivered());
        ASSERT_EQ(2, transport.sendClientPipe(0, "a\n", 2));
        markError();
        EXPECT_EQ("", receive(transport));
        expectError(CIP_ERR_INTERNAL, CIP_INTERNAL_RECEIVE_TIMEOUT);
        EXPECT_EQ(2u, transport.served.size()) << "nobody took the command: it came again";
        EXPECT_EQ("a\n", transport.take(0));
    }
}

TEST_F(Connected, PipeThatNobodyReadsEndsTheWaitForTheBody) {
    ASSERT_TRUE(server.send(message("part", 100)));
    ASSERT_EQ(2, transport.sendClientPipe(0, "a\n", 2));
    markError();
    const Stopwatch watch;
    EXPECT_EQ("", receive(transport, 60));
    EXPECT_LT(watch.ms(), kSoonMs);
    // Once before the header; each round of the wait for the body counts as at least a millisecond.
    EXPECT_GE(transport.served.size(), 2u);
    EXPECT_LE(transport.served.size(), 62u);
    expectError(CIP_ERR_INTERNAL, CIP_INTERNAL_RECEIVE_TIMEOUT);
}

TEST_F(Connected, SignalEndsTheWaitAsAFailure) {
    const SignalRain rain;
    markError();
    EXPECT_EQ("", receive(transport));
    expectError(CIP_ERR_SYSTEM, EINTR);
    EXPECT_EQ(QString("Interrupted system call(4)"), transport.lastError());
}

TEST_F(Connected, SignalEndsTheWaitForTheBodyAsAFailure) {
    ASSERT_TRUE(server.send(message("", 9)));
    int attempts = 0;
    std::unique_ptr<SignalRain> rain;
    transport.onPipe = [&](int pipe) {
        transport.take(pipe);
        rain.reset(new SignalRain);
        ++attempts;
    };
    std::thread driver([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_EQ(2, transport.sendClientPipe(1, "b\n", 2));
    });
    markError();
    EXPECT_EQ("", receive(transport));
    expectError(CIP_ERR_SYSTEM, EINTR);
    driver.join();
    EXPECT_EQ(1, attempts);
}

TEST(TcpReceive, WithoutAConnectionTimesOut) {
    Transport transport;
    markError();
    const Stopwatch watch;
    EXPECT_EQ("", receive(transport, 50));
    EXPECT_GE(watch.ms(), 49);
    expectError(CIP_ERR_INTERNAL, CIP_INTERNAL_RECEIVE_TIMEOUT);
}

// ---- sendDataWaitReply ---------------------------------------------------------------------

TEST_F(Connected, SendsAndWaitsForTheReply) {
    const std::string request = message("ask");
    std::thread peer([&] {
        EXPECT_EQ(request, server.receive(request.size()));
        EXPECT_TRUE(server.send(message("answer")));
    });
    _Encap_Header* reply = transport.sendDataWaitReply(header(request), 99, kSoonMs);
    peer.join();
    ASSERT_NE(nullptr, reply);
    EXPECT_EQ(6, _GetEncapLength(reply));
    EXPECT_EQ(0, memcmp(reply, message("answer").data(), 30));
    free(reply);
}

/// Counts calls, to see which operations another one goes through.
class Overridden : public CipTcpCallback {
 public:
    virtual int sendData(const _Encap_Header*) {
        calls += 's';
        return 0;  // a failed send is not looked at
    }
    virtual _Encap_Header* recvData(int timeoutMs) {
        calls += 'r';
        lastTimeout = timeoutMs;
        return nullptr;
    }
    std::string calls;
    int lastTimeout = 0;
};

TEST(TcpExchange, GoesThroughTheVirtualOperations) {
    Overridden transport;
    CipCallback& callback = transport;
    const std::string request = message("ask");
    EXPECT_EQ(nullptr, callback.sendDataWaitReply(header(request), 0, 1234));
    EXPECT_EQ("sr", transport.calls);
    EXPECT_EQ(1234, transport.lastTimeout);
}

TEST(TcpExchange, FailedSendShowsAsAReceiveTimeout) {
    Transport transport;
    transport.setTxTimeout(1);
    const std::string request = message("ask");
    EXPECT_EQ(nullptr, transport.sendDataWaitReply(header(request), 0, 20));
    EXPECT_STREQ("Internal: receive timeout", cip_err_msg());
}

// ---- several at once -----------------------------------------------------------------------

TEST(TcpTransports, DoNotDisturbOneAnother) {
    const int kExchanges = 20;
    std::vector<std::thread> threads;
    for (char id = 'a'; id < 'd'; ++id) {
        threads.emplace_back([id] {
            LoopbackServer server;
            Transport transport;
            transport.onPipe = [&](int pipe) { transport.take(pipe); };
            ASSERT_EQ(1, transport.connect("127.0.0.1", server.port(), kSoonMs));
            ASSERT_TRUE(server.accept());
            for (int i = 0; i < kExchanges; ++i) {
                const std::string stale(size_t(1500 + i), id);
                const std::string request = message(std::string(size_t(i), id));
                const std::string answer = message(std::string(1, id) + std::to_string(i));
                ASSERT_TRUE(server.send(stale));
                ASSERT_TRUE(server.delivered());
                transport.sendClientPipe(i % 2, &id, 1);
                ASSERT_EQ(int(request.size()), transport.sendData(header(request)));
                ASSERT_EQ(request, server.receive(request.size()));
                ASSERT_TRUE(server.send(answer));
                ASSERT_EQ(answer, receive(transport));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(TcpTransports, LeaveNoDescriptorBehind) {
    const std::set<int> before = openDescriptors();
    {
        LoopbackServer server;
        Transport transport;
        ASSERT_EQ(1, transport.connect("127.0.0.1", server.port(), kSoonMs));
        EXPECT_GT(openDescriptors().size(), before.size());
    }
    EXPECT_EQ(before, openDescriptors());
}

}  // namespace
