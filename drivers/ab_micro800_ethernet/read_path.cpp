// How the runtime gets a value: from the worker's cache, else from the controller.

#include <algorithm>
#include <cstring>
#include <exception>

#include "common/index_list.h"
#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"
#include "drivers/ab_micro800_ethernet/micro800_worker.h"
#include "eip/lgx_data_cache.h"
#include "eip/pipe_protocol.h"
#include "runtime/abstract_device_interface.h"

namespace {

/// More than any encapsulated message carries; a command beyond it is a mistake of its sender.
const int kLargestData = 65535;

/// Addresses whose work is kept; a panel has some hundreds. Beyond, all are worked out anew.
const int kMaxReadTargets = 4096;

/// Values up to this size, which is more than any string has, are served from the cache in memory
/// that is kept.
const int kKeptValueSize = 512;

/// The position of the transaction id in a line: after the code and a tab.
const int kIdPos = 3;

/// Cuts the value, or appends zeros.
void fitTo(int size, QByteArray* data) {
    const int before = data->size();
    data->resize(size);
    if (before < size) {
        std::memset(data->data() + before, 0, static_cast<size_t>(size - before));
    }
}

}  // namespace

QByteArray DriverABMicro800Eth::read(AbstractDeviceInterface* device,
                                     const CommunicatorCommand& command) {
    QByteArray data;
    try {
        beginAccess("read", command);
        data = readWithRetries(device, command);
        endAccess(data.isEmpty() ? -1 : data.size());
    } catch (const std::exception&) {
        data = QByteArray();
        noMemoryFor("read", command);
    }
    return data;
}

QByteArray DriverABMicro800Eth::readWithRetries(AbstractDeviceInterface* device,
                                                const CommunicatorCommand& command) {
    if (!prepare(device, "read", command)) {
        return QByteArray();
    }
    if (command.unitKind > kUnitKindMax) {
        return QByteArray();
    }
    QByteArray data;
    for (int retries = 0;; ++retries) {
        const Attempt attempt = readAttempt(command, &data);
        // Only a value takes back what an earlier attempt reported. Without a line from the worker
        // nothing new is known, and a further attempt would wait as long again.
        if (attempt == kValue) {
            clearCommError();
        }
        if (attempt != kFailure || retries >= device->retryCount()) {
            break;
        }
    }
    if (commError) {
        appendCmdToReadCommError(device->stationNumber() & 0xFF, command);
    }
    return data;
}

/// What a read and a write begin with: array declarations, a worker, and one that is not in
/// trouble. False leaves the reason as the error.
bool DriverABMicro800Eth::prepare(AbstractDeviceInterface* device, const char* verb,
                                  const CommunicatorCommand& command) {
    if (!readDB(device)) {
        return false;
    }
    const bool isFirst = !worker;
    // A list that the worker did not take is sent again, and delays no later access.
    const bool isReady = (!isFirst && pendingSessionCommands.isEmpty()) || initWorker(device);
    if (isFirst && !isReady) {
        const QString reason = worker ? worker->errStr() : lastError;
        setCommError(reason.isEmpty() ? QString::fromLatin1("session commands not accepted")
                                      : reason);
        prefixCommError(verb, command);
        return false;
    }
    clearCommError();
    if (worker->hasErr()) {
        setCommError(worker->errStr());
        prefixCommError(verb, command);
        return false;
    }
    return true;
}

/// One attempt; a value is fitted to the size that the command asks for. Leaves the error of an
/// earlier attempt as it is.
DriverABMicro800Eth::Attempt DriverABMicro800Eth::readAttempt(const CommunicatorCommand& command,
                                                              QByteArray* data) {
    const int wanted = command.getDataSize();
    if (wanted > kLargestData) {
        setCommError(QLatin1String("data size too large"));
        return kFailure;
    }
    ReadTarget& target = readTarget(command);
    if (readCached(&target, data)) {
        return kValue;
    }
    const bool failedBefore = commError;
    commError = false;
    *data = readUncached(target);
    const bool failed = commError;
    commError = failed || failedBefore;
    if (data->isEmpty()) {
        return failed ? kFailure : kNoLine;
    }
    fitTo(wanted, data);
    return kValue;
}

QByteArray DriverABMicro800Eth::readData(const CommunicatorCommand& command) {
    const ReadTarget& target = readTarget(command);
    QByteArray data;
    return cachedValue(target, &data) ? data : readUncached(target);
}

/// What the cache has for the target, of its own size; false leaves anything in `value`.
bool DriverABMicro800Eth::cachedValue(const ReadTarget& target, QByteArray* value) {
    if (!target.isValid) {
        return false;
    }
    if (target.isDeclared) {
        value->resize(target.dataSize);
        return worker->cacheValue(target.key, *value, target.byteOffset);
    }
    if (!worker->cacheValue(target.key, *value)) {
        return false;
    }
    if (!target.isElement && value->isEmpty()) {
        value->append('\0');
    }
    return !target.isElement || value->size() >= target.dataSize;
}

/// Serves a read from the cache, fitted. Of a small value the bytes lie in memory that the target
/// keeps and `data` shares: while the host lets go of each value before it reads the next one,
/// nothing is allocated.
bool DriverABMicro800Eth::readCached(ReadTarget* target, QByteArray* data) {
    QByteArray own;
    QByteArray* const value = target->dataSize <= kKeptValueSize ? &target->value : &own;
    if (!value->isDetached() || value->capacity() < target->dataSize) {
        *value = QByteArray();
        value->reserve(target->dataSize);
    }
    if (!cachedValue(*target, value)) {
        return false;
    }
    fitTo(target->dataSize, value);
    *data = *value;
    return true;
}

/// Asks the worker for the target's value.
QByteArray DriverABMicro800Eth::readUncached(const ReadTarget& target) {
    if (!target.isValid) {
        setCommError(QLatin1String("invalid array element"));
        return QByteArray();
    }
    return target.isDeclared
               ? directReadArrayElements(target.arrayName, target.indexText, target.type,
                                         target.elementCount, target.arraySize, target.byteOffset)
               : directRead(target.name, target.elementCount);
}

/// The worked-out address of the command, kept from an earlier read where there was one.
DriverABMicro800Eth::ReadTarget& DriverABMicro800Eth::readTarget(
    const CommunicatorCommand& command) {
    const QHash<QString, ReadTarget>::iterator kept = readTargets.find(command.address);
    const int dataSize = command.getDataSize();
    if (kept != readTargets.end() && kept->dataSize == dataSize) {
        return *kept;
    }
    if (readTargets.size() >= kMaxReadTargets) {
        readTargets.clear();
    }
    return *readTargets.insert(command.address, makeReadTarget(command));
}

DriverABMicro800Eth::ReadTarget DriverABMicro800Eth::makeReadTarget(
    const CommunicatorCommand& command) {
    ReadTarget target = ReadTarget();
    target.dataSize = command.getDataSize();
    target.isValid = true;
    target.elementCount = 1;
    target.isElement = isArray(command.address);
    if (!target.isElement) {
        target.name = parseVarName(command.address);
        target.key = LgxDataCache::keyFrom(target.name, 1);
        return target;
    }
    target.arrayName = arrayName();
    target.name = arrayElementName();
    target.type = prefixSymbolToType(arrayPrefixSymbol());
    target.isValid = indexesFit(arrayIndex());
    target.elementCount = numberFrom(target.dataSize, target.type);
    const int elementSize = _GetLGXDataSize(target.type);
    // Without an element size there is no offset into the whole array: the element is a tag.
    target.isDeclared = elementSize > 0 && arrayDefined(target.arrayName);
    if (target.isDeclared) {
        target.indexText = QLatin1Char('[') + arrayIndex() + QLatin1Char(']');
        target.arraySize = arraySize(target.arrayName);
        target.byteOffset = arrayElementByteOffset(target.arrayName, arrayIndex(), elementSize);
        target.key = LgxDataCache::keyFrom(target.arrayName, target.arraySize);
    } else {
        target.key = LgxDataCache::keyFrom(target.name, target.elementCount);
    }
    return target;
}

QByteArray DriverABMicro800Eth::directRead(const QString& name, int count) {
    const int length = LgxDriverPackReadCmd(cmdBuf.data(), static_cast<int>(cmdBuf.size()),
                                            nextTID(0), name, count);
    return workersValue(length, LgxDriverReadRspToByteArray);
}

QByteArray DriverABMicro800Eth::directReadArrayElements(const QString& arrayName,
                                                        const QString& indexText,
                                                        _LGX_Data_Type type, int elementCount,
                                                        int arraySize, int byteOffset) {
    const int length = LgxDriverPackMicro800ReadArrayElementsCmd(
        cmdBuf.data(), static_cast<int>(cmdBuf.size()), nextTID(0), arrayName, indexText, type,
        elementCount, arraySize, byteOffset);
    return workersValue(length, LgxDriverReadArrayElementRspToByteArray);
}

QByteArray DriverABMicro800Eth::workersValue(int length, AnswerDecoder decode) {
    if (!sendToWorker(cmdBuf.data(), length) || !recvRspFromWorker()) {
        return QByteArray();
    }
    QString errorText;
    const QByteArray data = decode(rspBuf.data(), tid(0), errorText);
    if (data.isEmpty()) {
        setCommError(errorText);
    }
    return data;
}

/// Sends a packed line on pipe 0; a line that could not be packed is not sent and the operator
/// hears why.
bool DriverABMicro800Eth::sendToWorker(const char* line, int length) {
    if (length < 1) {
        setCommError(QLatin1String("address or value does not fit a command"));
        return false;
    }
    awaitOutstandingAnswer();
    noteAsked();
    worker->sendCmd(0, line, length);
    sentId = tid(0);
    return true;
}

/// After a late answer was taken for a failed attempt, the answer to that attempt itself is still
/// to come. The driver waits for it and discards it, or every later exchange would lag by one.
void DriverABMicro800Eth::awaitOutstandingAnswer() {
    while (answerOutstanding) {
        resetRspBuf();
        const bool whole =
            worker->recvRsp(0, rspBuf.data(), static_cast<int>(rspBuf.size()) - 1, &rspLength);
        answerOutstanding = whole && !cutBehindAnswer(sentId);
    }
}

bool DriverABMicro800Eth::recvRspFromWorker() {
    resetRspBuf();
    // One byte stays zero: the line is read as a text.
    if (!worker->recvRsp(0, rspBuf.data(), static_cast<int>(rspBuf.size()) - 1, &rspLength)) {
        return false;
    }
    answerOutstanding = !cutBehindAnswer(sentId);
    return true;
}

/// Looks for the line with this transaction id and drops the bytes after it: no digit of a late
/// answer may end up in the value. False when there is no such line.
bool DriverABMicro800Eth::cutBehindAnswer(unsigned short id) {
    const QByteArray digits = QByteArray::number(id, 16).toUpper().rightJustified(4, '0');
    char* line = rspBuf.data();
    while (char* end = std::strchr(line, '\n')) {
        if (end - line >= kIdPos + digits.size() &&
            std::memcmp(line + kIdPos, digits.constData(), static_cast<size_t>(digits.size())) ==
                0) {
            std::fill(end + 1, rspBuf.data() + rspLength, 0);
            return true;
        }
        line = end + 1;
    }
    return false;
}

void DriverABMicro800Eth::resetRspBuf() {
    if (rspLength > 0) {
        std::fill(rspBuf.begin(), rspBuf.begin() + rspLength, 0);
    }
    rspLength = 0;
}

void DriverABMicro800Eth::appendCmdToReadCommError(int, const CommunicatorCommand& command) {
    prefixCommError("read", command);
}
