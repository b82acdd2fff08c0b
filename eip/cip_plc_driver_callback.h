#ifndef EIP_CIP_PLC_DRIVER_CALLBACK_H
#define EIP_CIP_PLC_DRIVER_CALLBACK_H

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <memory>

#include "eip/cip/logix_services.h"
#include "eip/cip_tcp_callback.h"
#include "eip/lgx_data_cache.h"
#include "eip/pipe_protocol.h"

/// The worker's transport with the receiver of the driver's commands on top.
///
/// A line that arrives on a pipe is parsed and kept as the pending command of its kind, one of
/// each kind at most: a later one replaces it. The worker takes, clears and answers it. A read of
/// a name that is itself a key of the cache is answered at once. A malformed line is dropped
/// without an answer.
///
/// Threads: the worker's, but for the cache forwarders and the client ends of the pipes.
class CipPlcDriverCallback : public CipTcpCallback {
 public:
    CipPlcDriverCallback();
    virtual ~CipPlcDriverCallback();

    // ---- receiving (virtual operations in slot order) ----------------------------------------

    /// Takes one line from the pipe, stores it by its code; answers set session unless its id
    /// is 0.
    virtual void serverPipeOnReceive(int pipe);
    /// Store the line that was received. The write slots are empty here.
    virtual void serverPipeOnReceiveDriverWriteCmd(int pipe);
    virtual void serverPipeOnReceiveDriverReadCmd(int pipe);
    virtual void serverPipeOnReceiveDriverReadArrayElementCmd(int pipe);
    virtual bool hasDriverWriteCmd();
    virtual void clearDriverWriteCmd();
    virtual bool hasDriverReadArrayElementCmd();
    virtual void clearDriverReadArrayElementCmd();

    void serverPipeOnReceiveDriverIpSettingChangedCmd(int pipe);
    /// Receives one line into the command buffer; false when there is none, whole and within
    /// 4096 bytes. Never waits.
    bool recvCmd(int pipe);

    // ---- pending commands --------------------------------------------------------------------

    bool hasDriverSetSessionCmd() const;
    bool hasDriverReadCmd() const;
    bool hasDriverIpSettingChangedCmd() const;
    void clearDriverSetSessionCmd();
    void clearDriverReadCmd();
    void clearDriverIpSettingChangedCmd();

    // These leave the command pending: the worker clears it, also when it does not parse. `ok`
    // (may be null) and the boolean results are false when none is pending or a field does not
    // parse; then the result is empty and the references are untouched.

    /// The session list in line order.
    QList<LgxReadCmd> driverSetSessionCmd(bool* ok);
    /// The same by tag name; of entries with one name the last counts.
    QHash<QString, int> driverSetSessionCmd2(bool* ok);
    LgxReadCmd driverReadCmd(int& pipe, unsigned short& tid, bool* ok);
    bool driverReadArrayElementsCmd(int& pipe, unsigned short& tid, QString& arrayName,
                                    QString& indexText, _LGX_Data_Type& type, int& elementCount,
                                    int& arraySize, int& byteOffset);
    bool driverIpSettingChangedCmd(int& pipe, unsigned short& tid, QString& ip,
                                   unsigned short& port);

    // ---- answers: true only when the whole line went into the pipe ---------------------------

    bool sendSetSessionRsp(int pipe, unsigned short tid, bool ok);
    bool sendDriverReadRsp(int pipe, unsigned short tid, const QByteArray& data);
    bool sendDriverReadFailRsp(int pipe, unsigned short tid, const QString& err);
    bool sendDriverWriteOkRsp(int pipe, unsigned short tid);
    bool sendDriverWriteFailRsp(int pipe, unsigned short tid, const QString& err);
    bool sendDriverReadArrayElementRsp(int pipe, unsigned short tid, const QByteArray& data);
    bool sendDriverReadArrayElementFailRsp(int pipe, unsigned short tid, const QString& err);
    bool sendDriverIpSettingChangedOkRsp(int pipe, unsigned short tid);
    bool sendDriverIpSettingChangedFailRsp(int pipe, unsigned short tid, const QString& err);

    /// Answers what the driver still waits for on either pipe with a failure, and forgets it. For a
    /// worker that ran out of memory over it: takes none itself.
    void failUnanswered();

    // ---- value cache: any thread, see LgxDataCache -------------------------------------------

    bool cacheValue(const QString& key, QByteArray& out);
    bool cacheValue(const QString& key, QByteArray& out, int offset);
    bool cacheContains(const QString& key);
    void cacheInsert(const QString& key, const QByteArray& value);
    void cacheWithhold(const QString& key);
    void cacheWithholdAll();
    void cacheClear();

 protected:
    /// Makes the received line the pending command `pending`, with the pipe index in place of the
    /// code. False, and nothing is pending, unless it has `fieldCount` fields.
    bool storeCmd(int pipe, int fieldCount, QStringList& pending);

    /// Parses the first two fields of a stored command: pipe index and transaction id.
    static bool parseOrigin(const QStringList& fields, int* pipe, unsigned short* tid);
    /// Parses a data type code, hexadecimal, at most 0xFF.
    static bool parseType(const QString& text, _LGX_Data_Type* type);

 private:
    void takeLine(int pipe);
    bool storeSetSessionCmd(unsigned short* tid);
    bool sendRsp(int pipe, int length);

    class Impl;
    std::unique_ptr<Impl> d;
};

#endif
