// The page as one sees it: it loads, values move, a tag fails and recovers, names stay names.

#include "browser/live_page.h"

namespace {

class PageShows : public LivePage {};

TEST_F(PageShows, ItLoadsWithAllItsTagsAndNothingFromOutside) {
    startController(
        {"--tag", "COUNTER:DINT=42", "--tag", "ON:BOOL=1", "--tag", "NAME:STRING=Mixer 3"});
    serve({"DINT0:COUNTER", "BOOL0:ON", "STRING0:NAME"});
    ASSERT_TRUE(becomes("DINT0:COUNTER", "good"));
    ASSERT_TRUE(becomes("STRING0:NAME", "good"));
    EXPECT_EQ(cell("DINT0:COUNTER", "value"), "42");
    EXPECT_EQ(cell("BOOL0:ON", "value"), "true");
    EXPECT_EQ(cell("STRING0:NAME", "value"), "\"Mixer 3\"");
    EXPECT_EQ(cell("DINT0:COUNTER", "state"), "good");
    EXPECT_EQ(page().text("#count"), "3 tags: 3 good");
    EXPECT_TRUE(page().waitFor("document.getElementById('fact-state').dataset.state === 'good'"));
    EXPECT_TRUE(page().text("#fact-controller").contains(QString::number(controller->port())));
    EXPECT_EQ(page().text("#fact-writing"), "off");
    const QJsonValue outside = page().script(
        "return performance.getEntriesByType('resource')"
        ".filter((one) => !one.name.startsWith(location.origin + '/')).map((one) => one.name)");
    EXPECT_EQ(outside.toArray(), QJsonArray());
}

TEST_F(PageShows, ItSaysWhatItCosts) {
    startController({"--tag", "COUNTER:DINT=42"});
    serve({"DINT0:COUNTER"});
    ASSERT_TRUE(becomes("DINT0:COUNTER", "good"));
    const QJsonArray cost =
        page()
            .script(
                "const all = [...performance.getEntriesByType('resource'),"
                "             ...performance.getEntriesByType('navigation')]"
                "    .filter((one) => !one.name.endsWith('/api/events'));"
                "return [all.length, all.reduce((sum, one) => sum + one.transferSize, 0)]")
            .toArray();
    RecordProperty("requests", cost.at(0).toInt());
    RecordProperty("bytes", cost.at(1).toInt());
    printf("page load: %d requests, %d bytes\n", cost.at(0).toInt(), cost.at(1).toInt());
    EXPECT_LE(cost.at(0).toInt(), 30);
    EXPECT_LE(cost.at(1).toInt(), 400000);
}

TEST_F(PageShows, ValuesMove) {
    startController(
        {"--tag", "TICKS:DINT=0", "--tag", "STILL:DINT=7", "--ramp", "50", "--ramp-tag", "TICKS"});
    serve({"DINT0:TICKS", "DINT0:STILL"});
    ASSERT_TRUE(becomes("DINT0:TICKS", "good"));
    const int first = cell("DINT0:TICKS", "value").toInt();
    EXPECT_TRUE(page().waitFor(
        QString("Number(document.querySelector(\"%1 .c-value\").textContent) > %2 + 10")
            .arg(row("DINT0:TICKS"))
            .arg(first)));
    EXPECT_EQ(cell("DINT0:STILL", "value"), "7");
    // One that stays is read again all the same.
    EXPECT_TRUE(
        page().waitFor(QString("document.querySelector(\"%1 .c-age\").textContent === '< 1 s'")
                           .arg(row("DINT0:STILL"))));
}

TEST_F(PageShows, AFailureSaysWhatTheOperatorReadsAndLeadsToWhatToDo) {
    startController({"--tag", "LEVEL:REAL=21.5", "--tag", "COUNTER:DINT=42"});
    serve({"REAL0:LEVEL", "DINT0:COUNTER"});
    ASSERT_TRUE(becomes("REAL0:LEVEL", "good"));
    ASSERT_EQ(controller->command("fault status:05@tag=LEVEL"), "ok");
    ASSERT_TRUE(becomes("REAL0:LEVEL", "failed"));
    EXPECT_EQ(cell("REAL0:LEVEL", "state"), "failed");
    EXPECT_EQ(cell("REAL0:LEVEL", "value"), QString::fromUtf8("–"));
    const QString why = row("REAL0:LEVEL") + " .why";
    EXPECT_TRUE(page().text(why).endsWith("AB error: 0005H")) << page().text(why);
    EXPECT_EQ(cell("DINT0:COUNTER", "state"), "good");

    ASSERT_EQ(controller->command("fault none"), "ok");
    ASSERT_TRUE(becomes("REAL0:LEVEL", "good"));
    EXPECT_EQ(page().text(why), "");
    EXPECT_TRUE(page().waitFor("document.querySelector('#entries li[data-kind=\"recovery\"]')"));
    const QString failure = "#entries li[data-kind='failure'] a";
    EXPECT_TRUE(page().text(failure).endsWith("AB error: 0005H")) << page().text(failure);

    page().click(failure);
    ASSERT_TRUE(page().waitFor(
        "location.pathname === '/troubleshooting' && document.readyState === 'complete'"));
    const QJsonValue place = page().script(
        "const found = document.getElementById(decodeURIComponent(location.hash.slice(1)));"
        "return found ? found.closest('tr').textContent : 'no such anchor: ' + location.hash");
    EXPECT_TRUE(place.toString().contains("AB error: 0005H")) << place.toString();
}

TEST_F(PageShows, AControllerThatIsGoneLeavesNoValueThatLooksGood) {
    startController({"--tag", "COUNTER:DINT=42"});
    serve({"DINT0:COUNTER"});
    ASSERT_TRUE(becomes("DINT0:COUNTER", "good"));
    ASSERT_EQ(controller->command("down"), "ok");
    ASSERT_TRUE(page().waitFor(QString("document.querySelector(\"%1\").dataset.state !== 'good'")
                                   .arg(row("DINT0:COUNTER"))));
    EXPECT_NE(cell("DINT0:COUNTER", "state"), "good");
    ASSERT_EQ(controller->command("up"), "ok");
    EXPECT_TRUE(becomes("DINT0:COUNTER", "good"));
}

TEST_F(PageShows, ANameOrAValueIsNeverMarkup) {
    const QString image = "<img src=x onerror=window.struck=1>";
    startController({"--tag", "NAME:STRING=" + image, "--tag", "COUNTER:DINT=42"});
    serve({"DINT0:" + image, "STRING0:NAME", "DINT0:COUNTER"});
    ASSERT_TRUE(becomes("DINT0:" + image, "failed"));
    ASSERT_TRUE(becomes("STRING0:NAME", "good"));
    EXPECT_EQ(cell("STRING0:NAME", "value"), "\"" + image + "\"");
    drawTag("DINT0:" + image);
    EXPECT_TRUE(
        page().waitFor("document.querySelector('#entries li[data-kind=\"failure\"] .address')"));
    EXPECT_EQ(page().script("return document.querySelectorAll('img').length").toInt(), 0);
    EXPECT_TRUE(page().script("return window.struck === undefined").toBool());
}

TEST_F(PageShows, TagsAreFoundSortedAndGrouped) {
    startController(
        {"--tag", "PUMP_SPEED:DINT=30", "--tag", "PUMP_LEVEL:DINT=100", "--tag", "OTHER:DINT=20"});
    serve({"DINT0:PUMP_SPEED", "DINT0:PUMP_LEVEL", "DINT0:OTHER"});
    ASSERT_TRUE(becomes("DINT0:OTHER", "good"));
    EXPECT_EQ(page().text(".group-name"), "PUMP");
    const QString addresses =
        "[...document.querySelectorAll('#tag-table tr[data-index] th')].map((one) => "
        "one.textContent).join()";
    page().click("#grouped");
    page().click("th[data-sort='value'] button");
    EXPECT_TRUE(page().waitFor(addresses + " === 'DINT0:OTHER,DINT0:PUMP_SPEED,DINT0:PUMP_LEVEL'"));
    EXPECT_EQ(page()
                  .script("return document.querySelector('th[data-sort=\"value\"]').ariaSort")
                  .toString(),
              "ascending");
    page().click("th[data-sort='value'] button");
    EXPECT_TRUE(page().waitFor(addresses + " === 'DINT0:PUMP_LEVEL,DINT0:PUMP_SPEED,DINT0:OTHER'"));
    page().click("#search");
    page().type("pump speed");
    EXPECT_TRUE(page().waitFor(addresses + " === 'DINT0:PUMP_SPEED'"));
    page().type("x");
    EXPECT_TRUE(page().waitFor("!document.getElementById('none').hidden"));
}

}  // namespace
