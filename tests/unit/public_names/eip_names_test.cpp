// Transports, pipe lines, receiver, value cache and worker.

#include "eip/byte_stream_device.h"
#include "eip/cip_direct_callback.h"
#include "eip/cip_plc_driver_callback.h"
#include "eip/cip_tcp_callback.h"
#include "eip/cip_tcp_callback_impl.h"
#include "eip/lgx_data_cache.h"
#include "eip/pipe_protocol.h"
#include "eip/socket_tools.h"
#include "eip/worker.h"
#include "eip/worker_impl.h"
#include "unit/public_names/name_checks.h"

// What the classes keep to themselves.
template struct PrivateMember<MemberOf<QHash<QString, QByteArray>, LgxDataCache>,
                              &LgxDataCache::hash>;
template struct PrivateMember<MemberOf<std::mutex, LgxDataCache>, &LgxDataCache::mutex>;
template struct PrivateType<EipWorker::Impl>;
template struct PrivateType<CipPlcDriverCallback::Impl>;
template struct PrivateMember<MemberOf<CipTcpCallback*, CipTcpCallback::Impl>,
                              &CipTcpCallback::Impl::owner>;
template struct PrivateMember<MemberOf<int, CipTcpCallback::Impl>, &CipTcpCallback::Impl::sock>;
template struct PrivateMember<MemberOf<int, CipTcpCallback::Impl>, &CipTcpCallback::Impl::maxFd>;
template struct PrivateMember<MemberOf<unsigned, CipTcpCallback::Impl>,
                              &CipTcpCallback::Impl::txTimeout>;
template struct PrivateMember<MemberOf<int, CipTcpCallback::Impl>,
                              &CipTcpCallback::Impl::lastErrno>;
template struct PrivateMember<MemberOf<CipTcpCallback::Impl::Pipe, CipTcpCallback::Impl>,
                              &CipTcpCallback::Impl::pipe0>;
template struct PrivateMember<MemberOf<CipTcpCallback::Impl::Pipe, CipTcpCallback::Impl>,
                              &CipTcpCallback::Impl::pipe1>;
template struct PrivateMember<MemberOf<fd_set, CipTcpCallback::Impl>,
                              &CipTcpCallback::Impl::readFds>;
template struct PrivateMember<MemberOf<fd_set, CipTcpCallback::Impl>,
                              &CipTcpCallback::Impl::writeFds>;

namespace {

typedef _Encap_Header Header;
typedef unsigned char Byte;
typedef unsigned short Id;

TEST(EipNames, TcpTransport) {
    typedef CipTcpCallback Tcp;
    EXPECT_TRUE((std::is_base_of<CipCallback, Tcp>::value));
    CipTcpCallback transport;
    EXPECT_FALSE(transport.isConnected());
    EXPECT_MEMBER(Header * (int), Tcp, recvData);
    EXPECT_MEMBER(int(const Header*), Tcp, sendData);
    EXPECT_MEMBER(Header * (const Header*, int, int), Tcp, sendDataWaitReply);
    EXPECT_MEMBER(void(int), Tcp, serverPipeOnReceive);
    EXPECT_MEMBER(int(const char*, Id, unsigned long), Tcp, connect);
    EXPECT_MEMBER(void(), Tcp, disconnect);
    EXPECT_MEMBER(bool(), Tcp, isConnected);
    EXPECT_MEMBER(QString() const, Tcp, lastError);
    EXPECT_MEMBER(void(unsigned long), Tcp, setTxTimeout);
    EXPECT_MEMBER(void(), Tcp, emptyRxBuffer);
    EXPECT_MEMBER(void(unsigned long), Tcp, sleep);
    EXPECT_MEMBER(bool(int), Tcp, awaitData);
    EXPECT_MEMBER(int(int, const char*, int), Tcp, sendServerPipe);
    EXPECT_MEMBER(int(int, char*, int), Tcp, recvServerPipe);
    EXPECT_MEMBER(int(int, char*, int, bool*), Tcp, recvServerPipeUntilLF);
    EXPECT_MEMBER(int(int, const char*, int), Tcp, sendClientPipe);
    EXPECT_MEMBER(int(int, char*, int, bool*), Tcp, recvClientPipeUntilLF);
    EXPECT_MEMBER(int(int, unsigned long), Tcp, setClientPipeRxTimeout);
    EXPECT_MEMBER(int(int, unsigned long), Tcp, setClientPipeTxTimeout);
}

TEST(EipNames, DirectTransport) {
    typedef CipDirectCallback Direct;
    EXPECT_TRUE((std::is_base_of<CipCallback, Direct>::value));
    CipDirectCallback transport(nullptr);
    EXPECT_MEMBER(Header * (int), Direct, recvData);
    EXPECT_MEMBER(int(const Header*), Direct, sendData);
    EXPECT_MEMBER(Header * (const Header*, int, int), Direct, sendDataWaitReply);
    EXPECT_MEMBER(int(char*, int), ByteStreamDevice, read);
    EXPECT_MEMBER(int(const char*, int), ByteStreamDevice, write);
    EXPECT_MEMBER(void(int, const QVariant&), ByteStreamDevice, control);
}

TEST(EipNames, SocketHelpers) {
    EXPECT_FUNCTION(int(int, unsigned long, bool), KSocketSetTimeout);
    EXPECT_FUNCTION(int(int, unsigned long), KSocketSetRxTimeout);
    EXPECT_FUNCTION(int(int, unsigned long), KSocketSetTxTimeout);
    EXPECT_FUNCTION(int(int*), KCreateSocketPair);
    EXPECT_FUNCTION(int(int, bool), KSetNonBlockingMode);
    EXPECT_FUNCTION(void(int), KCloseSocket);
    EXPECT_FUNCTION(int(int, char*, int), KReceiveLine);
}

TEST(EipNames, PipeLines) {
    typedef const QString& Text;
    typedef const QByteArray& Bytes;
    EXPECT_EQ(0, LgxReadCmd().count);
    EXPECT_MEMBER(QString, LgxReadCmd, name);
    EXPECT_FUNCTION(int(char*, int, Id, const QList<LgxReadCmd>&), LgxDriverPackSetSessionCmd);
    EXPECT_FUNCTION(int(char*, int, Id, bool), LgxDriverPackSetSessionRsp);
    EXPECT_FUNCTION(int(char*, int, Id, Text, int), LgxDriverPackReadCmd);
    EXPECT_FUNCTION(int(char*, int, Id, Bytes), LgxDriverPackReadRsp);
    EXPECT_FUNCTION(int(char*, int, Id, Text), LgxDriverPackReadFailRsp);
    EXPECT_FUNCTION(int(char*, int, Id, const char*, _LGX_Data_Type, Bytes),
                    LgxDriverPackMicro800WriteCmd);
    EXPECT_FUNCTION(int(char*, int, Id, const char*, _LGX_Data_Type, Bytes, int, int),
                    LgxDriverPackCompactLogixWriteCmd);
    EXPECT_FUNCTION(int(char*, int, Id, const char*), LgxDriverPackWriteRsp);
    EXPECT_FUNCTION(int(char*, int, Id, Text, Text, _LGX_Data_Type, int, int, int),
                    LgxDriverPackMicro800ReadArrayElementsCmd);
    EXPECT_FUNCTION(int(char*, int, Id, Bytes), LgxDriverPackReadArrayElementRsp);
    EXPECT_FUNCTION(int(char*, int, Id, Text), LgxDriverPackReadArrayElementFailRsp);
    EXPECT_FUNCTION(int(char*, int, Id, Text, Id), LgxDriverPackIpSettingChangedCmd);
    EXPECT_FUNCTION(int(char*, int, Id, const char*), LgxDriverPackIpSettingChangedRsp);
    EXPECT_FUNCTION(int(char*, int, Byte, Id, Text), LgxDriverPackFailRsp);
    EXPECT_FUNCTION(int(char*, int, Byte, Id, Bytes), LgxDriverPackReadXXXRsp);
    EXPECT_FUNCTION(bool(const char*, Byte, Id, QString&), LgxDriverCheckRsp);
    EXPECT_FUNCTION(bool(const char*, Id, QString&), LgxDriverCheckReadRsp);
    EXPECT_FUNCTION(bool(const char*, Id, QString&), LgxDriverCheckWriteRsp);
    EXPECT_FUNCTION(bool(const char*, Id, QString&), LgxDriverCheckIpSettingChangedRsp);
    EXPECT_FUNCTION(bool(const char*, Id), LgxDriverCheckSetSessionRsp);
    EXPECT_FUNCTION(QByteArray(const char*, Byte, Id, QString&), LgxDriverReadXXXRspToByteArray);
    EXPECT_FUNCTION(QByteArray(const char*, Id, QString&), LgxDriverReadRspToByteArray);
    EXPECT_FUNCTION(QByteArray(const char*, Id, QString&), LgxDriverReadArrayElementRspToByteArray);
}

TEST(EipNames, ReceivedCommands) {
    typedef CipPlcDriverCallback Receiver;
    EXPECT_TRUE((std::is_base_of<CipTcpCallback, Receiver>::value));
    CipPlcDriverCallback receiver;
    EXPECT_FALSE(receiver.hasDriverReadCmd());
    EXPECT_MEMBER(bool(int), Receiver, recvCmd);
    EXPECT_MEMBER(void(int), Receiver, serverPipeOnReceive);
    EXPECT_MEMBER(void(int), Receiver, serverPipeOnReceiveDriverWriteCmd);
    EXPECT_MEMBER(void(int), Receiver, serverPipeOnReceiveDriverReadCmd);
    EXPECT_MEMBER(void(int), Receiver, serverPipeOnReceiveDriverReadArrayElementCmd);
    EXPECT_MEMBER(void(int), Receiver, serverPipeOnReceiveDriverIpSettingChangedCmd);
    EXPECT_MEMBER(bool() const, Receiver, hasDriverSetSessionCmd);
    EXPECT_MEMBER(bool() const, Receiver, hasDriverReadCmd);
    EXPECT_MEMBER(bool(), Receiver, hasDriverReadArrayElementCmd);
    EXPECT_MEMBER(bool() const, Receiver, hasDriverIpSettingChangedCmd);
    EXPECT_MEMBER(bool(), Receiver, hasDriverWriteCmd);
    EXPECT_MEMBER(void(), Receiver, clearDriverSetSessionCmd);
    EXPECT_MEMBER(void(), Receiver, clearDriverReadCmd);
    EXPECT_MEMBER(void(), Receiver, clearDriverReadArrayElementCmd);
    EXPECT_MEMBER(void(), Receiver, clearDriverIpSettingChangedCmd);
    EXPECT_MEMBER(void(), Receiver, clearDriverWriteCmd);
    typedef QHash<QString, int> Session;
    EXPECT_MEMBER(QList<LgxReadCmd>(bool*), Receiver, driverSetSessionCmd);
    EXPECT_MEMBER(Session(bool*), Receiver, driverSetSessionCmd2);
    EXPECT_MEMBER(LgxReadCmd(int&, Id&, bool*), Receiver, driverReadCmd);
    EXPECT_MEMBER(bool(int&, Id&, QString&, QString&, _LGX_Data_Type&, int&, int&, int&), Receiver,
                  driverReadArrayElementsCmd);
    EXPECT_MEMBER(bool(int&, Id&, QString&, Id&), Receiver, driverIpSettingChangedCmd);
}

TEST(EipNames, Answers) {
    typedef CipPlcDriverCallback Receiver;
    EXPECT_MEMBER(bool(int, Id, bool), Receiver, sendSetSessionRsp);
    EXPECT_MEMBER(bool(int, Id, const QByteArray&), Receiver, sendDriverReadRsp);
    EXPECT_MEMBER(bool(int, Id, const QString&), Receiver, sendDriverReadFailRsp);
    EXPECT_MEMBER(bool(int, Id), Receiver, sendDriverWriteOkRsp);
    EXPECT_MEMBER(bool(int, Id, const QString&), Receiver, sendDriverWriteFailRsp);
    EXPECT_MEMBER(bool(int, Id, const QByteArray&), Receiver, sendDriverReadArrayElementRsp);
    EXPECT_MEMBER(bool(int, Id, const QString&), Receiver, sendDriverReadArrayElementFailRsp);
    EXPECT_MEMBER(bool(int, Id), Receiver, sendDriverIpSettingChangedOkRsp);
    EXPECT_MEMBER(bool(int, Id, const QString&), Receiver, sendDriverIpSettingChangedFailRsp);
}

TEST(EipNames, ValueCache) {
    typedef LgxDataCache Cache;
    LgxDataCache cache;
    EXPECT_FALSE(cache.hasKey(LgxDataCache::keyFrom("A", 1)));
    EXPECT_FUNCTION(QString(const QString&, int), LgxDataCache::keyFrom);
    EXPECT_MEMBER(void(const QString&, const QByteArray&), Cache, insert);
    EXPECT_MEMBER(bool(const QString&, QByteArray&) const, Cache, value);
    EXPECT_MEMBER(bool(const QString&, QByteArray&, int) const, Cache, value);
    EXPECT_MEMBER(bool(const QString&) const, Cache, hasKey);
    EXPECT_MEMBER(void(), Cache, clear);
    typedef CipPlcDriverCallback Receiver;
    EXPECT_MEMBER(bool(const QString&, QByteArray&), Receiver, cacheValue);
    EXPECT_MEMBER(bool(const QString&, QByteArray&, int), Receiver, cacheValue);
    EXPECT_MEMBER(bool(const QString&), Receiver, cacheContains);
    EXPECT_MEMBER(void(const QString&, const QByteArray&), Receiver, cacheInsert);
    EXPECT_MEMBER(void(), Receiver, cacheClear);
}

/// Passes on what the worker offers to its kind only.
class Worker : public EipWorker {
 public:
    using EipWorker::processDriverIpSettingChangedCmd;
    using EipWorker::processDriverReadArrayElementCmd;
    using EipWorker::processDriverReadCmd;
    using EipWorker::processDriverWriteCmd;
    using EipWorker::readFromPLC;
    using EipWorker::run;
    using EipWorker::sessionReadCmdHashContains;
    using EipWorker::sessionReadCmdHashValue;
    using EipWorker::updateCache;
    using EipWorker::writeToPLC;
};

TEST(EipNames, Worker) {
    EXPECT_TRUE((std::is_base_of<QThread, EipWorker>::value));
    typedef CipPlcDriverCallback Receiver;
    EXPECT_TRUE(
        (std::is_constructible<EipWorker, Receiver*, const QString&, Id, unsigned long>::value));
    Receiver receiver;
    EipWorker worker(&receiver, "127.0.0.1", 44818, 1000, std::vector<Byte>(2, 0));
    EXPECT_FALSE(worker.connectionIsOpened());
    EXPECT_MEMBER(void(), Worker, run);
    EXPECT_MEMBER(void(), EipWorker, stop);
    EXPECT_MEMBER(bool(), EipWorker, openConnection);
    EXPECT_MEMBER(void(), EipWorker, closeConnection);
    EXPECT_MEMBER(bool() const, EipWorker, connectionIsOpened);
    EXPECT_MEMBER(QString() const, EipWorker, errStr);
    EXPECT_MEMBER(void(const QString&), EipWorker, setErrStr);
    EXPECT_MEMBER(bool() const, EipWorker, hasErr);
    EXPECT_MEMBER(void(), EipWorker, clearErr);
    EXPECT_MEMBER(void(Receiver*), EipWorker, setCPDC);
    EXPECT_MEMBER(void(unsigned long), EipWorker, sleep);
    EXPECT_MEMBER(bool(const QString&, QByteArray&), EipWorker, cacheValue);
    EXPECT_MEMBER(bool(const QString&, QByteArray&, int), EipWorker, cacheValue);
    EXPECT_MEMBER(int(int, const char*, int), EipWorker, sendCmd);
    EXPECT_MEMBER(bool(int, char*, int, int*), EipWorker, recvRsp);
    EXPECT_MEMBER(bool(bool*, QString*), Worker, processDriverReadCmd);
    EXPECT_MEMBER(bool(bool*, QString*), Worker, processDriverReadArrayElementCmd);
    EXPECT_MEMBER(bool(QString*, bool*), Worker, processDriverWriteCmd);
    EXPECT_MEMBER(bool(), Worker, processDriverIpSettingChangedCmd);
    EXPECT_MEMBER(bool(const QString&, int, bool*), Worker, updateCache);
    EXPECT_MEMBER(QByteArray(const QString&, int, bool*), Worker, readFromPLC);
    EXPECT_MEMBER(bool(const QString&, _LGX_Data_Type, QByteArray&, Id, bool*), Worker, writeToPLC);
    EXPECT_MEMBER(bool(const QString&) const, Worker, sessionReadCmdHashContains);
    EXPECT_MEMBER(int(const QString&) const, Worker, sessionReadCmdHashValue);
}

}  // namespace
