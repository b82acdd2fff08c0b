// What pages get: coalesced, resumed, and refused.

#include "apps/micro800/serve/live/live_model.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <limits>

#include "apps/micro800/serve/http/access_token.h"
#include "apps/micro800/serve/routes/event_stream.h"
#include "apps/micro800/serve/routes/page_routes.h"
#include "unit/apps/micro800/parsed_address.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

LiveFacts facts(bool allowWrite = false) {
    LiveFacts facts;
    facts.connection.host = "192.0.2.1";
    facts.addresses = {parsed("DINT0:A"), parsed("DINT0:<img src=x onerror=alert(1)>"),
                       parsed("BOOL0:C")};
    facts.allowWrite = allowWrite;
    return facts;
}

QVector<CommunicatorCommand> commands() {
    return {CommunicatorCommand(kUnitDoubleWord, 1, "DINT0:A"),
            CommunicatorCommand(kUnitDoubleWord, 1, "DINT0:<img src=x onerror=alert(1)>"),
            CommunicatorCommand(kUnitByte, 1, "BOOL0:C")};
}

class LiveModelTest : public testing::Test {
 protected:
    void take(int tag, const DriverResult& result) {
        const WatchEvent event = watched.take(tag, result, 0);
        model.take(tag, watched.tag(tag), event);
    }
    void good(int tag, int value) {
        DriverResult result;
        result.ok = true;
        result.bytes = QByteArray(tag == 2 ? 1 : 4, '\0');
        result.bytes[0] = static_cast<char>(value);
        take(tag, result);
    }
    void bad(int tag, const QString& problem) {
        DriverResult result;
        result.error = problem;
        take(tag, result);
    }

    LiveModel model{facts()};
    WatchModel watched{facts().addresses, commands()};
};

/// The last data of an event of this name; empty when there is none.
QJsonObject dataOf(const QByteArray& events, const QByteArray& name) {
    const int at = events.lastIndexOf("event: " + name + "\ndata: ");
    const int begin = events.indexOf("data: ", at) + 6;
    return at < 0 ? QJsonObject()
                  : QJsonDocument::fromJson(events.mid(begin, events.indexOf('\n', begin) - begin))
                        .object();
}

QString idOf(const QByteArray& events) {
    const int at = events.lastIndexOf("id: ") + 4;
    return events.mid(at, events.indexOf('\n', at) - at);
}

TEST_F(LiveModelTest, AStreamBeginsNowAndGetsWhatChanges) {
    good(0, 1);
    model.tick();
    EventStream page(&model, QString());
    EXPECT_EQ(page.next(), QByteArray("retry: 1000\n\n"));
    EXPECT_EQ(page.next(), QByteArray());
    good(0, 2);
    EXPECT_EQ(page.next(), QByteArray());
    model.tick();
    const QByteArray events = page.next();
    const QJsonArray tags = dataOf(events, "values").value("tags").toArray();
    ASSERT_EQ(tags.size(), 1);
    EXPECT_EQ(tags.at(0).toObject().value("value").toString(), QString("2"));
    EXPECT_EQ(idOf(events), model.tags().value("lastEventId").toString());
}

TEST_F(LiveModelTest, ASlowPageGetsTheLastValueOnce) {
    model.tick();
    EventStream fast(&model, QString());
    EventStream slow(&model, QString());
    fast.next();
    slow.next();
    for (int i = 0; i < 100; ++i) {
        good(0, i);
        model.tick();
        EXPECT_TRUE(fast.next().contains("values"));
    }
    const QByteArray events = slow.next();
    EXPECT_EQ(events.count("event: values"), 1);
    const QJsonArray tags = dataOf(events, "values").value("tags").toArray();
    ASSERT_EQ(tags.size(), 1);
    EXPECT_EQ(tags.at(0).toObject().value("value").toString(), QString("99"));
    EXPECT_EQ(slow.next(), QByteArray());
}

TEST_F(LiveModelTest, GoesOnFromTheLastEvent) {
    good(0, 1);
    bad(1, "read DINT0:<img src=x onerror=alert(1)>> AB error: 0005H");
    model.tick();
    const QString id = model.tags().value("lastEventId").toString();
    good(0, 2);
    good(1, 5);
    model.tick();
    model.tick();
    EventStream page(&model, id);
    const QByteArray events = page.next();
    EXPECT_FALSE(events.contains("event: reset"));
    EXPECT_EQ(events.count("event: entry"), 1);
    EXPECT_EQ(dataOf(events, "entry").value("kind").toString(), QString("recovery"));
    EXPECT_EQ(dataOf(events, "values").value("tags").toArray().size(), 2);
}

TEST_F(LiveModelTest, CannotGoOnFromAnotherRun) {
    model.tick();
    const quint64 last = model.tags().value("lastEventId").toString().toULongLong();
    for (const QString& id : {QString("5"), QString("x"), QString("-1"), QString::number(last + 1),
                              QString("99999999999999999999999")}) {
        EventStream page(&model, id);
        EXPECT_TRUE(page.next().contains("event: reset\ndata: {}\n\n")) << qPrintable(id);
    }
}

TEST_F(LiveModelTest, CannotGoOnBehindTooManyEntries) {
    model.tick();
    const QString id = model.tags().value("lastEventId").toString();
    for (int i = 0; i <= EventList::kMost; ++i) {
        bad(0, QString("read DINT0:A> AB error: %1").arg(i));
        model.tick();
    }
    EventStream page(&model, id);
    EXPECT_TRUE(page.next().contains("event: reset"));
}

TEST_F(LiveModelTest, NamesAreDataAndNoLineOfTheStream) {
    model.tick();
    EventStream page(&model, QString());
    page.next();
    bad(1, "read DINT0:<img src=x onerror=alert(1)>> \n\nevent: evil\ndata: {}\n\n");
    model.tick();
    const QByteArray events = page.next();
    EXPECT_FALSE(events.contains("\nevent: evil"));
    EXPECT_TRUE(dataOf(events, "entry").value("text").toString().contains("event: evil"));
}

TEST_F(LiveModelTest, AnOutageIsAGapInTheHistory) {
    good(0, 1);
    bad(0, "read DINT0:A> Connection refused(111)");
    good(0, 2);
    QJsonObject found;
    ASSERT_TRUE(model.history("DINT0:A", 0, std::numeric_limits<qint64>::max(), 0, &found));
    const QJsonArray samples = found.value("samples").toArray();
    ASSERT_EQ(samples.size(), 3);
    EXPECT_EQ(samples.at(0).toArray().at(1).toInt(), 1);
    EXPECT_TRUE(samples.at(1).toArray().at(1).isNull());
    EXPECT_EQ(samples.at(2).toArray().at(1).toInt(), 2);
    EXPECT_FALSE(model.history("DINT0:B", 0, 1, 0, &found));
}

TEST_F(LiveModelTest, LeadsToWhatToDo) {
    bad(0, "read DINT0:A> AB error: 0005H");
    const QJsonObject tag = model.tags().value("tags").toArray().at(0).toObject();
    EXPECT_EQ(tag.value("help").toString(), QString("/troubleshooting#ab-error-0005h"));
    EXPECT_EQ(model.status().value("failuresPerMinute").toInt(), 1);
}

TEST_F(LiveModelTest, KnowsWhetherTheDriverIsConnected) {
    EXPECT_FALSE(model.status().value("connected").toBool());
    EXPECT_TRUE(model.status().value("connectedSince").isNull());
    model.noteDriver(0, {{"opens", 1}, {"connections_lost", 0}, {"requests", 5}});
    EXPECT_TRUE(model.status().value("connected").toBool());
    model.noteDriver(0, {{"opens", 1}, {"connections_lost", 1}, {"requests", 6}});
    EXPECT_FALSE(model.status().value("connected").toBool());
    model.tick();
    EXPECT_EQ(model.entries().value("entries").toArray().size(), 2);
}

TEST_F(LiveModelTest, MetricsHoldTheirLabels) {
    good(0, 1);
    good(1, 1);
    bad(2, "read BOOL0:C> AB error: 0005H");
    const QByteArray text = model.metrics();
    EXPECT_TRUE(text.contains("\nmicro800_reads_total 2\n"));
    EXPECT_TRUE(text.contains("\nmicro800_read_failures_total{kind=\"AB error\"} 1\n"));
    EXPECT_TRUE(text.contains("micro800_tag_age_seconds{address=\"DINT0:A\"} "));
    EXPECT_FALSE(text.contains("BOOL0:C"));
}

// ---- the paths
// -----------------------------------------------------------------------------------

class PageRoutesTest : public testing::Test {
 protected:
    HttpReply ask(const char* method, const char* target, const QByteArray& body = QByteArray(),
                  const QVector<HttpHeader>& headers = {}) {
        HttpRequest request;
        request.method = method;
        request.target = target;
        request.body = body;
        request.headers = headers;
        request.peer = "127.0.0.1:5";
        Answer answer = routes.answer(request);
        isLater = answer.later != nullptr;
        isStream = answer.stream != nullptr;
        return answer.reply;
    }
    HttpReply write(const char* body, const char* type = "application/json") {
        return ask("POST", "/api/write", body,
                   {{"authorization", "Bearer tokentoken"}, {"content-type", type}});
    }

    LiveModel model{facts(true)};
    QVector<WriteOrder> orders;
    PageRoutes routes{&model, "tokentoken", [this](const WriteOrder& order) {
                          orders.append(order);
                          return orders.size() < 3;
                      }};
    bool isLater = false;
    bool isStream = false;
};

TEST_F(PageRoutesTest, UnknownPathsAndMethods) {
    EXPECT_EQ(ask("GET", "/nothing").status, 404);
    EXPECT_EQ(ask("GET", "/../etc/passwd").status, 404);
    EXPECT_EQ(ask("GET", "//").status, 404);
    EXPECT_EQ(ask("GET", "/%zz").status, 400);
    EXPECT_EQ(ask("POST", "/").status, 405);
    EXPECT_EQ(ask("PUT", "/troubleshooting").status, 405);
    EXPECT_EQ(ask("POST", "/api/tags").status, 405);
    EXPECT_EQ(ask("GET", "/api/write").status, 405);
    EXPECT_EQ(ask("OPTIONS", "/api/write").status, 405);
}

TEST_F(PageRoutesTest, TheInterfaceNeedsTheToken) {
    for (const char* path :
         {"/api/tags", "/api/status", "/api/entries", "/api/events", "/api/history?tag=DINT0:A",
          "/metrics", "/api/tags?token=tokentoken"}) {
        EXPECT_EQ(ask("GET", path).status, 401) << path;
        EXPECT_FALSE(isStream);
        EXPECT_EQ(ask("GET", path, "", {{"cookie", "micro800_token=tokentoken"}}).status, 200);
    }
    EXPECT_EQ(ask("POST", "/api/write", "{}").status, 401);
    EXPECT_EQ(ask("GET", "/api/events", "", {{"cookie", "micro800_token=tokentoken"}}).type,
              QByteArray("text/event-stream"));
    EXPECT_TRUE(isStream);
}

TEST_F(PageRoutesTest, TheWayInSetsTheCookie) {
    const HttpReply reply = ask("GET", "/?token=tokentoken");
    EXPECT_EQ(reply.status, 303);
    QByteArray cookie;
    for (const HttpHeader& header : reply.headers) {
        cookie += header.name == "Set-Cookie" ? header.value : QByteArray();
    }
    EXPECT_EQ(cookie, QByteArray("micro800_token=tokentoken; HttpOnly; SameSite=Strict; Path=/"));
    EXPECT_EQ(ask("GET", "/?token=tokentokem").status, 401);
    EXPECT_EQ(ask("GET", "/?token=").status, 401);
    EXPECT_EQ(ask("GET", "/").status, 200);
}

TEST_F(PageRoutesTest, AWriteIsCheckedBeforeItIsTaken) {
    const char good[] = R"({"address":"DINT0:A","value":"7"})";
    EXPECT_EQ(write(good, "text/plain").status, 415);
    for (const char* body :
         {"", "[]", "{", R"({"address":"DINT0:A"})", R"({"address":"DINT0:A","value":7})",
          R"({"address":"DINT0:A","value":"7","more":1})", R"({"address":"DINT0:A","value":"x"})",
          R"({"address":"DINT0:A","value":"2147483648"})"}) {
        const HttpReply reply = write(body);
        EXPECT_EQ(reply.status, 400) << body;
        EXPECT_TRUE(reply.body.contains("\"ok\":false")) << body;
    }
    EXPECT_EQ(write(R"({"address":"DINT0:B","value":"7"})").status, 404);
    EXPECT_TRUE(orders.isEmpty());

    write(good);
    EXPECT_TRUE(isLater);
    ASSERT_EQ(orders.size(), 1);
    EXPECT_EQ(orders.at(0).bytes, QByteArray::fromHex("07000000"));
    EXPECT_EQ(orders.at(0).text, QString("7"));
    EXPECT_EQ(orders.at(0).peer, QString("127.0.0.1:5"));
    write(good);
    EXPECT_EQ(write(good).status, 503);
}

TEST_F(PageRoutesTest, NoWriteWithoutPermission) {
    LiveModel closed(facts(false));
    PageRoutes only(&closed, QByteArray(), [](const WriteOrder&) {
        ADD_FAILURE();
        return true;
    });
    HttpRequest request;
    request.method = "POST";
    request.target = "/api/write";
    request.headers = {{"content-type", "application/json"}};
    request.body = R"({"address":"DINT0:A","value":"7"})";
    EXPECT_EQ(only.answer(request).reply.status, 403);
}

TEST_F(PageRoutesTest, History) {
    const QVector<HttpHeader> token = {{"authorization", "Bearer tokentoken"}};
    EXPECT_EQ(ask("GET", "/api/history?tag=DINT0:A&from=1&to=2&points=3", "", token).status, 200);
    for (const char* query : {"from=x", "to=-1", "points=1.5", "points=99999999"}) {
        const QByteArray target = QByteArray("/api/history?tag=DINT0:A&") + query;
        EXPECT_EQ(ask("GET", target.constData(), "", token).status, 400) << query;
    }
    EXPECT_EQ(ask("GET", "/api/history", "", token).status, 404);
}

}  // namespace
