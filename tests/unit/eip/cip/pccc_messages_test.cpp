#include <gtest/gtest.h>

#include "eip/cip/cip_messages.h"
#include "unit/eip/cip/text_rows.h"

namespace {

const Row kRows[] = {
    {0x00, "Success"},
    {0x01, "DST node is out of buffer space"},
    {0x02, "Cannot guarantee delivery:link layer"},
    {0x03, "Duplicate token holder detected"},
    {0x04, "Local port is disconnected"},
    {0x05, "Application layer timed out waiting for a response"},
    {0x06, "Duplicate node detected"},
    {0x07, "Station is offline"},
    {0x08, "Hardware fault"},
    {0x10, "Illegal command or format"},
    {0x20, "Host has a problem and will not communicate"},
    {0x30, "Remote node host is missing,disconnected,or shut down"},
    {0x40, "Host could not complete function due to hardware fault"},
    {0x50, "Adressing problem or memory protect rungs"},
    {0x60, "Function not allowed due to command protection selection"},
    {0x70, "Processor is in program mode"},
    {0x80, "Compatibility mode file missing or communicate zone problem"},
    {0x90, "Remote node cannot buffer command"},
    {0xA0, "Wait ACK"},
    {0xC0, "Wait ACK"},
    {0xB0, "Remote node problem due to download"},
    {0xD0, "not used"},
    {0xE0, "not used"},
};

const Row kExtended[] = {
    {0, "not used"},
    {1, "A field has an illegal value"},
    {2, "Less levels specified in adress than minimum for any adress"},
    {3, "More levels specified in adress than system supports"},
    {4, "Symbol not found"},
    {5, "Symbol is of improper format"},
    {6, "Adress doesn't point to something usable"},
    {7, "File is wrong size"},
    {8, "Cannot complete request,situation has changed.."},
    {9, "Data or file is too large"},
    {10, "Transaction size plus word adress is too large"},
    {11, "Access denied,improper privilege"},
    {12, "Condition cannot be generated-resource is not available"},
    {13, "Condition already exists-resource is already available"},
    {14, "Command cannot be executed"},
    {15, "Histogram overflow"},
    {16, "No access"},
    {17, "Illegal data type"},
    {18, "Invalid parameter or invalid data"},
    {19, "Adress reference exist to deleted area"},
    {20, "Command execution failure for unknow reason"},
    {21, "Data conversion error"},
    {22, "Scanner not able to communicate with 1771 rack adapter"},
    {23, "Type mismatch"},
    {24, "1771 module response was not valid"},
    {25, "Duplicate label"},
    {26, "File is open;another node owns it"},
    {27, "Another node is the program owner"},
    {28, "Reserved"},
    {29, "Reserved"},
    {30, "Data table element protection violation"},
    {31, "Temporary internal problem"},
    {34, "Remote rack fault (passthru from a DH+ link)"},
    {35, "Timeout (passthru from a DH+ link)"},
    {36, "Unknow error (passthru from a DH+ link)"},
};

TEST(PCCCMessages, EveryStatus) {
    for (int32_t code = 0; code <= 0xFF; ++code) {
        if (code == 0xF0) {
            continue;
        }
        EXPECT_EQ(expected(kRows, code, "Unknow PCCC Error type"), CIPGetPCCCErrMsg(code, 4))
            << code;
    }
}

TEST(PCCCMessages, EveryExtendedStatus) {
    for (int32_t extended = -5; extended <= 300; ++extended) {
        EXPECT_EQ(expected(kExtended, extended, "Unknow PCCC Error type"),
                  CIPGetPCCCErrMsg(0xF0, extended))
            << extended;
    }
}

TEST(PCCCMessages, OnlyEightBitsCount) {
    EXPECT_STREQ("Symbol not found", CIPGetPCCCErrMsg(0x1F0, 4));
    EXPECT_STREQ("Illegal command or format", CIPGetPCCCErrMsg(0x710, 0));
    EXPECT_STREQ("Unknow PCCC Error type", CIPGetPCCCErrMsg(-1, 0));
}

}  // namespace
