// Every status that a PCCC reply can have becomes its text.

#include "integration/client/client_rig.h"

#include <cstdlib>

#include "eip/cip/pccc_requests.h"

namespace {

struct Text {
    int code;
    const char* text;
};

// STS (DF1 Protocol and Command Set, 1770-6.5.16, chapter 8).
const Text kTexts[] = {
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
    {0xB0, "Remote node problem due to download"},
    {0xC0, "Wait ACK"},
    {0xD0, "not used"},
    {0xE0, "not used"},
    {0x09, "Unknow PCCC Error type"},
    {0x11, "Unknow PCCC Error type"},
    {0xEF, "Unknow PCCC Error type"},
    {0xF1, "Unknow PCCC Error type"},
    {0xFF, "Unknow PCCC Error type"},
};

// EXT STS after STS F0.
const Text kExtendedTexts[] = {
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
    {32, "Unknow PCCC Error type"},
    {33, "Unknow PCCC Error type"},
    {34, "Remote rack fault (passthru from a DH+ link)"},
    {35, "Timeout (passthru from a DH+ link)"},
    {36, "Unknow error (passthru from a DH+ link)"},
    {37, "Unknow PCCC Error type"},
    {255, "Unknow PCCC Error type"},
};

/// The long text of the calling thread's error.
std::string lastText() {
    return CIPGetErrMsg(cip_err_type(), cip_errno(), cip_ext_errno());
}

class PcccStatuses : public PcccWays {
 protected:
    /// The replies to come have this status.
    void answerWith(int status, int extended = 0) {
        command("fault none");
        command(QString("fault pccc-status:%1,%2").arg(status, 0, 16).arg(extended, 0, 16));
    }

    /// Expects that each service fails with the status.
    void expectStatus(int status, const char* text) {
        const CipError expected = {6, status, 0};
        const unsigned char data[] = {1, 0};
        EXPECT_FALSE(PlcRead(_ReadPLCData_Ex(&target, next(), "N7:0", 1)));
        EXPECT_EQ(expected, lastError());
        EXPECT_EQ(text, lastText());
        EXPECT_FALSE(PlcRead(_ReadPLCData_ExPlus(&target, next(), "N7:0", 1)));
        EXPECT_EQ(expected, lastError());
        EXPECT_EQ(status, WriteBytesToPLC(&target, next(), "N7:0", data, 2));
        EXPECT_EQ(expected, lastError());
        EXPECT_EQ(status, WriteMaskAndDataToPLC(&target, next(), "N7:0", 0xFFFF, 1));
        EXPECT_EQ(expected, lastError());
        EXPECT_EQ(status, _WritePLCData(&target, next(), "N7:0", PLC_TYPE_INTEGER, data, 1));
        EXPECT_EQ(expected, lastError());
        EXPECT_EQ(text, lastText());
        EXPECT_EQ("42", stored("N7:0"));
    }
};

INSTANTIATE_TEST_SUITE_P(All, PcccStatuses, testing::ValuesIn(kWays),
                         testing::PrintToStringParamName());

TEST_P(PcccStatuses, BecomeTheirTexts) {
    for (const Text& row : kTexts) {
        SCOPED_TRACE(row.code);
        answerWith(row.code);
        expectStatus(row.code, row.text);
    }
    command("fault none");
    EXPECT_TRUE(PlcRead(_ReadPLCData_Ex(&target, next(), "N7:0", 1)));
    EXPECT_EQ("Success", lastText());
}

// The services record F0 without the extended status; a caller that sends a command finds it after
// the reply's head.
TEST_P(PcccStatuses, ExtendedBecomeTheirTexts) {
    answerWith(0xF0, 4);
    expectStatus(0xF0, "not used");
    int requestSize = 0;
    unsigned char* request = _BuildPLCReadDataRequest(0x1234, "N7:0", 1, &requestSize);
    ASSERT_TRUE(request);
    for (const Text& row : kExtendedTexts) {
        SCOPED_TRACE(row.code);
        answerWith(0xF0, row.code);
        int size = 0;
        _PCCC_Reply* reply =
            target.connection ? _SendConnectedPCCCRequest(&target, request, requestSize, &size)
                              : _SendUnConnectedPCCCRequest(&target, request, requestSize, &size);
        ASSERT_TRUE(reply) << cip_err_msg();
        EXPECT_EQ(kPcccReplyHead + 1, size);
        CIPERROR(CIP_ERR_PCCC, reply->status,
                 reinterpret_cast<const unsigned char*>(reply)[kPcccReplyHead]);
        EXPECT_EQ((CipError{6, 0xF0, row.code}), lastError());
        EXPECT_EQ(row.text, lastText());
        char shortText[64];
        snprintf(shortText, sizeof shortText, "PCCC error: F0H, %02XH", row.code);
        EXPECT_STREQ(shortText, cip_err_msg());
        free(reply);
    }
    free(request);
}

}  // namespace
