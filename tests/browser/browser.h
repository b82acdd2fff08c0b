#ifndef TESTS_BROWSER_BROWSER_H
#define TESTS_BROWSER_BROWSER_H

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include "browser/child_program.h"

/// How long a test waits for what a page has to show, on a machine that is busy with other tests.
const int kPageWaitMs = 30000;

/// A headless Chromium with a profile of its own, driven over the WebDriver protocol
/// (https://www.w3.org/TR/webdriver2/). Needs chromedriver and chromium; no event loop. What goes
/// wrong is in problem(), and every later call does nothing.
class Browser {
 public:
    ~Browser();

    /// Starts both programs. False with the reason in problem().
    bool start();
    QString problem() const { return trouble; }

    void open(const QString& url);
    /// The inside of the window, in CSS pixels.
    void resize(int width, int height);
    /// "dark" or "light", as the user's system would say it.
    void setColourScheme(const QString& scheme);

    /// Runs the body of a function; its `return` is the result. `arguments` is an array there.
    QJsonValue script(const QString& body, const QJsonArray& arguments = QJsonArray());
    /// Waits until the expression is true; false when it is not in time.
    bool waitFor(const QString& expression, int timeoutMs = kPageWaitMs);
    /// The text of the element, as the document has it.
    QString text(const QString& selector);

    /// Clicks with the mouse in the middle of the element, after it was scrolled into view.
    void click(const QString& selector);
    /// Presses and releases keys one after another: characters, or names such as "Tab", "Enter".
    void press(const QStringList& keys);
    /// Drags the mouse over the element from one share of its width to another.
    void drag(const QString& selector, double from, double to);
    void doubleClick(const QString& selector);
    /// Types a text into the element that has the focus.
    void type(const QString& text);

    /// A command of the DevTools protocol.
    QJsonObject devTools(const QString& command, const QJsonObject& parameters = QJsonObject());
    /// A picture of the window, as PNG.
    QByteArray screenshot();
    /// What the browser's console has got of errors and warnings since the last call.
    QStringList complaints();

 private:
    QJsonValue call(const char* method, const QString& path,
                    const QJsonObject& body = QJsonObject());
    QJsonObject pointAt(const QString& selector, double share);
    void dispatch(const char* device, const QJsonArray& actions);

    QTemporaryDir profile;
    ChildProgram driver;
    quint16 port = 0;
    QString session;
    QString trouble;
};

#endif
