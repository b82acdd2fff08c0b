// Fifty pages at once, for SERVE_SECONDS seconds (2 without), and the end.

#include <memory>
#include <vector>

#include "integration/serve/serve_rig.h"

namespace {

const int kPages = 50;

class ServeManyPages : public ServeTest {
 protected:
    void open(int count, int receiveBytes = 0) {
        for (int i = 0; i < count; ++i) {
            clients.push_back(std::make_unique<HttpClient>(port, receiveBytes));
            ASSERT_TRUE(clients.back()->isConnected());
            clients.back()->send(eventsRequest(port, tokenHeader()));
        }
    }

    std::vector<std::unique_ptr<HttpClient>> clients;
};

TEST_F(ServeManyPages, AllOfThemGetEveryValue) {
    serve({"--allow-write", "DINT0:TICKS", "DINT0:COUNTER", "REAL0:LEVEL"});
    open(kPages);
    const int seconds = qMax(qEnvironmentVariableIntValue("SERVE_SECONDS"), 2);
    QElapsedTimer clock;
    clock.start();
    int writes = 0;
    while (clock.elapsed() < 1000 * seconds) {
        for (const auto& client : clients) {
            client->readFor(1);
        }
        if (clock.elapsed() / 1000 > writes) {
            EXPECT_EQ(write("DINT0:COUNTER", QByteArray::number(++writes)).status, 200);
            EXPECT_EQ(ask("/api/tags").status, 200);
        }
    }
    EXPECT_EQ(write("DINT0:COUNTER", "4711").status, 200);
    for (const auto& client : clients) {
        EXPECT_TRUE(client->readUntil("\"4711\"").contains("\"4711\""));
        EXPECT_FALSE(client->hasEnded());
    }
    EXPECT_TRUE(ask("/metrics").body.contains("\nmicro800_streams 50\n"));
}

TEST_F(ServeManyPages, EndsWithAllOfThemOpenAlsoThoseThatDoNotRead) {
    serve({"DINT0:TICKS"});
    open(kPages / 2);
    open(kPages / 2, 2048);
    for (const auto& client : clients) {
        EXPECT_TRUE(client->readUntil("retry:").contains("retry:"));
    }
    EXPECT_EQ(end().exitCode, 0);
    for (const auto& client : clients) {
        EXPECT_TRUE(client->readToEnd());
    }
}

}  // namespace
