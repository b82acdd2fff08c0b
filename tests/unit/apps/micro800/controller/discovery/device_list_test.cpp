#include "apps/micro800/controller/discovery/device_list.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <cstring>

#include "unit/apps/micro800/qt_printers.h"

namespace {

CipIdentity identityOf(const char* name, uint32_t serial, uint16_t port = 44818) {
    CipIdentity identity = {};
    identity.vendorId = 1;
    identity.deviceType = 14;
    identity.productCode = 186;
    identity.majorRevision = 12;
    identity.minorRevision = 11;
    identity.serialNumber = serial;
    identity.port = port;
    identity.state = 3;
    std::strcpy(identity.productName, name);
    return identity;
}

TEST(DeviceList, ADeviceIsListedOnce) {
    DeviceList list;
    list.add("10.0.0.1", identityOf("A", 7));
    list.add("10.0.0.1", identityOf("A", 7));
    list.add("10.0.1.1", identityOf("A", 7));
    list.add("10.0.0.2", identityOf("A", 8));
    ASSERT_EQ(list.devices().size(), 2);
    EXPECT_EQ(list.devices().at(0).endpoints, QStringList({"10.0.0.1:44818", "10.0.1.1:44818"}));
    EXPECT_EQ(list.devices().at(1).endpoints, QStringList({"10.0.0.2:44818"}));
}

TEST(DeviceList, WithoutASerialNumberTheAddressTells) {
    DeviceList list;
    list.add("10.0.0.1", identityOf("A", 0));
    list.add("10.0.0.1", identityOf("A", 0));
    list.add("10.0.0.2", identityOf("A", 0));
    EXPECT_EQ(list.devices().size(), 2);
}

TEST(DeviceList, Table) {
    DeviceList list;
    list.add("10.0.0.1", identityOf("2080-LC50", 0x6080C0DE));
    CipIdentity other = identityOf("A\x1b[2J", 1, 5);
    other.vendorId = 999;
    other.state = 0;
    list.add("192.168.100.20", other);
    EXPECT_EQ(
        deviceTable(list.devices()).join('\n'),
        QString("ADDRESS           PRODUCT      REVISION  SERIAL      STATE        VENDOR\n"
                "10.0.0.1:44818    \"2080-LC50\"  12.11     0x6080C0DE  operational  Rockwell "
                "Automation/Allen-Bradley\n"
                "192.168.100.20:5  \"A\\x1b[2J\"   12.11     0x00000001  nonexistent  999"));
}

TEST(DeviceList, Json) {
    DeviceList list;
    list.add("10.0.0.1", identityOf("2080-LC50", 7));
    const QJsonObject object = deviceJson(list.devices().first());
    EXPECT_EQ(object.value("addresses").toArray(), QJsonArray({"10.0.0.1:44818"}));
    EXPECT_EQ(object.value("product_name").toString(), QString("2080-LC50"));
    EXPECT_EQ(object.value("serial_number").toString(), QString("0x00000007"));
}

}  // namespace
