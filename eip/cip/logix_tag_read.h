#ifndef EIP_CIP_LOGIX_TAG_READ_H
#define EIP_CIP_LOGIX_TAG_READ_H

#include <cstdint>

#include "eip/cip/common_packet.h"
#include "eip/cip/logix_data.h"
#include "eip/cip/malloc_ptr.h"

/// How far a read or a write of a tag has come.
enum class LgxProgress {
    failed,  ///< the error record says why
    more,    ///< another request is needed
    done
};

/// A read of a tag, request by request: Read Tag, and when the controller answers that only a part
/// fits into the reply (general status 06), Read Tag Fragmented until all elements are there.
///
/// It owns no socket: its caller may use the connection for other things between two
/// requests. A request and its answer belong together, so requests are taken and answered in turn.
/// One thread at a time.
class LgxTagRead {
 public:
    /// `tagName` is borrowed and must outlive the object; null counts as empty.
    LgxTagRead(const char* tagName, uint16_t elementCount);

    /// The next request, to be freed with free(), and its size. Null (size 0) with (1, errno, 0)
    /// without memory, (0, -31, 0) when a part of the name or its path is too long.
    unsigned char* nextRequest(int* size) const;

    /// Takes the connected data item that answers the last request; it must contain 4 + its length
    /// field bytes. Failures: (5, status word, extended status) for a refusal; it is the first
    /// reply's 06 when the controller does not know Read Tag Fragmented, and for a part whose type
    /// has no size. (0, -20, 0) for a piece of another type or service, without a byte, or with
    /// more than is missing, for an end before all is there, and for fewer elements than asked for;
    /// otherwise as _GetService_Reply and _DecodeLGX say.
    LgxProgress accept(const _Eip_Item* item);

    /// The record, once accept() said done; to be freed with _FreeLGXRead. Null before, and again
    /// after.
    _LGX_Read* release();

 private:
    LgxProgress acceptFirst(const _Eip_Item* item);
    LgxProgress acceptFragment(const _Eip_Item* item);
    LgxProgress begin(int type, const unsigned char* data, int size);
    LgxProgress append(const unsigned char* data, int size);

    const char* const name;
    const uint16_t count;
    cip::MallocPtr<_LGX_Read> value;
    int32_t received;   ///< bytes of a value in pieces
    bool isInPieces;    ///< the first reply contained a part
    bool hasFragments;  ///< a fragment has come
    bool isWhole;
};

#endif
