#include "eip/cip/cip_messages.h"
#include "eip/cip/status_masks.h"
#include "eip/cip/text_table.h"

namespace {

/// Texts of the CIP general status (CIP Networks Library Vol. 1, table B-1.1), by code.
const char* const kGeneralTexts[] = {
    "Success",
    "Connection failure",
    "Resource unavailable",
    "Invalid parameters value",
    "Path segment error",
    "Path destination unknow",
    "Partial transfert",
    "Connection lost",
    "Service not supported",
    "Invalid attribute value",
    "Attribute list error",
    "Already in requested mode/state",
    "Object state conflict",
    "Object already exist",
    "Attribute not settable",
    "Privilege violation",
    "Device state conflict",
    "Reply data too large",
    "Fragmentation of a primitive value",
    "Not enough data",
    "Attribute not supported",
    "Too much data",
    "Object does not exist",
    "Service fragmentation sequence not in progress",
    "No stored attibute data",
    "Store operation failure",
    "Routing failure,request packet too large",
    "Routing failure,response packet too large",
    "Missing attribute list entry data",
    "Invalid attribute value list",
    "Embendded service error",
    "Vendor specific",
    "Invalid parameter",
    "Write once value or medium already written",
    "Invalid reply received",
    "unknow error code",
    "unknow error code",
    "Key failure in path",
    "Path size invalid",
    "Unexpected attribute in list",
    "Invalid member ID",
    "Member not settable",
    "Group 2 only server general failure",
};
const uint32_t kGeneralCount = sizeof(kGeneralTexts) / sizeof(kGeneralTexts[0]);
static_assert(kGeneralCount == 43, "one text for each of the codes 0 to 42");

const uint32_t kLastReserved = 207;

/// Texts of the connection manager's extended status (Vol. 1, table 3-5.33).
const cip::CodeText kConnectionTexts[] = {
    {0x0100, "Connection in use or Duplicate Forward Open"},
    {0x0103, "Transport Class and Trigger combination not supported"},
    {0x0106, "Ownership conflict"},
    {0x0107, "Connection not found at target application"},
    {0x0108, "Invalid session type"},
    {0x0109, "Invalid session size"},
    {0x0110, "Device not configured"},
    {0x0111, "RPI not supported"},
    {0x0113, "Connection managercannot support any more connections"},
    {0x0114, "Vendor Id or product code in the key segment did not match the device"},
    {0x0115, "Product type in the key segment did not match the device"},
    {0x0116, "Major or minor revision information in the key segment did not match the device"},
    {0x0117, "Invalid session point"},
    {0x0118, "Invalid configuration format"},
    {0x0119, "Connection request fails since there is no controlling session currently open"},
};

}  // namespace

const char* CIPGetMRErrMsg(int32_t code, int32_t extended) {
    const uint32_t status = static_cast<uint32_t>(code);
    if (code == cip::kMRConnectionFailure) {
        return cip::textOf(kConnectionTexts, extended, kGeneralTexts[code]);
    }
    if (status < kGeneralCount) {
        return kGeneralTexts[status];
    }
    return status <= kLastReserved ? "Reserved for future extension"
                                   : "Reserved Object/Class/services errors";
}
