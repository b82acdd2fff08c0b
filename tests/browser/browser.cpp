#include "browser/browser.h"

#include <QElapsedTimer>
#include <QHash>
#include <QJsonDocument>
#include <QStandardPaths>
#include <QThread>

#include "browser/http_call.h"

namespace {

const int kCallMs = 60000;
const int kLookAgainMs = 20;
const int kCleanMs = 5000;

/// Keys by name, as the code points that WebDriver has for them.
QString keyOf(const QString& name) {
    static const QHash<QString, ushort> codes = {
        {"Tab", 0xE004},        {"Enter", 0xE007},     {"Shift", 0xE008},   {"Escape", 0xE00C},
        {"Space", 0x0020},      {"End", 0xE010},       {"Home", 0xE011},    {"ArrowLeft", 0xE012},
        {"ArrowRight", 0xE014}, {"Backspace", 0xE003}, {"Control", 0xE009}, {"ArrowUp", 0xE013},
        {"ArrowDown", 0xE015},
    };
    return codes.contains(name) ? QString(QChar(codes.value(name))) : name;
}

QJsonObject keyAction(const char* type, const QString& name) {
    return {{"type", type}, {"value", keyOf(name)}};
}

QJsonObject capabilities(const QString& profile) {
    const QJsonArray flags = {
        "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--disable-quic",
        "--no-first-run", "--disable-background-networking", "--disable-component-update",
        "--disable-sync",
        // A page that was left would go on in memory.
        "--disable-features=BackForwardCache", "--force-device-scale-factor=1", "--lang=en-GB",
        "--user-data-dir=" + profile};
    const QJsonObject options = {{"args", flags},
                                 {"binary", QStandardPaths::findExecutable("chromium")}};
    const QJsonObject wanted = {{"goog:chromeOptions", options},
                                {"goog:loggingPrefs", QJsonObject{{"browser", "WARNING"}}}};
    return {{"capabilities", QJsonObject{{"alwaysMatch", wanted}}}};
}

}  // namespace

Browser::~Browser() {
    if (!session.isEmpty()) {
        trouble.clear();
        call("DELETE", QString());
    }
    driver.end();
    // Its helpers go on for a moment, and may still write there.
    QElapsedTimer clock;
    clock.start();
    while (!profile.remove() && clock.elapsed() < kCleanMs) {
        QThread::msleep(kLookAgainMs);
    }
}

bool Browser::start() {
    const QString program = QStandardPaths::findExecutable("chromedriver");
    if (program.isEmpty() || QStandardPaths::findExecutable("chromium").isEmpty()) {
        trouble = "chromium is missing: apt-get install chromium chromium-driver";
        return false;
    }
    const QByteArray ready = "started successfully on port ";
    driver.begin(program, {"--port=0"});
    const QByteArray line = driver.lineWith(ready);
    port =
        line.mid(line.indexOf(ready) + ready.size()).chopped(line.endsWith('.') ? 1 : 0).toUShort();
    if (port == 0) {
        trouble = "chromedriver did not start";
        return false;
    }
    const QJsonObject begun = call("POST", "/session", capabilities(profile.path())).toObject();
    session = begun["sessionId"].toString();
    return trouble.isEmpty();
}

QJsonValue Browser::call(const char* method, const QString& path, const QJsonObject& body) {
    if (!trouble.isEmpty()) {
        return QJsonValue();
    }
    const QString target = path.startsWith("/session") ? path : "/session/" + session + path;
    const bool hasBody = qstrcmp(method, "POST") == 0;
    const HttpAnswer answer = httpCall(
        method, port, target.toUtf8(),
        hasBody ? QJsonDocument(body).toJson(QJsonDocument::Compact) : QByteArray(), kCallMs);
    const QJsonValue value = QJsonDocument::fromJson(answer.body).object()["value"];
    if (answer.status != 200) {
        trouble = QString("%1 %2: %3 %4")
                      .arg(method, path)
                      .arg(answer.status)
                      .arg(value.toObject()["message"].toString().section('\n', 0, 0));
        return QJsonValue();
    }
    return value;
}

void Browser::open(const QString& url) {
    call("POST", "/url", {{"url", url}});
}

void Browser::resize(int width, int height) {
    devTools("Emulation.setDeviceMetricsOverride",
             {{"width", width}, {"height", height}, {"deviceScaleFactor", 1}, {"mobile", false}});
}

void Browser::setColourScheme(const QString& scheme) {
    const QJsonObject feature = {{"name", "prefers-color-scheme"}, {"value", scheme}};
    devTools("Emulation.setEmulatedMedia", {{"features", QJsonArray{feature}}});
}

QJsonValue Browser::script(const QString& body, const QJsonArray& arguments) {
    return call("POST", "/execute/sync", {{"script", body}, {"args", arguments}});
}

bool Browser::waitFor(const QString& expression, int timeoutMs) {
    QElapsedTimer clock;
    clock.start();
    while (!script("return Boolean(" + expression + ");").toBool()) {
        if (clock.elapsed() > timeoutMs || !trouble.isEmpty()) {
            return false;
        }
        QThread::msleep(kLookAgainMs);
    }
    return true;
}

QString Browser::text(const QString& selector) {
    return script(
               "const one = document.querySelector(arguments[0]); return one ? one.textContent : "
               "null;",
               {selector})
        .toString();
}

void Browser::click(const QString& selector) {
    const QJsonObject found =
        call("POST", "/element", {{"using", "css selector"}, {"value", selector}}).toObject();
    if (!found.isEmpty()) {
        call("POST", "/element/" + found.begin().value().toString() + "/click");
    }
}

void Browser::dispatch(const char* device, const QJsonArray& actions) {
    const QJsonObject source = {{"type", device}, {"id", device}, {"actions", actions}};
    call("POST", "/actions", {{"actions", QJsonArray{source}}});
}

void Browser::press(const QStringList& keys) {
    QJsonArray actions;
    for (const QString& key : keys) {
        const QStringList together = key.size() > 1 ? key.split('+') : QStringList{key};
        for (const QString& one : together) {
            actions.append(keyAction("keyDown", one));
        }
        for (const QString& one : together) {
            actions.append(keyAction("keyUp", one));
        }
    }
    dispatch("key", actions);
}

void Browser::type(const QString& text) {
    press(text.split(QString(), Qt::SkipEmptyParts));
}

QJsonObject Browser::devTools(const QString& command, const QJsonObject& parameters) {
    return call("POST", "/goog/cdp/execute", {{"cmd", command}, {"params", parameters}}).toObject();
}

QByteArray Browser::screenshot() {
    return QByteArray::fromBase64(call("GET", "/screenshot").toString().toLatin1());
}

QStringList Browser::complaints() {
    QStringList texts;
    for (const QJsonValue entry : call("POST", "/se/log", {{"type", "browser"}}).toArray()) {
        texts << entry.toObject()["message"].toString();
    }
    return texts;
}

QJsonObject Browser::pointAt(const QString& selector, double share) {
    const QJsonArray place =
        script(
            "const box = document.querySelector(arguments[0]).getBoundingClientRect();"
            "return [Math.round(box.left + arguments[1] * box.width),"
            "        Math.round(box.top + box.height / 2)]",
            {selector, share})
            .toArray();
    return {{"type", "pointerMove"}, {"x", place.at(0)}, {"y", place.at(1)}, {"duration", 50}};
}

void Browser::drag(const QString& selector, double from, double to) {
    const QJsonObject down = {{"type", "pointerDown"}, {"button", 0}};
    const QJsonObject up = {{"type", "pointerUp"}, {"button", 0}};
    dispatch("pointer", {pointAt(selector, from), down, pointAt(selector, to), up});
}

void Browser::doubleClick(const QString& selector) {
    const QJsonObject down = {{"type", "pointerDown"}, {"button", 0}};
    const QJsonObject up = {{"type", "pointerUp"}, {"button", 0}};
    dispatch("pointer", {pointAt(selector, 0.5), down, up, down, up});
}
