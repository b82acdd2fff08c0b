#include "eip/cip/cip_messages.h"
#include "eip/cip/status_masks.h"
#include "eip/cip/text_table.h"

namespace {

/// Texts of the status word of the Logix tag services.
const cip::CodeText kTexts[] = {
    {0, "Success"},
    {4, "The IOI could not be deciphered"},
    {5, "The particular item referenced could not be found"},
    {6,
     "The amount of data requested would not fit into the response buffer.Partial data transfer "
     "has occured"},
    {10, "An error has occured trying to process one of the attributes"},
    {19, "Not enougth command / data were spplied in the command to execute the service requested"},
    {28, "An insufficient number of attributes were provided compared to the attributes count"},
    {38, "The IOI WORD length did not match the amount of IOI witch was processed"},
};

const cip::CodeText kExtendedTexts[] = {
    {0x2104, "The beginning offset was beyond the end of the template"},
    {0x2105, "You have tried to access beyond the end of the data object"},
    {0x2107, "The abbreviated type does not match the data type of the data object"},
};

}  // namespace

const char* CIPGetABErrMsg(int32_t code, int32_t extended) {
    const int32_t status = code & cip::kABStatusMask;
    if (status == cip::kABExtended) {
        return cip::textOf(kExtendedTexts, extended, "Unknow Extended AB Error type");
    }
    return cip::textOf(kTexts, status, "Unknow AB Error type");
}
