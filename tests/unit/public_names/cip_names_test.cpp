// The CIP client.

#include <vector>

#include "eip/cip/cip_callback.h"
#include "eip/cip/cip_error.h"
#include "eip/cip/cip_messages.h"
#include "eip/cip/cip_trace.h"
#include "eip/cip/connection_manager.h"
#include "eip/cip/encapsulation.h"
#include "eip/cip/identity.h"
#include "eip/cip/logix_id_list.h"
#include "eip/cip/logix_services.h"
#include "eip/cip/message_router.h"
#include "eip/cip/pccc_address.h"
#include "eip/cip/pccc_requests.h"
#include "eip/cip/pccc_services.h"
#include "eip/cip/request_path.h"
#include "eip/cip/unconnected_send.h"
#include "unit/public_names/name_checks.h"

namespace {

typedef unsigned char Byte;
typedef _Encap_Header Header;
typedef _Eip_Session Session;
typedef _Eip_Connection Connection;
typedef _Eip_Item Item;
typedef _MR_Reply Reply;
typedef const _PCCC_Target* Target;

template <size_t size>
std::vector<int> numbers(Byte (&table)[size]) {  // plain data: a const one does not compile
    return std::vector<int>(table, table + size);
}
typedef std::vector<int> Numbers;

/// The value of plain data, which a program may set; a const one does not compile.
template <typename T>
T plain(T* number) {
    static_assert(!std::is_const<T>::value, "a program may set it");
    return *number;
}

TEST(CipNames, Transport) {
    EXPECT_TRUE(std::has_virtual_destructor<CipCallback>::value);
    EXPECT_MEMBER(Header * (int), CipCallback, recvData);
    EXPECT_MEMBER(int(const Header*), CipCallback, sendData);
    EXPECT_MEMBER(Header * (const Header*, int, int), CipCallback, sendDataWaitReply);
}

TEST(CipNames, ErrorRecord) {
    CIPERROR(CIP_ERR_PCCC, 0xF0, 4);
    EXPECT_EQ(6, _cip_err_type);
    EXPECT_EQ(0xF0, _cip_errno);
    EXPECT_EQ(4, _cip_ext_errno);
    EXPECT_STREQ("PCCC error: F0H, 04H", _cip_err_msg);
    EXPECT_EQ(256u, sizeof _cip_err_msg);
    EXPECT_EQ(0, _cip_debuglevel);
    EXPECT_EQ(0, CIP_ERR_INTERNAL);
    EXPECT_EQ(1, CIP_ERR_SYSTEM);
    EXPECT_EQ(2, CIP_ERR_EIP);
    EXPECT_EQ(3, CIP_ERR_MR);
    EXPECT_EQ(5, CIP_ERR_AB);
    EXPECT_EQ(6, CIP_ERR_PCCC);
    EXPECT_FUNCTION(int32_t(), cip_errno);
    EXPECT_FUNCTION(int32_t(), cip_ext_errno);
    EXPECT_FUNCTION(int32_t(), cip_err_type);
    EXPECT_FUNCTION(char*(), cip_err_msg);
    EXPECT_FUNCTION(void(int32_t, int32_t, int32_t), CIPERROR);
    EXPECT_FUNCTION(void(const char*), CIPAppendErrMsg);
    EXPECT_FUNCTION(void(int32_t, const char*, ...), LogCip);
    EXPECT_FUNCTION(void(int32_t, const void*, int32_t), FlushCipBuffer);
}

TEST(CipNames, Messages) {
    EXPECT_FUNCTION(const char*(int32_t, int32_t, int32_t), CIPGetErrMsg);
    EXPECT_FUNCTION(const char*(int32_t), CIPGetInternalErrMsg);
    EXPECT_FUNCTION(const char*(int32_t), CIPGetEipErrMsg);
    EXPECT_FUNCTION(const char*(int32_t, int32_t), CIPGetMRErrMsg);
    EXPECT_FUNCTION(const char*(int32_t, int32_t), CIPGetABErrMsg);
    EXPECT_FUNCTION(const char*(int32_t, int32_t), CIPGetPCCCErrMsg);
    EXPECT_FUNCTION(int(char*, size_t, int32_t, int32_t), CIPGetMRErrMsg2);
    EXPECT_FUNCTION(int(char*, size_t, int32_t, int32_t), CIPGetABErrMsg2);
    EXPECT_FUNCTION(int(char*, size_t, int32_t, int32_t), CIPGetPCCCErrMsg2);
}

TEST(CipNames, Session) {
    EXPECT_EQ(24u, sizeof(_Encap_Header));
    EXPECT_MEMBER(CipCallback*, Session, transport);
    EXPECT_FUNCTION(Session * (unsigned long, CipCallback*), NewSession);
    EXPECT_FUNCTION(Session * (const char*, int, unsigned long), _OpenSession);
    EXPECT_FUNCTION(void(Session*), DeleteSession);
    EXPECT_FUNCTION(void(Session*), CloseSession);
    EXPECT_FUNCTION(int(Session*), _RegisterSession);
    EXPECT_FUNCTION(int(Session*), _UnRegisterSession);
    EXPECT_FUNCTION(Header * (Session*), _ListServices);
    EXPECT_FUNCTION(Header * (Session*), _ListIdentity);
    EXPECT_FUNCTION(Header * (Session*), _ListInterfaces);
    EXPECT_FUNCTION(bool(const Header*, CipIdentity*), DecodeIdentity);
}

TEST(CipNames, Requests) {
    EXPECT_FUNCTION(void(Header*, uint32_t, uint32_t, uint32_t), _InitHeader);
    EXPECT_FUNCTION(void(Header*, uint32_t, uint32_t, uint32_t), _FillHeader);
    EXPECT_FUNCTION(int(Header*, const void*, int), _AddHeader);
    EXPECT_FUNCTION(int(Header*, uint8_t), _AddBYTE2Header);
    EXPECT_FUNCTION(int(Header*, uint16_t), _AddINT2Header);
    EXPECT_FUNCTION(int(Header*, uint32_t), _AddDINT2Header);
    EXPECT_FUNCTION(int(Header*, const Byte*, int), _Addtab2Header);
    EXPECT_FUNCTION(int(Header*, uint32_t, uint16_t), _AddRR);
    EXPECT_FUNCTION(int(const Item*), _GetItemSize);
    EXPECT_FUNCTION(int(Header*, Item*, const void*), _AddItem);
    EXPECT_FUNCTION(int(Header*, Item*, const void*, Item*, const void*), _AddCPF);
    EXPECT_FUNCTION(Header * (Session*, Item*, const void*, Item*, const void*, uint32_t),
                    _BuildRequest);
    EXPECT_FUNCTION(Header * (Session*, Item*, const void*, Item*, const void*), _SendRRData);
    EXPECT_FUNCTION(Header * (Session*, Item*, const void*, Item*, const void*), _SendUnitData);
    EXPECT_FUNCTION(Header * (Session*, uint16_t, Item*, const void*, Item*, const void*),
                    _SendData_WaitReply);
    EXPECT_FUNCTION(int(Session*, uint16_t, Item*, const void*, Item*, const void*), _SendData);
    EXPECT_FUNCTION(int(CipCallback*, const Header*), CipSendData);
    EXPECT_FUNCTION(Header * (CipCallback*, uint32_t), CipRecvData);
    EXPECT_FUNCTION(Header * (CipCallback*, const Header*, uint32_t, uint32_t),
                    CipSendData_WaitReply);
    EXPECT_FUNCTION(int(), _CipOpenSock);
}

TEST(CipNames, Replies) {
    EXPECT_FUNCTION(int32_t(const Header*), _GetEipStatus);
    EXPECT_FUNCTION(const _Eip_CPF*(const Header*), _GetEipCPF);
    EXPECT_FUNCTION(const _Eip_CPF*(const Header*), _GetEipCommonPacket);
    EXPECT_FUNCTION(const Item*(const _Eip_CPF*, int), _GetItem);
    EXPECT_FUNCTION(const Item*(const Header*), _GetAdressItem);
    EXPECT_FUNCTION(const Item*(const Header*), _GetDataItem);
    EXPECT_FUNCTION(const Header*(const Header*), _GetInterfaces);
    EXPECT_FUNCTION(const Header*(const Header*), _GetServices);
    EXPECT_FUNCTION(const Header*(const Header*), _GetIdentity);
    EXPECT_FUNCTION(bool(const void*), IsEIP);
}

TEST(CipNames, PathsAndParameters) {
    EXPECT_EQ((Numbers{0x20, 0x06, 0x24, 0x01}), numbers(CM_PATH));
    EXPECT_EQ((Numbers{0x20, 0x02, 0x24, 0x01}), numbers(ROUTER_PATH));
    EXPECT_EQ((Numbers{0x20, 0x66, 0x24, 0x01}), numbers(BACKPLANE_DATA_PATH));
    EXPECT_EQ((Numbers{0x20, 0x67, 0x24, 0x01}), numbers(PCCC_PATH));
    EXPECT_EQ((Numbers{0x20, 0xA6, 0x24, 0x01, 0x2C, 0x01}), numbers(DHPA_PROXY_PATH));
    EXPECT_EQ((Numbers{0x20, 0xA6, 0x24, 0x02, 0x2C, 0x01}), numbers(DHPB_PROXY_PATH));
    EXPECT_EQ(0x004D, plain(&_OriginatorVendorID));
    EXPECT_EQ(0x38BE3B1Fu, plain(&_OriginatorSerialNumber));
    EXPECT_EQ(0x07, plain(&_Priority));
    EXPECT_EQ(0x9A, plain(&_TimeOut_Ticks));
    EXPECT_EQ(0x43F8, plain(&_Parameters));
    EXPECT_EQ(0xA3, plain(&_Transport));
    EXPECT_EQ(0x02, plain(&_TimeOutMultiplier));
}

TEST(CipNames, Connections) {
    EXPECT_FUNCTION(Connection * (Session*, int, Byte, Byte, uint32_t, uint16_t, uint16_t, uint32_t,
                                  Byte, uint32_t, Byte, const Byte*, Byte),
                    _ConnectPLCOverCNET2);
    EXPECT_FUNCTION(Connection * (Session*, int, Byte, Byte, uint32_t, uint16_t, uint16_t, uint32_t,
                                  Byte, uint32_t, Byte, const Byte*, Byte),
                    _ConnectPLCOverCNET);
    EXPECT_FUNCTION(Connection * (Session*, int, Byte, Byte, uint32_t, uint16_t, uint16_t, uint32_t,
                                  Byte, uint32_t, Byte, char, const Byte*, Byte),
                    _ConnectPLCOverDHP);
    EXPECT_FUNCTION(Connection * (Session*, Byte, Byte, uint32_t, uint16_t, uint16_t, uint32_t,
                                  Byte, uint32_t, uint16_t, Byte, const Byte*, int),
                    _Forward_Open);
    EXPECT_FUNCTION(Connection * (Session*, Byte, Byte, uint32_t, uint16_t, uint16_t, uint32_t,
                                  Byte, uint32_t, uint16_t, Byte, const Byte*, int),
                    _Forward_Open2);
    EXPECT_FUNCTION(int(Connection*), _Forward_Close);
    EXPECT_FUNCTION(int(Connection*), _SendForwardClose);
    EXPECT_FUNCTION(int(Session*, Byte, Byte, uint16_t, uint16_t, uint32_t, const Byte*, int),
                    _ExForward_Close);
    EXPECT_FUNCTION(void(Connection**), DeleteConnection);
    EXPECT_FUNCTION(int(const Connection*), _GetConnectedRequestLimit);
    EXPECT_FUNCTION(Item * (Session*, Connection*, const void*, int), _ConnectedSend);
}

TEST(CipNames, MessageRouter) {
    EXPECT_FUNCTION(Byte * (uint8_t, const void*, int, const void*, int, int*), _BuildMRRequest);
    EXPECT_FUNCTION(Header * (Session*, const void*, int), _ExSendMRRequest);
    EXPECT_FUNCTION(Reply * (Session*, uint8_t, const void*, int, const void*, int, int*),
                    _SendMRRequest);
    EXPECT_FUNCTION(const Reply*(const Header*), _GetMRReply);
    EXPECT_FUNCTION(const Reply*(const Header*), _GetCMReply);
    EXPECT_FUNCTION(int(const Header*), _GetMRReplySize);
    EXPECT_FUNCTION(int(const Header*), _GetMRDataSize);
    EXPECT_FUNCTION(const Byte*(const Reply*), _GetMRData);
    EXPECT_FUNCTION(int32_t(const Reply*), _GetMRExtendedStatus);
    EXPECT_FUNCTION(Reply * (Session*, Byte, Byte, const void*, int, const Byte*, int, int*),
                    _UnconnectedSend);
}

TEST(CipNames, RequestPaths) {
    EXPECT_FUNCTION(int(Byte*, const char*), _BuildIOI);
    EXPECT_FUNCTION(int(Byte*, const char*, int), _BuildIOIString);
    EXPECT_FUNCTION(int(Byte*, const char*, int), _BuildIOIArray);
    EXPECT_FUNCTION(int(Byte*, int32_t), _AddSegmentValue);
}

TEST(CipNames, Logix) {
    EXPECT_EQ(0xC1, _LGX_Data_Type(LGX_TYPE_BOOL));
    EXPECT_EQ(20u, sizeof(_LGX_Read));
    EXPECT_FUNCTION(_LGX_Read * (Session*, Connection*, const char*, uint16_t), _ReadLgxData);
    EXPECT_FUNCTION(int(Session*, Connection*, const char*, _LGX_Data_Type, const void*, uint16_t),
                    _WriteLgxData);
    EXPECT_FUNCTION(Byte * (const char*, uint16_t, int*), _BuildLgxReadDataRequest);
    EXPECT_FUNCTION(Byte * (const char*, _LGX_Data_Type, const void*, int, uint16_t, int*),
                    _BuildLgxWriteDataRequest);
    EXPECT_FUNCTION(LgxProgress(Session*, Connection*, LgxTagRead*), _AdvanceLgxRead);
    EXPECT_FUNCTION(LgxProgress(Session*, Connection*, LgxTagWrite*), _AdvanceLgxWrite);
    EXPECT_FUNCTION(Byte * (const char*, uint16_t, uint32_t, int*), _BuildLgxReadFragmentRequest);
    EXPECT_FUNCTION(
        Byte * (const char*, _LGX_Data_Type, const void*, int, uint16_t, uint32_t, int*),
        _BuildLgxWriteFragmentRequest);
    EXPECT_FUNCTION(const Reply*(const Item*, int), _GetService_Reply);
    EXPECT_FUNCTION(int(const Item*), _GetService_ReplyNumber);
    EXPECT_FUNCTION(int32_t(const Reply*), _GetExtendedStatus);
    EXPECT_FUNCTION(int32_t(const Reply*), _GetLGXDataType);
    EXPECT_FUNCTION(const Byte*(const Reply*), _GetData);
    EXPECT_FUNCTION(_LGX_Read * (const Reply*, int), _DecodeLGX);
    EXPECT_FUNCTION(int(int), _GetLGXDataSize);
    EXPECT_FUNCTION(int(int), _LGXDataType);
    EXPECT_FUNCTION(void(_LGX_Read*), _FreeLGXRead);
    EXPECT_FUNCTION(QByteArray(const _LGX_Read*), GetLGXValueAsByteArray);
    EXPECT_FUNCTION(uint32_t(const _LGX_Read*, int), GetLGXValueAsUInt32);
    EXPECT_FUNCTION(int32_t(const _LGX_Read*, int), _GetLGXValueAsInteger);
    EXPECT_FUNCTION(float(const _LGX_Read*, int), _GetLGXValueAsFloat);
    EXPECT_FUNCTION(double(const _LGX_Read*, int), GetLGXValueAsDouble);
    EXPECT_FUNCTION(int(const _LGX_Read*, char*, int), GetLGXValueAsString);
    EXPECT_FUNCTION(_Id_List * (Session*, const Byte*, int), _GetIdList);
}

TEST(CipNames, Pccc) {
    EXPECT_EQ((Numbers{0x07, 0x06, 0x04, 0x89, 0x67, 0x45, 0x23}),
              Numbers(_PCCC_RequestorID, _PCCC_RequestorID + sizeof(_PCCC_RequestorID)));
    EXPECT_FUNCTION(Byte * (uint16_t, const char*, uint16_t, int*), _BuildPLCReadDataRequest);
    EXPECT_FUNCTION(Byte * (uint16_t, const char*, int, int*), _BuildPLCReadDataRequestPlus);
    EXPECT_FUNCTION(Byte * (uint16_t, const char*, uint16_t, uint16_t, int*),
                    _BuildPLCWriteWithMaskRequest);
    EXPECT_FUNCTION(Byte * (uint16_t, const char*, const void*, int, int*),
                    _BuildPLCWriteBytesRequest);
    EXPECT_FUNCTION(int(Byte*, const char*), _BuildLogicalBinaryAddress);
    EXPECT_FUNCTION(int(Byte*, const char*), _BuildThreeAddressField);
    EXPECT_FUNCTION(int(Byte*, int, int), _EncodePLCDataType);
    EXPECT_FUNCTION(int(const Byte*, int, int*, int*), _DecodePLCDataType);
    EXPECT_FUNCTION(_PLC_Read * (const _PCCC_Reply*, int), _DecodePCCC);
    EXPECT_FUNCTION(bool(const _PLC_Read*, int), _PCCC_GetValueAsBoolean);
    EXPECT_FUNCTION(int32_t(const _PLC_Read*, int), _PCCC_GetValueAsInteger);
    EXPECT_FUNCTION(float(const _PLC_Read*, int), _PCCC_GetValueAsFloat);
    EXPECT_FUNCTION(void(_PLC_Read*), _FreePLCRead);
    EXPECT_FUNCTION(_PLC_Read * (Target, int, uint16_t, const char*, uint16_t), _ReadPLCData);
    EXPECT_FUNCTION(_PLC_Read * (Target, uint16_t, const char*, uint16_t), _ReadPLCData_Ex);
    EXPECT_FUNCTION(_PLC_Read * (Target, uint16_t, const char*, uint16_t), _ReadPLCData_ExPlus);
    EXPECT_FUNCTION(int(Target, uint16_t, const char*, _PLC_Data_Type, const void*, uint16_t),
                    _WritePLCData);
    EXPECT_FUNCTION(int(Target, uint16_t, const char*, uint16_t, uint16_t), WriteMaskAndDataToPLC);
    EXPECT_FUNCTION(int(Target, uint16_t, const char*, const void*, int), WriteBytesToPLC);
    EXPECT_FUNCTION(_PCCC_Reply * (Target, const void*, int, int*), _SendConnectedPCCCRequest);
    EXPECT_FUNCTION(_PCCC_Reply * (Target, const void*, int, int*), _SendUnConnectedPCCCRequest);
}

}  // namespace
