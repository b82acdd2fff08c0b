#include "apps/micro800/serve/http/request_check.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

HttpRequest request(const QVector<HttpHeader>& headers, const QString& local = "127.0.0.1:8800") {
    HttpRequest head;
    head.method = "GET";
    head.target = "/";
    head.headers = headers;
    head.local = local;
    return head;
}

/// 0 when it passes.
int refusalOf(const HttpRequest& head) {
    HttpReply refusal;
    return passesHeadCheck(head, &refusal) ? 0 : refusal.status;
}

int hostCheck(const char* host, const QString& local) {
    return refusalOf(request({{"host", host}}, local));
}

TEST(RequestCheck, AHostOtherThanTheOwn) {
    for (const char* host : {"", "evil.example", "127.0.0.1", "127.0.0.1:88000", "127.0.0.1:8801",
                             "127.0.0.2:8800", "localhost", "localhost.evil.example:8800",
                             "[::1]:8800", "127.0.0.1:8800 ", "127.0.0.1:8800.evil.example"}) {
        EXPECT_EQ(hostCheck(host, "127.0.0.1:8800"), 403) << host;
    }
    EXPECT_EQ(hostCheck("localhost:8800", "192.168.1.7:8800"), 403);
    EXPECT_EQ(hostCheck("192.168.1.7:8800", "127.0.0.1:8800"), 403);
}

TEST(RequestCheck, TheOwnHost) {
    EXPECT_EQ(hostCheck("127.0.0.1:8800", "127.0.0.1:8800"), 0);
    EXPECT_EQ(hostCheck("LocalHost:8800", "127.0.0.1:8800"), 0);
    EXPECT_EQ(hostCheck("[::1]:8800", "[::1]:8800"), 0);
    EXPECT_EQ(hostCheck("localhost:8800", "[::1]:8800"), 0);
    EXPECT_EQ(hostCheck("192.168.1.7", "192.168.1.7:80"), 0);
    EXPECT_EQ(hostCheck("localhost", "127.0.0.1:80"), 0);
}

TEST(RequestCheck, NoHostOrTwoOfAHeader) {
    EXPECT_EQ(refusalOf(request({})), 400);
    const HttpHeader own = {"host", "127.0.0.1:8800"};
    EXPECT_EQ(refusalOf(request({own, own})), 400);
    for (const char* name :
         {"origin", "cookie", "authorization", "content-type", "content-length"}) {
        EXPECT_EQ(refusalOf(request({own, {name, "1"}, {name, "1"}})), 400) << name;
    }
}

TEST(RequestCheck, AnOriginOtherThanTheOwn) {
    const HttpHeader own = {"host", "127.0.0.1:8800"};
    EXPECT_EQ(refusalOf(request({own, {"origin", "http://127.0.0.1:8800"}})), 0);
    for (const char* origin : {"null", "", "http://evil.example", "https://127.0.0.1:8800",
                               "http://127.0.0.1:8801", "http://localhost:8800"}) {
        EXPECT_EQ(refusalOf(request({own, {"origin", origin}})), 403) << origin;
    }
}

TEST(RequestCheck, Sizes) {
    const HttpHeader own = {"host", "127.0.0.1:8800"};
    EXPECT_EQ(refusalOf(request({own, {"content-length", "4096"}})), 0);
    EXPECT_EQ(refusalOf(request({own, {"content-length", "4097"}})), 413);
    EXPECT_EQ(refusalOf(request({own, {"content-length", "99999999999999999999"}})), 400);
    EXPECT_EQ(refusalOf(request({own, {"content-length", "-1"}})), 400);
    EXPECT_EQ(refusalOf(request({own, {"transfer-encoding", "chunked"}})), 411);
    EXPECT_EQ(refusalOf(request({own, {"x", QByteArray(8000, 'x')}})), 0);
    EXPECT_EQ(refusalOf(request({own, {"x", QByteArray(8192, 'x')}})), 431);
}

TEST(RequestCheck, TheToken) {
    EXPECT_TRUE(hasToken(request({}), QByteArray()));
    EXPECT_FALSE(hasToken(request({}), "12345678"));
    EXPECT_TRUE(hasToken(request({{"authorization", "Bearer 12345678"}}), "12345678"));
    EXPECT_TRUE(hasToken(request({{"cookie", "micro800_token=12345678"}}), "12345678"));
    EXPECT_FALSE(hasToken(request({{"cookie", "micro800_token=12345679"}}), "12345678"));
    EXPECT_FALSE(hasToken(request({{"authorization", "Bearer "}}), "12345678"));
}

}  // namespace
