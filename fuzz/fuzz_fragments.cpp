// Hostile pieces: for every answer of a controller to a read or write that takes several requests,
// nothing outside an answer is read, a value has as many bytes as were asked for, and no more
// elements count as written than there are.
//
// Input: element count (16 bits), connection size (16 bits), then the connected data items that
// answer one request each, as a length byte and a message-router reply.

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "eip/cip/logix_messages.h"
#include "eip/cip/logix_tag_read.h"
#include "eip/cip/logix_tag_write.h"

namespace {

class Pieces {
 public:
    Pieces(const uint8_t* data, size_t size) : bytes(data), left(size) {}

    /// The next item in an allocation of exactly its size; null at the end. To be freed.
    _Eip_Item* next() {
        if (left < 1) {
            return nullptr;
        }
        size_t length = bytes[0];
        ++bytes;
        --left;
        length = length < left ? length : left;
        const size_t counted = length + kSequenceCountSize;
        unsigned char* item =
            static_cast<unsigned char*>(std::calloc(1, size_t(kItemHeadSize) + counted));
        item[0] = CPF_CONNECTED_DATA;
        item[2] = static_cast<unsigned char>(counted);
        item[3] = static_cast<unsigned char>(counted >> 8);
        std::memcpy(item + kItemHeadSize + kSequenceCountSize, bytes, length);
        bytes += length;
        left -= length;
        return reinterpret_cast<_Eip_Item*>(item);
    }

 private:
    const uint8_t* bytes;
    size_t left;
};

/// Takes and answers requests until there is no more to do or to answer with.
template <typename TagAccess>
LgxProgress drive(Pieces pieces, TagAccess* access) {
    LgxProgress progress = LgxProgress::more;
    while (progress == LgxProgress::more) {
        int size = 0;
        unsigned char* request = access->nextRequest(&size);
        _Eip_Item* item = request ? pieces.next() : nullptr;
        progress = item ? access->accept(item) : LgxProgress::failed;
        std::free(item);
        std::free(request);
    }
    return progress;
}

void read(const Pieces& pieces, uint16_t count) {
    LgxTagRead access("LEVELS[3]", count);
    const LgxProgress progress = drive(pieces, &access);
    _LGX_Read* value = access.release();
    if ((progress == LgxProgress::done) != (value != nullptr)) {
        __builtin_trap();
    }
    if (value) {
        const bool isShort = value->type != LGX_TYPE_SHORT_STRING && value->count < count;
        if (isShort || GetLGXValueAsByteArray(value).size() > value->size) {
            __builtin_trap();
        }
    }
    _FreeLGXRead(value);
}

void write(const Pieces& pieces, uint16_t count, uint16_t limit) {
    const std::vector<unsigned char> data(size_t(count) * 4, 0x5A);
    LgxTagWrite access("LEVELS[3]", LGX_TYPE_DINT, data.data(), count,
                       limit == 0 ? INT_MAX : limit);
    const LgxProgress progress = drive(pieces, &access);
    const int written = access.elementsWritten();
    if (written > count || (progress == LgxProgress::done && written != count)) {
        __builtin_trap();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 4) {
        return 0;
    }
    const uint16_t count = static_cast<uint16_t>(data[0] | data[1] << 8);
    const uint16_t limit = static_cast<uint16_t>(data[2] | data[3] << 8);
    const Pieces pieces(data + 4, size - 4);
    read(pieces, count);
    write(pieces, count, limit);
    return 0;
}
