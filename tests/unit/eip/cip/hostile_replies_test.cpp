// For every reply, nothing outside it is read, and no value comes out of it that it does not
// carry. The address sanitizer watches: every reply is in an allocation of its own size.

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "eip/cip/logix_id_list.h"
#include "eip/cip/logix_services.h"
#include "eip/cip/unconnected_send.h"
#include "unit/eip/cip/reply_sweeps.h"
#include "unit/eip/cip/scripted_transport.h"

namespace {

const uint32_t kHandle = 0x77;

Bytes unconnected(const std::string& reply) {
    return unconnectedReply(kHandle, reply);
}

Bytes connected(const std::string& reply) {
    return connectedReply(kHandle, 1, reply);
}

const Bytes kRegister = message(0x65, kHandle, 0, bytes("01 00 00 00"));
const Bytes kListServices = message(
    0x04, 0, 0,
    bytes("01 00 | 00 01 14 00 | 01 00 | 20 01 | 43 6F 6D 6D 75 6E 69 63 61 74 69 6F 6E 73 00 00"));
const Bytes kListIdentity = message(
    0x63, 0, 0,
    bytes("01 00 | 0C 00 28 00 | 01 00 | 00 02 AF 12 C0 A8 01 14 00 00 00 00 00 00 00 00 | 01 00 | "
          "0E 00 | 2A 00 | 0B 15 | 60 00 | 78 56 34 12 | 06 4D 69 63 72 6F 38 | 03"));
const Bytes kListInterfaces = message(0x64, 0, 0, bytes("00 00"));
const Bytes kForwardOpen = unconnected(
    "D4 00 00 00 02 00 00 80 01 00 FE 80 02 00 1B 50 44 33 22 11 80 84 1E 00 80 84 1E 00 00 00");
const Bytes kForwardOpenRefused = unconnected("D4 00 01 01 13 01 02 00 1B 50 44 33 22 11 00 00");
const Bytes kForwardClose = unconnected("CE 00 00 00 02 00 1B 50 44 33 22 11 00 00");
const Bytes kReadDint = connected("CC 00 00 00 C4 00 2A 00 00 00");
const Bytes kReadInts = connected("CC 00 00 00 C3 00 01 00 02 00 03 00");
const Bytes kReadLreal = connected("CC 00 00 00 CB 00 00 00 00 00 00 00 F8 3F");
const Bytes kReadString = connected("CC 00 00 00 DA 00 05 48 65 6C 6C 6F");
const Bytes kReadRefused = connected("CC 00 FF 01 05 21");
const Bytes kWritten = connected("CD 00 00 00");
const Bytes kMultiple =
    connected("8A 00 00 00 02 00 06 00 0D 00 CC 00 00 00 C1 00 01 CC 00 00 00 C3 00 34 12");

const Bytes* const kReplies[] = {
    &kRegister,           &kListServices, &kListIdentity, &kListInterfaces, &kForwardOpen,
    &kForwardOpenRefused, &kForwardClose, &kReadDint,     &kReadInts,       &kReadLreal,
    &kReadString,         &kReadRefused,  &kWritten,      &kMultiple};

/// Reads every byte, so that the sanitizer sees one that is not there.
void touch(const void* at, int size) {
    const unsigned char* from = static_cast<const unsigned char*>(at);
    volatile unsigned sum = 0;
    for (int i = 0; i < size; ++i) {
        sum = sum + from[i];
    }
}

void lookAtRead(const _LGX_Read* read) {
    touch(_GetLGXReadData(read), read->size + kLgxReadSlack);
    for (int index : {-1, 0, 1, 2, 3, 7, 8, 255, 65535, INT32_MAX}) {
        GetLGXValueAsUInt32(read, index);
        _GetLGXValueAsFloat(read, index);
        GetLGXValueAsDouble(read, index);
    }
    char text[300];
    GetLGXValueAsString(read, text, sizeof(text));
    const QByteArray value = GetLGXValueAsByteArray(read);
    touch(value.constData(), value.size());
}

void lookAtService(const _MR_Reply* service, int size) {
    touch(service, size);
    _GetLGXStatusWord(service);
    _GetExtendedStatus(service);
    _GetLGXDataType(service);
    _GetData(service);
    _LGX_Read* read = _DecodeLGX(service, size);
    if (read) {
        lookAtRead(read);
    }
    _FreeLGXRead(read);
}

void lookAtItem(const _Eip_Item* item) {
    touch(item, 4 + _GetItemLength(item));
    const int number = _GetService_ReplyNumber(item);
    for (int index : {-1, 0, 1, 2, number - 1, number, 65535}) {
        const _MR_Reply* service = _GetService_Reply(item, index);
        const int size = _GetService_ReplySize(item, index);
        if (service) {
            lookAtService(service, size);
        }
    }
}

/// Everything that takes a reply apart.
void lookAtReply(const Bytes& variant) {
    const ReplyBuffer buffer(variant);
    const _Encap_Header* reply = buffer.header();
    IsEIP(reply);
    _GetEipStatus(reply);
    const _Eip_CPF* cpf = _GetEipCPF(reply);
    if (cpf) {
        touch(cpf, sizeof(*cpf));
        for (int index : {-1, 0, 1, 2, 65535}) {
            _GetItem(cpf, index);
        }
    }
    _GetIdentity(reply);
    _GetServices(reply);
    _GetInterfaces(reply);
    if (const _Eip_Item* address = _GetAdressItem(reply)) {
        lookAtItem(address);
    }
    if (const _Eip_Item* data = _GetDataItem(reply)) {
        lookAtItem(data);
    }
    if (const _MR_Reply* mr = _GetMRReply(reply)) {
        touch(mr, _GetMRReplySize(reply));
        touch(_GetMRData(mr), _GetMRDataSize(reply));
        _GetMRExtendedStatus(mr);
    }
}

TEST(HostileReplies, EveryDecoder) {
    for (const Bytes* reply : kReplies) {
        lookAtReply(*reply);
        forEachVariant(*reply, [](const Bytes& variant, size_t) { lookAtReply(variant); });
    }
}

class HostileServices : public testing::Test {
 protected:
    HostileServices() : session(NewSession(1000, &transport)) {}
    ~HostileServices() override { DeleteSession(session); }

    _Eip_Connection* open() {
        session->sessionHandle = kHandle;
        return _ConnectPLCOverCNET2(session, 3, 5, 247, 0x80FE0001, 2, 0x501B, 0x11223344, 2, 2000,
                                    0xA3, nullptr, 0);
    }

    /// The value that a read makes of a reply, as type and text; empty when it fails.
    std::string read(const Bytes& reply, uint16_t count) {
        _Eip_Connection connection = {};
        session->sessionHandle = kHandle;
        transport.requests.clear();
        transport.play(reply);
        _LGX_Read* decoded = _ReadLgxData(session, &connection, "A", count);
        if (!decoded) {
            EXPECT_FALSE(cip_err_type() == 0 && cip_errno() == 0) << hexOf(reply);
            return std::string();
        }
        lookAtRead(decoded);
        const QByteArray value = GetLGXValueAsByteArray(decoded);
        const std::string text = hexOf(Bytes{static_cast<unsigned char>(decoded->type)}) + ":" +
                                 hexOf(bytesAt(value.constData(), size_t(value.size())));
        _FreeLGXRead(decoded);
        return text;
    }

    int write(const Bytes& reply) {
        _Eip_Connection connection = {};
        session->sessionHandle = kHandle;
        transport.requests.clear();
        transport.play(reply);
        return _WriteLgxData(session, &connection, "A", LGX_TYPE_SINT, "x", 1);
    }

    ScriptedTransport transport;
    _Eip_Session* session;
};

TEST_F(HostileServices, Sessions) {
    forEachVariant(kRegister, [this](const Bytes& variant, size_t) {
        transport.play(variant);
        const int status = _RegisterSession(session);
        EXPECT_EQ(status == 0 ? (variant[4] | variant[5] << 8) : 0,
                  int(session->sessionHandle & 0xFFFF));
    });
    for (const Bytes* list : {&kListServices, &kListIdentity, &kListInterfaces}) {
        forEachVariant(*list, [this](const Bytes& variant, size_t) {
            for (auto send : {_ListServices, _ListIdentity, _ListInterfaces}) {
                transport.play(variant);
                free(send(session));
            }
        });
    }
}

TEST_F(HostileServices, Connections) {
    for (const Bytes* reply : {&kForwardOpen, &kForwardOpenRefused, &kReadDint, &kRegister}) {
        forEachVariant(*reply, [this](const Bytes& variant, size_t) {
            transport.play(variant);
            _Eip_Connection* connection = open();
            DeleteConnection(&connection);
        });
    }
    forEachCut(kForwardOpen, [this](const Bytes& cut, size_t size) {
        transport.play(cut);
        _Eip_Connection* connection = open();
        EXPECT_EQ(nullptr, connection) << size << ": the item is longer than the reply";
        DeleteConnection(&connection);
    });
    forEachVariant(kForwardClose, [this](const Bytes& variant, size_t) {
        session->sessionHandle = kHandle;
        transport.play(variant);
        const int status = _ExForward_Close(session, 1, 2, 3, 4, 5, CM_PATH, 4);
        EXPECT_GE(status, -1);
        EXPECT_LE(status, 0xFF);
    });
}

TEST_F(HostileServices, RoutedRequests) {
    const unsigned char route[] = {0x01, 0x00};
    session->sessionHandle = kHandle;
    for (const Bytes& reply : {unconnected("CB 00 00 00 11 22 33 44"),
                               unconnected("D2 00 01 01 04 02 01"), kForwardOpenRefused}) {
        const auto use = [&](const Bytes& variant, size_t) {
            transport.requests.clear();
            transport.play(variant);
            int size = 0;
            _MR_Reply* mr =
                _UnconnectedSend(session, 7, 0x9A, "\x4B\x00", 2, route, sizeof(route), &size);
            if (mr) {
                touch(mr, size);
                touch(
                    _GetMRData(mr),
                    size - static_cast<int>(_GetMRData(mr) - reinterpret_cast<unsigned char*>(mr)));
                _GetMRExtendedStatus(mr);
            }
            free(mr);
            transport.play(variant);
            _Id_List* list = _GetIdList(session, route, sizeof(route));
            if (list) {
                touch(_GetIdListData(list), list->length);
            }
            free(list);
        };
        forEachVariant(reply, use);
        forEachCut(reply, [&](const Bytes& cut, size_t size) {
            transport.play(cut);
            EXPECT_EQ(nullptr, _GetIdList(session, route, sizeof(route))) << size;
        });
    }
}

TEST_F(HostileServices, CutReadsAndWritesAlwaysFail) {
    for (const Bytes* reply : kReplies) {
        forEachCut(*reply, [this](const Bytes& cut, size_t size) {
            for (uint16_t count : {1, 2, 3}) {
                EXPECT_EQ("", read(cut, count)) << size;
            }
            EXPECT_EQ(-1, write(cut)) << size;
        });
    }
}

// Offsets in a connected reply.
const size_t kStatus = 8;         // to 24: encapsulation status, sender context and options
const size_t kInterface = 24;     // to 30: interface handle and time-out
const size_t kItemCount = 30;     // to 32
const size_t kConnectionId = 36;  // to 40
const size_t kReserved = 47;      // of the message-router reply
const size_t kType = 50;

bool saysNothing(size_t at) {
    return (at >= kStatus && at < 24) || (at >= kInterface && at < kItemCount) ||
           (at >= kConnectionId && at < 40) || at == kReserved;
}

/// Whether a reply of which the byte at `at` was changed still says what it said: more items, and
/// more bytes, may follow the two items that are looked at.
bool saysTheSame(const Bytes& variant, size_t at, const Bytes& whole) {
    const bool isLength = at == 2 || at == 3;
    const bool isItemCount = at == kItemCount || at == kItemCount + 1;
    const int itemCount = variant[kItemCount] | variant[kItemCount + 1] << 8;
    return saysNothing(at) || (isLength && variant.size() > whole.size()) ||
           (isItemCount && itemCount >= 2);
}

/// One changed byte either leaves the value as it was (in a field that says nothing about it),
/// changes the value's own bytes or type, or fails the read.
TEST_F(HostileServices, ChangedByteNeverGivesAnotherValue) {
    const struct {
        const Bytes* reply;
        uint16_t count;
    } rows[] = {{&kReadDint, 1}, {&kReadInts, 3}, {&kReadLreal, 1}, {&kReadString, 1}};
    for (const auto& row : rows) {
        const std::string good = read(*row.reply, row.count);
        ASSERT_NE("", good);
        int changed = 0;
        forEachChangedByte(*row.reply, [&](const Bytes& variant, size_t at) {
            const std::string value = read(variant, row.count);
            ++changed;
            if (at < kType) {
                EXPECT_EQ(saysTheSame(variant, at, *row.reply) ? good : "", value)
                    << at << " " << hexOf(variant);
            } else if (at >= kType + 2 && row.reply != &kReadString) {
                EXPECT_NE(good, value) << "the value's own bytes";
                EXPECT_EQ(good.size(), value.size());
            }
        });
        EXPECT_GT(changed, 400);
    }
}

TEST_F(HostileServices, WildFieldsNeverGiveAnotherLength) {
    int taken = 0;
    for (const Bytes* reply : {&kReadDint, &kReadInts, &kReadLreal, &kReadRefused, &kWritten}) {
        forEachWildField(*reply, [&](const Bytes& variant, size_t) {
            for (uint16_t count : {1, 3}) {
                const std::string value = read(variant, count);
                const size_t data = reply->size() - (kType + 2);
                if (!value.empty() && value.compare(0, 2, "DA") != 0) {
                    ++taken;
                    EXPECT_EQ(3 + data * 3 - 1, value.size()) << hexOf(variant);
                }
            }
        });
    }
    EXPECT_GT(taken, 500);
}

TEST_F(HostileServices, ChangedByteNeverTurnsARefusalIntoSuccess) {
    EXPECT_EQ(1, write(kWritten));
    forEachChangedByte(kWritten, [this](const Bytes& variant, size_t at) {
        EXPECT_EQ(saysTheSame(variant, at, kWritten) ? 1 : -1, write(variant))
            << at << " " << hexOf(variant);
    });
    EXPECT_EQ(-1, write(kReadRefused));
    forEachChangedByte(kReadRefused, [this](const Bytes& variant, size_t at) {
        EXPECT_EQ(-1, write(variant)) << at;
        EXPECT_EQ("", read(variant, 1)) << at;
    });
}

TEST_F(HostileServices, SequenceOfAnotherRequestNeverPasses) {
    _Eip_Connection connection = {};
    session->sessionHandle = kHandle;
    int passed = 0;
    for (int round = 0; round < 0x10000; ++round) {
        transport.requests.clear();
        transport.play(kReadDint);  // answers sequence count 1
        _LGX_Read* read = _ReadLgxData(session, &connection, "A", 1);
        passed += read ? 1 : 0;
        _FreeLGXRead(read);
    }
    EXPECT_EQ(1, passed);
}

}  // namespace
