#include "eip/cip/pccc_requests.h"

#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/encap_header.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/pccc_address.h"
#include "eip/cip/wire.h"

namespace {

/// No PCCC request is longer than what carries it.
const int kMaxRequest = kEncapMaxRequestBody;
const int kMaxAddress = 11;

const uint8_t kMaskedBytes = 2;

/// A request being written; once something is refused, nothing comes out of it.
class Writer {
 public:
    // 0  1  command 0x0F
    // 1  1  status 0
    // 2  2  transaction number
    // 4  1  function code
    Writer(uint16_t transaction, PcccFunction function) : size(0), good(true) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
        put8(kPcccCommand);
        put8(0);
        put16(transaction);
        put8(function);
    }

    void put8(uint8_t value) { put(&value, 1); }

    void put16(uint16_t value) {
        unsigned char field[2];
        cip::putUInt16(field, value);
        put(field, sizeof(field));
    }

    void put(const void* data, int count) {
        if (count < 0 || (count > 0 && !data)) {
            refuse(CIP_INTERNAL_ERROR);
        } else if (count > kMaxRequest - size) {
            refuse(CIP_INTERNAL_BUFFER_TOO_SMALL);
        } else if (good && count > 0) {
            memcpy(bytes + size, data, static_cast<size_t>(count));
            size += count;
        }
    }

    /// A count of data bytes, for which there is one byte.
    void putByteCount(int count) {
        if (count < 0 || count > UINT8_MAX) {
            refuse(CIP_INTERNAL_BUFFER_TOO_SMALL);
        } else {
            put8(static_cast<uint8_t>(count));
        }
    }

    void putLogicalBinaryAddress(const char* address) {
        unsigned char field[kMaxAddress];
        const int length = _BuildLogicalBinaryAddress(field, address);
        good &= length > 0;
        put(field + 1, length > 0 ? length - 1 : 0);  // its length byte is not sent
    }

    /// `subElement`: true sends that of the address, false sends 0.
    void putThreeAddressField(const char* address, bool subElement) {
        unsigned char field[kMaxAddress];
        const int length = _BuildThreeAddressField(field, address);
        good &= length > 0;
        if (length > 0 && !subElement) {
            field[length - 1] = 0;
        }
        put(field, length);
    }

    void putDataType(int type, int elementSize) {
        unsigned char field[kMaxPLCDataType];
        const int length = _EncodePLCDataType(field, type, elementSize);
        good &= length > 0;
        put(field, length);
    }

    void refuse(int32_t code) {
        if (good) {
            CIPERROR(CIP_ERR_INTERNAL, code, 0);
        }
        good = false;
    }

    /// The request in memory of its own, or null with the error recorded.
    unsigned char* take(int* takenSize) const {
        *takenSize = 0;
        if (!good) {
            return nullptr;
        }
        cip::MallocPtr<unsigned char> request =
            cip::allocateZeroed<unsigned char>(static_cast<size_t>(size));
        if (request) {
            memcpy(request.get(), bytes, static_cast<size_t>(size));
            *takenSize = size;
        }
        return request.release();
    }

 private:
    unsigned char bytes[kMaxRequest];
    int size;
    bool good;
};

/// The type/data parameter of what is written: of the element itself when it is one, else of an
/// array, whose size counts the parameter of its elements and the elements.
void putElementType(Writer* writer, int type, int elementSize, int dataBytes, uint16_t count) {
    if (count != 1) {
        const int parameter = _EncodePLCDataType(nullptr, type, elementSize);
        writer->putDataType(PLC_TYPE_ARRAY, parameter + dataBytes);
    }
    writer->putDataType(type, elementSize);
}

}  // namespace

// 5  2  packet offset 0
// 7  2  total transaction, elements
// 9  n  logical binary address
//    2  size, elements
unsigned char* _BuildPLCReadDataRequest(uint16_t transaction, const char* address, uint16_t count,
                                        int* size) {
    Writer writer(transaction, PCCC_TYPED_READ);
    writer.put16(0);
    writer.put16(count);
    writer.putLogicalBinaryAddress(address);
    writer.put16(count);
    return writer.take(size);
}

// 5  1    byte size
// 6  1    file number
// 7  1    file type
// 8  1,3  element
//    1    sub-element 0
unsigned char* _BuildPLCReadDataRequestPlus(uint16_t transaction, const char* address,
                                            int byteCount, int* size) {
    Writer writer(transaction, PCCC_READ_THREE_ADDRESS);
    writer.putByteCount(byteCount);
    writer.putThreeAddressField(address, false);
    return writer.take(size);
}

// 5  2  packet offset 0
// 7  2  total transaction, elements
// 9  n  logical binary address
//    n  type/data parameter
//    n  data
unsigned char* _BuildPLCWriteDataRequest(uint16_t transaction, const char* address,
                                         _PLC_Data_Type type, int elementSize, const void* data,
                                         uint16_t count, int* size) {
    Writer writer(transaction, PCCC_TYPED_WRITE);
    const int64_t dataBytes = static_cast<int64_t>(elementSize) * count;
    if (elementSize < 0 || dataBytes > kMaxRequest) {
        writer.refuse(elementSize < 0 ? CIP_INTERNAL_UNSUPPORTED_TYPE
                                      : CIP_INTERNAL_BUFFER_TOO_SMALL);
        return writer.take(size);
    }
    writer.put16(0);
    writer.put16(count);
    writer.putLogicalBinaryAddress(address);
    putElementType(&writer, type, elementSize, static_cast<int>(dataBytes), count);
    writer.put(data, static_cast<int>(dataBytes));
    return writer.take(size);
}

// 5  1    byte size 2
// 6  1    file number
// 7  1    file type
// 8  1,3  element
//    1    sub-element
//    2    mask
//    2    value
unsigned char* _BuildPLCWriteWithMaskRequest(uint16_t transaction, const char* address,
                                             uint16_t mask, uint16_t value, int* size) {
    Writer writer(transaction, PCCC_WRITE_WITH_MASK);
    writer.put8(kMaskedBytes);
    writer.putThreeAddressField(address, true);
    writer.put16(mask);
    writer.put16(value);
    return writer.take(size);
}

// 5  1    byte size
// 6  1    file number
// 7  1    file type
// 8  1,3  element
//    1    sub-element
//    n    data
unsigned char* _BuildPLCWriteBytesRequest(uint16_t transaction, const char* address,
                                          const void* data, int byteCount, int* size) {
    Writer writer(transaction, PCCC_WRITE_THREE_ADDRESS);
    writer.putByteCount(byteCount);
    writer.putThreeAddressField(address, true);
    writer.put(data, byteCount);
    return writer.take(size);
}
