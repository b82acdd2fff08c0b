#include "eip/cip/cip_messages.h"

namespace {

/// Texts of the encapsulation status (CIP Networks Library Vol. 2, table 2-3.3), each up to and
/// with `last`.
struct EipText {
    uint32_t last;
    const char* text;
};

const EipText kTexts[] = {
    {0, "Success"},
    {1, "The sender issued an invalid or unsupported encapsulation command"},
    {2, "Insufficient memory"},
    {3, "Poorly formed or incorrect data in the data portion"},
    {99, "Reserved for legacy RA"},
    {100,
     "an originator used an invalid session handle when sending an encapsulation message to the "
     "target"},
    {101, "The target received a message of invalide length"},
    {104, "Reserved for legacy RA"},
    {105, "unsupported encapsulation protocol revision "},
};

}  // namespace

const char* CIPGetEipErrMsg(int32_t code) {
    for (const EipText& entry : kTexts) {
        if (static_cast<uint32_t>(code) <= entry.last) {
            return entry.text;
        }
    }
    return "Reserved for future expansion";
}
