#include "apps/simulator/tags/tag_services.h"

#include <gtest/gtest.h>

#include "apps/simulator/tags/tag_text.h"
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
            QString problem;
            EXPECT_TRUE(addTagFromText(tag, table, &problem)) << problem.toStdString();
        }
    }

    /// "00 TYPE DATA", or the status alone.
    std::string read(const std::string& path, const std::string& data = "0100",
                     uint8_t service = sim::kReadTag) {
        sim::RequestPath parsed;
        EXPECT_TRUE(parseRequestPath(hex(path), &parsed)) << path;
        const Bytes bytes = hex(data);
        Bytes reply;
        access = sim::TagAccess();
        const CipStatus status =
            readTag(table, behaviour, {service, parsed, bytes, room}, &reply, &access);
        return text(status, reply);
    }
    /// The same for Read Tag Fragmented: count and byte offset.
    std::string readPiece(const std::string& path, const std::string& data) {
        return read(path, data, sim::kReadTagFragmented);
    }

    std::string write(const std::string& path, const std::string& data,
                      uint8_t service = sim::kWriteTag) {
        sim::RequestPath parsed;
        EXPECT_TRUE(parseRequestPath(hex(path), &parsed)) << path;
        const Bytes bytes = hex(data);
        access = sim::TagAccess();
        return text(writeTag(table, behaviour, {service, parsed, bytes, room}, &access), Bytes());
    }
    /// The same for Write Tag Fragmented: type, count, byte offset and elements.
    std::string writePiece(const std::string& path, const std::string& data) {
        return write(path, data, sim::kWriteTagFragmented);
    }

    std::string get(const char* name) {
        QString values;
        QString problem;
        EXPECT_TRUE(tagText(name, table, &values, &problem)) << problem.toStdString();
        return values.toStdString();
    }

    static std::string text(const CipStatus& status, const Bytes& reply) {
        char text[16];
        std::snprintf(text, sizeof text, status.hasExtended ? "%02X/%04X" : "%02X", status.general,
                      status.extended);
        return reply.empty() ? text : text + (" " + hexOf(reply));
    }

    sim::TagTable table;
    sim::TagBehaviour behaviour;
    sim::TagAccess access;
    size_t room = 498;  ///< of a connection of 504 bytes
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
    behaviour.unknownTagStatus = 0x04;
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
    for (const char* data : {"", "C4", "C400", "C400 01", "C400 0100", "C400 0100 010000"}) {
        EXPECT_EQ("13", write(kCounter, data)) << data;
    }
    for (const char* data : {"C400 0100 0100000000", "C400 0100 0100000000000000"}) {
        EXPECT_EQ("15", write(kCounter, data)) << data;
    }
    EXPECT_EQ("20", write(kCounter, "C400 0000"));
    EXPECT_EQ("FF/2105", write(kCounter, "C400 0200 0100000002000000"));
    EXPECT_EQ("42", get("COUNTER"));
    for (const char* data : {"DA00 0100", "DA00 0100 02 4F", "DA00 0100 FF 41"}) {
        EXPECT_EQ("13", write(kName, data)) << data;
    }
    EXPECT_EQ("15", write(kName, "DA00 0100 02 4F4B21"));
    EXPECT_EQ("13", write(kNames, "DA00 0200 01 78 02 79"));
    EXPECT_EQ("\"Mixer 3\"", get("NAME"));
    EXPECT_EQ("\"ab\",\"cde\"", get("NAMES"));
}

TEST_F(TagServices, TrueReadsAsTheSettingsSay) {
    behaviour.boolTrue = 0xFF;
    EXPECT_EQ("00 c100ff", read(kFlag));
    EXPECT_EQ("00 c100ff00ff", read(kFlags, "0300"));
}

TEST_F(TagServices, TellWhatWasAskedFor) {
    read(kLevels, "0200");
    EXPECT_EQ(0xC3, access.type);
    EXPECT_EQ(2, access.count);
    read("91 02 4E4F", "02");
    EXPECT_EQ(-1, access.type);
    EXPECT_EQ(-1, access.count);
    write(kCounter, "C300 0700");
    EXPECT_EQ(0xC3, access.type);
    EXPECT_EQ(7, access.count);
    write(kCounter, "C300");
    EXPECT_EQ(-1, access.count);
}

TEST_F(TagServices, AnswerOracleValues) {
    behaviour.oracle = true;
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

// --- in pieces

TEST_F(TagServices, ReadAsManyWholeElementsAsThereIsRoomFor) {
    room = 2 + 5;
    EXPECT_EQ("06 c3006400c800", read(kLevels, "0500"));
    EXPECT_EQ("06 c40001000000", read(kGrid, "0600"));
    EXPECT_EQ("00 c3006400c800", read(kLevels, "0200"));
    room = 2 + 10;
    EXPECT_EQ("00 c3006400c8002c019001f401", read(kLevels, "0500"));
    room = 2 + 4;
    EXPECT_EQ("06 da00026162", read(kNames, "0200"));
    room = 2;
    EXPECT_EQ("06 c300", read(kLevels, "0500"));
    room = 1;
    EXPECT_EQ("11", read(kLevels, "0500"));
}

TEST_F(TagServices, ReadPieces) {
    room = 2 + 5;
    EXPECT_EQ("06 c3006400c800", readPiece(kLevels, "0500 00000000"));
    EXPECT_EQ("06 c3002c019001", readPiece(kLevels, "0500 04000000"));
    EXPECT_EQ("00 c300f401", readPiece(kLevels, "0500 08000000"));
    EXPECT_EQ("00 c3009001", readPiece(std::string(kLevels) + "2801", "0300 04000000"));
    room = 498;
    EXPECT_EQ("00 c3002c019001f401", readPiece(kLevels, "0500 04000000"));
    EXPECT_EQ("00 c4002a000000", readPiece(kCounter, "0100 00000000"));
    EXPECT_EQ(4, (readPiece(kLevels, "0500 04000000"), access.offset));
    EXPECT_EQ(5, access.count);
}

TEST_F(TagServices, ReadPiecesThatBeginInsideAnElement) {
    EXPECT_EQ("00 c30001f401", readPiece(kLevels, "0500 07000000"));
    room = 2 + 2;
    EXPECT_EQ("06 c30001", readPiece(kLevels, "0500 07000000"));
    room = 498;
    EXPECT_EQ("00 da006203636465", readPiece(kNames, "0200 02000000"));
}

TEST_F(TagServices, ReadPiecesOfStrings) {
    EXPECT_EQ("00 da00074d697865722033", readPiece(kName, "0100 00000000"));
    room = 2 + 4;
    EXPECT_EQ("06 da00026162", readPiece(kNames, "0200 00000000"));
    EXPECT_EQ("00 da0003636465", readPiece(kNames, "0200 03000000"));
}

TEST_F(TagServices, RefuseToReadPieces) {
    EXPECT_EQ("FF/2105", readPiece(kLevels, "0500 0A000000"));
    EXPECT_EQ("FF/2105", readPiece(kLevels, "0500 FFFFFFFF"));
    EXPECT_EQ("FF/2105", readPiece(kNames, "0200 07000000"));
    EXPECT_EQ("FF/2105", readPiece(kLevels, "0600 00000000"));
    EXPECT_EQ("20", readPiece(kLevels, "0000 00000000"));
    EXPECT_EQ("05", readPiece("91 02 4E4F", "0100 00000000"));
    EXPECT_EQ("15", readPiece(kLevels, "0500 00000000 00"));
    for (const char* data : {"", "05", "0500", "0500 00", "0500 000000"}) {
        EXPECT_EQ("13", readPiece(kLevels, data)) << data;
        EXPECT_EQ(-1, access.offset) << data;
    }
}

TEST_F(TagServices, WritePieces) {
    EXPECT_EQ("00", writePiece(kLevels, "C300 0500 00000000 0100 0200"));
    EXPECT_EQ("1,2,300,400,500", get("LEVELS"));
    EXPECT_EQ("00", writePiece(kLevels, "C300 0500 04000000 0300 0400 0500"));
    EXPECT_EQ("1,2,3,4,5", get("LEVELS"));
    EXPECT_EQ("00", writePiece(std::string(kLevels) + "2801", "C300 0300 04000000 0900"));
    EXPECT_EQ("1,2,3,9,5", get("LEVELS"));
    EXPECT_EQ("00", writePiece(kFlags, "C100 0300 01000000 FF"));
    EXPECT_EQ("1,1,1", get("FLAGS"));
    EXPECT_EQ("00", writePiece(kNames, "DA00 0200 00000000 01 78 02 797A"));
    EXPECT_EQ("\"x\",\"yz\"", get("NAMES"));
    EXPECT_EQ(0, access.offset);
    EXPECT_EQ(2, access.count);
}

TEST_F(TagServices, RefuseToWritePieces) {
    const struct {
        const char* why;
        const char* data;
        const char* status;
    } rows[] = {
        {"one element too many", "C300 0500 06000000 0100 0200 0300", "15"},
        {"half an element", "C300 0500 00000000 0100 02", "13"},
        {"no element", "C300 0500 00000000", "13"},
        {"half an offset", "C300 0500 0000", "13"},
        {"no count", "C300", "13"},
        {"from inside an element", "C300 0500 01000000 0100", "20"},
        {"from the end on", "C300 0500 0A000000 0100", "FF/2105"},
        {"from far behind it", "C300 0500 FEFFFFFF 0100", "FF/2105"},
        {"more elements than there are", "C300 0600 00000000 0100", "FF/2105"},
        {"count 0", "C300 0000 00000000 0100", "20"},
        {"another type", "C400 0500 00000000 01000000", "FF/2107"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.status, writePiece(kLevels, row.data)) << row.why;
        EXPECT_EQ("100,200,300,400,500", get("LEVELS")) << row.why;
    }
    EXPECT_EQ("20", writePiece(kNames, "DA00 0200 03000000 03 636465"));
    EXPECT_EQ("13", writePiece(kNames, "DA00 0200 00000000 02 6162"));
    EXPECT_EQ("\"ab\",\"cde\"", get("NAMES"));
}

}  // namespace
