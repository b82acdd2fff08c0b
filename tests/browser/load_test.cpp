// Five hundred rows that all change with every poll.

#include <QElapsedTimer>

#include "browser/live_page.h"

namespace {

const int kRows = 500;
const int kWatchedUpdates = 20;

class PageLoad : public LivePage {
 protected:
    /// What the browser has counted of its own work: seconds, bytes.
    double metric(const QString& name) {
        for (const QJsonValue value :
             page().devTools("Performance.getMetrics")["metrics"].toArray()) {
            if (value.toObject()["name"].toString() == name) {
                return value.toObject()["value"].toDouble();
            }
        }
        return -1;
    }

    double heapAfterCleaning() {
        page().devTools("HeapProfiler.collectGarbage");
        return page().devTools("Runtime.getHeapUsage")["usedSize"].toDouble();
    }

    double counted(const char* what) {
        return page().script(QString("return window.%1").arg(what)).toDouble();
    }

    /// Waits for so many more updates of the stream.
    void watchUpdates(int updates) {
        const int target = int(counted("updates")) + updates;
        ASSERT_TRUE(page().waitFor(QString("window.updates >= %1").arg(target)));
    }

    void SetUp() override {
        LivePage::SetUp();
        QStringList tags = {"--ramp", "100"};
        QStringList addresses;
        for (int i = 0; i < kRows; ++i) {
            const QString name = QString("LINE%1_T%2").arg(i / 50).arg(i);
            tags << "--tag" << name + ":DINT=1";
            addresses << "DINT0:" + name;
        }
        startController(tags);
        serve(addresses);
        ASSERT_TRUE(page().waitFor(
            "document.getElementById('count').textContent === '500 tags: 500 good'"));
        page().devTools("Performance.enable");
        page().script(
            "window.framesSeen = 0; window.updates = 0; window.changes = 0;"
            "(function count() { ++window.framesSeen; requestAnimationFrame(count); })();"
            "const source = new EventSource('/api/events');"
            "source.addEventListener('values', (event) => {"
            "  ++window.updates;"
            "  window.changes += JSON.parse(event.data).tags.length;"
            "});");
        ASSERT_TRUE(page().waitFor("window.updates > 2"));
    }
};

TEST_F(PageLoad, FiveHundredRowsStaySmooth) {
    drawTag("DINT0:LINE0_T0");
    drawTag("DINT0:LINE0_T1");
    const double script = metric("ScriptDuration");
    const double layout = metric("LayoutDuration");
    const double frames = counted("framesSeen");
    const double changes = counted("changes");
    QElapsedTimer clock;
    clock.start();
    watchUpdates(kWatchedUpdates);
    const double seconds = clock.elapsed() / 1000.0;
    const double drawn = counted("framesSeen") - frames;
    const double perFrame = 1000 * (metric("ScriptDuration") - script) / drawn;
    const double perUpdate = 1000 * (metric("ScriptDuration") - script) / kWatchedUpdates;
    printf(
        "500 rows: %.1f updates a second with %.0f rows each, %.1f frames a second; scripting %.2f "
        "ms a frame, "
        "%.2f ms an update; layout %.2f ms an update\n",
        kWatchedUpdates / seconds, (counted("changes") - changes) / kWatchedUpdates,
        drawn / seconds, perFrame, perUpdate,
        1000 * (metric("LayoutDuration") - layout) / kWatchedUpdates);
    // Some fifty times what it takes on an idle machine.
    EXPECT_LT(perFrame, 16);
}

TEST_F(PageLoad, APageInTheBackgroundDoesNotGrow) {
    page().script(
        "Object.defineProperty(document, 'hidden', {get: () => true, configurable: true});"
        "window.requestAnimationFrame = () => 1;");
    watchUpdates(kWatchedUpdates);
    const double before = heapAfterCleaning();
    watchUpdates(kWatchedUpdates);
    const double grown = heapAfterCleaning() - before;
    printf("in the background: %.0f kB more after %d updates of 500 rows\n", grown / 1000,
           kWatchedUpdates);
    // Each update is some 50 kB of text; a page that kept them would have grown by megabytes.
    EXPECT_LT(grown, 500000);
}

}  // namespace
