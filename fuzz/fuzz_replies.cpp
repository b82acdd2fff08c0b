// Hostile replies: for every reply of a controller, the client neither reads outside the reply nor
// returns a value that the reply does not contain.
//
// Input: the replies in turn, each as a 16-bit length and its bytes. A reply's header is put right
// in its length field, as the transport guarantees it, and the sequence count of a connected reply
// may be, so that the decoders after those checks are reached.

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "eip/cip/cip_callback.h"
#include "eip/cip/connection_manager.h"
#include "eip/cip/encapsulation.h"
#include "eip/cip/logix_services.h"

namespace {

const size_t kHeaderSize = 24;

class ScriptedTransport : public CipCallback {
 public:
    ScriptedTransport(const uint8_t* bytes, size_t count) : data(bytes), size(count) {}

    _Encap_Header* recvData(int) override {
        if (size < 2) {
            return nullptr;
        }
        size_t length = data[0] | (data[1] & 0x03) << 8;
        const bool repairSequence = (data[1] & 0x80) != 0;
        data += 2;
        size -= 2;
        length = length < size ? length : size;
        if (length < kHeaderSize) {
            size = 0;
            return nullptr;
        }
        // An allocation of exactly the reply's size: one byte too far is seen.
        unsigned char* reply = static_cast<unsigned char*>(std::malloc(length));
        std::memcpy(reply, data, length);
        data += length;
        size -= length;
        const size_t body = length - kHeaderSize;
        reply[2] = static_cast<unsigned char>(body & 0xFF);
        reply[3] = static_cast<unsigned char>(body >> 8);
        if (repairSequence && length > 46) {
            reply[44] = sequence[0];
            reply[45] = sequence[1];
        }
        return reinterpret_cast<_Encap_Header*>(reply);
    }

    int sendData(const _Encap_Header* request) override {
        const unsigned char* bytes = reinterpret_cast<const unsigned char*>(request);
        const int length = bytes[2] | bytes[3] << 8;
        if (length > 22) {
            sequence[0] = bytes[44];
            sequence[1] = bytes[45];
        }
        return int(kHeaderSize) + length;
    }

    _Encap_Header* sendDataWaitReply(const _Encap_Header* request, int, int timeout) override {
        sendData(request);
        return recvData(timeout);
    }

 private:
    const uint8_t* data;
    size_t size;
    unsigned char sequence[2] = {0, 0};
};

void readAndLookAtIt(_Eip_Session* session, _Eip_Connection* connection) {
    _LGX_Read* read = _ReadLgxData(session, connection, "LEVELS[3]", 2);
    if (!read) {
        return;
    }
    (void)GetLGXValueAsByteArray(read).size();
    for (int index : {0, 1, 2, 7, 1000, 0x7FFFFFFF, -1}) {
        (void)GetLGXValueAsUInt32(read, index);
        (void)_GetLGXValueAsFloat(read, index);
        (void)GetLGXValueAsDouble(read, index);
    }
    char text[16];
    (void)GetLGXValueAsString(read, text, sizeof text);
    _FreeLGXRead(read);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ScriptedTransport transport(data, size);
    _Eip_Session* session = NewSession(1, &transport);
    _RegisterSession(session);
    _Eip_Connection* connection = _ConnectPLCOverCNET2(session, 3, 5, 247, 0x80FE0001, 2, 0x501B, 1,
                                                       2, 2000, 0xA3, nullptr, 0);
    if (connection) {
        readAndLookAtIt(session, connection);
        readAndLookAtIt(session, connection);
        const char value[8] = {0};
        _WriteLgxData(session, connection, "A", _LGX_Data_Type(0xC4), value, 2);
        _Forward_Close(connection);
    }
    DeleteSession(session);
    return 0;
}
