#ifndef EIP_CIP_CIP_CALLBACK_H
#define EIP_CIP_CIP_CALLBACK_H

struct _Encap_Header;

/// The transport under the CIP client: carries whole encapsulated messages.
///
/// The client library owns no socket and no clock; it passes every request to an object of this
/// class. Used by one thread at a time. The slot order is part of the contract.
class CipCallback {
 public:
    virtual ~CipCallback() {}

    /// Receives one whole encapsulated reply (24-byte header, then the bytes that its length field
    /// counts). Returns a malloc()ed buffer that the caller frees, or null.
    virtual _Encap_Header* recvData(int timeoutMs) = 0;

    /// Sends one whole encapsulated request (24 bytes + its length field). Returns the number of
    /// bytes sent, 0 or a negative number on failure.
    virtual int sendData(const _Encap_Header* request) = 0;

    /// Sends a request and receives the reply to it, as the two operations above.
    virtual _Encap_Header* sendDataWaitReply(const _Encap_Header* request, int unused,
                                             int timeoutMs) = 0;
};

#endif
