// The picture for the README, made on request: MICRO800_SCREENSHOT=docs/live-page.png
// build/tests/browser_page

#include <QFile>
#include <QtMath>

#include "browser/live_page.h"

namespace {

class PagePicture : public LivePage {
 protected:
    void SetUp() override {
        if (!qEnvironmentVariableIsSet("MICRO800_SCREENSHOT")) {
            GTEST_SKIP() << "MICRO800_SCREENSHOT names no file";
        }
        LivePage::SetUp();
    }
    void TearDown() override {
        if (!IsSkipped()) {
            LivePage::TearDown();
        }
    }

    void save(const QString& name) {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << name;
        const QByteArray png = page().screenshot();
        ASSERT_EQ(file.write(png), png.size());
        printf("%s: %lld bytes\n", qPrintable(name), static_cast<long long>(png.size()));
    }
};

TEST_F(PagePicture, OfAMachineWithAFailedTagAndAnOutageBehindIt) {
    startController({"--ramp",     "200",
                     "--ramp-tag", "MIXER_SPEED",
                     "--ramp-tag", "BATCH_COUNT",
                     "--tag",      "MIXER_SPEED:INT=150",
                     "--tag",      "MIXER_LEVEL:REAL=2.8",
                     "--tag",      "MIXER_RUNNING:BOOL=1",
                     "--tag",      "MIXER_NAME:STRING=Mixer 3",
                     "--tag",      "BATCH_COUNT:UDINT=20417",
                     "--tag",      "BATCH_RECIPE:USINT=4",
                     "--tag",      "BATCH_SETPOINT:REAL=72.5",
                     "--tag",      "OVEN_TEMPERATURE:REAL=184.25",
                     "--tag",      "OVEN_SETPOINT:REAL=185",
                     "--tag",      "OVEN_DOOR_OPEN:BOOL=0"});
    serve({"--allow-write", "INT0:MIXER_SPEED", "REAL0:MIXER_LEVEL", "BOOL0:MIXER_RUNNING",
           "STRING0:MIXER_NAME", "DINT0:MIXER_TORQUE", "UDINT0:BATCH_COUNT", "USINT0:BATCH_RECIPE",
           "REAL0:BATCH_SETPOINT", "REAL0:OVEN_TEMPERATURE", "REAL0:OVEN_SETPOINT",
           "BOOL0:OVEN_DOOR_OPEN"});
    ASSERT_TRUE(becomes("INT0:MIXER_SPEED", "good"));
    drawTag("INT0:MIXER_SPEED");
    drawTag("REAL0:MIXER_LEVEL");
    drawTag("REAL0:OVEN_TEMPERATURE");
    page().click("#trend [data-span='60000']");
    const QString value = QString("Number(document.querySelector(\"%1 .c-value\").textContent)")
                              .arg(row("INT0:MIXER_SPEED"));
    // Level and oven go up and down by hand; the speed counts five a second.
    for (int i = 0; i < 36; ++i) {
        ASSERT_EQ(controller->command(QString("set MIXER_LEVEL=%1").arg(2.4 + 0.4 * qCos(i / 5.0))),
                  "ok");
        ASSERT_EQ(
            controller->command(QString("set OVEN_TEMPERATURE=%1").arg(184 + 60 * qSin(i / 3.0))),
            "ok");
        ASSERT_TRUE(page().waitFor(QString("%1 >= %2").arg(value).arg(150 + 8 * i)));
        if (i == 18) {
            ASSERT_EQ(controller->command("down"), "ok");
            ASSERT_TRUE(page().waitFor(
                QString("parseInt(document.querySelector(\"%1 .c-age\").textContent, 10) >= 5")
                    .arg(row("INT0:MIXER_SPEED"))));
            ASSERT_EQ(controller->command("up"), "ok");
            ASSERT_TRUE(becomes("INT0:MIXER_SPEED", "good"));
        }
    }
    page().click("#events-heading");
    page().script("window.scrollTo(0, 0); document.activeElement.blur()");
    const QString name = qEnvironmentVariable("MICRO800_SCREENSHOT");
    save(name);
    if (!qEnvironmentVariableIsSet("MICRO800_SCREENSHOT_ALL")) {
        return;
    }
    page().setColourScheme("dark");
    ASSERT_TRUE(
        page().waitFor("getComputedStyle(document.body).backgroundColor === 'rgb(20, 23, 26)'"));
    save(QString(name).replace(".png", "-dark.png"));
    page().resize(390, 1700);
    save(QString(name).replace(".png", "-dark-390.png"));
    page().setColourScheme("light");
    save(QString(name).replace(".png", "-390.png"));
    page().click(row("INT0:MIXER_SPEED") + " .c-set button");
    save(QString(name).replace(".png", "-390-dialog.png"));
}

}  // namespace
