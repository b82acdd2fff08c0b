#ifndef TESTS_BROWSER_LIVE_PAGE_H
#define TESTS_BROWSER_LIVE_PAGE_H

#include <gtest/gtest.h>

#include <QStringList>
#include <QTemporaryDir>
#include <memory>
#include <ostream>

#include "browser/browser.h"
#include "browser/child_program.h"
#include "support/simulator_process.h"

QT_BEGIN_NAMESPACE
inline std::ostream& operator<<(std::ostream& out, const QString& text) {
    return out << qPrintable(text);
}
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << qPrintable(text);
}
QT_END_NAMESPACE

/// The live page in a real browser: the simulator, `micro800 serve` with the real plugin, and one
/// Chromium for all tests of the program. Each test gets a controller, a server and a page of its
/// own. At its end the browser's console has to be empty.
class LivePage : public testing::Test {
 protected:
    static void SetUpTestSuite();
    void SetUp() override;
    void TearDown() override;

    /// Starts a simulated controller with these arguments.
    void startController(const QStringList& arguments);
    /// Starts the server on a free port and opens its page, and waits until the page is live.
    void serve(const QStringList& arguments);
    void startServer(const QStringList& arguments);
    void openPage();
    /// What the controller has in a tag, as the simulator says it: "ok 42".
    std::string controllerHas(const QString& tag);

    /// The selector of a tag's row; matches nothing when there is none.
    QString row(const QString& address);
    /// The text of a cell of a tag's row: "value", "state", "age", "address".
    QString cell(const QString& address, const QString& name);
    /// Waits until the row's state is this one ("good", "stale", "failed", "waiting", "lost").
    bool becomes(const QString& address, const QString& state, int timeoutMs = kPageWaitMs);
    /// Ticks the box that draws the tag, and waits until it is drawn.
    void drawTag(const QString& address);

    /// The browser of this program.
    static Browser& page();

    std::unique_ptr<SimulatorProcess> controller;
    std::unique_ptr<ChildProgram> server;
    QTemporaryDir files;
    QString address;
    /// Complaints of the console that the test brings about itself contain this.
    QString expectedComplaint;
};

#endif
