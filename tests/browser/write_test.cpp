// Writing from the page: what goes through, what is refused and says why, what is not even sent.

#include "browser/live_page.h"

namespace {

class PageWrites : public LivePage {
 protected:
    void SetUp() override {
        LivePage::SetUp();
        startController({"--tag", "SETPOINT:DINT=10", "--tag", "ON:BOOL=0", "--tag",
                         "NAME:STRING=Mixer", "--tag", "OTHER:DINT=5"});
    }

    void serveAll() {
        serve({"--allow-write", "DINT0:SETPOINT", "BOOL0:ON", "STRING0:NAME", "INT0:OTHER"});
        ASSERT_TRUE(becomes("DINT0:SETPOINT", "good"));
        ASSERT_TRUE(becomes("BOOL0:ON", "good"));
        ASSERT_TRUE(becomes("INT0:OTHER", "good"));
    }

    void openDialog(const QString& tag) {
        page().click(row(tag) + " .c-set button");
        ASSERT_TRUE(page().waitFor("document.getElementById('write').open"));
    }

    /// Presses Enter and waits for the next step, by the text on the button.
    void goOn(const QString& text) {
        page().press({"Enter"});
        ASSERT_TRUE(
            page().waitFor("document.getElementById('write-go').textContent === '" + text + "'"))
            << page().text("#write-outcome");
    }

    bool isSaid(const QString& text) {
        return page().waitFor("document.getElementById('write-outcome').textContent.includes('" +
                              text + "')");
    }
};

TEST_F(PageWrites, OldAndNewAreShownBeforeAValueGoesOut) {
    serveAll();
    openDialog("DINT0:SETPOINT");
    EXPECT_TRUE(page().text("#write-bounds").contains("-2147483648"));
    page().type("1500");
    goOn("Write");
    EXPECT_EQ(page().text("#write-old"), "10");
    EXPECT_EQ(page().text("#write-new"), "1500");
    EXPECT_EQ(controllerHas("SETPOINT"), "ok 10");
    page().press({"Enter"});
    EXPECT_TRUE(isSaid("Written")) << page().text("#write-outcome");
    EXPECT_EQ(controllerHas("SETPOINT"), "ok 1500");
    EXPECT_EQ(page().text("#write-old"), "10");
    EXPECT_EQ(page().text("#write-new"), "1500");
    page().press({"Enter"});
    EXPECT_TRUE(page().waitFor("!document.getElementById('write').open"));
    EXPECT_TRUE(
        page().waitFor(QString("document.querySelector(\"%1 .c-value\").textContent === '1500'")
                           .arg(row("DINT0:SETPOINT"))));
    EXPECT_TRUE(page().waitFor("document.querySelector('#entries li[data-kind=\"write\"]')"));
}

TEST_F(PageWrites, ARefusedWriteSaysWhy) {
    // The browser notes an answer that is no success.
    expectedComplaint = "/api/write";
    serveAll();
    openDialog("INT0:OTHER");
    page().type("6");
    goOn("Write");
    page().press({"Enter"});
    EXPECT_TRUE(isSaid("AB error: 01FFH, 2107H")) << page().text("#write-outcome");
    EXPECT_TRUE(page().text("#write-outcome").startsWith("Not confirmed"));
    EXPECT_EQ(controllerHas("OTHER"), "ok 5");
}

TEST_F(PageWrites, WhatDoesNotFitTheTypeIsNotSent) {
    serveAll();
    openDialog("DINT0:SETPOINT");
    for (const QString text : {"2147483648", "1.5", "abc"}) {
        page().script("document.getElementById('write-value').select()");
        page().type(text);
        page().press({"Enter"});
        EXPECT_TRUE(isSaid(text == "2147483648" ? "is not between" : "whole number")) << text;
    }
    page().press({"Escape"});
    EXPECT_TRUE(page().waitFor("!document.getElementById('write').open"));
    EXPECT_EQ(controllerHas("SETPOINT"), "ok 10");
}

TEST_F(PageWrites, ABoolIsASwitchAndAStringAText) {
    serveAll();
    openDialog("BOOL0:ON");
    page().press({"Space"});
    goOn("Write");
    EXPECT_EQ(page().text("#write-new"), "true");
    page().press({"Enter"});
    EXPECT_TRUE(isSaid("Written")) << page().text("#write-outcome");
    EXPECT_EQ(controllerHas("ON"), "ok 1");
    page().press({"Enter"});

    openDialog("STRING0:NAME");
    page().type("Mixer <b>4</b>");
    goOn("Write");
    page().press({"Enter"});
    EXPECT_TRUE(isSaid("Written")) << page().text("#write-outcome");
    EXPECT_EQ(controllerHas("NAME"), "ok \"Mixer <b>4</b>\"");
}

TEST_F(PageWrites, WithoutTheOptionThereIsNoButton) {
    serve({"DINT0:SETPOINT"});
    ASSERT_TRUE(becomes("DINT0:SETPOINT", "good"));
    EXPECT_TRUE(page().waitFor("document.getElementById('fact-writing').textContent === 'off'"));
    EXPECT_EQ(page()
                  .script("return getComputedStyle(document.querySelector('td.c-set')).display")
                  .toString(),
              "none");
    const QJsonValue answer = page().script(
        "return fetch('/api/write', {method: 'POST', headers: {'Content-Type': "
        "'application/json'}, body: "
        "'{\"address\":\"DINT0:SETPOINT\",\"value\":\"1\"}'}).then((answer) => answer.status)");
    EXPECT_EQ(answer.toInt(), 403);
    EXPECT_EQ(controllerHas("SETPOINT"), "ok 10");
    expectedComplaint = "/api/write";
}

}  // namespace
