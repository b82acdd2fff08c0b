#include "common/command_data.h"

#include "common/bits.h"
#include "common/sizes.h"
#include "runtime/communicator_command.h"

namespace {

const int kLargestCommandData = 64 * 1024;
const int kQuadWord = 8;

}  // namespace

bool isBitCommand(const CommunicatorCommand& command) {
    return command.unitKind == kUnitBit || command.unitKind == kUnitBits;
}

bool isByteCommand(const CommunicatorCommand& command) {
    return command.unitKind == kUnitByte;
}

bool isWordCommand(const CommunicatorCommand& command) {
    return command.unitKind == kUnitWord;
}

bool isDoubleWordCommand(const CommunicatorCommand& command) {
    return command.unitKind == kUnitDoubleWord;
}

bool isBlockCommand(const CommunicatorCommand& command) {
    return command.unitKind == kUnitBlock;
}

QByteArray getBitData(const CommunicatorCommand& command, const QByteArray& data) {
    if (!isBitCommand(command) || GetSafeDataLen(command) == 0) {
        return QByteArray();
    }
    const quint32 room = static_cast<quint32>(command.getDataSize()) * 8;
    const quint32 asked = command.unitCount == 0 ? 1 : command.unitCount;
    return FitBitArray(data, qMin(asked, room));
}

int GetSafeDataLen(const CommunicatorCommand& command) {
    const int size = command.getDataSize();
    if (size < 0 || size > kLargestCommandData) {
        return 0;
    }
    return static_cast<int>(NumOfBytesToNumOfQuadWords(static_cast<quint32>(size))) * kQuadWord;
}

QByteArray ToSafeData(const CommunicatorCommand& command, const QByteArray& data) {
    const int length = GetSafeDataLen(command);
    if (length == 0) {
        return QByteArray();
    }
    QByteArray safe = data.left(command.getDataSize());
    safe.append(QByteArray(length - safe.size(), '\0'));
    return safe;
}

QString ExtractPrefixSymbol(const QString& address) {
    const int colon = address.indexOf(QLatin1Char(':'));
    return colon < 0 ? QString() : address.left(colon);
}

QString ExtractPLCDeviceAddress(const QString& address) {
    return address.mid(address.indexOf(QLatin1Char(':')) + 1);
}
