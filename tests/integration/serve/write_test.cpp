// Writing from the page, and its refusals.

#include "integration/serve/serve_rig.h"

namespace {

class ServeWrite : public ServeTest {};

TEST_F(ServeWrite, WritesAndSaysWhatItWas) {
    serve({"--allow-write", "DINT0:COUNTER", "BOOL0:RUN"});
    EXPECT_TRUE(valueBecomes(0, "42"));
    const HttpAnswer answer = write("DINT0:COUNTER", "0x2B");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, QByteArray("{\"new\":\"43\",\"ok\":true,\"old\":\"42\"}\n"));
    EXPECT_EQ(controller->command("get COUNTER"), "ok 43");
    EXPECT_TRUE(valueBecomes(0, "43"));
    EXPECT_EQ(write("BOOL0:RUN", "on").status, 200);
    EXPECT_TRUE(valueBecomes(1, "true"));
    QElapsedTimer clock;
    clock.start();
    while (!ask("/api/entries").body.contains("42 -> 43: done") && clock.elapsed() < kCliWaitMs) {
    }
    EXPECT_TRUE(ask("/api/entries").body.contains("42 -> 43: done"));

    const CliResult result = end();
    EXPECT_TRUE(result.err.contains("Z write DINT0:COUNTER by 127.0.0.1:")) << result.err.data();
    EXPECT_TRUE(result.err.contains(": 42 -> 43: done\n")) << result.err.data();
}

TEST_F(ServeWrite, ARefusedWriteSaysWhy) {
    serve({"--allow-write", "DINT0:COUNTER", "DINT0:NOPE"});
    EXPECT_TRUE(valueBecomes(0, "42"));
    const HttpAnswer refused = write("DINT0:NOPE", "1");
    EXPECT_EQ(refused.status, 502);
    EXPECT_EQ(refused.json()["problem"].toString(), QString("write DINT0:NOPE> AB error: 0005H"));
    EXPECT_EQ(refused.json()["ok"].toBool(true), false);
    EXPECT_EQ(write("DINT0:COUNTER", "5000000000").status, 400);
    EXPECT_EQ(write("DINT0:OTHER", "1").status, 404);
    EXPECT_EQ(controller->command("get COUNTER"), "ok 42");
    const CliResult result = end();
    EXPECT_TRUE(result.err.contains("-> 1: write DINT0:NOPE> AB error: 0005H\n"));
}

TEST_F(ServeWrite, NotWithoutPermissionTokenOrOrigin) {
    serve({"--token", "tokentoken", "DINT0:COUNTER"});
    EXPECT_TRUE(valueBecomes(0, "42"));
    EXPECT_EQ(write("DINT0:COUNTER", "1").status, 403);
    end();

    serve({"--token", "tokentoken", "--allow-write", "DINT0:COUNTER"});
    const QByteArray body = R"({"address":"DINT0:COUNTER","value":"1"})";
    const auto post = [&](const QByteArray& headers) {
        return exchange(port, postRequest(port, "/api/write", headers, body)).status;
    };
    const QByteArray cookie = "Cookie: micro800_token=tokentoken\r\n";
    EXPECT_EQ(post(""), 401);
    EXPECT_EQ(post("Cookie: micro800_token=tokentokem\r\n"), 401);
    EXPECT_EQ(post(cookie + "Origin: http://evil.example\r\n"), 403);
    QByteArray asForm = postRequest(port, "/api/write", cookie, body);
    asForm.replace("application/json", "text/plain");
    EXPECT_EQ(exchange(port, asForm).status, 415);
    EXPECT_EQ(get("/api/write", cookie).status, 405);
    EXPECT_TRUE(valueBecomes(0, "42"));
    EXPECT_EQ(post(cookie), 200);
    EXPECT_EQ(controller->command("get COUNTER"), "ok 1");
}

}  // namespace
