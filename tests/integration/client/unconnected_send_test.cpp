#include "eip/cip/unconnected_send.h"

#include <cstdlib>

#include "eip/cip/logix_id_list.h"
#include "integration/client/client_rig.h"

namespace {

const unsigned char kRoute[] = {0x01, 0x00};
const unsigned char kNowhere[] = {0x01, 0x00, 0x02, 0x05};

class UnconnectedSend : public ClientTest {
 protected:
    void SetUp() override { startClient({"--tag", "A:DINT=42", "--tag", "B:INT=7"}); }

    /// The message-router reply to a request through a route, "null" without one.
    std::string send(const char* request, const unsigned char* route, int routeLength) {
        const Bytes message = bytes(request);
        int size = 0;
        _MR_Reply* reply = _UnconnectedSend(session, _Priority, _TimeOut_Ticks, message.data(),
                                            int(message.size()), route, routeLength, &size);
        const std::string text = reply ? hexOf(bytesAt(reply, size_t(size))) : "null";
        free(reply);
        return text;
    }

    /// The list's data, "null" without one.
    std::string idList(const unsigned char* route, int routeLength) {
        _Id_List* list = _GetIdList(session, route, routeLength);
        const std::string text =
            list ? hexOf(bytesAt(_GetIdListData(list), size_t(list->length))) : "null";
        free(list);
        return text;
    }
};

TEST_F(UnconnectedSend, BringsBackTheReplyOfTheRequestInIt) {
    EXPECT_EQ("CC 00 00 00 C4 00 2A 00 00 00",
              send("4C 02 91 01 41 00 01 00", kRoute, sizeof kRoute));
    EXPECT_EQ((CipError{3, 0, 0}), lastError());
    EXPECT_TRUE(simulator->waitForLog(1, [](const QJsonObject& request) {
        return request["service"] == "ReadTag" && request["route"] == "0100" &&
               request["tag"] == "A" && request["command"] == "SendRRData";
    }));
    EXPECT_EQ("CC 00 00 00 C3 00 07 00", send("4C 02 91 01 42 00 01 00", nullptr, 0));
    EXPECT_EQ("CD 00 FF 01 07 21", send("4D 02 91 01 42 00 C2 00 01 00 05", kRoute, sizeof kRoute))
        << "of odd size";
    EXPECT_EQ((CipError{3, 0xFF, 0x2107}), lastError());
}

TEST_F(UnconnectedSend, IsRefusedOnARouteThatLeadsNowhere) {
    EXPECT_EQ("D2 00 01 01 11 03 02", send("4C 02 91 01 41 00 01 00", kNowhere, sizeof kNowhere));
    EXPECT_EQ((CipError{3, 1, 0x0311}), lastError());
}

TEST_F(UnconnectedSend, ListsIds) {
    EXPECT_EQ("01 00 00 00 02 00 00 00", idList(kRoute, sizeof kRoute));
    EXPECT_EQ((CipError{3, 0, 0}), lastError());
    EXPECT_EQ("01 00 00 00 02 00 00 00", idList(nullptr, 0));
    EXPECT_EQ("null", idList(kNowhere, sizeof kNowhere));
    EXPECT_EQ((CipError{3, 1, 0x0311}), lastError());
}

class LongIdList : public UnconnectedSend {
 protected:
    void SetUp() override {
        QStringList tags;
        for (int i = 0; i < 121; ++i) {
            tags << "--tag" << QString("T%1:INT").arg(i);
        }
        startClient(tags);
    }
};

TEST_F(LongIdList, ComesAsFarAsItFits) {
    _Id_List* list = _GetIdList(session, kRoute, sizeof kRoute);
    ASSERT_TRUE(list);
    EXPECT_EQ((CipError{3, 6, 0}), lastError());
    EXPECT_EQ(480, list->length);
    EXPECT_EQ("78 00 00 00", hexOf(bytesAt(_GetIdListData(list) + 476, 4)));
    free(list);
}

}  // namespace
