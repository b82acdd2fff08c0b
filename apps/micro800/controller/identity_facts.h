#ifndef APPS_MICRO800_CONTROLLER_IDENTITY_FACTS_H
#define APPS_MICRO800_CONTROLLER_IDENTITY_FACTS_H

#include <cstdint>

#include "apps/micro800/terminal/fact_list.h"
#include "eip/cip/identity.h"

// What a device says of itself, in words (identity object, CIP Networks Library Vol. 1, 5-2).

/// The name that goes with a vendor id; empty when this program knows none.
QString vendorName(uint16_t id);
/// The device profile's name; empty for a number without one.
QString productTypeName(uint16_t type);
/// The flags of the status word that are set and its extended device status, separated by commas.
QString statusText(uint16_t status);
QString stateText(uint8_t state);
/// The product name in double quotes with escapes; "12.11"; "0x6080C0DE".
QString productText(const CipIdentity& identity);
QString revisionText(const CipIdentity& identity);
QString serialText(const CipIdentity& identity);

/// Everything in the order in which it is printed. The product name, which may contain any byte,
/// is in quotes with escapes in the text, and as it is in the JSON value.
QVector<Fact> identityFacts(const CipIdentity& identity);

#endif
