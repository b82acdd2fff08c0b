// For everybody: the keyboard alone, a phone's width, dark and light, names for a screen reader.

#include "browser/live_page.h"

namespace {

class PageAccess : public LivePage {
 protected:
    void SetUp() override {
        LivePage::SetUp();
        startController({"--tag", "SETPOINT:DINT=10", "--tag", "ON:BOOL=0", "--tag",
                         "A_RATHER_LONG_NAME_OF_A_VARIABLE_INDEED:LREAL=3.14159265358979"});
        serve({"--allow-write", "DINT0:SETPOINT", "BOOL0:ON",
               "LREAL0:A_RATHER_LONG_NAME_OF_A_VARIABLE_INDEED", "DINT0:MISSING"});
        ASSERT_TRUE(becomes("DINT0:SETPOINT", "good"));
        ASSERT_TRUE(becomes("DINT0:MISSING", "failed"));
        ASSERT_TRUE(page().waitFor("document.body.classList.contains('may-write')"));
    }

    /// Presses the tabulator until this element has the focus.
    bool tabTo(const QString& selector) {
        for (int i = 0; i < 60; ++i) {
            if (page()
                    .script("return document.activeElement.matches(arguments[0])", {selector})
                    .toBool()) {
                return true;
            }
            page().press({"Tab"});
        }
        return false;
    }

    bool fitsItsWidth() {
        return page().script("return document.documentElement.scrollWidth <= innerWidth").toBool();
    }
};

TEST_F(PageAccess, TheKeyboardDoes) {
    page().press({"Tab"});
    EXPECT_TRUE(page().script("return document.activeElement.matches('.skip')").toBool());
    page().press({"Enter"});
    EXPECT_TRUE(page().waitFor("location.hash === '#tags'"));
    ASSERT_TRUE(tabTo("#search"));
    page().type("setpoint");
    EXPECT_TRUE(
        page().waitFor("document.querySelectorAll('#tag-table tr[data-index]').length === 1"));
    ASSERT_TRUE(tabTo("td.c-trend input"));
    // What has the focus is seen to have it.
    EXPECT_NE(
        page().script("return getComputedStyle(document.activeElement).outlineStyle").toString(),
        "none");
    page().press({"Space"});
    EXPECT_TRUE(page().waitFor("document.querySelectorAll('#legend-rows tr').length === 1"));
    ASSERT_TRUE(tabTo("td.c-set button"));
    page().press({"Enter"});
    ASSERT_TRUE(page().waitFor("document.activeElement.id === 'write-value'"));
    page().type("11");
    page().press({"Enter"});
    ASSERT_TRUE(page().waitFor("document.activeElement.id === 'write-go'"));
    ASSERT_EQ(page().text("#write-new"), "11");
    page().press({"Enter"});
    ASSERT_TRUE(page().waitFor("document.activeElement.id === 'write-cancel'"));
    EXPECT_EQ(controllerHas("SETPOINT"), "ok 11");
    page().press({"Enter"});
    EXPECT_TRUE(page().waitFor("document.activeElement.matches('td.c-set button')"));
    EXPECT_TRUE(tabTo("#chart-frame"));
    EXPECT_TRUE(tabTo("#kind"));
}

TEST_F(PageAccess, APhoneNeedsNoSidewaysScrolling) {
    page().resize(390, 844);
    drawTag("DINT0:SETPOINT");
    EXPECT_TRUE(page().waitFor("document.querySelector('#chart canvas')"));
    EXPECT_TRUE(fitsItsWidth())
        << page().script("return document.documentElement.scrollWidth").toInt();
    const QString hidden =
        "const box = document.querySelector(arguments[0]).getBoundingClientRect();"
        "return box.width < 8 || box.left < 0 || box.right > innerWidth";
    for (const QString name : {".c-address", ".c-value", ".c-state", ".c-age", ".c-set button"}) {
        EXPECT_FALSE(page()
                         .script(hidden, {row("LREAL0:A_RATHER_LONG_NAME_OF_A_VARIABLE_INDEED") +
                                          " " + name})
                         .toBool())
            << name;
    }
    page().click(row("DINT0:SETPOINT") + " .c-set button");
    EXPECT_TRUE(page().waitFor("document.getElementById('write').open"));
    EXPECT_TRUE(fitsItsWidth());
    EXPECT_FALSE(page().script(hidden, {"#write-go"}).toBool());
}

// The contrast of each element's text with its background, as WCAG 2.2 counts it; those
// below 4.5.
const char kFaint[] =
    "const parts = (text) => text.match(/[\\d.]+/g).map(Number);"
    "const light = (rgb) => rgb.slice(0, 3).map((part) => part / 255)"
    "    .map((part) => part <= 0.03928 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4)"
    "    .reduce((sum, part, i) => sum + part * [0.2126, 0.7152, 0.0722][i], 0);"
    "const behind = (one) => {"
    "    const rgb = one ? parts(getComputedStyle(one).backgroundColor) : [255, 255, 255];"
    "    return one && rgb.length === 4 && rgb[3] === 0 ? behind(one.parentElement) : rgb;"
    "};"
    "const faint = [];"
    "for (const one of document.querySelectorAll('body *')) {"
    "    const own = [...one.childNodes].some((node) => node.nodeType === 3 && node.data.trim());"
    "    if (!own || !one.offsetParent || one.disabled) { continue; }"
    "    const [a, b] = [light(parts(getComputedStyle(one).color)), light(behind(one))];"
    "    const contrast = (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);"
    "    if (contrast < 4.5) { faint.push(`${one.tagName} ${one.className} ${one.textContent}: "
    "${contrast}`); }"
    "}"
    "return faint.join('; ');";

TEST_F(PageAccess, DarkAndLightCanBothBeRead) {
    drawTag("DINT0:SETPOINT");
    const QString paper = "return getComputedStyle(document.body).backgroundColor";
    EXPECT_EQ(page().script(paper).toString(), "rgb(255, 255, 255)");
    EXPECT_EQ(page().script(kFaint).toString(), "");
    page().setColourScheme("dark");
    EXPECT_TRUE(
        page().waitFor("getComputedStyle(document.body).backgroundColor === 'rgb(20, 23, 26)'"));
    EXPECT_EQ(page().script(kFaint).toString(), "");
}

TEST_F(PageAccess, StatesDifferByShapeAndWord) {
    const QString shape =
        "const style = getComputedStyle(document.querySelector(arguments[0]));"
        "return style.clipPath + ' ' + style.borderRadius";
    const QString good = page().script(shape, {row("DINT0:SETPOINT") + " .mark"}).toString();
    const QString failed = page().script(shape, {row("DINT0:MISSING") + " .mark"}).toString();
    EXPECT_NE(good, failed);
    EXPECT_NE(cell("DINT0:SETPOINT", "state"), cell("DINT0:MISSING", "state"));
}

TEST_F(PageAccess, WhatCanBeUsedHasANameForAScreenReader) {
    drawTag("DINT0:SETPOINT");
    page().click(row("DINT0:SETPOINT") + " .c-set button");
    ASSERT_TRUE(page().waitFor("document.getElementById('write').open"));
    QStringList nameless;
    QStringList roles;
    const auto look = [&] {
        page().devTools("Accessibility.enable");
        const QJsonObject tree = page().devTools("Accessibility.getFullAXTree");
        for (const QJsonValue value : tree["nodes"].toArray()) {
            const QJsonObject node = value.toObject();
            const QString role = node["role"].toObject()["value"].toString();
            const QString name = node["name"].toObject()["value"].toString();
            roles << role;
            const QStringList used = {"button", "checkbox",  "combobox", "dialog", "link",
                                      "switch", "searchbox", "textbox",  "table",  "region"};
            if (!node["ignored"].toBool() && used.contains(role) && name.isEmpty()) {
                nameless << role;
            }
        }
    };
    look();
    EXPECT_TRUE(roles.contains("dialog"));
    EXPECT_TRUE(roles.contains("textbox"));
    page().press({"Escape"});
    ASSERT_TRUE(page().waitFor("!document.getElementById('write').open"));
    look();
    EXPECT_EQ(nameless, QStringList());
    for (const char* role : {"table", "rowheader", "columnheader", "cell", "checkbox", "searchbox",
                             "status", "main", "banner"}) {
        EXPECT_TRUE(roles.contains(role)) << role;
    }
}

}  // namespace
