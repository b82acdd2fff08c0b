#include "drivers/ab_micro800_ethernet/micro800_driver_callback.h"

namespace {

// Fields of a stored write: pipe index, transaction id, name, type, value.
enum { kName = 2, kType, kValue, kWriteFields };

}  // namespace

Micro800DriverCallback::Micro800DriverCallback() {}

Micro800DriverCallback::~Micro800DriverCallback() {}

void Micro800DriverCallback::serverPipeOnReceiveDriverWriteCmd(int pipe) {
    storeCmd(pipe, kWriteFields, pendingWrite);
}

bool Micro800DriverCallback::hasDriverWriteCmd() {
    return !pendingWrite.isEmpty();
}

void Micro800DriverCallback::clearDriverWriteCmd() {
    pendingWrite.clear();
}

LgxMicro800WriteCmd Micro800DriverCallback::driverWriteCmd(int& pipe, unsigned short& tid,
                                                           bool* ok) {
    LgxMicro800WriteCmd command;
    const bool parsed = pendingWrite.size() == kWriteFields &&
                        parseType(pendingWrite.at(kType), &command.type) &&
                        parseOrigin(pendingWrite, &pipe, &tid);
    if (parsed) {
        command.name = pendingWrite.at(kName);
        command.data = QByteArray::fromHex(pendingWrite.at(kValue).toLatin1());
    } else {
        command = LgxMicro800WriteCmd();
    }
    if (ok) {
        *ok = parsed;
    }
    return command;
}
