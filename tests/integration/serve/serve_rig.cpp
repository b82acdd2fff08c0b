#include "integration/serve/serve_rig.h"

#include <QJsonArray>
#include <QThread>
#include <QUrl>
#include <QUrlQuery>

void ServeTest::SetUp() {
    if (!MICRO800_HAS_PAGE) {
        GTEST_SKIP() << "this build has no live page";
    }
    startController({"--tag", "COUNTER:DINT=42", "--tag", "LEVEL:REAL=1.5", "--tag", "RUN:BOOL=0",
                     "--tag", "NAME:STRING=Mixer", "--tag", "TICKS:DINT=0", "--ramp", "50",
                     "--ramp-tag", "TICKS"});
}

void ServeTest::TearDown() {
    if (page) {
        const CliResult result = end();
        EXPECT_EQ(result.exitCode, 0) << result.err.constData();
    }
    CliTest::TearDown();
}

void ServeTest::serve(const QStringList& arguments) {
    page = start(withController("serve", QStringList{"--listen", "127.0.0.1:0"} + arguments));
    ASSERT_TRUE(page->hasPrinted(" of memory\n")) << page->complained().constData();
    ASSERT_TRUE(page->hasPrinted("http://"));
    const QUrl url(QString::fromUtf8(page->printed().split('\n').first()));
    port = url.port();
    token = QUrlQuery(url).queryItemValue("token").toUtf8();
    ASSERT_EQ(url.host(), QString("127.0.0.1"));
    ASSERT_GT(port, 0);
}

CliResult ServeTest::end() {
    page->signal(SIGTERM);
    const CliResult result = page->finish();
    page.reset();
    return result;
}

HttpAnswer ServeTest::get(const QByteArray& target, const QByteArray& headers) const {
    return exchange(port, getRequest(port, target, headers));
}

QByteArray ServeTest::tokenHeader() const {
    return token.isEmpty() ? QByteArray() : "Authorization: Bearer " + token + "\r\n";
}

HttpAnswer ServeTest::ask(const QByteArray& target, const QByteArray& headers) const {
    return get(target, tokenHeader() + headers);
}

HttpAnswer ServeTest::write(const QByteArray& address, const QByteArray& value) const {
    const QByteArray body = R"({"address":")" + address + R"(","value":")" + value + R"("})";
    return exchange(port, postRequest(port, "/api/write", tokenHeader(), body));
}

QJsonObject ServeTest::tag(int index) const {
    return ask("/api/tags").json().value("tags").toArray().at(index).toObject();
}

bool ServeTest::tagBecomes(int index, const std::function<bool(const QJsonObject&)>& such) const {
    QElapsedTimer clock;
    clock.start();
    while (!such(tag(index))) {
        if (clock.elapsed() > kCliWaitMs) {
            return false;
        }
        QThread::msleep(20);
    }
    return true;
}

bool ServeTest::valueBecomes(int index, const char* value) const {
    return tagBecomes(index, [value](const QJsonObject& tag) {
        return tag.value("state").toString() == "good" && tag.value("value").toString() == value;
    });
}

QByteArray eventsRequest(int port, const QByteArray& headers) {
    return "GET /api/events HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(port) + "\r\n" +
           headers + "\r\n";
}
