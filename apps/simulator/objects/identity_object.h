#ifndef APPS_SIMULATOR_OBJECTS_IDENTITY_OBJECT_H
#define APPS_SIMULATOR_OBJECTS_IDENTITY_OBJECT_H

#include "apps/simulator/objects/identity.h"
#include "apps/simulator/wire/cip.h"

namespace sim {

/// Services Get_Attributes_All, Get_Attribute_List and Get_Attribute_Single of the identity object
/// (CIP Networks Library Vol. 1, 5A-2; the services in appendix A). `attribute` is that of the
/// request path, `data` what is after the path. Appends the reply's data.
///
/// kAttributeNotSupported for a single attribute that there is not. In a list such a one has that
/// status beside its number, and the whole is kAttributeListError.
CipStatus getIdentityAttributes(const Identity& identity, uint8_t service, uint32_t attribute,
                                ByteView data, Bytes* reply);

}  // namespace sim

#endif
