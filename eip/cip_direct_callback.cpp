#include "eip/cip_direct_callback.h"

#include <errno.h>

#include "eip/byte_stream_device.h"
#include "eip/cip/cip_error.h"
#include "eip/cip/encap_header.h"
#include "eip/reply_buffer.h"

namespace {

/// Reads all of it or records why not.
bool readWhole(ByteStreamDevice* device, char* at, int length) {
    const int got = device->read(at, length);
    if (got == length) {
        return true;
    }
    if (got == 0) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_RECEIVE_TIMEOUT, 0);
    } else {
        CIPERROR(CIP_ERR_SYSTEM, errno, 0);
    }
    return false;
}

}  // namespace

CipDirectCallback::CipDirectCallback(ByteStreamDevice* streamDevice) : device(streamDevice) {}

CipDirectCallback::~CipDirectCallback() {}

int CipDirectCallback::sendData(const _Encap_Header* request) {
    device->control(kByteStreamBeforeSend, QVariant());
    return device->write(reinterpret_cast<const char*>(request),
                         kEncapHeaderSize + _GetEncapLength(request));
}

_Encap_Header* CipDirectCallback::recvData(int timeoutMs) {
    (void)timeoutMs;
    _Encap_Header header;
    if (!readWhole(device, reinterpret_cast<char*>(&header), kEncapHeaderSize)) {
        return 0;
    }
    const int length = _GetEncapLength(&header);
    cip::MallocPtr<unsigned char> reply = replyBuffer(header);
    if (!reply) {
        return 0;
    }
    char* const body = reinterpret_cast<char*>(reply.get() + kEncapHeaderSize);
    if (length > 0 && !readWhole(device, body, length)) {
        return 0;
    }
    return reinterpret_cast<_Encap_Header*>(reply.release());
}

_Encap_Header* CipDirectCallback::sendDataWaitReply(const _Encap_Header* request, int unused,
                                                    int timeoutMs) {
    (void)unused;
    device->control(kByteStreamBeforeSend, QVariant());
    sendData(request);
    return recvData(timeoutMs);
}
