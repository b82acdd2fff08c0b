#ifndef EIP_CIP_LOGIX_TAG_WRITE_H
#define EIP_CIP_LOGIX_TAG_WRITE_H

#include <cstdint>

#include "eip/cip/common_packet.h"
#include "eip/cip/logix_data.h"
#include "eip/cip/logix_tag_read.h"

/// A write of a tag, request by request: one Write Tag when that fits the connection, else Write
/// Tag Fragmented in pieces of whole elements, in rising order. A short string is never split. It
/// owns no socket; requests are taken and answered in turn. One thread at a time.
class LgxTagWrite {
 public:
    /// `tagName` (null counts as empty) and `data` are borrowed and must outlive the object. `data`
    /// has `elementCount` elements, for a short string as many characters. `requestLimit` is the
    /// number of bytes that a request may have, INT_MAX for no limit.
    LgxTagWrite(const char* tagName, _LGX_Data_Type dataType, const void* data,
                uint16_t elementCount, int requestLimit);

    /// The next request, to be freed with free(), and its size. Null (size 0) with (0, -24, 0) for
    /// a type without size, and as _BuildLgxWriteDataRequest says.
    unsigned char* nextRequest(int* size) const;

    /// Takes the connected data item that answers the last request; it must contain 4 + its length
    /// field bytes. Failures: (5, status word, extended status) for a refusal, (0, -20, 0) for the
    /// reply of another service; otherwise as _GetService_Reply says.
    LgxProgress accept(const _Eip_Item* item);

    /// Elements that the controller has confirmed, from the first one on.
    int elementsWritten() const { return written; }
    int elementCount() const { return count; }
    /// Service replies that confirmed them.
    int replies() const { return confirmations; }

 private:
    const unsigned char* nextData() const;
    int nextElements() const;

    const char* const name;
    const _LGX_Data_Type type;
    const unsigned char* const bytes;
    const int count;
    const int elementSize;  ///< 0 for a short string, -1 without one
    int pieceElements;      ///< elements of a piece; 0: all in one Write Tag
    int written;
    int confirmations;
};

#endif
