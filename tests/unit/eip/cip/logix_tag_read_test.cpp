#include "eip/cip/logix_tag_read.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "eip/cip/logix_services.h"
#include "unit/eip/cip/connected_steps.h"

namespace {

const CipError kSuccess{0, 0, 0};
const CipError kInvalid{0, -20, 0};
const CipError kPartial{5, 6, 0};

/// `count` DINTs from `first` on, little-endian.
std::string dints(int first, int count) {
    std::string text;
    for (int i = first; i < first + count; ++i) {
        text += " " + hexOf(Bytes{static_cast<unsigned char>(i), 0, 0, 0});
    }
    return text;
}

class LogixTagRead : public ConnectedSteps {
 protected:
    LogixTagRead() { connection.connectionSize = 504; }

    /// Type, count and value of a read as text, "null" when it fails.
    std::string read(uint16_t count, const char* name = "A") {
        transport.requests.clear();
        _LGX_Read* value = _ReadLgxData(session, &connection, name, count);
        if (!value) {
            return "null";
        }
        const std::string text =
            hexOf(Bytes{static_cast<unsigned char>(value->type)}) + ":" +
            std::to_string(value->count) + ":" +
            hexOf(bytesAt(_GetLGXReadData(value), static_cast<size_t>(value->size)));
        EXPECT_EQ(filled(8, 0), bytesAt(_GetLGXReadData(value) + value->size, 8)) << "slack";
        EXPECT_EQ(kSuccess, lastError());
        _FreeLGXRead(value);
        return text;
    }
};

TEST_F(LogixTagRead, InThreePieces) {
    answer({"CC 00 06 00 C4 00" + dints(1, 2), "D2 00 06 00 C4 00" + dints(3, 2),
            "D2 00 00 00 C4 00" + dints(5, 1)});
    EXPECT_EQ("C4:5:" + dints(1, 5).substr(1), read(5));
    EXPECT_EQ(
        (std::vector<std::string>{"4C 02 91 01 41 00 05 00", "52 02 91 01 41 00 05 00 08 00 00 00",
                                  "52 02 91 01 41 00 05 00 10 00 00 00"}),
        requests());
}

TEST_F(LogixTagRead, WhatFitsIsOneReadTag) {
    answer({"CC 00 00 00 C4 00" + dints(1, 5)});
    EXPECT_EQ("C4:5:" + dints(1, 5).substr(1), read(5));
    EXPECT_EQ(1u, requests().size());
}

TEST_F(LogixTagRead, PiecesMayEndAnywhere) {
    answer({"CC 00 06 00 CA 00 00 00 80", "D2 00 06 00 CA 00 3F 00 00 00", "D2 00 00 00 CA 00 40"});
    EXPECT_EQ("CA:2:00 00 80 3F 00 00 00 40", read(2));
    EXPECT_EQ("52 02 91 01 41 00 02 00 03 00 00 00", requests().at(1));
    EXPECT_EQ("52 02 91 01 41 00 02 00 07 00 00 00", requests().at(2));
}

TEST_F(LogixTagRead, LastPieceMayCallItselfAPart) {
    answer({"CC 00 06 00 C4 00" + dints(1, 2), "D2 00 06 00 C4 00" + dints(3, 1)});
    EXPECT_EQ("C4:3:" + dints(1, 3).substr(1), read(3));
}

TEST_F(LogixTagRead, FirstReplyWithoutAPartIsARefusal) {
    for (const char* reply : {"CC 00 06 00", "CC 00 06 00 C4", "CC 00 06 00 C4 00",
                              // of types that have no size
                              "CC 00 06 00 DA 00 02 41 42", "CC 00 06 00 A0 02 34 12 01 00",
                              // all that was asked for
                              "CC 00 06 00 C4 00 01 00 00 00 02 00 00 00"}) {
        answer({reply});
        EXPECT_EQ("null", read(2)) << reply;
        EXPECT_EQ(kPartial, lastError()) << reply;
        EXPECT_EQ(1u, requests().size()) << reply;
    }
    answer({"CC 00 06 01 00 00 C4 00 01 00 00 00"});
    EXPECT_EQ("null", read(2));
    EXPECT_EQ((CipError{5, 0x106, 0}), lastError());
    answer({"CD 00 06 00 C4 00 01 00 00 00"});
    EXPECT_EQ("null", read(2)) << "another service";
    EXPECT_EQ(kPartial, lastError());
}

TEST_F(LogixTagRead, ControllerWithoutTheServiceGivesTheFirstRefusal) {
    answer({"CC 00 06 00 C4 00" + dints(1, 2), "D2 00 08 00"});
    EXPECT_EQ("null", read(5));
    EXPECT_EQ(kPartial, lastError());
    EXPECT_STREQ("AB error: 0006H", cip_err_msg());
    EXPECT_EQ(2u, requests().size());
    answer({"CC 00 06 00 C4 00" + dints(1, 2), "D2 00 06 00 C4 00" + dints(3, 2), "D2 00 08 00"});
    EXPECT_EQ("null", read(5));
    EXPECT_EQ((CipError{5, 8, 0}), lastError()) << "it had the service";
}

TEST_F(LogixTagRead, RefusalOfAPiece) {
    const struct {
        const char* reply;
        CipError error;
    } rows[] = {
        {"D2 00 05 00", {5, 5, 0}},
        {"D2 00 FF 01 05 21", {5, 0x1FF, 0x2105}},
        {"D2 00 06 01 00 00 C4 00 03 00 00 00", {5, 0x106, 0}},
        {"D2 00 08 01 00 00", {5, 0x108, 0}},
    };
    for (const auto& row : rows) {
        answer({"CC 00 06 00 C4 00" + dints(1, 2), row.reply});
        EXPECT_EQ("null", read(5)) << row.reply;
        EXPECT_EQ(row.error, lastError()) << row.reply;
    }
}

TEST_F(LogixTagRead, PiecesThatDoNotFitAreRefused) {
    for (const std::string& piece :
         {// another type, another service
          "D2 00 00 00 C8 00" + dints(3, 3), "CC 00 00 00 C4 00" + dints(3, 3),
          "D3 00 00 00 C4 00" + dints(3, 3), "CB 00 00 00 C4 00" + dints(3, 3),
          "8A 00 00 00 01 00 04 00 D2 00 00 00 C4 00" + dints(3, 3),
          // nothing, half a type, no data
          std::string("D2 00 06 00"), std::string("D2 00 06 00 C4"),
          std::string("D2 00 06 00 C4 00"), std::string("D2 00 00 00 C4 00"),
          // more than is missing
          "D2 00 00 00 C4 00" + dints(3, 4), "D2 00 06 00 C4 00" + dints(3, 3) + " 01",
          // an end before all is there
          "D2 00 00 00 C4 00" + dints(3, 2), "D2 00 00 00 C4 00" + dints(3, 2) + " 05 00 00"}) {
        answer({"CC 00 06 00 C4 00" + dints(1, 2), piece});
        EXPECT_EQ("null", read(5)) << piece;
        EXPECT_EQ(kInvalid, lastError()) << piece;
        EXPECT_EQ(2u, requests().size()) << piece;
    }
    answer({"CC 00 06 00 C4 00" + dints(1, 3)});
    EXPECT_EQ("null", read(2)) << "more than asked for in the first reply";
    EXPECT_EQ(kInvalid, lastError());
}

TEST_F(LogixTagRead, LostPiece) {
    answer({"CC 00 06 00 C4 00" + dints(1, 2)});
    EXPECT_EQ("null", read(5));
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
    answer({"CC 00 06 00 C4 00" + dints(1, 2)});
    transport.play(connectedReply(kHandle, 1, "D2 00 00 00 C4 00" + dints(3, 3)));
    EXPECT_EQ("null", read(5)) << "the sequence count of another request";
    EXPECT_EQ((CipError{0, -7, 0}), lastError());
}

TEST_F(LogixTagRead, LargestArray) {
    // 65535 LREALs, 522 bytes of data a piece at most
    const int bytesInAll = 0xFFFF * 8;
    class Controller : public CipCallback {
     public:
        explicit Controller(int total) : rest(total), sent(0) {}
        _Encap_Header* recvData(int) override { return nullptr; }
        int sendData(const _Encap_Header*) override { return 0; }
        _Encap_Header* sendDataWaitReply(const _Encap_Header* request, int, int) override {
            const unsigned char* bytes = reinterpret_cast<const unsigned char*>(request);
            const int size = rest < 240 ? rest : 240;
            rest -= size;
            const std::string head = sent++ == 0 ? "CC 00 06 00 CB 00 "
                                     : rest > 0  ? "D2 00 06 00 CB 00 "
                                                 : "D2 00 00 00 CB 00 ";
            Bytes reply = connectedReply(kHandle, bytes[44],
                                         head + hexOf(filled(static_cast<size_t>(size), 0x5A)));
            reply[45] = bytes[45];
            void* memory = malloc(reply.size());
            memcpy(memory, reply.data(), reply.size());
            return static_cast<_Encap_Header*>(memory);
        }
        int rest;
        int sent;
    };
    Controller controller(bytesInAll);
    session->transport = &controller;
    _LGX_Read* value = _ReadLgxData(session, &connection, "A", 0xFFFF);
    ASSERT_TRUE(value) << cip_err_msg();
    EXPECT_EQ(0xFFFF, value->count);
    EXPECT_EQ(bytesInAll, value->size);
    EXPECT_EQ(0x5A, _GetLGXReadData(value)[bytesInAll - 1]);
    EXPECT_EQ((bytesInAll + 239) / 240, controller.sent);
    _FreeLGXRead(value);
}

// ---- step by step -----------------------------------------------------------------------------

Bytes itemOf(const std::string& reply) {
    const Bytes mr = bytes(reply);
    return bytes("B1 00") + Bytes{static_cast<unsigned char>(mr.size() + 2), 0} + bytes("01 00") +
           mr;
}

LgxProgress accept(::LgxTagRead* read, const std::string& reply) {
    const ReplyBuffer item(itemOf(reply));
    return read->accept(item.as<_Eip_Item>());
}

TEST(LogixTagReadSteps, ValueComesOnlyWhenWhole) {
    ::LgxTagRead read("A", 3);
    EXPECT_EQ(nullptr, read.release());
    EXPECT_EQ(LgxProgress::more, accept(&read, "CC 00 06 00 C4 00" + dints(1, 2)));
    EXPECT_EQ(nullptr, read.release());
    EXPECT_EQ(LgxProgress::done, accept(&read, "D2 00 00 00 C4 00" + dints(3, 1)));
    _LGX_Read* value = read.release();
    ASSERT_TRUE(value);
    EXPECT_EQ(12, value->size);
    _FreeLGXRead(value);
    EXPECT_EQ(nullptr, read.release());
}

TEST(LogixTagReadSteps, NothingComesOfAFailure) {
    ::LgxTagRead few("A", 3);
    EXPECT_EQ(LgxProgress::failed, accept(&few, "CC 00 00 00 C4 00" + dints(1, 2)));
    EXPECT_EQ(nullptr, few.release());
    ::LgxTagRead refused("A", 3);
    EXPECT_EQ(LgxProgress::more, accept(&refused, "CC 00 06 00 C4 00" + dints(1, 2)));
    EXPECT_EQ(LgxProgress::failed, accept(&refused, "D2 00 05 00"));
    EXPECT_EQ(nullptr, refused.release());
    ::LgxTagRead unnamed(nullptr, 3);
    int size = 0;
    unsigned char* request = unnamed.nextRequest(&size);
    EXPECT_EQ("4C 00 03 00", hexOf(bytesAt(request, static_cast<size_t>(size))));
    free(request);
    EXPECT_EQ(LgxProgress::failed, unnamed.accept(nullptr));
    EXPECT_EQ(kInvalid, lastError());
}

/// Two reads of one array on one connection, request by request in turn, do not mix.
TEST_F(LogixTagRead, TwoAtOnceDoNotMix) {
    answer({"CC 00 06 00 C4 00" + dints(1, 2), "CC 00 06 00 C4 00" + dints(11, 1),
            "D2 00 00 00 C4 00" + dints(3, 1), "D2 00 00 00 C4 00" + dints(12, 2)});
    ::LgxTagRead first("A", 3);
    ::LgxTagRead second("A", 3);
    EXPECT_EQ(LgxProgress::more, _AdvanceLgxRead(session, &connection, &first));
    EXPECT_EQ(LgxProgress::more, _AdvanceLgxRead(session, &connection, &second));
    EXPECT_EQ(LgxProgress::done, _AdvanceLgxRead(session, &connection, &first));
    EXPECT_EQ(LgxProgress::done, _AdvanceLgxRead(session, &connection, &second));
    EXPECT_EQ("52 02 91 01 41 00 03 00 08 00 00 00", requests().at(2));
    EXPECT_EQ("52 02 91 01 41 00 03 00 04 00 00 00", requests().at(3));
    _LGX_Read* one = first.release();
    _LGX_Read* two = second.release();
    EXPECT_EQ(dints(1, 3).substr(1), hexOf(bytesAt(_GetLGXReadData(one), 12)));
    EXPECT_EQ(dints(11, 3).substr(1), hexOf(bytesAt(_GetLGXReadData(two), 12)));
    _FreeLGXRead(one);
    _FreeLGXRead(two);
}

// ---- hostile pieces ---------------------------------------------------------------------------

/// Cut anywhere, a piece fails the read or gives fewer bytes, for which it is asked again; nothing
/// is ever made up.
TEST_F(LogixTagRead, EveryCutFails) {
    const std::string first = "CC 00 06 00 C4 00" + dints(1, 2);
    const Bytes last = connectedReply(kHandle, 2, "D2 00 00 00 C4 00" + dints(3, 1));
    forEachCut(last, [&](const Bytes& cut, size_t size) {
        answer({first});
        transport.play(cut);
        EXPECT_EQ("null", read(3)) << size;
        EXPECT_NE(kSuccess, lastError());
    });
    forEachCut(connectedReply(kHandle, 1, first), [&](const Bytes& cut, size_t size) {
        connection.sequenceCount = 0;
        transport.play(cut);
        EXPECT_EQ("null", read(3)) << size;
    });
    // Shortened with all lengths to match: still a valid part.
    for (int bytesLeft = 1; bytesLeft < 8; ++bytesLeft) {
        const size_t length = std::string("CC 00 06 00 C4 00").size();
        answer({first.substr(0, length + 3u * static_cast<size_t>(bytesLeft))});
        EXPECT_EQ("null", read(3));
        EXPECT_EQ((CipError{0, -5, 0}), lastError()) << "asked for the rest";
        EXPECT_EQ(2u, requests().size());
        EXPECT_EQ(bytesLeft, bytes(requests().at(1)).at(8));
    }
}

TEST_F(LogixTagRead, NoChangeOfAPieceGivesAnotherLength) {
    const std::string first = "CC 00 06 00 C4 00" + dints(1, 2);
    const Bytes last = connectedReply(kHandle, 2, "D2 00 00 00 C4 00" + dints(3, 1));
    int good = 0;
    forEachVariant(last, [&](const Bytes& variant, size_t) {
        answer({first});
        transport.play(variant);
        const std::string value = read(3);
        if (value != "null") {
            ++good;
            EXPECT_EQ(0u, value.find("C4:3:" + dints(1, 2).substr(1))) << hexOf(variant);
            EXPECT_EQ(std::string("C4:3:").size() + 12 * 3 - 1, value.size());
        }
    });
    EXPECT_GT(good, 100) << "changes of the value itself, and of what says nothing";
}

}  // namespace
