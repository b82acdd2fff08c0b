// Session, encapsulation and request-building functions begin with a clear error record: what an
// earlier call left there is never taken for theirs.

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

#include "eip/cip/logix_id_list.h"
#include "eip/cip/logix_services.h"
#include "eip/cip/pccc_requests.h"
#include "eip/cip/pccc_services.h"
#include "eip/cip/request_path.h"
#include "eip/cip/unconnected_send.h"
#include "unit/eip/cip/request_buffer.h"
#include "unit/eip/cip/scripted_transport.h"

namespace {

const CipError kSuccess{0, 0, 0};

class ClearedRecord : public testing::Test {
 protected:
    ClearedRecord() : session(NewSession(1000, &transport)), connection(), target() {
        session->sessionHandle = 0x77;
        connection.session = session;
        target.session = session;
    }
    ~ClearedRecord() override { DeleteSession(session); }

    /// The record after a call that succeeds without a word to the target.
    void expectClear(const char* name, const std::function<void()>& call) {
        CIPERROR(CIP_ERR_AB, 5, 7);
        call();
        EXPECT_EQ(kSuccess, lastError()) << name;
    }

    /// The record at the moment at which a call sends its request.
    void expectClearAtSend(const char* name, const std::function<void()>& call) {
        transport.recordsAtSend.clear();
        CIPERROR(CIP_ERR_AB, 5, 7);
        call();
        ASSERT_EQ(1u, transport.recordsAtSend.size()) << name;
        EXPECT_EQ(kSuccess, transport.recordsAtSend[0]) << name;
        EXPECT_NE(CIP_ERR_AB, lastError().type) << name;
    }

    ScriptedTransport transport;
    _Eip_Session* session;
    _Eip_Connection connection;
    _PCCC_Target target;
};

TEST_F(ClearedRecord, Sessions) {
    expectClear("NewSession", [] { DeleteSession(NewSession(1000, nullptr)); });
    expectClear("_OpenSession", [] { DeleteSession(_OpenSession("", 0, 1000)); });
    expectClear("CloseSession", [] { CloseSession(NewSession(1000, nullptr)); });
    expectClearAtSend("_RegisterSession", [this] { _RegisterSession(session); });
    expectClearAtSend("_UnRegisterSession", [this] { _UnRegisterSession(session); });
    expectClearAtSend("_ListServices", [this] { free(_ListServices(session)); });
    expectClearAtSend("_ListIdentity", [this] { free(_ListIdentity(session)); });
    expectClearAtSend("_ListInterfaces", [this] { free(_ListInterfaces(session)); });
}

TEST_F(ClearedRecord, Encapsulation) {
    RequestBuffer buffer;
    _Encap_Header* header = buffer.header();
    _Eip_Item address;
    _Eip_Item data;
    const auto setItems = [&] {
        _SetItem(&address, CPF_NULL_ADDRESS, 0);
        _SetItem(&data, CPF_UNCONNECTED_DATA, 1);
    };
    expectClear("_InitHeader", [&] { _InitHeader(header, 1, 2, 3); });
    expectClear("_FillHeader", [&] { _FillHeader(header, 1, 2, 3); });
    expectClear("_AddHeader", [&] { _AddHeader(header, "x", 1); });
    expectClear("_AddBYTE2Header", [&] { _AddBYTE2Header(header, 1); });
    expectClear("_AddINT2Header", [&] { _AddINT2Header(header, 1); });
    expectClear("_AddDINT2Header", [&] { _AddDINT2Header(header, 1); });
    expectClear("_Addtab2Header", [&] { _Addtab2Header(header, CM_PATH, 4); });
    expectClear("_AddRR", [&] { _AddRR(header, 0, 1); });
    setItems();
    expectClear("_GetItemSize", [&] { _GetItemSize(&address); });
    expectClear("_AddItem", [&] { _AddItem(header, &data, "x"); });
    setItems();
    expectClear("_AddCPF", [&] { _AddCPF(header, &address, nullptr, &data, "x"); });
    setItems();
    expectClear("_BuildRequest",
                [&] { free(_BuildRequest(session, &address, nullptr, &data, "x", 1000)); });
    setItems();
    expectClearAtSend("_SendRRData",
                      [&] { free(_SendRRData(session, &address, nullptr, &data, "x")); });
    setItems();
    expectClearAtSend("_SendUnitData",
                      [&] { free(_SendUnitData(session, &address, nullptr, &data, "x")); });
    setItems();
    expectClearAtSend("_SendData",
                      [&] { _SendData(session, 0x6F, &address, nullptr, &data, "x"); });
    expectClearAtSend("CipSendData", [&] { CipSendData(&transport, header); });
    expectClearAtSend("CipSendData_WaitReply",
                      [&] { free(CipSendData_WaitReply(&transport, header, 1, 1)); });
    expectClear("CipRecvData", [&] { free(CipRecvData(&transport, 1)); });
}

TEST_F(ClearedRecord, WhatDoesNotFitIsRecorded) {
    RequestBuffer buffer;
    _InitHeader(buffer.header(), 1, 2, 3);
    EXPECT_EQ(0, _Addtab2Header(buffer.header(), CM_PATH, 1001));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
}

TEST_F(ClearedRecord, MessageRouterAndConnections) {
    int size = 0;
    expectClear("_BuildMRRequest", [&] { free(_BuildMRRequest(1, CM_PATH, 4, "x", 1, &size)); });
    expectClearAtSend("_ExSendMRRequest", [&] { free(_ExSendMRRequest(session, "\x01\x00", 2)); });
    expectClearAtSend("_SendMRRequest",
                      [&] { free(_SendMRRequest(session, 1, CM_PATH, 4, "x", 1, &size)); });
    expectClearAtSend("_UnconnectedSend", [&] {
        free(_UnconnectedSend(session, 7, 7, "\x01\x00", 2, CM_PATH, 4, &size));
    });
    expectClearAtSend("_ConnectedSend",
                      [&] { free(_ConnectedSend(session, &connection, "\x4C\x00", 2)); });
    expectClearAtSend("_Forward_Open", [&] {
        _Forward_Open(session, 5, 247, 1, 2, 3, 4, 2, 2000, 0x43F8, 0xA3, ROUTER_PATH, 4);
    });
    expectClearAtSend("_Forward_Open2", [&] {
        _Forward_Open2(session, 5, 247, 1, 2, 3, 4, 2, 2000, 0x43F8, 0xA3, ROUTER_PATH, 4);
    });
    expectClearAtSend("_ConnectPLCOverCNET2", [&] {
        _ConnectPLCOverCNET2(session, 3, 5, 247, 1, 2, 3, 4, 2, 2000, 0xA3, nullptr, 0);
    });
    expectClearAtSend("_ConnectPLCOverCNET", [&] {
        _ConnectPLCOverCNET(session, 3, 5, 247, 1, 2, 3, 4, 2, 2000, 0xA3, nullptr, 0);
    });
    expectClearAtSend("_ConnectPLCOverDHP", [&] {
        _ConnectPLCOverDHP(session, 3, 5, 247, 1, 2, 3, 4, 2, 2000, 0xA3, 'A', nullptr, 0);
    });
    expectClearAtSend("_ExForward_Close",
                      [&] { _ExForward_Close(session, 7, 0x9A, 1, 2, 3, ROUTER_PATH, 4); });
    expectClearAtSend("_SendForwardClose", [&] {
        _Eip_Connection* made = static_cast<_Eip_Connection*>(calloc(1, sizeof(_Eip_Connection)));
        made->session = session;
        _SendForwardClose(made);
    });
    expectClearAtSend("_Forward_Close", [&] {
        _Eip_Connection* made = static_cast<_Eip_Connection*>(calloc(1, sizeof(_Eip_Connection)));
        made->session = session;
        _Forward_Close(made);
    });
}

TEST_F(ClearedRecord, RequestPaths) {
    expectClear("_BuildIOI", [] { _BuildIOI(nullptr, "A[1].B"); });
    expectClear("_BuildIOIString", [] { _BuildIOIString(nullptr, "A", 1); });
    expectClear("_BuildIOIArray", [] { _BuildIOIArray(nullptr, "1", 1); });
    expectClear("_AddSegmentValue", [] { _AddSegmentValue(nullptr, 1); });
}

TEST_F(ClearedRecord, Logix) {
    int size = 0;
    expectClear("_BuildLgxReadDataRequest", [&] { free(_BuildLgxReadDataRequest("A", 1, &size)); });
    expectClear("_BuildLgxWriteDataRequest",
                [&] { free(_BuildLgxWriteDataRequest("A", LGX_TYPE_SINT, "x", 1, 1, &size)); });
    expectClear("_BuildLgxReadFragmentRequest",
                [&] { free(_BuildLgxReadFragmentRequest("A", 1, 0, &size)); });
    expectClear("_BuildLgxWriteFragmentRequest", [&] {
        free(_BuildLgxWriteFragmentRequest("A", LGX_TYPE_SINT, "x", 1, 1, 0, &size));
    });
    expectClearAtSend("_ReadLgxData",
                      [&] { _FreeLGXRead(_ReadLgxData(session, &connection, "A", 1)); });
    expectClearAtSend("_WriteLgxData",
                      [&] { _WriteLgxData(session, &connection, "A", LGX_TYPE_SINT, "x", 1); });
    expectClearAtSend("_GetIdList", [&] { free(_GetIdList(session, CM_PATH, 4)); });
}

TEST_F(ClearedRecord, PcccRequests) {
    int size = 0;
    expectClear("_BuildPLCReadDataRequest",
                [&] { free(_BuildPLCReadDataRequest(1, "N7:0", 1, &size)); });
    expectClear("_BuildPLCReadDataRequestPlus",
                [&] { free(_BuildPLCReadDataRequestPlus(1, "N7:0", 2, &size)); });
    expectClear("_BuildPLCWriteDataRequest", [&] {
        free(_BuildPLCWriteDataRequest(1, "N7:0", PLC_TYPE_INTEGER, 2, "xy", 1, &size));
    });
    expectClear("_BuildPLCWriteWithMaskRequest",
                [&] { free(_BuildPLCWriteWithMaskRequest(1, "N7:0", 1, 1, &size)); });
    expectClear("_BuildPLCWriteBytesRequest",
                [&] { free(_BuildPLCWriteBytesRequest(1, "N7:0", "xy", 2, &size)); });
}

TEST_F(ClearedRecord, PcccServices) {
    int size = 0;
    expectClearAtSend("_SendUnConnectedPCCCRequest", [&] {
        free(_SendUnConnectedPCCCRequest(&target, "\x0F\x00\x01\x00", 4, &size));
    });
    expectClearAtSend("_ReadPLCData_Ex",
                      [&] { _FreePLCRead(_ReadPLCData_Ex(&target, 1, "N7:0", 1)); });
    expectClearAtSend("_ReadPLCData_ExPlus",
                      [&] { _FreePLCRead(_ReadPLCData_ExPlus(&target, 1, "N7:0", 1)); });
    expectClearAtSend("_WritePLCData",
                      [&] { _WritePLCData(&target, 1, "N7:0", PLC_TYPE_INTEGER, "xy", 1); });
    expectClearAtSend("WriteMaskAndDataToPLC",
                      [&] { WriteMaskAndDataToPLC(&target, 1, "N7:0", 1, 1); });
    expectClearAtSend("WriteBytesToPLC", [&] { WriteBytesToPLC(&target, 1, "N7:0", "xy", 2); });
    target.connection = &connection;
    expectClearAtSend("_SendConnectedPCCCRequest", [&] {
        free(_SendConnectedPCCCRequest(&target, "\x0F\x00\x01\x00", 4, &size));
    });
}

}  // namespace
