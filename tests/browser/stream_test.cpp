// The way from the server to the page: when it breaks, nothing on the page looks current.

#include <signal.h>

#include "browser/live_page.h"

namespace {

class PageStream : public LivePage {
 protected:
    void SetUp() override {
        LivePage::SetUp();
        startController({"--tag", "COUNTER:DINT=42", "--tag", "LEVEL:REAL=1.5"});
        serve({"DINT0:COUNTER", "REAL0:LEVEL"});
        ASSERT_TRUE(becomes("DINT0:COUNTER", "good"));
        ASSERT_TRUE(becomes("REAL0:LEVEL", "good"));
        // What the browser says of a server that is not there.
        expectedComplaint = "net::ERR_";
    }

    void everythingIsMarked() {
        EXPECT_TRUE(becomes("DINT0:COUNTER", "lost"));
        EXPECT_TRUE(becomes("REAL0:LEVEL", "lost"));
        EXPECT_EQ(cell("DINT0:COUNTER", "state"), "not current");
        EXPECT_EQ(page().text("#count"), "2 tags: 2 not current");
        EXPECT_EQ(page()
                      .script("return document.querySelectorAll('tr[data-state=\"good\"]').length")
                      .toInt(),
                  0);
        EXPECT_FALSE(page().script("return document.getElementById('lost').hidden").toBool());
        EXPECT_TRUE(page().text("#lost").contains("No value on this page is current"));
    }
};

TEST_F(PageStream, AServerThatEndsIsSaidAtOnce) {
    EXPECT_EQ(server->end(), 0);
    everythingIsMarked();
}

// A network that delivers nothing any more, and does not say so.
const char kMutable[] =
    "const Real = EventSource;"
    "window.EventSource = class extends Real {"
    "    addEventListener(name, work) {"
    "        super.addEventListener(name, (event) => window.isMute || work(event));"
    "    }"
    "};";

TEST_F(PageStream, SilenceIsFoundOut) {
    const QJsonValue script = page().devTools("Page.addScriptToEvaluateOnNewDocument",
                                              {{"source", kMutable}})["identifier"];
    openPage();
    page().devTools("Page.removeScriptToEvaluateOnNewDocument", {{"identifier", script}});
    ASSERT_TRUE(becomes("DINT0:COUNTER", "good"));
    page().script("window.isMute = true");
    everythingIsMarked();
    page().script("window.isMute = false");
    EXPECT_TRUE(becomes("DINT0:COUNTER", "good"));
    EXPECT_TRUE(becomes("REAL0:LEVEL", "good"));
    EXPECT_TRUE(page().script("return document.getElementById('lost').hidden").toBool());
}

TEST_F(PageStream, AnotherServerAtTheSameAddressIsTakenAsItIs) {
    const QString port = address.section(':', 2).section('/', 0, 0);
    server->signal(SIGKILL);
    everythingIsMarked();
    ASSERT_EQ(controller->command("set COUNTER=43"), "ok");
    ASSERT_NO_FATAL_FAILURE(
        startServer({"--listen", "127.0.0.1:" + port, "DINT0:COUNTER", "REAL0:LEVEL"}));
    EXPECT_TRUE(becomes("DINT0:COUNTER", "good"));
    EXPECT_TRUE(
        page().waitFor(QString("document.querySelector(\"%1 .c-value\").textContent === '43'")
                           .arg(row("DINT0:COUNTER"))));
}

}  // namespace
