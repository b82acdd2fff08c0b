#include "apps/micro800/serve/http/http_server.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "apps/micro800/serve/http/json_reply.h"
#include "apps/micro800/serve/http/listen_address.h"
#include "apps/micro800/serve/http/request_check.h"
#include "support/http_client.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

/// A text without an end, or one that comes by pieces of 1000 bytes.
class Chatter : public EventSource {
 public:
    explicit Chatter(bool talks) : isTalking(talks) {}
    QByteArray next() override {
        const bool isFirst = !hasBegun;
        hasBegun = true;
        return isFirst ? "begin\n" : isTalking ? QByteArray(1000, 'x') : QByteArray();
    }

 private:
    const bool isTalking;
    bool hasBegun = false;
};

class Handler : public RequestHandler {
 public:
    bool passesHead(const HttpRequest& head, HttpReply* refusal) override {
        return passesHeadCheck(head, refusal);
    }
    Answer answer(const HttpRequest& request) override {
        Answer answer;
        if (request.target == "/chatter" || request.target == "/silence") {
            answer.stream = std::make_unique<Chatter>(request.target == "/chatter");
        } else if (request.target == "/later") {
            answer.later = later;
            isAsked = true;
        } else {
            answer.reply = jsonReply(200, {{"target", QString::fromLatin1(request.target)},
                                           {"body", QString::fromLatin1(request.body)}});
        }
        return answer;
    }
    const std::shared_ptr<DeferredReply> later = std::make_shared<DeferredReply>();
    std::atomic<bool> isAsked{false};
};

class HttpServerTest : public testing::Test {
 protected:
    void SetUp() override {
        if (!HttpServer::isThere()) {
            GTEST_SKIP() << "this build has no server";
        }
    }
    void TearDown() override {
        stopTicking = true;
        if (ticker.joinable()) {
            ticker.join();
        }
    }

    /// Starts the server and a thread that ticks as the main one does.
    void start() {
        ListenAddress address;
        address.port = 0;
        QString problem;
        const int socket = listenOn(address, &problem);
        ASSERT_GE(socket, 0) << qPrintable(problem);
        port = localEndOf(socket).section(':', -1).toInt();
        server = std::make_unique<HttpServer>(&handler, limits);
        ASSERT_TRUE(server->start(socket, &problem)) << qPrintable(problem);
        ticker = std::thread([this] {
            while (!stopTicking) {
                server->tick();
                server->answersReady();
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
        });
    }
    QByteArray openRequest(const char* target) const {
        return QByteArray("GET ") + target +
               " HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(port) + "\r\n\r\n";
    }

    Handler handler;
    ServerLimits limits;
    std::unique_ptr<HttpServer> server;
    int port = 0;
    std::thread ticker;
    std::atomic<bool> stopTicking{false};
};

TEST_F(HttpServerTest, AnswersAndHasTheSecurityHeaders) {
    start();
    const HttpAnswer answer = exchange(port, getRequest(port, "/a%20b?c=%41"));
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.json().value("target").toString(), QString("/a%20b?c=%41"));
    ASSERT_FALSE(securityHeaders().isEmpty());
    for (const HttpHeader& header : securityHeaders()) {
        EXPECT_TRUE(answer.has(header.name + ": " + header.value)) << header.name.constData();
    }
    EXPECT_FALSE(answer.has("Access-Control-"));
    EXPECT_TRUE(answer.has("Cache-Control: no-store"));
}

TEST_F(HttpServerTest, SeveralRequestsOfOneConnection) {
    start();
    HttpClient client(port);
    for (const char* target : {"/one", "/two"}) {
        client.send(openRequest(target));
        EXPECT_TRUE(client.readUntil(QByteArray("\"target\":\"") + target).contains(target));
    }
}

TEST_F(HttpServerTest, RefusesWhatIsTooLarge) {
    start();
    EXPECT_EQ(exchange(port, postRequest(port, "/", "", QByteArray(4096, 'b'))).status, 200);
    EXPECT_EQ(exchange(port, postRequest(port, "/", "", QByteArray(4097, 'b'))).status, 413);
    const QByteArray long7 = "X: " + QByteArray(7000, 'x') + "\r\n";
    EXPECT_EQ(exchange(port, getRequest(port, "/", long7)).status, 200);
    EXPECT_EQ(exchange(port, getRequest(port, "/", long7 + long7)).status, 431);
    const int status = exchange(port, getRequest(port, "/" + QByteArray(100000, 'x'))).status;
    EXPECT_TRUE(status == 414 || status == 431 || status == 0) << status;
    EXPECT_EQ(exchange(port, "POST / HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(port) +
                                 "\r\nTransfer-Encoding: chunked\r\nConnection: close\r\n\r\n"
                                 "5\r\nhello\r\n0\r\n\r\n")
                  .status,
              411);
    EXPECT_EQ(exchange(port, getRequest(port, "/")).status, 200);
}

TEST_F(HttpServerTest, SurvivesWhatIsNoRequest) {
    start();
    for (const QByteArray& bytes :
         {QByteArray("\r\n\r\n\r\n"), QByteArray("GET\r\n\r\n"), QByteArray(64, '\0'),
          QByteArray("GET / HTTP/9.9\r\n\r\n"), QByteArray("\x16\x03\x01\x02\x00\x01\x00"),
          QByteArray("GET / HTTP/1.1\r\nHost 1\r\n\r\n")}) {
        HttpClient client(port);
        client.send(bytes);
        client.readFor(20);
        EXPECT_FALSE(client.bytes().contains("200 OK"));
    }
    EXPECT_EQ(exchange(port, getRequest(port, "/")).status, 200);
}

TEST_F(HttpServerTest, CutsWhoSendsByteByByte) {
    limits.requestMs = 300;
    start();
    HttpClient client(port);
    QElapsedTimer clock;
    clock.start();
    // Never silent for long, and never done.
    while (clock.elapsed() < kHttpWaitMs && client.send("G") && !client.hasEnded()) {
        client.readFor(20);
    }
    EXPECT_TRUE(client.hasEnded());
    HttpClient headers(port);
    headers.send("GET / HTTP/1.1\r\n");
    while (clock.elapsed() < 2 * kHttpWaitMs && headers.send("X: y\r\n") && !headers.hasEnded()) {
        headers.readFor(20);
    }
    EXPECT_TRUE(headers.hasEnded());
    HttpClient body(port);
    body.send("POST / HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(port) +
              "\r\nContent-Length: 4096\r\n\r\n");
    while (clock.elapsed() < 3 * kHttpWaitMs && body.send("x") && !body.hasEnded()) {
        body.readFor(20);
    }
    EXPECT_TRUE(body.hasEnded());
    EXPECT_FALSE(body.bytes().contains("200 OK"));
}

TEST_F(HttpServerTest, CutsWhoSaysNothing) {
    limits.requestMs = 200;
    start();
    HttpClient silent(port);
    EXPECT_TRUE(silent.readToEnd());
    HttpClient again(port);
    again.send(openRequest("/"));
    EXPECT_TRUE(again.readUntil("target").contains("target"));
    EXPECT_TRUE(again.readToEnd());  // a connection that is kept brings no further request
}

TEST_F(HttpServerTest, DropsAPageThatDoesNotReadAndServesTheOthers) {
    limits.stalledMs = 300;
    start();
    HttpClient deaf(port, 2048);
    deaf.send(openRequest("/chatter"));
    HttpClient page(port);
    page.send(openRequest("/chatter"));
    QElapsedTimer clock;
    clock.start();
    while (server->streams() < 2 && clock.elapsed() < kHttpWaitMs) {
        page.readFor(10);
    }
    EXPECT_EQ(server->streams(), 2);
    while (server->streams() > 1 && clock.elapsed() < kHttpWaitMs) {
        page.readFor(10);
    }
    EXPECT_EQ(server->streams(), 1);
    EXPECT_FALSE(page.hasEnded());
}

TEST_F(HttpServerTest, KeepsTheNumberOfPagesDown) {
    limits.streams = 2;
    start();
    std::vector<std::unique_ptr<HttpClient>> pages;
    for (int i = 0; i < 2; ++i) {
        pages.push_back(std::make_unique<HttpClient>(port));
        pages.back()->send(openRequest("/chatter"));
        EXPECT_TRUE(pages.back()->readUntil("begin").contains("begin"));
    }
    EXPECT_EQ(exchange(port, getRequest(port, "/silence")).status, 503);
    pages.pop_back();
    QElapsedTimer clock;
    clock.start();
    while (server->streams() > 1 && clock.elapsed() < kHttpWaitMs) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    HttpClient next(port);
    next.send(openRequest("/silence"));
    EXPECT_TRUE(next.readUntil("begin").contains("200 OK"));
}

TEST_F(HttpServerTest, AnAnswerThatComesLater) {
    start();
    HttpClient client(port);
    client.send(openRequest("/later"));
    QElapsedTimer clock;
    clock.start();
    // Others are answered meanwhile.
    EXPECT_EQ(exchange(port, getRequest(port, "/")).status, 200);
    while (!handler.isAsked && clock.elapsed() < kHttpWaitMs) {
        exchange(port, getRequest(port, "/"));
    }
    EXPECT_TRUE(handler.isAsked);
    handler.later->set(problemReply(502, "so it was"));
    EXPECT_TRUE(client.readUntil("so it was").contains("HTTP/1.1 502"));
}

TEST_F(HttpServerTest, StopsWithFiftyPagesOpenThatDoNotRead) {
    start();
    std::vector<std::unique_ptr<HttpClient>> pages;
    for (int i = 0; i < 50; ++i) {
        pages.push_back(std::make_unique<HttpClient>(port, 2048));
        pages.back()->send(openRequest(i % 2 == 0 ? "/chatter" : "/silence"));
    }
    for (const auto& page : pages) {
        EXPECT_TRUE(page->readUntil("begin").contains("begin"));
    }
    HttpClient waiting(port);
    waiting.send(openRequest("/later"));
    EXPECT_EQ(server->streams(), 50);
    stopTicking = true;
    ticker.join();
    server->stop();
    for (const auto& page : pages) {
        EXPECT_TRUE(page->readToEnd());
    }
    EXPECT_EQ(server->streams(), 0);
}

}  // namespace
