#include "eip/cip/cip_messages.h"

#include <cstdio>
#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/status_masks.h"

const char* CIPGetErrMsg(int32_t type, int32_t number, int32_t extended) {
    switch (type) {
        case CIP_ERR_INTERNAL:
            return CIPGetInternalErrMsg(number);
        case CIP_ERR_SYSTEM:
            return strerror(number);
        case CIP_ERR_EIP:
            return CIPGetEipErrMsg(number);
        case CIP_ERR_MR:
            return CIPGetMRErrMsg(number, extended);
        case CIP_ERR_AB:
            return CIPGetABErrMsg(number, extended);
        case CIP_ERR_PCCC:
            return CIPGetPCCCErrMsg(number, extended);
        default:
            return "Unknow Error type";
    }
}

namespace {

unsigned asUnsigned(int32_t value) {
    return static_cast<unsigned>(value);
}

}  // namespace

int CIPGetMRErrMsg2(char* dst, size_t size, int32_t code, int32_t extended) {
    if (code == cip::kMRConnectionFailure) {
        return snprintf(dst, size, "MR error: %04XH, %04XH", asUnsigned(code),
                        asUnsigned(extended));
    }
    return snprintf(dst, size, "MR error: %04XH", asUnsigned(code));
}

int CIPGetABErrMsg2(char* dst, size_t size, int32_t code, int32_t extended) {
    const int32_t status = code & cip::kABStatusMask;
    if (status == cip::kABExtended) {
        return snprintf(dst, size, "AB error: %04XH, %04XH", asUnsigned(status),
                        asUnsigned(extended));
    }
    return snprintf(dst, size, "AB error: %04XH", asUnsigned(status));
}

int CIPGetPCCCErrMsg2(char* dst, size_t size, int32_t code, int32_t extended) {
    const int32_t status = code & cip::kPCCCStatusMask;
    if (status == cip::kPCCCExtended) {
        return snprintf(dst, size, "PCCC error: %02XH, %02XH", asUnsigned(status),
                        asUnsigned(extended));
    }
    return snprintf(dst, size, "PCCC error: %02XH", asUnsigned(status));
}
