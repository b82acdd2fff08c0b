#ifndef EIP_CIP_DIRECT_CALLBACK_H
#define EIP_CIP_DIRECT_CALLBACK_H

#include "eip/cip/cip_callback.h"

class ByteStreamDevice;

/// The transport over a byte stream of the host instead of a TCP socket of the library's own. No
/// pipes, no driver commands. Used by one thread at a time.
class CipDirectCallback : public CipCallback {
 public:
    /// `device` is not owned and must outlive this object.
    explicit CipDirectCallback(ByteStreamDevice* device);
    virtual ~CipDirectCallback();

    /// Receives one message with one read for the header and one for the body; how long they
    /// wait is the device's business. Returns a malloc()ed buffer that the caller frees. Null on
    /// failure, with the error record (0, -41, 0) when a read returned 0 bytes, else (1, errno, 0).
    virtual _Encap_Header* recvData(int timeoutMs);
    /// Announces the request to the device, then writes 24 bytes + its length field with one
    /// write. Returns the result of that; no error record.
    virtual int sendData(const _Encap_Header* request);
    /// Announces, sends and receives. A failed send shows as a missing reply.
    virtual _Encap_Header* sendDataWaitReply(const _Encap_Header* request, int unused,
                                             int timeoutMs);

 private:
    CipDirectCallback(const CipDirectCallback&) = delete;
    CipDirectCallback& operator=(const CipDirectCallback&) = delete;

    ByteStreamDevice* device;
};

#endif
