// Who may see the page, and what every answer says to a browser.

#include "integration/serve/serve_rig.h"

namespace {

class ServeAccess : public ServeTest {};

const QByteArray kPolicy =
    "Content-Security-Policy: default-src 'none'; script-src 'self'; style-src 'self'; "
    "connect-src 'self'; img-src 'self' data: blob:; frame-ancestors 'none'; base-uri 'none'; "
    "form-action 'none'\r\n";

TEST_F(ServeAccess, OnlyUnderItsOwnName) {
    serve({"DINT0:COUNTER"});
    const QByteArray own = "127.0.0.1:" + QByteArray::number(port);
    for (const char* path : {"/", "/app.js", "/api/tags", "/api/events", "/metrics", "/nothing"}) {
        for (const QByteArray& host : {QByteArray("evil.example"), QByteArray("127.0.0.1"),
                                       QByteArray("evil.example:" + QByteArray::number(port))}) {
            const QByteArray request = QByteArray("GET ") + path + " HTTP/1.1\r\nHost: " + host +
                                       "\r\nConnection: close\r\n\r\n";
            EXPECT_EQ(exchange(port, request).status, 403) << path << " " << host.constData();
        }
        EXPECT_EQ(get(path, "Origin: http://evil.example\r\n").status, 403) << path;
        EXPECT_EQ(get(path, "Origin: null\r\n").status, 403) << path;
    }
    EXPECT_EQ(get("/api/tags", "Origin: http://" + own + "\r\n").status, 200);
}

TEST_F(ServeAccess, EveryAnswerKeepsTheBrowserStrict) {
    serve({"DINT0:COUNTER"});
    for (const char* path :
         {"/", "/app.js", "/dygraph.min.js", "/troubleshooting", "/api/tags", "/api/status",
          "/api/entries", "/api/history?tag=DINT0:COUNTER", "/metrics", "/nothing"}) {
        const HttpAnswer answer = get(path);
        EXPECT_TRUE(answer.has(kPolicy)) << path;
        EXPECT_TRUE(answer.has("X-Content-Type-Options: nosniff\r\n")) << path;
        EXPECT_TRUE(answer.has("Referrer-Policy: no-referrer\r\n")) << path;
        EXPECT_FALSE(answer.has("Access-Control")) << path;
        const bool isForPrograms = QByteArray(path).startsWith("/api");
        EXPECT_TRUE(
            answer.has(isForPrograms ? "Cache-Control: no-store\r\n" : "Cache-Control: no-"))
            << path;
    }
    HttpClient stream(port);
    stream.send(eventsRequest(port));
    EXPECT_TRUE(stream.readUntil("retry:").contains(kPolicy));
    EXPECT_TRUE(stream.bytes().contains("Content-Type: text/event-stream\r\n"));
}

TEST_F(ServeAccess, ServesTheFilesAsTheyAre) {
    serve({"DINT0:COUNTER"});
    EXPECT_TRUE(get("/").has("Content-Type: text/html; charset=utf-8\r\n"));
    EXPECT_TRUE(get("/app.css").has("Content-Type: text/css; charset=utf-8\r\n"));
    EXPECT_TRUE(get("/app.js").has("Content-Type: text/javascript; charset=utf-8\r\n"));
    EXPECT_EQ(get("/dygraph.min.js").status, 200);
    EXPECT_EQ(get("/dygraph.min.css").status, 200);
    EXPECT_TRUE(get("/troubleshooting").body.contains("id=\"ab-error-0005h\""));
    EXPECT_EQ(get("/app.css/").status, 404);
    EXPECT_EQ(exchange(port, postRequest(port, "/", "", "{}")).status, 405);
}

TEST_F(ServeAccess, ATokenIsMadeForWritingAndAsked) {
    serve({"--allow-write", "DINT0:COUNTER"});
    EXPECT_EQ(token.size(), 32);
    for (const char* path : {"/api/tags", "/api/events", "/metrics"}) {
        EXPECT_EQ(get(path).status, 401) << path;
        EXPECT_EQ(get(path, "Cookie: micro800_token=x" + token + "\r\n").status, 401) << path;
    }
    EXPECT_EQ(get("/").status, 200);
    EXPECT_EQ(get("/api/tags", "Cookie: micro800_token=" + token + "\r\n").status, 200);
    EXPECT_EQ(get("/api/tags", "Authorization: Bearer " + token + "\r\n").status, 200);
    const HttpAnswer in = get("/?token=" + token);
    EXPECT_EQ(in.status, 303);
    EXPECT_TRUE(in.has("Location: /\r\n"));
    EXPECT_TRUE(
        in.has("Set-Cookie: micro800_token=" + token + "; HttpOnly; SameSite=Strict; Path=/\r\n"));
    EXPECT_EQ(get("/?token=0").status, 401);
}

TEST_F(ServeAccess, ATokenOfTheUser) {
    serve({"--token", "a-token-of-mine", "DINT0:COUNTER"});
    EXPECT_EQ(token, QByteArray("a-token-of-mine"));
    EXPECT_EQ(get("/api/tags").status, 401);
    EXPECT_EQ(ask("/api/tags").status, 200);
}

TEST_F(ServeAccess, AnAddressThatOthersReachNeedsAToken) {
    page = start(withController("serve", {"--listen", "0.0.0.0:0", "DINT0:COUNTER"}));
    ASSERT_TRUE(page->hasPrinted("?token="));
    ASSERT_TRUE(page->hasPrinted(" of memory\n"));
    const QByteArray line = page->printed().split('\n').first();
    port = line.mid(line.lastIndexOf(':') + 1).split('/').first().toInt();
    EXPECT_EQ(get("/api/tags").status, 401);
    EXPECT_EQ(get("/").status, 200);
}

TEST_F(ServeAccess, RefusesWhatIsTooLarge) {
    serve({"--allow-write", "DINT0:COUNTER"});
    const QByteArray body(5000, ' ');
    EXPECT_EQ(exchange(port, postRequest(port, "/api/write", tokenHeader(), body)).status, 413);
    EXPECT_EQ(ask("/api/tags", "X: " + QByteArray(9000, 'x') + "\r\n").status, 431);
    EXPECT_EQ(ask("/api/tags").status, 200);
}

TEST_F(ServeAccess, WrongOptionsAreNoPage) {
    for (const QStringList& options :
         {QStringList{"--listen", "nowhere"}, QStringList{"--listen", "127.0.0.1"},
          QStringList{"--token", "short"}, QStringList{"--history", "0"},
          QStringList{"--interval", "1"}}) {
        const CliResult result = run(withController("serve", options + QStringList{"DINT0:A"}));
        EXPECT_EQ(result.exitCode, 2) << qPrintable(options.join(' '));
        EXPECT_TRUE(result.err.contains(options.first().toUtf8())) << result.err.constData();
        EXPECT_EQ(result.out, QByteArray());
    }
}

TEST_F(ServeAccess, AnAddressThatIsTakenIsSaid) {
    serve({"DINT0:COUNTER"});
    const CliResult result = run(
        withController("serve", {"--listen", QString("127.0.0.1:%1").arg(port), "DINT0:COUNTER"}));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "micro800: cannot listen on 127.0.0.1:" + QByteArray::number(port) +
                              ": Address already in use\n");
}

}  // namespace
