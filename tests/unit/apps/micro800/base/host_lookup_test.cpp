#include "apps/micro800/base/host_lookup.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

struct Named {
    const char* text;
    const char* host;
    int port;
};

TEST(ParseEndpoint, HostsAndPorts) {
    for (const Named& row :
         {Named{"192.168.1.20", "192.168.1.20", 0},
          Named{"192.168.1.20:44818", "192.168.1.20", 44818}, Named{"plc:1", "plc", 1},
          Named{"plc.line-3:65535", "plc.line-3", 65535}, Named{"fe80::1", "fe80::1", 0}}) {
        Endpoint endpoint;
        QString problem;
        EXPECT_TRUE(parseEndpoint(row.text, &endpoint, &problem)) << qPrintable(problem);
        EXPECT_EQ(endpoint.host, QString(row.host));
        EXPECT_EQ(endpoint.port, row.port);
    }
}

TEST(ParseEndpoint, WhatIsNone) {
    Endpoint endpoint;
    QString problem;
    for (const char* text : {"", ":44818", "a b", "a b:1", "pl\xc3\xa9"}) {
        EXPECT_FALSE(parseEndpoint(QString::fromUtf8(text), &endpoint, &problem)) << text;
        EXPECT_EQ(problem, QString::fromUtf8("\"%1\": not a host name or IP address")
                               .arg(QString::fromUtf8(text)));
    }
    for (const char* text : {"plc:", "plc:0", "plc:65536", "plc:99999999999", "plc:-1", "plc:+1",
                             "plc: 1", "plc:1x"}) {
        EXPECT_FALSE(parseEndpoint(text, &endpoint, &problem)) << text;
        EXPECT_EQ(problem,
                  QString("\"%1\": what is behind the colon is no port from 1 to 65535").arg(text));
    }
}

TEST(LookUpHost, TextNameAndNothing) {
    QString address;
    QString problem;
    EXPECT_TRUE(lookUpHost("192.168.1.20", &address, &problem));
    EXPECT_EQ(address, QString("192.168.1.20"));
    EXPECT_TRUE(lookUpHost("localhost", &address, &problem));
    EXPECT_EQ(address, QString("127.0.0.1"));
    const QString tooLong(70, 'a');  // for a name
    EXPECT_FALSE(lookUpHost(tooLong, &address, &problem));
    EXPECT_TRUE(problem.startsWith("host " + tooLong + " is unknown: ")) << qPrintable(problem);
    EXPECT_EQ(address, QString("127.0.0.1"));
}

}  // namespace
