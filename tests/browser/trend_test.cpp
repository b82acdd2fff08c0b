// The trend: a gap stays a gap on the screen and in the file, axes, window, export.

#include <QJsonDocument>

#include "browser/live_page.h"

namespace {

// The columns of the plot, from the left, in which the first series was drawn: '#', or '.'.
const char kColumns[] =
    "const canvas = document.querySelector('#chart canvas');"
    "const colour = getComputedStyle(document.body).getPropertyValue('--series-0').trim();"
    "const wanted = [1, 3, 5].map((i) => parseInt(colour.slice(i, i + 2), 16));"
    "const {width, height} = canvas;"
    "const data = canvas.getContext('2d').getImageData(0, 0, width, height).data;"
    "let text = '';"
    "for (let x = 0; x < width; ++x) {"
    "  let isDrawn = false;"
    "  for (let y = 0; y < height; ++y) {"
    "    const at = 4 * (y * width + x);"
    "    isDrawn = isDrawn || (data[at + 3] > 100 && wanted.every((part, i) => Math.abs(part - "
    "data[at + i]) < 24));"
    "  }"
    "  text += isDrawn ? '#' : '.';"
    "}"
    "return text.replace(/^\\.+|\\.+$/g, '');";

int longestRun(const QString& columns, QChar kind) {
    int longest = 0;
    int run = 0;
    for (const QChar column : columns) {
        run = column == kind ? run + 1 : 0;
        longest = qMax(longest, run);
    }
    return longest;
}

class TrendShows : public LivePage {
 protected:
    void SetUp() override {
        LivePage::SetUp();
        startController({"--tag", "TICKS:DINT=0", "--tag", "SMALL:REAL=1.5", "--tag",
                         "STILL:DINT=7", "--ramp", "50", "--ramp-tag", "TICKS"});
        serve({"DINT0:TICKS", "REAL0:SMALL", "DINT0:STILL"});
        ASSERT_TRUE(becomes("DINT0:TICKS", "good"));
        ASSERT_TRUE(becomes("REAL0:SMALL", "good"));
    }

    /// The file that a click hands out, as text.
    QString exported(const QString& button, const QString& read) {
        page().script(
            "window.exported = null;"
            "URL.createObjectURL = (blob) => { " +
            read + "; return 'data:,'; };");
        page().click(button);
        EXPECT_TRUE(page().waitFor("window.exported !== null"));
        return page().script("return window.exported").toString();
    }

    /// Takes the controller away until the page's tag is three seconds old.
    void makeOutage() {
        ASSERT_EQ(controller->command("down"), "ok");
        ASSERT_TRUE(page().waitFor(
            QString("Number(document.querySelector(\"%1 .c-age\").textContent.match(/^\\d+/)) >= 3")
                .arg(row("DINT0:TICKS"))));
        EXPECT_NE(cell("DINT0:TICKS", "state"), "good");
        ASSERT_EQ(controller->command("up"), "ok");
        ASSERT_TRUE(becomes("DINT0:TICKS", "good"));
    }
};

TEST_F(TrendShows, AnOutageIsAGapAndNeverALine) {
    drawTag("DINT0:TICKS");
    page().click("#trend [data-span='60000']");
    makeOutage();
    const int value = cell("DINT0:TICKS", "value").toInt();
    ASSERT_TRUE(page().waitFor(
        QString("Number(document.querySelector(\"%1 .c-value\").textContent) > %2 + 60")
            .arg(row("DINT0:TICKS"))
            .arg(value)));
    // A minute is some 350 columns wide, so three seconds are more than twelve.
    const QString columns = page().script(kColumns).toString();
    EXPECT_GT(longestRun(columns, '.'), 12) << columns;
    EXPECT_GT(longestRun(columns, '#'), 10) << columns;

    const QString csv =
        exported("#export-csv", "blob.text().then((text) => { window.exported = text; })");
    EXPECT_TRUE(csv.startsWith("time,address,kind,value,minimum,maximum\r\n")) << csv.left(200);
    EXPECT_TRUE(csv.contains(",\"DINT0:TICKS\",value,")) << csv.left(400);
    EXPECT_TRUE(csv.contains(",\"DINT0:TICKS\",gap,,,\r\n")) << csv.left(2000);
}

TEST_F(TrendShows, WhatThePageMissedComesFromTheServer) {
    makeOutage();
    openPage();
    ASSERT_TRUE(becomes("DINT0:TICKS", "good"));
    drawTag("DINT0:TICKS");
    page().click("#trend [data-span='60000']");
    EXPECT_TRUE(page().waitFor(
        QString("(() => { const text = (() => { %1 })(); return /#\\.{12,}#/.test(text); })()")
            .arg(kColumns)))
        << page().script(kColumns).toString();
}

TEST_F(TrendShows, ATagOfAnotherRangeHasTheRightAxis) {
    ASSERT_EQ(controller->command("set TICKS=5000"), "ok");
    drawTag("DINT0:TICKS");
    drawTag("REAL0:SMALL");
    EXPECT_TRUE(
        page().waitFor("document.querySelector('#legend-rows tr:nth-child(2) option').textContent "
                       "=== 'auto (right)'"));
    EXPECT_EQ(page().text("#legend-rows tr:nth-child(1) option"), "auto (left)");
    EXPECT_TRUE(
        page().waitFor("document.querySelectorAll('#chart .dygraph-axis-label-y2').length > 1"));
    page().click("#legend-rows tr:nth-child(1) button");
    EXPECT_TRUE(page().waitFor("document.querySelectorAll('#legend-rows tr').length === 1"));
    EXPECT_FALSE(page()
                     .script("return document.querySelector(arguments[0]).checked",
                             {row("DINT0:TICKS") + " input"})
                     .toBool());
}

TEST_F(TrendShows, TheCursorHasTheValuesOfItsTime) {
    drawTag("DINT0:STILL");
    ASSERT_TRUE(page().waitFor("document.querySelector('#chart canvas')"));
    page().script("document.getElementById('chart-frame').focus()");
    page().press({"Shift+ArrowLeft"});
    EXPECT_TRUE(page().waitFor("document.getElementById('legend-time').textContent.includes(':')"));
    EXPECT_TRUE(page().waitFor("document.querySelector('#legend-rows td').textContent === '7'"))
        << page().text("#legend-rows td");
    page().press({"ArrowLeft"});
    EXPECT_TRUE(page().waitFor("document.getElementById('follow').ariaPressed === 'false'"));
    page().press({"End"});
    EXPECT_TRUE(page().waitFor("document.getElementById('follow').ariaPressed === 'true'"));
}

TEST_F(TrendShows, ADragMovesADoubleClickGoesBackAndKeysZoom) {
    drawTag("DINT0:TICKS");
    page().click("#trend [data-span='60000']");
    page().script("document.getElementById('chart-frame').scrollIntoView()");
    const QString following = "document.getElementById('follow').ariaPressed === '%1'";
    page().drag("#chart-frame", 0.4, 0.8);
    EXPECT_TRUE(page().waitFor(following.arg("false")));
    const QString label = "document.getElementById('chart-frame').ariaLabel";
    EXPECT_TRUE(page().waitFor(label + ".includes(' to ')"));
    page().doubleClick("#chart-frame");
    EXPECT_TRUE(page().waitFor(following.arg("true")));
    EXPECT_TRUE(page().waitFor(label + ".includes('the last 60 seconds')"));
    page().press({"+"});
    EXPECT_TRUE(page().waitFor(label + ".includes('the last 30 seconds')"));
    page().press({"-", "-"});
    EXPECT_TRUE(page().waitFor(label + ".includes('the last 120 seconds')"));
}

TEST_F(TrendShows, ThePictureIsAPngWithTheChartInIt) {
    drawTag("DINT0:TICKS");
    page().click("#trend [data-span='60000']");
    ASSERT_TRUE(page().waitFor(QString("(() => { %1 })().includes('#')").arg(kColumns)));
    const QString type =
        exported("#export-png",
                 "createImageBitmap(blob).then((image) => { window.exported = blob.type + ' ' + "
                 "(image.width > 300) + ' ' + (image.height > 200); })");
    EXPECT_EQ(type, "image/png true true");
}

}  // namespace
