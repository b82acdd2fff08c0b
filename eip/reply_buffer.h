#ifndef EIP_REPLY_BUFFER_H
#define EIP_REPLY_BUFFER_H

#include <errno.h>
#include <stdlib.h>
#include <string.h>

#include "eip/cip/cip_error.h"
#include "eip/cip/encap_header.h"
#include "eip/cip/malloc_ptr.h"

/// Memory for a whole reply, as transports hand it out: the header that was received, copied, and
/// after it room for as many bytes as it announces. Null with (1, errno, 0) when there is none.
inline cip::MallocPtr<unsigned char> replyBuffer(const _Encap_Header& header) {
    const size_t size = sizeof header + _GetEncapLength(&header);
    cip::MallocPtr<unsigned char> buffer(static_cast<unsigned char*>(malloc(size)));
    if (buffer) {
        memcpy(buffer.get(), &header, sizeof header);
    } else {
        CIPERROR(CIP_ERR_SYSTEM, errno, 0);
    }
    return buffer;
}

#endif
