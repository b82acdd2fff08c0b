// What the page gets to know of the tags.

#include <QJsonArray>
#include <QRegularExpression>

#include "integration/serve/serve_rig.h"

namespace {

class ServeTags : public ServeTest {};

TEST_F(ServeTags, ShowsValuesAndFailures) {
    serve({"DINT0:COUNTER", "REAL0:LEVEL", "BOOL0:RUN", "STRING0:NAME", "DINT0:NOPE",
           "DINT0:<img src=x onerror=alert(1)>"});
    EXPECT_TRUE(valueBecomes(0, "42"));
    EXPECT_TRUE(valueBecomes(1, "1.5"));
    EXPECT_TRUE(valueBecomes(2, "false"));
    EXPECT_TRUE(valueBecomes(3, "\"Mixer\""));
    EXPECT_TRUE(tagBecomes(4, [](const QJsonObject& tag) { return tag["state"] == "failed"; }));
    EXPECT_EQ(tag(4)["problem"].toString(), QString("read DINT0:NOPE> AB error: 0005H"));
    EXPECT_EQ(tag(4)["help"].toString(), QString("/troubleshooting#ab-error-0005h"));
    EXPECT_FALSE(get("/api/tags").body.contains("\n<"));

    EXPECT_EQ(controller->command("set COUNTER=-7"), "ok");
    EXPECT_TRUE(valueBecomes(0, "-7"));
}

TEST_F(ServeTags, AnOutageFailsTheTagsAndLeavesAGap) {
    serve({"DINT0:TICKS", "DINT0:COUNTER"});
    EXPECT_TRUE(valueBecomes(1, "42"));
    const auto is = [](const char* state) {
        return [state](const QJsonObject& tag) { return tag["state"] == state; };
    };
    EXPECT_EQ(controller->command("down"), "ok");
    EXPECT_TRUE(tagBecomes(0, is("failed")));
    EXPECT_EQ(controller->command("up"), "ok");
    EXPECT_TRUE(tagBecomes(0, is("good")));
    EXPECT_TRUE(tagBecomes(1, is("good")));

    int gaps = 0;
    for (const QJsonValue& sample :
         ask("/api/history?tag=DINT0:TICKS").json()["samples"].toArray()) {
        gaps += sample.toArray().at(1).isNull();
    }
    EXPECT_GE(gaps, 1);
    // An entry is made at the end of the period in which things happened.
    QStringList kinds;
    QElapsedTimer clock;
    clock.start();
    while (!kinds.contains("recovery") && clock.elapsed() < kCliWaitMs) {
        kinds.clear();
        for (const QJsonValue& entry : ask("/api/entries").json()["entries"].toArray()) {
            kinds << entry.toObject()["kind"].toString();
        }
    }
    EXPECT_TRUE(kinds.contains("failure"));
    EXPECT_TRUE(kinds.contains("recovery"));
}

TEST_F(ServeTags, SaysWhoTheControllerIs) {
    serve({"DINT0:COUNTER"});
    QElapsedTimer clock;
    clock.start();
    QJsonObject status;
    do {
        status = ask("/api/status").json();
    } while (
        (status["controller"].toObject()["identity"].isNull() || !status["connected"].toBool()) &&
        clock.elapsed() < kCliWaitMs);
    const QJsonObject identity = status["controller"].toObject()["identity"].toObject();
    EXPECT_EQ(identity["product"].toString(), QString("2080-LC50-48QWB"));
    EXPECT_EQ(status["drivers"].toInt(), 1);
    EXPECT_GT(status["connectedSince"].toDouble(), 0);
    EXPECT_EQ(status["history"].toObject()["hours"].toInt(), 8);
    EXPECT_GT(status["history"].toObject()["limitBytes"].toInt(), 36000 * 12);
}

TEST_F(ServeTags, TheStreamGoesOnWhereItBroke) {
    serve({"DINT0:TICKS", "DINT0:COUNTER"});
    EXPECT_TRUE(valueBecomes(1, "42"));
    QByteArray id;
    {
        HttpClient stream(port);
        stream.send(eventsRequest(port));
        const QByteArray& text = stream.readUntil("\"index\":0");
        ASSERT_TRUE(text.contains("event: values"));
        id = text.mid(text.lastIndexOf("\nid: ") + 5);
        id = id.left(id.indexOf('\n'));
    }
    EXPECT_EQ(controller->command("set COUNTER=43"), "ok");
    EXPECT_TRUE(valueBecomes(1, "43"));
    HttpClient again(port);
    again.send(eventsRequest(port, "Last-Event-ID: " + id + "\r\n"));
    EXPECT_TRUE(again.readUntil("\"43\"").contains("\"43\""));
    EXPECT_FALSE(again.bytes().contains("event: reset"));
    HttpClient other(port);
    other.send(eventsRequest(port, "Last-Event-ID: 1\r\n"));
    EXPECT_TRUE(other.readUntil("event: reset").contains("event: reset"));
}

/// Every line of the text format of Prometheus that this program may write.
bool isMetricsLine(const QByteArray& line) {
    static const QRegularExpression pattern(QStringLiteral(
        R"re(\A(# (HELP|TYPE) micro800_[a-z_]+ .+|micro800_[a-z_]+(\{[a-z]+="([^"\\]|\\.)*"\})? [-+0-9.e]+)\z)re"));
    return pattern.match(QString::fromUtf8(line)).hasMatch();
}

TEST_F(ServeTags, Metrics) {
    serve({"DINT0:COUNTER", "DINT0:NOPE", "DINT0:\"quoted\\name"});
    EXPECT_TRUE(valueBecomes(0, "42"));
    EXPECT_TRUE(tagBecomes(1, [](const QJsonObject& tag) { return tag["state"] == "failed"; }));
    const HttpAnswer answer = ask("/metrics");
    EXPECT_TRUE(answer.has("Content-Type: text/plain; version=0.0.4"));
    for (const QByteArray& line : answer.body.split('\n')) {
        EXPECT_TRUE(line.isEmpty() || isMetricsLine(line)) << line.constData();
    }
    for (const char* metric :
         {"reads_total ", "read_failures_total{kind=\"AB error\"} ", "pass_seconds{driver=\"0\"} ",
          "requests_total ", "streams 0", "tag_age_seconds{address=\"DINT0:COUNTER\"} "}) {
        EXPECT_TRUE(answer.body.contains(QByteArray("\nmicro800_") + metric)) << metric;
    }
}

TEST_F(ServeTags, MoreThanOneListIsSpreadOverDrivers) {
    QByteArray list = "DINT0:COUNTER\nDINT0:COUNTER\n";
    for (int i = 0; i < 400; ++i) {
        list += "DINT0:NO_SUCH_TAG_" + QByteArray::number(i) + "\n";
    }
    list += "DINT0:TICKS\n";
    serve({"--allow-write", "@" + fileWith("tags.txt", list)});
    EXPECT_TRUE(page->complained().contains(
        "micro800: 402 addresses are spread over 2 drivers; each is one connection of the "
        "controller\n"))
        << page->complained().constData();
    EXPECT_TRUE(valueBecomes(0, "42"));
    EXPECT_TRUE(tagBecomes(401, [](const QJsonObject& tag) { return tag["state"] == "good"; }));
    EXPECT_EQ(ask("/api/status").json()["drivers"].toInt(), 2);
    EXPECT_EQ(write("DINT0:TICKS", "5").status, 200);
    // Each of them is a connection of its own.
    EXPECT_TRUE(controller->waitForLog(
        2, [](const QJsonObject& request) { return request["service"] == "ForwardOpen"; }));
}

}  // namespace
