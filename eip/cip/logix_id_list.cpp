#include "eip/cip/logix_id_list.h"

#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/connection_manager.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/mr_view.h"
#include "eip/cip/status_masks.h"
#include "eip/cip/unconnected_send.h"

namespace {

const uint8_t kServiceGetInstances = 0x4B;
/// Class 0x6B (symbol), instance 0: the class itself.
const unsigned char kSymbolClassPath[] = {0x20, 0x6B, 0x24, 0x00};

bool isList(const _MR_Reply* reply) {
    return reply->service == (kServiceGetInstances | kReplyServiceBit) &&
           (reply->generalStatus == 0 || reply->generalStatus == cip::kPartialTransfer);
}

}  // namespace

const unsigned char* _GetIdListData(const _Id_List* list) {
    return reinterpret_cast<const unsigned char*>(list + 1);
}

_Id_List* _GetIdList(_Eip_Session* session, const unsigned char* path, int pathLength) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    int requestSize = 0;
    const cip::MallocPtr<unsigned char> request(
        _BuildMRRequest(kServiceGetInstances, kSymbolClassPath, sizeof(kSymbolClassPath), nullptr,
                        0, &requestSize));
    if (!request) {
        return nullptr;
    }
    int replySize = 0;
    const cip::MallocPtr<_MR_Reply> reply(_UnconnectedSend(session, _Priority, _TimeOut_Ticks,
                                                           request.get(), requestSize, path,
                                                           pathLength, &replySize));
    if (!reply || !isList(reply.get())) {
        return nullptr;
    }
    const int length = replySize - cip::mrHeadSize(reply.get());
    cip::MallocPtr<_Id_List> list =
        cip::allocateZeroed<_Id_List>(sizeof(_Id_List) + static_cast<size_t>(length));
    if (list) {
        list->length = length;
        memcpy(static_cast<void*>(list.get() + 1), _GetMRData(reply.get()),
               static_cast<size_t>(length));
    }
    return list.release();
}
