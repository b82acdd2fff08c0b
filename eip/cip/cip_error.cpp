#include "eip/cip/cip_error.h"

#include <cstdio>
#include <cstring>

thread_local int32_t _cip_errno = 0;
thread_local int32_t _cip_ext_errno = 0;
thread_local int32_t _cip_err_type = 0;
thread_local char _cip_err_msg[kCipErrMsgSize] = {};

namespace {

/// The last byte of the buffer is never written and so always terminates the text.
const size_t kLimit = kCipErrMsgSize - 1;

const char kUnknownType[] = "unknown error type";
const char kSuccess[] = "Internal: success";
const char kNoEipError[] = "EIP error: 0000H";

/// Copies at most kLimit bytes and zeroes the rest up to there.
void setMessage(const char* text) {
    const size_t length = strnlen(text, kLimit);
    memcpy(_cip_err_msg, text, length);
    memset(_cip_err_msg + length, 0, kLimit - length);
}

/// Success is recorded many times in every exchange, mostly over a record that says so already.
bool saysSuccess() {
    return _cip_err_type == CIP_ERR_INTERNAL && _cip_errno == CIP_INTERNAL_SUCCESS &&
           _cip_ext_errno == 0 && memcmp(_cip_err_msg, kSuccess, sizeof kSuccess) == 0;
}

}  // namespace

int32_t cip_errno() {
    return _cip_errno;
}

int32_t cip_ext_errno() {
    return _cip_ext_errno;
}

int32_t cip_err_type() {
    return _cip_err_type;
}

char* cip_err_msg() {
    return _cip_err_msg;
}

void CIPAppendErrMsg(const char* text) {
    const size_t used = strnlen(_cip_err_msg, kLimit);
    const size_t length = strnlen(text, kLimit - used);
    memcpy(_cip_err_msg + used, text, length);
    _cip_err_msg[used + length] = '\0';
}

void CIPERROR(int32_t type, int32_t number, int32_t extended) {
    if (type == CIP_ERR_INTERNAL && number == CIP_INTERNAL_SUCCESS && extended == 0 &&
        saysSuccess()) {
        return;
    }
    _cip_err_type = type;
    _cip_errno = number;
    _cip_ext_errno = extended;
    switch (type) {
        case CIP_ERR_INTERNAL:
            setMessage(CIPGetInternalErrMsg(number));
            break;
        case CIP_ERR_SYSTEM:
            setMessage(strerror(number));
            break;
        case CIP_ERR_EIP:
            if (number == 0) {
                setMessage(kNoEipError);  // of every good reply
            } else {
                snprintf(_cip_err_msg, kLimit, "EIP error: %04XH", static_cast<unsigned>(number));
            }
            break;
        case CIP_ERR_MR:
            CIPGetMRErrMsg2(_cip_err_msg, kLimit, number, extended);
            break;
        case CIP_ERR_AB:
            CIPGetABErrMsg2(_cip_err_msg, kLimit, number, extended);
            break;
        case CIP_ERR_PCCC:
            CIPGetPCCCErrMsg2(_cip_err_msg, kLimit, number, extended);
            break;
        default:
            memcpy(_cip_err_msg, kUnknownType, sizeof(kUnknownType));
            break;
    }
}
