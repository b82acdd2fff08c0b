#include "apps/micro800/serve/http/listen_address.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

ListenAddress parsed(const char* text) {
    ListenAddress address;
    QString problem;
    EXPECT_TRUE(parseListenAddress(text, &address, &problem)) << qPrintable(problem);
    return address;
}

TEST(ListenAddress, RefusesWhatIsNoAddress) {
    for (const char* text :
         {"", ":", ":80", "8800", "host:80", "1.2.3:80", "1.2.3.4", "1.2.3.4:", "1.2.3.4:65536",
          "1.2.3.4:-1", "::1:80", "[::1]", "[1.2.3.4]:80", "[::1:80", "1.2.3.4:8o"}) {
        ListenAddress address;
        QString problem;
        EXPECT_FALSE(parseListenAddress(text, &address, &problem)) << text;
        EXPECT_TRUE(problem.startsWith(text)) << qPrintable(problem);
    }
}

TEST(ListenAddress, KnowsWhatOnlyThisMachineReaches) {
    EXPECT_TRUE(ListenAddress().isLoopback());
    EXPECT_TRUE(parsed("127.0.0.1:0").isLoopback());
    EXPECT_TRUE(parsed("127.3.2.1:0").isLoopback());
    EXPECT_TRUE(parsed("localhost:8800").isLoopback());
    EXPECT_TRUE(parsed("[::1]:8800").isLoopback());
    EXPECT_TRUE(parsed("[0:0::1]:8800").isLoopback());
    EXPECT_FALSE(parsed("0.0.0.0:8800").isLoopback());
    EXPECT_FALSE(parsed("192.168.1.7:8800").isLoopback());
    EXPECT_FALSE(parsed("[::]:8800").isLoopback());
    EXPECT_FALSE(parsed("[fe80::1]:8800").isLoopback());
}

TEST(ListenAddress, ListensOnAFreePort) {
    QString problem;
    const int socket = listenOn(parsed("127.0.0.1:0"), &problem);
    ASSERT_GE(socket, 0) << qPrintable(problem);
    const QString end = localEndOf(socket);
    EXPECT_TRUE(end.startsWith("127.0.0.1:"));
    EXPECT_FALSE(end.endsWith(":0"));
    EXPECT_EQ(pageAddress(socket), "http://" + end + "/");

    EXPECT_EQ(listenOn(parsed(end.toLatin1().constData()), &problem), -1);
    EXPECT_EQ(problem, "cannot listen on " + end + ": Address already in use");
    close(socket);
}

}  // namespace
