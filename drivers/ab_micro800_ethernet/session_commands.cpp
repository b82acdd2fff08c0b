// The list of tags that the runtime wants kept fresh, on its way to the worker.

#include <QSet>
#include <QtDebug>

#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"
#include "drivers/ab_micro800_ethernet/border.h"
#include "drivers/ab_micro800_ethernet/micro800_worker.h"
#include "eip/lgx_data_cache.h"
#include "eip/pipe_protocol.h"

namespace {

const int kSessionPipe = 1;
const int kLineSize = 4096;

/// A usable plain address has at least three characters before its "0:".
const int kFirstNamePos = 3;

/// A name that a line can carry: the separators and line ends are control characters.
bool canBeSent(const QString& name) {
    for (int i = 0; i < name.size(); ++i) {
        if (name.at(i).unicode() < 0x20) {
            return false;
        }
    }
    return !name.isEmpty();
}

}  // namespace

void DriverABMicro800Eth::setSessionCommand(QList<CommunicatorCommand> list) {
    if (list.isEmpty()) {
        return;
    }
    if (worker && worker->isRunning()) {
        pendingSessionCommands.clear();  // commands not sent yet are out of date
        withoutThrowing(false, [&] { return sendSetSessionCmd(list); });
    } else {
        pendingSessionCommands = list;
    }
}

void DriverABMicro800Eth::clearSessionCommand() {}

/// The tag and element count to poll for one command; false for an address that names none.
bool DriverABMicro800Eth::sessionEntryFrom(const CommunicatorCommand& command, LgxReadCmd* entry) {
    if (isArray1(command.address)) {
        const _LGX_Data_Type type = prefixSymbolToType(arrayPrefixSymbol1());
        // Without an element size nothing can be cut out of a whole array.
        if (arrayDefined(arrayName1()) && _GetLGXDataSize(type) > 0) {
            entry->name = arrayName1();
            entry->count = arraySize(entry->name);
        } else {
            entry->name = arrayElementName1();
            entry->count = numberFrom(command.getDataSize(), type);
        }
        return true;
    }
    const int pos = findNamePos(command.address);
    if (pos >= kFirstNamePos) {
        entry->name = varNameFrom(command.address, pos);
        entry->count = 1;
    }
    return pos >= kFirstNamePos && canBeSent(entry->name);
}

bool DriverABMicro800Eth::sendSetSessionCmd(QList<CommunicatorCommand>& list) {
    QList<LgxReadCmd> entries;
    QSet<QString> keys;
    for (int i = 0; i < list.size(); ++i) {
        LgxReadCmd entry;
        if (!sessionEntryFrom(list.at(i), &entry)) {
            qDebug("%s:%d:invalid address: %s", "session_commands", __LINE__,
                   list.at(i).address.toLatin1().constData());
            continue;
        }
        const QString key = LgxDataCache::keyFrom(entry.name, entry.count);
        if (!keys.contains(key)) {
            keys.insert(key);
            entries.append(entry);
        }
    }
    return deliverSession(entries);
}

bool DriverABMicro800Eth::deliverSession(const QList<LgxReadCmd>& entries) {
    QMutexLocker lock(&sessionMutex);
    unsigned short id = nextTID(kSessionPipe);
    if (id == 0) {
        id = nextTID(kSessionPipe);  // the worker never answers a session list with id 0
    }
    // One byte more than is sent or received stays zero: the answer is read as a text.
    std::vector<char> line(kLineSize + 1);
    const int length = LgxDriverPackSetSessionCmd(line.data(), kLineSize, id, entries);
    if (length < 1) {
        pendingSessionCommands.clear();  // it will never fit
        return false;
    }
    if (worker->sendCmd(kSessionPipe, line.data(), length) != length) {
        return false;
    }
    line.assign(line.size(), 0);
    int received = 0;
    return worker->recvRsp(kSessionPipe, line.data(), kLineSize, &received) &&
           LgxDriverCheckSetSessionRsp(line.data(), tid(kSessionPipe));
}
