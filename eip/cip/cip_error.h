#ifndef EIP_CIP_CIP_ERROR_H
#define EIP_CIP_CIP_ERROR_H

#include <cstdint>

#include "eip/cip/cip_messages.h"

// The error record of the CIP client. Nothing in the client throws: a function returns null, -1 or
// 0 and leaves the reason here. There is one record a thread, so no lock is needed and two workers
// never see each other's errors. Read it on the thread that made the failing call, before that
// thread's next call into the client (most calls clear it first).

/// Error types, the values of cip_err_type(). 4 is not used.
enum CipErrorType : int32_t {
    CIP_ERR_INTERNAL = 0,  ///< the client's own code, see CipInternalCode
    CIP_ERR_SYSTEM = 1,    ///< errno of the operating system
    CIP_ERR_EIP = 2,       ///< encapsulation status (CIP Vol. 2, 2-3.5)
    CIP_ERR_MR = 3,        ///< CIP general status (Vol. 1, appendix B); extended status beside it
    CIP_ERR_AB = 5,        ///< status word of a Logix tag service; the low 9 bits count
    CIP_ERR_PCCC = 6       ///< STS byte of a PCCC reply (DF1 manual, chapter 8)
};

/// Numbers that go with CIP_ERR_INTERNAL.
enum CipInternalCode : int32_t {
    CIP_INTERNAL_SUCCESS = 0,
    CIP_INTERNAL_ERROR = -1,
    CIP_INTERNAL_SYSTEM_ERROR = -2,
    CIP_INTERNAL_PENDING_BUFFER_FULL = -3,
    CIP_INTERNAL_NO_MORE_DATA = -4,
    CIP_INTERNAL_TIMEOUT = -5,
    CIP_INTERNAL_CONNECTION_FAILED = -6,
    CIP_INTERNAL_UNSOLICITED = -7,
    CIP_INTERNAL_NOTHING_TO_SEND = -8,
    CIP_INTERNAL_NO_REPLY = -9,
    CIP_INTERNAL_ITEM_TYPE = -10,
    CIP_INTERNAL_INVALID_REPLY = -20,
    CIP_INTERNAL_OUT_OF_RANGE = -21,
    CIP_INTERNAL_UNSUPPORTED_SERVICE = -22,
    CIP_INTERNAL_UNSUPPORTED_TYPE = -24,
    CIP_INTERNAL_MEMORY = -30,
    CIP_INTERNAL_BUFFER_TOO_SMALL = -31,
    CIP_INTERNAL_SEND_TIMEOUT = -40,
    CIP_INTERNAL_RECEIVE_TIMEOUT = -41,
    CIP_INTERNAL_SENDING_ERROR = -42,
    CIP_INTERNAL_RECEIVE_ERROR = -43,
    CIP_INTERNAL_BAD_DATA = -102  ///< has no text of its own: "Internal: unknown error"
};

/// Size of the message buffer in bytes, terminator included.
const int kCipErrMsgSize = 256;

/// The calling thread's record; zero in a new thread. The accessors below are the way to read it.
extern thread_local int32_t _cip_errno;
extern thread_local int32_t _cip_ext_errno;
extern thread_local int32_t _cip_err_type;
extern thread_local char _cip_err_msg[kCipErrMsgSize];

/// Number, extended number and type of the calling thread's last recorded error.
int32_t cip_errno();
int32_t cip_ext_errno();
int32_t cip_err_type();

/// Short text of the calling thread's last recorded error, NUL-terminated; empty before the first
/// CIPERROR. The buffer lives as long as the thread and changes with its next CIPERROR.
char* cip_err_msg();

/// Adds to that text, as far as it has room.
void CIPAppendErrMsg(const char* text);

/// Records an error for the calling thread: type (CipErrorType), number and extended number, and
/// the short text that goes with them. (0, 0, 0) records success. Texts are cut at 255 bytes.
void CIPERROR(int32_t type, int32_t number, int32_t extended);

#endif
