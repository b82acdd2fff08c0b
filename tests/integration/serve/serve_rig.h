#ifndef TESTS_INTEGRATION_SERVE_SERVE_RIG_H
#define TESTS_INTEGRATION_SERVE_SERVE_RIG_H

#include <functional>

#include "integration/cli/cli_program.h"
#include "support/http_client.h"

/// Runs "micro800 serve" on a port of its own, on a simulated controller.
class ServeTest : public CliTest {
 protected:
    void SetUp() override;
    /// Ends the page by SIGTERM; it must end in order.
    void TearDown() override;

    /// Starts the page and takes its address from the first line that it prints.
    void serve(const QStringList& arguments);
    /// Ends it; what it came to.
    CliResult end();

    HttpAnswer get(const QByteArray& target, const QByteArray& headers = {}) const;
    /// With the token.
    HttpAnswer ask(const QByteArray& target, const QByteArray& headers = {}) const;
    HttpAnswer write(const QByteArray& address, const QByteArray& value) const;
    /// One row of /api/tags.
    QJsonObject tag(int index) const;
    /// Whether the row comes to be such.
    bool tagBecomes(int index, const std::function<bool(const QJsonObject&)>& such) const;
    bool valueBecomes(int index, const char* value) const;
    QByteArray tokenHeader() const;

    std::unique_ptr<CliProcess> page;
    int port = 0;
    QByteArray token;  ///< empty without one
};

/// The request that opens the stream of events.
QByteArray eventsRequest(int port, const QByteArray& headers = {});

#endif
