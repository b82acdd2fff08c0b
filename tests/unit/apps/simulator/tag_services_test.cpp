#include "apps/simulator/tag_services.h"

#include <gtest/gtest.h>

#include "apps/simulator/tag_text.h"
#include "unit/apps/simulator/hex.h"

namespace {

using sim::Bytes;
using sim::CipStatus;

/// A controller's tags and what it answers to the services.
class TagServices : public testing::Test {
 protected:
    TagServices() {
        for (const char* tag :
             {"FLAG:BOOL=1", "TRIM:SINT=-5", "LEVEL:INT=-1234", "COUNTER:DINT=42", "MODE:USINT=200",
              "SPEED:UINT=50000", "TOTAL:UDINT=4000000000", "TEMP:REAL=21.5", "VOLUME:LREAL=-2",
              "WORD:DWORD=0xDEADBEEF", "NAME:STRING=Mixer 3", "EMPTY:STRING",
              "LEVELS:INT[0..4]=100,200,300,400,500", "GRID:DINT[2..3,0..2]=1,2,3,4,5,6",
              "FLAGS:BOOL[3]=1,0,1", "NAMES:STRING[2]=ab,cde"}) {
            QString error;
            EXPECT_TRUE(addTagFromText(tag, m_table, &error)) << error.toStdString();
        }
    }

    /// "00 TYPE DATA", or the status alone.
    std::string read(const std::string& path, const std::string& data = "0100") {
        sim::RequestPath parsed;
        EXPECT_TRUE(parseRequestPath(hex(path), parsed)) << path;
        Bytes reply;
        m_access = sim::TagAccess();
        const CipStatus status = readTag(m_table, m_behaviour, parsed, hex(data), reply, m_access);
        return text(status, reply);
    }

    std::string write(const std::string& path, const std::string& data) {
        sim::RequestPath parsed;
        EXPECT_TRUE(parseRequestPath(hex(path), parsed)) << path;
        m_access = sim::TagAccess();
        return text(writeTag(m_table, m_behaviour, parsed, hex(data), m_access), Bytes());
    }

    std::string get(const char* name) {
        QString values;
        QString error;
        EXPECT_TRUE(tagText(name, m_table, &values, &error)) << error.toStdString();
        return values.toStdString();
    }

    static std::string text(const CipStatus& status, const Bytes& reply) {
        char text[16];
        std::snprintf(text, sizeof text, status.hasExtended ? "%02X/%04X" : "%02X", status.general,
                      status.extended);
        return reply.empty() ? text : text + (" " + hexOf(reply));
    }

    sim::TagTable m_table;
    sim::TagBehaviour m_behaviour;
    sim::TagAccess m_access;
};

const char kFlag[] = "91 04 464C4147";
const char kCounter[] = "91 07 434F554E54455200";
const char kName[] = "91 04 4E414D45";
const char kLevels[] = "91 06 4C4556454C53";
const char kGrid[] = "91 04 47524944";
const char kFlags[] = "91 05 464C41475300";
const char kNames[] = "91 05 4E414D455300";
const char kLevel[] = "91 05 4C4556454C00";

TEST_F(TagServices, ReadScalarsOfEveryType) {
    EXPECT_EQ("00 c10001", read(kFlag));
    EXPECT_EQ("00 c200fb", read("91 04 5452494D"));
    EXPECT_EQ("00 c3002efb", read(kLevel));
    EXPECT_EQ("00 c4002a000000", read(kCounter));
    EXPECT_EQ("00 c600c8", read("91 04 4D4F4445"));
    EXPECT_EQ("00 c70050c3", read("91 05 535045454400"));
    EXPECT_EQ("00 c80000286bee", read("91 05 544F54414C00"));
    EXPECT_EQ("00 ca000000ac41", read("91 04 54454D50"));
    EXPECT_EQ("00 cb0000000000000000c0", read("91 06 564F4C554D45"));
    EXPECT_EQ("00 d300efbeadde", read("91 04 574F5244"));
    EXPECT_EQ("00 da00074d697865722033", read(kName));
    EXPECT_EQ("00 da0000", read("91 05 454D50545900"));
}

TEST_F(TagServices, ReadNamesInAnyCase) {
    EXPECT_EQ("00 c4002a000000", read("91 07 636F756E74457200"));
}

TEST_F(TagServices, ReadArrays) {
    EXPECT_EQ("00 c3006400c8002c019001f401", read(kLevels, "0500"));
    EXPECT_EQ("00 c3006400", read(kLevels));
    EXPECT_EQ("00 c3002c01", read(std::string(kLevels) + "2802"));
    EXPECT_EQ("00 c3002c019001f401", read(std::string(kLevels) + "29000200", "0300"));
    EXPECT_EQ("00 c40003000000", read(std::string(kGrid) + "2802 2802"));
    EXPECT_EQ("00 c4000300000004000000", read(std::string(kGrid) + "2802 2802", "0200"));
    EXPECT_EQ("00 c40006000000", read(std::string(kGrid) + "2A0003000000 2802"));
    EXPECT_EQ("00 c100010001", read(kFlags, "0300"));
    EXPECT_EQ("00 da0003636465", read(std::string(kNames) + "2801"));
    EXPECT_EQ("00 da0002616203636465", read(kNames, "0200"));
}

TEST_F(TagServices, RefuseUnknownTags) {
    EXPECT_EQ("05", read("91 02 4E4F"));
    EXPECT_EQ("05", write("91 02 4E4F", "C400 0100 01000000"));
    EXPECT_EQ("05", read(std::string(kCounter) + "9101 4200"));
    m_behaviour.unknownTagStatus = 0x04;
    EXPECT_EQ("04", read("91 02 4E4F"));
}

TEST_F(TagServices, RefuseWhatLiesPastTheEnd) {
    EXPECT_EQ("FF/2105", read(std::string(kLevels) + "2805"));
    EXPECT_EQ("FF/2105", read(kLevels, "0600"));
    EXPECT_EQ("FF/2105", read(std::string(kLevels) + "2804", "0200"));
    EXPECT_EQ("FF/2105", read(std::string(kGrid) + "2801 2800"));
    EXPECT_EQ("FF/2105", read(std::string(kGrid) + "2803 2803"));
    EXPECT_EQ("FF/2105", read(kCounter, "0200"));
    EXPECT_EQ("FF/2105", read(std::string(kLevels) + "2A00FFFFFFFF", "FFFF"));
    EXPECT_EQ("FF/2105", write(std::string(kLevels) + "2804", "C300 0200 01000200"));
    EXPECT_EQ("100,200,300,400,500", get("LEVELS"));
}

TEST_F(TagServices, RefuseTheWrongNumberOfIndices) {
    EXPECT_EQ("04", read(std::string(kGrid) + "2802"));
    EXPECT_EQ("04", read(std::string(kGrid) + "2802 2800 2800 2800"));
    EXPECT_EQ("04", read(std::string(kCounter) + "2800"));
}

TEST_F(TagServices, ReadChecksItsLength) {
    EXPECT_EQ("13", read(kCounter, ""));
    EXPECT_EQ("13", read(kCounter, "01"));
    EXPECT_EQ("15", read(kCounter, "010000"));
    EXPECT_EQ("20", read(kCounter, "0000"));
}

TEST_F(TagServices, WriteStoresValues) {
    EXPECT_EQ("00", write(kCounter, "C400 0100 FFFFFFFF"));
    EXPECT_EQ("-1", get("COUNTER"));
    EXPECT_EQ("00", write(std::string(kLevels) + "2801", "C300 0200 0100 0200"));
    EXPECT_EQ("100,1,2,400,500", get("LEVELS"));
    EXPECT_EQ("00", write(std::string(kGrid) + "2803 2801", "C400 0200 07000000 08000000"));
    EXPECT_EQ("1,2,3,4,7,8", get("GRID"));
    EXPECT_EQ("00", write(kFlag, "C100 0100 00"));
    EXPECT_EQ("0", get("FLAG"));
    EXPECT_EQ("00", write(kFlag, "C100 0100 FF"));
    EXPECT_EQ("1", get("FLAG"));
    EXPECT_EQ("00 c10001", read(kFlag));
}

TEST_F(TagServices, WriteStoresStrings) {
    EXPECT_EQ("00", write(kName, "DA00 0100 02 4F4B"));
    EXPECT_EQ("\"OK\"", get("NAME"));
    EXPECT_EQ("00", write(kName, "DA00 0100 00"));
    EXPECT_EQ("\"\"", get("NAME"));
    EXPECT_EQ("00", write(kNames, "DA00 0200 01 78 02 797A"));
    EXPECT_EQ("\"x\",\"yz\"", get("NAMES"));
}

TEST_F(TagServices, WriteChecksTheType) {
    EXPECT_EQ("FF/2107", write(kCounter, "C300 0100 0100"));
    EXPECT_EQ("FF/2107", write(kCounter, "C401 0100 01000000"));
    EXPECT_EQ("FF/2107", write(kName, "D000 0100 02 4F4B"));
    EXPECT_EQ("42", get("COUNTER"));
}

TEST_F(TagServices, WriteChecksCountAndLength) {
    for (const char* data : {"", "C4", "C400", "C400 01", "C400 0100", "C400 0100 010000",
                             "C400 0100 0100000000", "C400 0100 0100000000000000"}) {
        EXPECT_EQ("13", write(kCounter, data)) << data;
    }
    EXPECT_EQ("20", write(kCounter, "C400 0000"));
    EXPECT_EQ("FF/2105", write(kCounter, "C400 0200 0100000002000000"));
    EXPECT_EQ("42", get("COUNTER"));
    for (const char* data :
         {"DA00 0100", "DA00 0100 02 4F", "DA00 0100 02 4F4B21", "DA00 0100 FF 41"}) {
        EXPECT_EQ("13", write(kName, data)) << data;
    }
    EXPECT_EQ("13", write(kNames, "DA00 0200 01 78 02 79"));
    EXPECT_EQ("\"Mixer 3\"", get("NAME"));
    EXPECT_EQ("\"ab\",\"cde\"", get("NAMES"));
}

TEST_F(TagServices, TrueReadsAsTheSettingsSay) {
    m_behaviour.boolTrue = 0xFF;
    EXPECT_EQ("00 c100ff", read(kFlag));
    EXPECT_EQ("00 c100ff00ff", read(kFlags, "0300"));
}

TEST_F(TagServices, TellWhatWasAskedFor) {
    read(kLevels, "0200");
    EXPECT_EQ(0xC3, m_access.type);
    EXPECT_EQ(2, m_access.count);
    read("91 02 4E4F", "02");
    EXPECT_EQ(-1, m_access.type);
    EXPECT_EQ(-1, m_access.count);
    write(kCounter, "C300 0700");
    EXPECT_EQ(0xC3, m_access.type);
    EXPECT_EQ(7, m_access.count);
    write(kCounter, "C300");
    EXPECT_EQ(-1, m_access.count);
}

TEST_F(TagServices, AnswerOracleValues) {
    m_behaviour.oracle = true;
    // COUNTER is the fourth element of the table.
    EXPECT_EQ("00 c40001003000", read(kCounter));
    EXPECT_EQ("00 c40002003000", read(kCounter));
    EXPECT_EQ("00", write(kCounter, "C400 0100 00103000"));
    EXPECT_EQ("00 c40000103000", read(kCounter));
    EXPECT_EQ("00 c40001103000", read(kCounter));
    EXPECT_EQ("00 c10001", read(kFlag));
    // LEVELS begins with the thirteenth: 0C, 0D, ...
    EXPECT_EQ("00 c300010c010d", read(kLevels, "0200"));
    EXPECT_EQ("00 c300020d010e", read(std::string(kLevels) + "2801", "0200"));
}

}  // namespace
