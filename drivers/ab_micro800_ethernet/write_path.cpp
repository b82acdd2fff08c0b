// How the runtime sets a value: one request, one answer, never repeated.

#include <exception>

#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"
#include "drivers/ab_micro800_ethernet/micro800_worker.h"
#include "eip/pipe_protocol.h"
#include "runtime/abstract_device_interface.h"

namespace {

/// The shortest prefix symbol has three characters, so a usable "0:" never occurs before here.
const int kFirstNamePos = 3;

}  // namespace

bool DriverABMicro800Eth::write(AbstractDeviceInterface* device, const CommunicatorCommand& command,
                                const QByteArray& value) {
    try {
        beginAccess("write", command);
        const bool written = writeOnce(device, command, value);
        endAccess(written ? value.size() : -1);
        return written;
    } catch (const std::exception&) {
        noMemoryFor("write", command);
        return false;
    }
}

bool DriverABMicro800Eth::writeOnce(AbstractDeviceInterface* device,
                                    const CommunicatorCommand& command, const QByteArray& value) {
    if (!prepare(device, "write", command)) {
        return false;
    }
    QString name;
    _LGX_Data_Type type = _LGX_Data_Type(0);
    const QByteArray data = isArray(command.address)
                                ? elementToWrite(value, &name, &type)
                                : plainToWrite(command.address, value, &name, &type);
    if (directWrite(name, type, data)) {
        return true;
    }
    appendCmdToWriteCommError(device->stationNumber() & 0xFF, command);
    return false;
}

/// Name, type and bytes for the array element that the element matcher has just found.
QByteArray DriverABMicro800Eth::elementToWrite(const QByteArray& value, QString* name,
                                               _LGX_Data_Type* type) const {
    *name = arrayElementName();
    *type = prefixSymbolToType(arrayPrefixSymbol());
    const int elementSize = _GetLGXDataSize(*type);
    QByteArray data = value;
    if (elementSize < 1) {
        return data;
    }
    // By the remainder, not up to the next element: an odd length stays odd and is refused.
    const int remainder = data.size() % elementSize;
    if (data.size() >= elementSize && remainder > 0) {
        data.append(QByteArray(remainder, 0));
    }
    if (data.size() < elementSize) {
        data.append(QByteArray(elementSize - data.size(), 0));
    }
    return data;
}

/// Name, type and bytes for a plain tag. An address without a usable prefix leaves the name empty.
QByteArray DriverABMicro800Eth::plainToWrite(const QString& address, const QByteArray& value,
                                             QString* name, _LGX_Data_Type* type) const {
    QByteArray data = value;
    const int pos = findNamePos(address);
    if (pos < kFirstNamePos) {
        return data;
    }
    *name = varNameFrom(address, pos);
    *type = prefixSymbolToType(prefixSymbolFrom(address, pos));
    const int elementSize = _GetLGXDataSize(*type);
    if (elementSize < 1) {
        return data;
    }
    if (data.size() < elementSize) {
        data.append(QByteArray(elementSize - data.size(), 0));
    } else {
        data.truncate(elementSize);
    }
    return data;
}

bool DriverABMicro800Eth::directWrite(const QString& name, _LGX_Data_Type type,
                                      const QByteArray& data) {
    const QByteArray text = name.toLatin1();
    const unsigned short id = nextTID(0);
    // A name that ends at a NUL before its end would be another tag's.
    const bool whole = !text.contains('\0');
    const int length =
        whole ? LgxDriverPackMicro800WriteCmd(cmdBuf.data(), static_cast<int>(cmdBuf.size()), id,
                                              text.constData(), type, data)
              : -1;
    return workerConfirms(length, LgxDriverCheckWriteRsp);
}

bool DriverABMicro800Eth::workerConfirms(int length, AnswerCheck check) {
    if (!sendToWorker(cmdBuf.data(), length) || !recvRspFromWorker()) {
        return false;
    }
    QString errorText;
    if (!check(rspBuf.data(), tid(0), errorText)) {
        setCommError(errorText);
        return false;
    }
    return true;
}

void DriverABMicro800Eth::appendCmdToWriteCommError(int, const CommunicatorCommand& command) {
    prefixCommError("write", command);
}
