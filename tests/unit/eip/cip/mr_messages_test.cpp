#include <gtest/gtest.h>

#include "eip/cip/cip_messages.h"
#include "unit/eip/cip/text_rows.h"

namespace {

const Row kGeneral[] = {
    {0, "Success"},
    {2, "Resource unavailable"},
    {3, "Invalid parameters value"},
    {4, "Path segment error"},
    {5, "Path destination unknow"},
    {6, "Partial transfert"},
    {7, "Connection lost"},
    {8, "Service not supported"},
    {9, "Invalid attribute value"},
    {10, "Attribute list error"},
    {11, "Already in requested mode/state"},
    {12, "Object state conflict"},
    {13, "Object already exist"},
    {14, "Attribute not settable"},
    {15, "Privilege violation"},
    {16, "Device state conflict"},
    {17, "Reply data too large"},
    {18, "Fragmentation of a primitive value"},
    {19, "Not enough data"},
    {20, "Attribute not supported"},
    {21, "Too much data"},
    {22, "Object does not exist"},
    {23, "Service fragmentation sequence not in progress"},
    {24, "No stored attibute data"},
    {25, "Store operation failure"},
    {26, "Routing failure,request packet too large"},
    {27, "Routing failure,response packet too large"},
    {28, "Missing attribute list entry data"},
    {29, "Invalid attribute value list"},
    {30, "Embendded service error"},
    {31, "Vendor specific"},
    {32, "Invalid parameter"},
    {33, "Write once value or medium already written"},
    {34, "Invalid reply received"},
    {37, "Key failure in path"},
    {38, "Path size invalid"},
    {39, "Unexpected attribute in list"},
    {40, "Invalid member ID"},
    {41, "Member not settable"},
    {42, "Group 2 only server general failure"},
    {35, "unknow error code"},
    {36, "unknow error code"},
};

const Row kConnection[] = {
    {0x0100, "Connection in use or Duplicate Forward Open"},
    {0x0103, "Transport Class and Trigger combination not supported"},
    {0x0106, "Ownership conflict"},
    {0x0107, "Connection not found at target application"},
    {0x0108, "Invalid session type"},
    {0x0109, "Invalid session size"},
    {0x0110, "Device not configured"},
    {0x0111, "RPI not supported"},
    {0x0113, "Connection managercannot support any more connections"},
    {0x0114, "Vendor Id or product code in the key segment did not match the device"},
    {0x0115, "Product type in the key segment did not match the device"},
    {0x0116, "Major or minor revision information in the key segment did not match the device"},
    {0x0117, "Invalid session point"},
    {0x0118, "Invalid configuration format"},
    {0x0119, "Connection request fails since there is no controlling session currently open"},
};

TEST(MRMessages, EveryGeneralStatus) {
    for (int32_t code = 0; code <= 300; ++code) {
        if (code == 1) {
            continue;
        }
        const char* otherwise =
            code <= 207 ? "Reserved for future extension" : "Reserved Object/Class/services errors";
        EXPECT_EQ(expected(kGeneral, code, otherwise), CIPGetMRErrMsg(code, 0x0100)) << code;
    }
}

TEST(MRMessages, EveryConnectionFailure) {
    for (int32_t extended = -10; extended <= 0x400; ++extended) {
        EXPECT_EQ(expected(kConnection, extended, "Connection failure"),
                  CIPGetMRErrMsg(1, extended))
            << extended;
    }
    EXPECT_STREQ("Connection failure", CIPGetMRErrMsg(1, 0x0101));
    EXPECT_STREQ("Connection failure", CIPGetMRErrMsg(1, INT32_MIN));
}

TEST(MRMessages, CodesAreUnsigned) {
    EXPECT_STREQ("Reserved Object/Class/services errors", CIPGetMRErrMsg(-1, 0));
    EXPECT_STREQ("Reserved Object/Class/services errors", CIPGetMRErrMsg(INT32_MIN, 0));
    EXPECT_STREQ("unknow error code", CIPGetMRErrMsg(35, 0));
}

}  // namespace
