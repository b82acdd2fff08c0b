#include "eip/cip/common_packet.h"

#include <gtest/gtest.h>

#include <cstring>

#include "eip/cip/cpf_view.h"
#include "unit/eip/cip/request_buffer.h"
#include "unit/eip/cip/scripted_transport.h"

namespace {

_Eip_FixedItem item(uint16_t type, uint16_t length) {
    _Eip_FixedItem made = {};
    _SetItem(&made.head, type, length);
    for (size_t i = 0; i < sizeof(made.fixed); ++i) {
        made.fixed[i] = static_cast<unsigned char>(0x10 + i);
    }
    return made;
}

TEST(CommonPacket, FixedSizes) {
    const struct {
        uint16_t type;
        int size;
    } rows[] = {{0x0000, 4},  {0x00A1, 8},  {0x00B1, 6}, {0x00B2, 4},
                {0x8000, 28}, {0x8001, 28}, {0x8002, 12}};
    for (const auto& row : rows) {
        const _Eip_FixedItem made = item(row.type, 99);
        EXPECT_EQ(row.size, _GetItemSize(&made.head)) << row.type;
    }
}

TEST(CommonPacket, UnknownTypesHaveNoSize) {
    for (uint16_t type : {0x0001, 0x00A0, 0x00B0, 0x00B3, 0x7FFF, 0x8003, 0xFFFF}) {
        const _Eip_FixedItem made = item(type, 0);
        CIPERROR(0, 0, 0);
        EXPECT_EQ(0, _GetItemSize(&made.head)) << type;
        EXPECT_EQ((CipError{0, -10, 0}), lastError());
        EXPECT_STREQ("Internal: item type unknow", cip_err_msg());
    }
    EXPECT_EQ(0, _GetItemSize(nullptr));
    EXPECT_EQ((CipError{0, -20, 0}), lastError());
}

TEST(CommonPacket, AReplyOfNothingButACountIsLookedAt) {
    const Bytes none = message(0x63, 0, 0, bytes("00 00"));
    EXPECT_FALSE(cip::viewItems(reinterpret_cast<const _Encap_Header*>(none.data())).broken);
    const Bytes one = message(0x63, 0, 0, bytes("01 00"));
    const cip::CpfView view = cip::viewItems(reinterpret_cast<const _Encap_Header*>(one.data()));
    EXPECT_EQ(1, view.count);
    EXPECT_TRUE(view.broken) << "the item that it announces is not there";
}

TEST(CommonPacket, AddItemCountsItsFixedPart) {
    const unsigned char data[] = {0xD1, 0xD2, 0xD3};
    RequestBuffer buffer;
    _Eip_FixedItem connected = item(0x00B1, 3);
    EXPECT_EQ(5, _AddItem(buffer.header(), &connected.head, data));
    EXPECT_EQ("B1 00 05 00 10 11 D1 D2 D3", hexOf(buffer.body()));
    EXPECT_EQ(5, _GetItemLength(&connected.head)) << "rewritten in place";

    _Eip_FixedItem unconnected = item(0x00B2, 3);
    EXPECT_EQ(3, _AddItem(buffer.header(), &unconnected.head, data));
    EXPECT_EQ("B1 00 05 00 10 11 D1 D2 D3 B2 00 03 00 D1 D2 D3", hexOf(buffer.body()));
}

TEST(CommonPacket, AddItemWithoutDataTakesTheRecord) {
    RequestBuffer buffer;
    _Eip_FixedItem address = item(0x00A1, 0);
    EXPECT_EQ(4, _AddItem(buffer.header(), &address.head, nullptr));
    EXPECT_EQ("A1 00 04 00 10 11 12 13", hexOf(buffer.body()));

    RequestBuffer second;
    _Eip_FixedItem data = item(0x00B1, 3);
    EXPECT_EQ(5, _AddItem(second.header(), &data.head, nullptr));
    EXPECT_EQ("B1 00 05 00 10 11 12 13 14", hexOf(second.body()));
}

TEST(CommonPacket, AddItemOfEveryType) {
    const struct {
        uint16_t type;
        int length;
        const char* body;
    } rows[] = {
        {0x0000, 0, "00 00 00 00"},
        {0x8002, 8, "02 80 08 00 10 11 12 13 14 15 16 17"},
        {0x8000, 24,
         "00 80 18 00 10 11 12 13 14 15 16 17 18 19 1A 1B 1C 1D 1E 1F 20 21 22 23 24 25 26 27"},
        {0x8001, 24,
         "01 80 18 00 10 11 12 13 14 15 16 17 18 19 1A 1B 1C 1D 1E 1F 20 21 22 23 24 25 26 27"},
    };
    for (const auto& row : rows) {
        RequestBuffer buffer;
        _Eip_FixedItem made = item(row.type, 0);
        EXPECT_EQ(row.length, _AddItem(buffer.header(), &made.head, "unused"));
        EXPECT_EQ(row.body, hexOf(buffer.body()));
    }
}

TEST(CommonPacket, AddItemOfUnknownType) {
    RequestBuffer buffer;
    _Eip_FixedItem made = item(0x1234, 2);
    EXPECT_EQ(-1, _AddItem(buffer.header(), &made.head, "xx"));
    EXPECT_EQ((CipError{0, -10, 0}), lastError());
    EXPECT_EQ(filled(1024, 0), buffer.all());
    EXPECT_EQ(2, _GetItemLength(&made.head));
}

TEST(CommonPacket, AddItemBehindTheLimit) {
    const Bytes data = filled(70000, 0x55);
    for (int length : {995, 996, 0xFFFF}) {
        RequestBuffer buffer;
        _Eip_FixedItem made = item(0x00B1, static_cast<uint16_t>(length));
        EXPECT_EQ(-1, _AddItem(buffer.header(), &made.head, data.data())) << length;
        EXPECT_EQ((CipError{0, -31, 0}), lastError());
        EXPECT_EQ(filled(1024, 0), buffer.all());
        EXPECT_EQ(length, _GetItemLength(&made.head));
    }
    RequestBuffer buffer;
    _Eip_FixedItem made = item(0x00B1, 994);
    EXPECT_EQ(996, _AddItem(buffer.header(), &made.head, data.data()));
    EXPECT_EQ(1000, _GetEncapLength(buffer.header()));
}

TEST(CommonPacket, AddCPF) {
    RequestBuffer buffer;
    _Eip_FixedItem address = item(0x0000, 0);
    _Eip_FixedItem data = item(0x00B2, 2);
    EXPECT_EQ(12, _AddCPF(buffer.header(), &address.head, nullptr, &data.head, "AB"));
    EXPECT_EQ("02 00 00 00 00 00 B2 00 02 00 41 42", hexOf(buffer.body()));
}

TEST(CommonPacket, AddCPFIsAllOrNothing) {
    const Bytes data = filled(70000, 0x55);
    const struct {
        uint16_t addressType;
        uint16_t dataType;
        uint16_t dataLength;
        int error;
    } rows[] = {{0x0001, 0x00B2, 1, -10},
                {0x0000, 0x00B3, 1, -10},
                {0x0000, 0x00B2, 991, -31},
                {0x0000, 0x00B2, 0xFFFF, -31}};
    for (const auto& row : rows) {
        RequestBuffer buffer;
        _Eip_FixedItem address = item(row.addressType, 0);
        _Eip_FixedItem second = item(row.dataType, row.dataLength);
        EXPECT_EQ(-1, _AddCPF(buffer.header(), &address.head, nullptr, &second.head, data.data()));
        EXPECT_EQ((CipError{0, row.error, 0}), lastError());
        EXPECT_EQ(filled(1024, 0), buffer.all());
    }
}

// ---- reading ------------------------------------------------------------------------------

const Bytes kPrefix = bytes("00 00 00 00 00 00");

TEST(CommonPacket, StartsBehindThePrefixOrTheHeader) {
    for (uint16_t command : {0x006F, 0x0070}) {
        const ReplyBuffer reply(message(command, 1, 0, kPrefix + bytes("00 00")));
        EXPECT_EQ(reply.as<unsigned char>() + 30,
                  reinterpret_cast<const unsigned char*>(_GetEipCPF(reply.header())));
        EXPECT_EQ(_GetEipCPF(reply.header()), _GetEipCommonPacket(reply.header()));
    }
    for (uint16_t command : {0x0004, 0x0063, 0x0064}) {
        const ReplyBuffer reply(message(command, 1, 0, bytes("00 00")));
        EXPECT_EQ(reply.as<unsigned char>() + 24,
                  reinterpret_cast<const unsigned char*>(_GetEipCPF(reply.header())));
    }
}

TEST(CommonPacket, OtherCommandsHaveNone) {
    for (uint16_t command : {0x0000, 0x0001, 0x0065, 0x0066, 0x0072, 0x0073, 0xFFFF}) {
        const ReplyBuffer reply(message(command, 1, 0, kPrefix + bytes("00 00")));
        CIPERROR(0, 0, 0);
        EXPECT_EQ(nullptr, _GetEipCPF(reply.header())) << command;
        EXPECT_EQ((CipError{0, -20, 0}), lastError());
    }
    EXPECT_EQ(nullptr, _GetEipCPF(nullptr));
}

TEST(CommonPacket, ItemCountMustBeThere) {
    for (size_t length = 0; length < 8; ++length) {
        const ReplyBuffer reply(message(0x6F, 1, 0, filled(length, 0)));
        EXPECT_EQ(nullptr, _GetEipCPF(reply.header())) << length;
        EXPECT_EQ(nullptr, _GetAdressItem(reply.header())) << length;
        EXPECT_EQ(nullptr, _GetDataItem(reply.header())) << length;
    }
    for (size_t length = 0; length < 2; ++length) {
        const ReplyBuffer reply(message(0x63, 1, 0, filled(length, 0)));
        EXPECT_EQ(nullptr, _GetEipCPF(reply.header())) << length;
        EXPECT_EQ(nullptr, _GetIdentity(reply.header())) << length;
        EXPECT_EQ(nullptr, _GetServices(reply.header())) << length;
        EXPECT_EQ(nullptr, _GetInterfaces(reply.header())) << length;
    }
}

TEST(CommonPacket, WholeListReplies) {
    const ReplyBuffer reply(message(0x63, 1, 0, bytes("00 00")));
    EXPECT_EQ(reply.header(), _GetIdentity(reply.header()));
    EXPECT_EQ(reply.header(), _GetServices(reply.header()));
    EXPECT_EQ(reply.header(), _GetInterfaces(reply.header()));
    EXPECT_EQ(nullptr, _GetIdentity(nullptr));
    EXPECT_EQ(nullptr, _GetServices(nullptr));
    EXPECT_EQ(nullptr, _GetInterfaces(nullptr));
}

TEST(CommonPacket, GetItemGivesTheFirstForEveryIndexThereIs) {
    const ReplyBuffer reply(
        message(0x6F, 1, 0, kPrefix + bytes("02 00 | 00 00 00 00 | B2 00 01 00 AA")));
    const _Eip_CPF* cpf = _GetEipCPF(reply.header());
    const unsigned char* first = reply.as<unsigned char>() + 32;
    for (int index : {0, 1, 2}) {
        EXPECT_EQ(first, reinterpret_cast<const unsigned char*>(_GetItem(cpf, index)));
    }
    EXPECT_EQ(nullptr, _GetItem(cpf, 3));
    EXPECT_EQ(nullptr, _GetItem(nullptr, 1));
}

TEST(CommonPacket, AddressAndDataItem) {
    const ReplyBuffer reply(message(
        0x70, 1, 0, kPrefix + bytes("02 00 | A1 00 04 00 01 00 FE 80 | B1 00 03 00 07 00 CC")));
    EXPECT_EQ(reply.as<unsigned char>() + 32,
              reinterpret_cast<const unsigned char*>(_GetAdressItem(reply.header())));
    EXPECT_EQ(reply.as<unsigned char>() + 40,
              reinterpret_cast<const unsigned char*>(_GetDataItem(reply.header())));
}

TEST(CommonPacket, ItemsThatAreNotWhole) {
    const struct {
        const char* items;
        bool address;
        bool data;
    } rows[] = {
        {"00 00", false, false},
        {"01 00", false, false},
        {"01 00 | 00 00 00", false, false},
        {"01 00 | 00 00 00 00", true, false},
        {"01 00 | A1 00 04 00 01 02 03", false, false},
        {"01 00 | A1 00 FF FF 01 02 03 04", false, false},
        {"01 00 | 00 00 00 00 | B2 00 00 00", true, false},
        {"02 00 | 00 00 00 00", true, false},
        {"02 00 | 00 00 00 00 | B2 00 01", true, false},
        {"02 00 | 00 00 00 00 | B2 00 01 00", true, false},
        {"02 00 | 00 00 00 00 | B2 00 FF FF 00", true, false},
        {"02 00 | 00 00 00 00 | B2 00 00 00", true, true},
        {"02 00 | 00 00 06 00 | B2 00 00 00", false, false},
        {"02 00 | 00 00 04 00 | B2 00 00 00", true, false},
        {"FF FF | 00 00 00 00 | B2 00 01 00 00", true, true},
    };
    for (const auto& row : rows) {
        const ReplyBuffer reply(message(0x6F, 1, 0, kPrefix + bytes(row.items)));
        CIPERROR(0, 0, 0);
        EXPECT_EQ(row.data, _GetDataItem(reply.header()) != nullptr) << row.items;
        EXPECT_EQ(row.data ? 0 : -20, cip_errno());
        EXPECT_EQ(row.address, _GetAdressItem(reply.header()) != nullptr) << row.items;
    }
}

}  // namespace
