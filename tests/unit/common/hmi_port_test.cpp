#include "common/hmi_port.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(DevStrToHmiPort, EthernetInAnyCase) {
    for (const char* name : {"ETHERNET", "Ethernet1", "ethernet", "eThErNeT99x", "ETHERNET 2"}) {
        EXPECT_EQ(2000, DevStrToHmiPort(QLatin1String(name))) << name;
    }
}

TEST(DevStrToHmiPort, DigitsAtTheEnd) {
    const struct {
        const char* name;
        int port;
    } rows[] = {
        {"COM1", 1002},     {"COM2", 1003},        {"COM10", 1011}, {"TTY05", 1006},
        {"TTY0000", 1001},  {"A1B23", 1024},       {"9A1", 1002},   {"-7", 1008},
        {"ETHERNE1", 1002}, {"X ETHERNET3", 1004}, {" 4", 1005},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.port, DevStrToHmiPort(QLatin1String(row.name))) << row.name;
    }
}

TEST(DevStrToHmiPort, LargeNumbersSaturate) {
    const int largest = std::numeric_limits<int>::max();
    EXPECT_EQ(largest - 1, DevStrToHmiPort("COM2147482645"));
    EXPECT_EQ(largest, DevStrToHmiPort("COM2147482646"));
    EXPECT_EQ(largest, DevStrToHmiPort("COM2147482647"));
    EXPECT_EQ(largest, DevStrToHmiPort("COM4294967297"));
    EXPECT_EQ(largest, DevStrToHmiPort("COM18446744073709551617"));
    EXPECT_EQ(largest, DevStrToHmiPort("COM" + QString(100000, '9')));
    EXPECT_EQ(1002, DevStrToHmiPort("COM" + QString(100000, '0') + "1"));
}

TEST(DevStrToHmiPortDeathTest, AMalformedNameStopsTheProcess) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    // Arabic-Indic digits are no '0' to '9'.
    const QString foreignDigits = QString::fromUtf8("COM\xD9\xA1");
    for (const QString& name : {QString("COM"), QString(), QString(""), QString("123"),
                                QString("COM1 "), foreignDigits}) {
        EXPECT_EXIT(DevStrToHmiPort(name), ::testing::KilledBySignal(SIGABRT),
                    "tools:1389: int DevStrToHmiPort\\(const QString&\\): "
                    "Assertion `i >= 0 && \\(i\\+1\\) < dev_str.size\\(\\)' failed\\.")
            << name.toStdString();
    }
}

}  // namespace
