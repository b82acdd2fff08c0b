// Hostile lines on the pipes, both ways: the worker's receiver and the driver's checkers.

#include <cstdint>
#include <cstring>
#include <vector>

#include "eip/cip_plc_driver_callback.h"
#include "eip/pipe_protocol.h"

namespace {

void receive(CipPlcDriverCallback& receiver, const uint8_t* data, size_t size) {
    receiver.sendClientPipe(size % 2 ? 1 : 0, reinterpret_cast<const char*>(data), int(size));
    receiver.emptyRxBuffer();
    int pipe = 0;
    unsigned short tid = 0;
    bool ok = false;
    (void)receiver.driverSetSessionCmd(&ok);
    (void)receiver.driverSetSessionCmd2(&ok);
    (void)receiver.driverReadCmd(pipe, tid, &ok);
    QString text;
    QString index;
    _LGX_Data_Type type = _LGX_Data_Type(0);
    int numbers[3];
    receiver.driverReadArrayElementsCmd(pipe, tid, text, index, type, numbers[0], numbers[1],
                                        numbers[2]);
    unsigned short port = 0;
    receiver.driverIpSettingChangedCmd(pipe, tid, text, port);
    receiver.clearDriverReadCmd();
    receiver.clearDriverReadArrayElementCmd();
    receiver.clearDriverSetSessionCmd();
    // The polled names of the last list go too: what is then left is left by mistake, and the leak
    // check, which takes milliseconds, runs for that only.
    (void)receiver.driverSetSessionCmd2(&ok);
    receiver.clearDriverIpSettingChangedCmd();
    receiver.discardClientPipe(0);
    receiver.discardClientPipe(1);
}

void check(const uint8_t* data, size_t size) {
    std::vector<char> text(data, data + size);
    text.push_back('\0');
    QString err;
    (void)LgxDriverReadRspToByteArray(text.data(), 1, err);
    (void)LgxDriverReadArrayElementRspToByteArray(text.data(), 1, err);
    LgxDriverCheckWriteRsp(text.data(), 1, err);
    LgxDriverCheckIpSettingChangedRsp(text.data(), 1, err);
    LgxDriverCheckSetSessionRsp(text.data(), 1);
    // Whatever is put into a line as a name must not end it.
    std::vector<char> line(256);
    const int length = LgxDriverPackReadCmd(line.data(), int(line.size()), 1,
                                            QString::fromLatin1(text.data(), int(size)), 1);
    if (length > 0 && std::memchr(line.data(), '\n', size_t(length) - 1)) {
        __builtin_trap();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static CipPlcDriverCallback receiver;
    receive(receiver, data, size < 8192 ? size : 8192);
    check(data, size);
    return 0;
}
