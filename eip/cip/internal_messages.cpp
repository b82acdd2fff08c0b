#include "eip/cip/cip_error.h"
#include "eip/cip/cip_messages.h"
#include "eip/cip/text_table.h"

namespace {

const cip::CodeText kTexts[] = {
    {CIP_INTERNAL_SUCCESS, "Internal: success"},
    {CIP_INTERNAL_ERROR, "Internal: error"},
    {CIP_INTERNAL_SYSTEM_ERROR, "Internal: system error"},
    {CIP_INTERNAL_PENDING_BUFFER_FULL, "Internal: pending buffer full"},
    {CIP_INTERNAL_NO_MORE_DATA, "Internal: no more data"},
    {CIP_INTERNAL_TIMEOUT, "Internal: timeout"},
    {CIP_INTERNAL_CONNECTION_FAILED, "Internal: connection failed"},
    {CIP_INTERNAL_UNSOLICITED, "Internal: unsolicited message"},
    {CIP_INTERNAL_NOTHING_TO_SEND, "Internal: nothing to send"},
    {CIP_INTERNAL_NO_REPLY, "Internal: no reply"},
    {CIP_INTERNAL_ITEM_TYPE, "Internal: item type unknow"},
    {CIP_INTERNAL_INVALID_REPLY, "Internal: invalid reply"},
    {CIP_INTERNAL_OUT_OF_RANGE, "Internal: out of range"},
    {CIP_INTERNAL_UNSUPPORTED_SERVICE, "Internal: unsupported service"},
    {CIP_INTERNAL_UNSUPPORTED_TYPE, "Internal: unsupported data type"},
    {CIP_INTERNAL_MEMORY, "Internal: internal memory"},
    {CIP_INTERNAL_BUFFER_TOO_SMALL, "Internal: buffer too small"},
    {CIP_INTERNAL_SEND_TIMEOUT, "Internal: send timeout"},
    {CIP_INTERNAL_RECEIVE_TIMEOUT, "Internal: receive timeout"},
    {CIP_INTERNAL_SENDING_ERROR, "Internal: sending error"},
    {CIP_INTERNAL_RECEIVE_ERROR, "Internal: receive error"},
};

}  // namespace

const char* CIPGetInternalErrMsg(int32_t code) {
    return cip::textOf(kTexts, code, "Internal: unknown error");
}
