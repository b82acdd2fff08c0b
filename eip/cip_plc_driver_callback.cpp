#include "eip/cip_plc_driver_callback.h"

#include <QSet>
#include <QtDebug>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

namespace {

const int kSourceLine = 409;

// Fields of a line, by number; the pipe index takes the code's place once a command is stored.
enum { kCode = 0, kPipe = 0, kId = 1, kFirstArgument = 2 };

const int kReadFields = 4;
const int kReadArrayElementFields = 8;
const int kIpSettingChangedFields = 4;
const int kSetSessionFieldsMin = 4;

const int kHex = 16;

/// Code, tab and transaction id, with which every line begins.
const int kHeadSize = 7;
const int kIdPos = 3;

const char kNoMemory[] = "not enough memory";

void setOk(bool* ok, bool value) {
    if (ok) {
        *ok = value;
    }
}

/// The fields between tabs; empty ones do not count.
QStringList splitFields(const QString& line) {
    QStringList fields;
    int start = 0;
    while (start < line.size()) {
        int end = line.indexOf(QLatin1Char('\t'), start);
        if (end < 0) {
            end = line.size();
        }
        if (end > start) {
            fields.append(line.mid(start, end - start));
        }
        start = end + 1;
    }
    return fields;
}

}  // namespace

/// Worker thread only, but for the cache.
class CipPlcDriverCallback::Impl {
 public:
    Impl() : cmdLen(0) {
        std::memset(cmdBuf, 0, sizeof cmdBuf);
        std::memset(rspBuf, 0, sizeof rspBuf);
        std::memset(unanswered, 0, sizeof unanswered);
    }

    /// The fields of the received line.
    QStringList fields() const {
        return splitFields(QString::fromLatin1(cmdBuf, cmdLen).trimmed());
    }

    char cmdBuf[kPipeLineSize + 1];  ///< the last byte stays zero: a full line is a text too
    int cmdLen;
    char rspBuf[kPipeLineSize];
    char unanswered[2][kHeadSize + 1];  ///< how the last line of each pipe began; empty: none
    QStringList setSession;             ///< name, count, name, count, ...
    QStringList read;
    QStringList readArrayElement;
    QStringList ipSettingChanged;
    QSet<QString> polledKeys;  ///< cache keys of the list that the worker took last
    LgxDataCache cache;
};

CipPlcDriverCallback::CipPlcDriverCallback() : d(new Impl) {}

CipPlcDriverCallback::~CipPlcDriverCallback() {}

bool CipPlcDriverCallback::recvCmd(int pipe) {
    std::memset(d->cmdBuf, 0, static_cast<size_t>(d->cmdLen));
    d->cmdLen = recvServerPipeLine(pipe, d->cmdBuf, kPipeLineSize);
    // After the line the buffer may contain the beginning of the next one.
    d->cmdBuf[d->cmdLen] = 0;
    char* const head = d->unanswered[pipe == 0 ? 0 : 1];
    const int headSize = d->cmdLen < kHeadSize ? d->cmdLen : kHeadSize;
    std::memcpy(head, d->cmdBuf, static_cast<size_t>(headSize));
    head[headSize] = 0;
    return d->cmdLen > 0;
}

void CipPlcDriverCallback::serverPipeOnReceive(int pipe) {
    // In the middle of an exchange with the controller, which goes on even if the line is lost.
    try {
        takeLine(pipe);
    } catch (const std::exception&) {
        failUnanswered();
    }
}

void CipPlcDriverCallback::takeLine(int pipe) {
    if (!recvCmd(pipe)) {
        return;
    }
    switch (std::strtoul(d->cmdBuf, 0, kHex) & 0xFF) {
        case kLgxDriverSetSession: {
            unsigned short tid = 0;
            const bool stored = storeSetSessionCmd(&tid);
            if (tid != 0) {
                sendSetSessionRsp(pipe, tid, stored);
            }
            break;
        }
        case kLgxDriverRead:
            serverPipeOnReceiveDriverReadCmd(pipe);
            break;
        case kLgxDriverWrite:
            serverPipeOnReceiveDriverWriteCmd(pipe);
            break;
        case kLgxDriverReadArrayElements:
            serverPipeOnReceiveDriverReadArrayElementCmd(pipe);
            break;
        case kLgxDriverIpSettingChanged:
            serverPipeOnReceiveDriverIpSettingChangedCmd(pipe);
            break;
        default:
            qDebug("%s:%d:%s", "../eip/cip_plc_driver_callback", kSourceLine, d->cmdBuf);
            break;
    }
}

bool CipPlcDriverCallback::storeCmd(int pipe, int fieldCount, QStringList& pending) {
    pending = d->fields();
    if (pending.size() != fieldCount) {
        pending.clear();
        return false;
    }
    pending[kPipe] = QString::number(pipe);
    return true;
}

bool CipPlcDriverCallback::storeSetSessionCmd(unsigned short* tid) {
    QStringList& pending = d->setSession;
    pending = d->fields();
    if (pending.size() >= kSetSessionFieldsMin) {
        *tid = pending.at(kId).toUShort(0, kHex);
    }
    if (pending.size() < kSetSessionFieldsMin || pending.size() % 2 != 0) {
        pending.clear();
        return false;
    }
    pending.removeFirst();
    pending.removeFirst();
    return true;
}

void CipPlcDriverCallback::serverPipeOnReceiveDriverReadCmd(int pipe) {
    if (!storeCmd(pipe, kReadFields, d->read)) {
        return;
    }
    int commandPipe = 0;
    unsigned short tid = 0;
    bool ok = false;
    const LgxReadCmd command = driverReadCmd(commandPipe, tid, &ok);
    if (!ok) {
        clearDriverReadCmd();
        return;
    }
    QByteArray value;
    // A polled entry's key is another tag's name with a count after it: the value under it is that
    // tag's, never this one's.
    if (!d->polledKeys.contains(command.name) && cacheValue(command.name, value)) {
        sendDriverReadRsp(commandPipe, tid, value);
        clearDriverReadCmd();
    }
}

void CipPlcDriverCallback::serverPipeOnReceiveDriverWriteCmd(int pipe) {
    (void)pipe;
}

void CipPlcDriverCallback::serverPipeOnReceiveDriverReadArrayElementCmd(int pipe) {
    storeCmd(pipe, kReadArrayElementFields, d->readArrayElement);
}

void CipPlcDriverCallback::serverPipeOnReceiveDriverIpSettingChangedCmd(int pipe) {
    storeCmd(pipe, kIpSettingChangedFields, d->ipSettingChanged);
}

bool CipPlcDriverCallback::hasDriverSetSessionCmd() const {
    return !d->setSession.isEmpty();
}
bool CipPlcDriverCallback::hasDriverReadCmd() const {
    return !d->read.isEmpty();
}
bool CipPlcDriverCallback::hasDriverReadArrayElementCmd() {
    return !d->readArrayElement.isEmpty();
}
bool CipPlcDriverCallback::hasDriverIpSettingChangedCmd() const {
    return !d->ipSettingChanged.isEmpty();
}
bool CipPlcDriverCallback::hasDriverWriteCmd() {
    return false;
}

void CipPlcDriverCallback::clearDriverSetSessionCmd() {
    d->setSession.clear();
}
void CipPlcDriverCallback::clearDriverReadCmd() {
    d->read.clear();
}
void CipPlcDriverCallback::clearDriverReadArrayElementCmd() {
    d->readArrayElement.clear();
}
void CipPlcDriverCallback::clearDriverIpSettingChangedCmd() {
    d->ipSettingChanged.clear();
}
void CipPlcDriverCallback::clearDriverWriteCmd() {}

bool CipPlcDriverCallback::parseOrigin(const QStringList& fields, int* pipe, unsigned short* tid) {
    if (fields.size() <= kId) {
        return false;
    }
    bool pipeOk = false;
    bool tidOk = false;
    const int parsedPipe = fields.at(kPipe).toInt(&pipeOk);
    const unsigned short parsedTid = fields.at(kId).toUShort(&tidOk, kHex);
    if (!pipeOk || !tidOk) {
        return false;
    }
    *pipe = parsedPipe;
    *tid = parsedTid;
    return true;
}

bool CipPlcDriverCallback::parseType(const QString& text, _LGX_Data_Type* type) {
    bool ok = false;
    const unsigned int code = text.toUInt(&ok, kHex);
    if (!ok || code > 0xFF) {
        return false;
    }
    *type = _LGX_Data_Type(code);
    return true;
}

QList<LgxReadCmd> CipPlcDriverCallback::driverSetSessionCmd(bool* ok) {
    QList<LgxReadCmd> entries;
    bool parsed = !d->setSession.isEmpty();
    for (int i = 0; parsed && i + 1 < d->setSession.size(); i += 2) {
        const int count = d->setSession.at(i + 1).toInt(&parsed);
        entries.append(LgxReadCmd(d->setSession.at(i), count));
    }
    if (!parsed) {
        entries.clear();
    }
    setOk(ok, parsed);
    return entries;
}

QHash<QString, int> CipPlcDriverCallback::driverSetSessionCmd2(bool* ok) {
    const QList<LgxReadCmd> entries = driverSetSessionCmd(ok);
    QHash<QString, int> counts;
    d->polledKeys.clear();
    for (int i = 0; i < entries.size(); ++i) {
        counts.insert(entries.at(i).name, entries.at(i).count);
        d->polledKeys.insert(LgxDataCache::keyFrom(entries.at(i).name, entries.at(i).count));
    }
    return counts;
}

LgxReadCmd CipPlcDriverCallback::driverReadCmd(int& pipe, unsigned short& tid, bool* ok) {
    const QStringList& fields = d->read;
    bool parsed = fields.size() == kReadFields;
    const int count = parsed ? fields.at(kFirstArgument + 1).toInt(&parsed) : 0;
    parsed = parsed && parseOrigin(fields, &pipe, &tid);
    setOk(ok, parsed);
    return parsed ? LgxReadCmd(fields.at(kFirstArgument), count) : LgxReadCmd();
}

bool CipPlcDriverCallback::driverReadArrayElementsCmd(int& pipe, unsigned short& tid,
                                                      QString& arrayName, QString& indexText,
                                                      _LGX_Data_Type& type, int& elementCount,
                                                      int& arraySize, int& byteOffset) {
    const QStringList& fields = d->readArrayElement;
    if (fields.size() != kReadArrayElementFields) {
        return false;
    }
    int numbers[3];
    bool parsed = true;
    for (int i = 0; parsed && i < 3; ++i) {
        numbers[i] = fields.at(kFirstArgument + 3 + i).toInt(&parsed);
    }
    _LGX_Data_Type parsedType = _LGX_Data_Type(0);
    if (!parsed || !parseType(fields.at(kFirstArgument + 2), &parsedType) ||
        !parseOrigin(fields, &pipe, &tid)) {
        return false;
    }
    arrayName = fields.at(kFirstArgument);
    indexText = fields.at(kFirstArgument + 1);
    type = parsedType;
    elementCount = numbers[0];
    arraySize = numbers[1];
    byteOffset = numbers[2];
    return true;
}

bool CipPlcDriverCallback::driverIpSettingChangedCmd(int& pipe, unsigned short& tid, QString& ip,
                                                     unsigned short& port) {
    const QStringList& fields = d->ipSettingChanged;
    if (fields.size() != kIpSettingChangedFields) {
        return false;
    }
    bool parsed = false;
    const unsigned short parsedPort = fields.at(kFirstArgument + 1).toUShort(&parsed);
    if (!parsed || !parseOrigin(fields, &pipe, &tid)) {
        return false;
    }
    ip = fields.at(kFirstArgument);
    port = parsedPort;
    return true;
}

void CipPlcDriverCallback::failUnanswered() {
    for (int pipe = 0; pipe < 2; ++pipe) {
        const char* const head = d->unanswered[pipe];
        if (head[0] == 0) {
            continue;
        }
        const unsigned int code = std::strtoul(head, 0, kHex) & 0xFF;
        const unsigned int tid = std::strtoul(head + kIdPos, 0, kHex) & 0xFFFF;
        // A session list has no text, and with the id 0 no answer.
        const bool isList = code == kLgxDriverSetSession;
        const int length =
            std::snprintf(d->rspBuf, sizeof d->rspBuf, isList ? "%02X\t%04X\n" : "%02X\t%04X\t%s\n",
                          code | kLgxDriverFailFlag, tid, kNoMemory);
        sendRsp(pipe, isList && tid == 0 ? 0 : length);
        if (pipe == 0) {
            // Not to be carried out later: the driver has its answer.
            clearDriverReadCmd();
            clearDriverReadArrayElementCmd();
            clearDriverIpSettingChangedCmd();
            clearDriverWriteCmd();
        } else {
            clearDriverSetSessionCmd();
        }
    }
}

bool CipPlcDriverCallback::sendRsp(int pipe, int length) {
    d->unanswered[pipe == 0 ? 0 : 1][0] = 0;
    return length > 0 && sendServerPipe(pipe, d->rspBuf, length) == length;
}

bool CipPlcDriverCallback::sendSetSessionRsp(int pipe, unsigned short tid, bool ok) {
    return sendRsp(pipe, LgxDriverPackSetSessionRsp(d->rspBuf, sizeof d->rspBuf, tid, ok));
}

bool CipPlcDriverCallback::sendDriverReadRsp(int pipe, unsigned short tid, const QByteArray& data) {
    return sendRsp(pipe, LgxDriverPackReadRsp(d->rspBuf, sizeof d->rspBuf, tid, data));
}

bool CipPlcDriverCallback::sendDriverReadFailRsp(int pipe, unsigned short tid, const QString& err) {
    return sendRsp(pipe, LgxDriverPackReadFailRsp(d->rspBuf, sizeof d->rspBuf, tid, err));
}

bool CipPlcDriverCallback::sendDriverWriteOkRsp(int pipe, unsigned short tid) {
    return sendRsp(pipe, LgxDriverPackWriteRsp(d->rspBuf, sizeof d->rspBuf, tid, 0));
}

bool CipPlcDriverCallback::sendDriverWriteFailRsp(int pipe, unsigned short tid,
                                                  const QString& err) {
    return sendRsp(
        pipe, LgxDriverPackWriteRsp(d->rspBuf, sizeof d->rspBuf, tid, err.toLatin1().constData()));
}

bool CipPlcDriverCallback::sendDriverReadArrayElementRsp(int pipe, unsigned short tid,
                                                         const QByteArray& data) {
    return sendRsp(pipe, LgxDriverPackReadArrayElementRsp(d->rspBuf, sizeof d->rspBuf, tid, data));
}

bool CipPlcDriverCallback::sendDriverReadArrayElementFailRsp(int pipe, unsigned short tid,
                                                             const QString& err) {
    return sendRsp(pipe,
                   LgxDriverPackReadArrayElementFailRsp(d->rspBuf, sizeof d->rspBuf, tid, err));
}

bool CipPlcDriverCallback::sendDriverIpSettingChangedOkRsp(int pipe, unsigned short tid) {
    return sendRsp(pipe, LgxDriverPackIpSettingChangedRsp(d->rspBuf, sizeof d->rspBuf, tid, 0));
}

bool CipPlcDriverCallback::sendDriverIpSettingChangedFailRsp(int pipe, unsigned short tid,
                                                             const QString& err) {
    return sendRsp(pipe, LgxDriverPackIpSettingChangedRsp(d->rspBuf, sizeof d->rspBuf, tid,
                                                          err.toLatin1().constData()));
}

bool CipPlcDriverCallback::cacheValue(const QString& key, QByteArray& out) {
    return d->cache.value(key, out);
}

bool CipPlcDriverCallback::cacheValue(const QString& key, QByteArray& out, int offset) {
    return d->cache.value(key, out, offset);
}

bool CipPlcDriverCallback::cacheContains(const QString& key) {
    return d->cache.hasKey(key);
}

void CipPlcDriverCallback::cacheInsert(const QString& key, const QByteArray& value) {
    d->cache.insert(key, value);
}

void CipPlcDriverCallback::cacheWithhold(const QString& key) {
    d->cache.withhold(key);
}

void CipPlcDriverCallback::cacheWithholdAll() {
    d->cache.withholdAll();
}

void CipPlcDriverCallback::cacheClear() {
    d->cache.clear();
}
