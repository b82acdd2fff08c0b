#include "browser/live_page.h"

#include <QJsonDocument>

namespace {

std::unique_ptr<Browser> theBrowser;

}  // namespace

Browser& LivePage::page() {
    return *theBrowser;
}

void LivePage::SetUpTestSuite() {
    if (theBrowser) {
        return;
    }
    theBrowser = std::make_unique<Browser>();
    // Closed while the program is still whole.
    struct Closer : testing::Environment {
        void TearDown() override { theBrowser.reset(); }
    };
    testing::AddGlobalTestEnvironment(new Closer);
    theBrowser->start();
}

void LivePage::SetUp() {
    ASSERT_EQ(page().problem(), QString());
    page().resize(1280, 800);
    page().setColourScheme("light");
}

void LivePage::TearDown() {
    for (const QString& text : page().complaints()) {
        EXPECT_TRUE(!expectedComplaint.isEmpty() && text.contains(expectedComplaint)) << text;
    }
    page().open("about:blank");
    EXPECT_EQ(page().problem(), QString());
}

void LivePage::startController(const QStringList& arguments) {
    controller = std::make_unique<SimulatorProcess>(arguments);
    controller->setLogging(false);
    ASSERT_TRUE(controller->start()) << controller->error();
}

void LivePage::startServer(const QStringList& arguments) {
    server = std::make_unique<ChildProgram>();
    const QStringList all = QStringList{"serve",
                                        "--host",
                                        "127.0.0.1",
                                        "--port",
                                        QString::number(controller->port()),
                                        "--listen",
                                        "127.0.0.1:0",
                                        "--plugin",
                                        MICRO800_PLUGIN_FILE} +
                            arguments;
    ASSERT_TRUE(server->begin(MICRO800_PROGRAM, all));
    address = QString::fromLatin1(server->lineWith("http://"));
    ASSERT_NE(address, QString());
}

void LivePage::openPage() {
    page().open(address);
    ASSERT_TRUE(page().waitFor("document.getElementById('link').dataset.state === 'good'"))
        << page().problem();
}

void LivePage::serve(const QStringList& arguments) {
    ASSERT_NO_FATAL_FAILURE(startServer(arguments));
    openPage();
}

std::string LivePage::controllerHas(const QString& tag) {
    return controller->command("get " + tag);
}

QString LivePage::row(const QString& address) {
    const QJsonValue index = page().script(
        "for (const row of document.querySelectorAll('#tag-table tr[data-index]')) {"
        "  if (row.querySelector('th').firstChild.data === arguments[0]) {"
        "    return row.dataset.index;"
        "  }"
        "}"
        "return 'none';",
        {address});
    return QString("#tag-table tr[data-index='%1']").arg(index.toString());
}

QString LivePage::cell(const QString& address, const QString& name) {
    return page().text(row(address) + " .c-" + name);
}

bool LivePage::becomes(const QString& address, const QString& state, int timeoutMs) {
    if (HasFatalFailure()) {
        return false;
    }
    return page().waitFor(QString("(document.querySelector(\"%1\") || {dataset: {}})"
                                  ".dataset.state === '%2'")
                              .arg(row(address), state),
                          timeoutMs);
}

void LivePage::drawTag(const QString& address) {
    const QString names = "[...document.querySelectorAll('#legend-rows th')]";
    page().click(row(address) + " .c-trend input");
    ASSERT_TRUE(page().waitFor(
        QString("%1.some((head) => head.textContent === '%2')").arg(names, address)));
}
