#ifndef EIP_CIP_CIP_MESSAGES_H
#define EIP_CIP_CIP_MESSAGES_H

#include <cstddef>
#include <cstdint>

// Texts for error numbers. All functions are free of state and may be called from any thread; the
// texts returned are constant and live for ever (a system error's text: until the thread's next
// strerror). They reach operators unchanged: do not correct their spelling.

/// Long text of any error, `type` as in CipErrorType. An unknown type gives "Unknow Error type".
const char* CIPGetErrMsg(int32_t type, int32_t number, int32_t extended);

/// Long text of one of the client's own codes (0 or negative).
const char* CIPGetInternalErrMsg(int32_t code);
/// Long text of an encapsulation status, taken as unsigned.
const char* CIPGetEipErrMsg(int32_t code);
/// Long text of a CIP general status, taken as unsigned. For status 1 (connection failure) the
/// extended status chooses the text.
const char* CIPGetMRErrMsg(int32_t code, int32_t extended);
/// Long text of a Logix status word (low 9 bits). For 0x1FF the extended status chooses the text.
const char* CIPGetABErrMsg(int32_t code, int32_t extended);
/// Long text of a PCCC status (low 8 bits). For 0xF0 the extended status chooses the text.
const char* CIPGetPCCCErrMsg(int32_t code, int32_t extended);

/// Short numeric texts, e.g. "MR error: 0001H, 0113H". At most `size` bytes of `dst` are written,
/// the terminator included; the result is snprintf's: the length that the whole text has.
int CIPGetMRErrMsg2(char* dst, size_t size, int32_t code, int32_t extended);
int CIPGetABErrMsg2(char* dst, size_t size, int32_t code, int32_t extended);
int CIPGetPCCCErrMsg2(char* dst, size_t size, int32_t code, int32_t extended);

#endif
