#include "eip/cip/logix_services.h"

#include <cstdio>

#include "eip/cip/cip_error.h"
#include "eip/cip/malloc_ptr.h"

namespace {

/// Room for the largest numbers of a message about a part that was written.
const int kPartTextSize = 64;

/// Sends the next request of a read or write and lets it take the answer.
template <typename TagAccess>
LgxProgress advance(_Eip_Session* session, _Eip_Connection* connection, TagAccess* access) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    int size = 0;
    const cip::MallocPtr<unsigned char> request(access->nextRequest(&size));
    if (!request) {
        return LgxProgress::failed;
    }
    const cip::MallocPtr<_Eip_Item> item(_ConnectedSend(session, connection, request.get(), size));
    return item ? access->accept(item.get()) : LgxProgress::failed;
}

}  // namespace

LgxProgress _AdvanceLgxRead(_Eip_Session* session, _Eip_Connection* connection, LgxTagRead* read) {
    return advance(session, connection, read);
}

LgxProgress _AdvanceLgxWrite(_Eip_Session* session, _Eip_Connection* connection,
                             LgxTagWrite* write) {
    const LgxProgress progress = advance(session, connection, write);
    if (progress == LgxProgress::failed && write->elementsWritten() > 0) {
        char part[kPartTextSize];
        snprintf(part, sizeof(part), "; 0 to %d of %d elements written",
                 write->elementsWritten() - 1, write->elementCount());
        CIPAppendErrMsg(part);
    }
    return progress;
}

_LGX_Read* _ReadLgxData(_Eip_Session* session, _Eip_Connection* connection, const char* tagName,
                        uint16_t elementCount) {
    LgxTagRead read(tagName, elementCount);
    while (_AdvanceLgxRead(session, connection, &read) == LgxProgress::more) {
    }
    return read.release();
}

int _WriteLgxData(_Eip_Session* session, _Eip_Connection* connection, const char* tagName,
                  _LGX_Data_Type dataType, const void* data, uint16_t elementCount) {
    LgxTagWrite write(tagName, dataType, data, elementCount, _GetConnectedRequestLimit(connection));
    LgxProgress progress = LgxProgress::more;
    while (progress == LgxProgress::more) {
        progress = _AdvanceLgxWrite(session, connection, &write);
    }
    return progress == LgxProgress::done ? write.replies() : -1;
}
